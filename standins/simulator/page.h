#pragma once

// The radar page: an HTTP server on 127.0.0.1 with a thread of its own. What it shows and changes is asked of
// the simulator's thread.

#include "standins/simulator/server.h"

#include <asio/io_context.hpp>
#include <cstdint>
#include <memory>
#include <string_view>

namespace kst::standin {

/// The page's files, built into the program.
std::string_view radarHtml();
std::string_view radarJs();
std::string_view radarCss();

class RadarPage {
public:
    /// Serves the page. `context` is the simulator's, run by its thread. Throws std::runtime_error when the
    /// port is taken; 0 asks for a free one.
    ///
    /// GET / (the page), /state.json, /trails.json, /history.json?id=N; POST /control with a JSON body (see
    /// radarjson.h), POST /quit.
    RadarPage(asio::io_context& context, World& world, SimulatorServer& server, std::uint16_t port);
    /// Ends the server and its thread.
    ~RadarPage();
    RadarPage(const RadarPage&) = delete;
    RadarPage& operator=(const RadarPage&) = delete;

    std::uint16_t port() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace kst::standin

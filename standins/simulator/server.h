#pragma once

// Puts a world behind a TCP port and a pipe, and drives it by the clock. One thread: the one that runs the
// context.

#include "standins/simulator/world.h"

#include <asio/io_context.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kst::standin {

class SimulatorServer {
public:
    SimulatorServer(asio::io_context& context, World& world, double framesPerSecond);
    ~SimulatorServer();
    SimulatorServer(const SimulatorServer&) = delete;
    SimulatorServer& operator=(const SimulatorServer&) = delete;

    /// Serves clients on 127.0.0.1 and gives the port; 0 asks for a free one. Throws std::system_error.
    std::uint16_t listenTcp(std::uint16_t port);
    /// Serves clients on a pipe. Throws std::system_error.
    void listenPipe(const std::string& name);
    /// Starts the frames.
    void start();
    /// Sends QUIT to all clients, waits until they have it (a second at most) and ends everything, so that
    /// the context runs out of work. `ended` is called then.
    void quit();
    std::function<void()> ended;
    /// Is called after each simulated second.
    std::function<void()> onSecond;
    /// What the connected clients call themselves.
    std::vector<std::string> clientNames() const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace kst::standin

#pragma once

// The stand-in as a running service: keeps the link to the traffic program, follows the user and sends what
// is due. One thread: everything runs on the io_context that it is given.

#include "sentlog.h"
#include "trafficsource.h"
#include "userlink.h"

#include <array>
#include <asio.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace kst::standin {

struct ServiceOptions {
    std::string linkHost = "127.0.0.1";
    std::uint16_t linkPort = 10747;
    bool withLink = true; ///< without it the traffic starts at once and nobody tells the user's position
    std::string sendTo = "127.0.0.1";
    std::uint16_t trafficPort = 49005;
    std::uint16_t weatherPort = 49004;
    int qnhHpa = 1013;
    int level = 2;           ///< edition that the version reply tells; 2 is the professional one
    double radiusNm = 120.0; ///< only targets this near to the user are sent; 0 sends all
    int garbagePerSecond = 0;
    double garbageSeconds = 0.0;
    double garbageFromSeconds = 10.0;  ///< after the traffic's beginning
    double dropLinkAfterSeconds = 0.0; ///< after the traffic's beginning; 0 never
    double restoreAfterSeconds = 10.0; ///< after the drop
    std::uint32_t seed = 1;
};

struct ServiceCounts {
    std::uint64_t links = 0;
    std::uint64_t positions = 0;
    std::uint64_t times = 0;
    std::uint64_t unreadableCommands = 0;
    std::uint64_t lines = 0;
    std::uint64_t linesLeftOut = 0; ///< due, but beyond the radius or while there was no link
    std::uint64_t weather = 0;
    std::uint64_t garbage = 0;
    std::uint64_t sendErrors = 0;
};

/// Makes the traffic once the user's position is known.
using SourceMaker = std::function<std::unique_ptr<TrafficSource>(LatLon user)>;

class FeedService {
public:
    /// `sent` may be null. Throws std::system_error when the sockets cannot be opened.
    FeedService(asio::io_context& context, const ServiceOptions& options, SourceMaker makeSource,
                SentLog* sent);

    /// Begins to connect; returns at once.
    void start();
    /// Ends everything that is under way, so that the io_context runs out of work.
    void stop();
    const ServiceCounts& counts() const { return counts_; }
    /// The last position that the program told.
    std::optional<LatLon> user() const { return user_; }

private:
    using Clock = asio::steady_timer::clock_type;

    void connect();
    void retryIn(std::chrono::milliseconds wait);
    void readLink();
    void answer(const LinkCommand& command);
    void closeLink();
    void begin(LatLon user);
    void everyStep();
    void sendDue(double seconds);
    void sendGarbage(double seconds);
    void sendWeather(double seconds);
    void followLinkPlan(double seconds);
    void send(const asio::ip::udp::endpoint& to, const std::string& text);
    double feedTime() const;

    ServiceOptions options_;
    SourceMaker makeSource_;
    SentLog* sent_;
    asio::ip::tcp::socket link_;
    asio::ip::udp::socket udp_;
    asio::ip::udp::endpoint trafficTo_;
    asio::ip::udp::endpoint weatherTo_;
    asio::steady_timer retry_;
    asio::steady_timer steps_;
    LinkCommandReader commands_;
    std::array<char, 2048> linkBuffer_{};
    std::unique_ptr<TrafficSource> source_;
    std::vector<TrafficReport> due_;
    std::optional<LatLon> user_;
    Clock::time_point began_;
    /// The simulator's time at a moment of the steady clock, once the program has told it.
    std::optional<std::pair<double, Clock::time_point>> simulatorTime_;
    ServiceCounts counts_;
    std::mt19937 random_;
    double nextWeather_ = 0.0;
    double garbageOwed_ = 0.0;
    double lastGarbage_ = 0.0;
    bool linked_ = false;
    bool linkDropped_ = false;
    bool linkRestored_ = false;
    bool stopped_ = false;
};

} // namespace kst::standin

// simulator-standin: stands in for the flight simulator on this PC. See --help.

#include "platform/paths.h"
#include "standins/simulator/historyfile.h"
#include "standins/simulator/page.h"
#include "standins/simulator/server.h"
#include "standins/simulator/simulatoroptions.h"

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fmt/format.h>
#include <memory>

namespace {

using namespace kst::standin;

constexpr double zurichElevationFt = 1416.0;

double wallSeconds() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

void setUp(World& world, const SimulatorOptions& options) {
    for (const AirportOption& airport : options.airports)
        world.terrain().addAirport(airport.lat, airport.lon, airport.elevationFt);
    if (options.airports.empty())
        world.terrain().addAirport(SimulatorOptions().userLat, SimulatorOptions().userLon, zurichElevationFt);
    world.setUtc(options.utcSeconds.value_or(wallSeconds()));
    world.setUserAircraft(options.title, options.model);
    world.user().place.headingRad = wrapHeading(options.userHeadingDeg * radPerDeg);
    world.placeUser(options.userLat, options.userLon, options.userAltFt, options.userOnGround);
    world.userMotion().straight(options.userSpeedKt, 0.0);
}

int run(const SimulatorOptions& options) {
    WorldSettings settings;
    settings.historyIntervalSeconds = options.historyInterval;
    World world(settings);
    setUp(world, options);
    std::unique_ptr<HistoryFile> history;
    if (!options.historyFile.empty()) {
        history = std::make_unique<HistoryFile>(kst::platform::pathFromUtf8(options.historyFile));
        world.onHistory = [&](const Aircraft& aircraft, const HistoryPoint& point) {
            history->add(wallSeconds(), aircraft, point);
        };
    }

    asio::io_context context;
    SimulatorServer server(context, world, options.framesPerSecond);
    server.onSecond = [&] {
        if (history)
            history->flush();
    };
    if (!options.pipe.empty()) {
        server.listenPipe(options.pipe);
        fmt::print("pipe {}\n", options.pipe);
    }
    if (options.tcpPort)
        fmt::print("tcp {}\n", server.listenTcp(*options.tcpPort));
    RadarPage page(context, world, server, options.httpPort);
    fmt::print("radar http://127.0.0.1:{}/\n", page.port());
    std::fflush(stdout);

    asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&](asio::error_code error, int) {
        if (!error)
            server.quit();
    });
    asio::steady_timer limit(context);
    if (options.runSeconds) {
        limit.expires_after(
            std::chrono::milliseconds(static_cast<std::int64_t>(*options.runSeconds * 1000.0)));
        limit.async_wait([&](asio::error_code error) {
            if (!error)
                server.quit();
        });
    }
    server.ended = [&] {
        signals.cancel();
        limit.cancel();
    };
    server.start();
    context.run();
    fmt::print("created {} removed {} seconds {:.0f}\n", world.created(), world.gone().size(),
               world.seconds());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const SimulatorOptions options = readSimulatorOptions({argv + 1, argv + argc});
        if (options.help) {
            fmt::print("{}", simulatorOptionsHelp());
            return 0;
        }
        return run(options);
    } catch (const std::exception& error) {
        fmt::print(stderr, "simulator-standin: {}\n", error.what());
        return 2;
    }
}

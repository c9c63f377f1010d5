// realtraffic-standin: stands in for RealTraffic on this PC. See --help.

#include "feedservice.h"
#include "options.h"

#include <csignal>
#include <exception>
#include <fmt/format.h>

namespace {

using namespace kst::standin;

int run(const Options& options) {
    std::unique_ptr<SentLog> sent;
    if (!options.sent.empty()) {
        sent = std::make_unique<SentLog>(options.sent);
    }
    std::unique_ptr<TrafficSource> recorded;
    if (!options.generate) {
        recorded = recordedTraffic(options.recorded);
    }
    const SourceMaker makeSource = [&](kst::LatLon user) -> std::unique_ptr<TrafficSource> {
        if (recorded != nullptr) {
            return std::move(recorded);
        }
        GeneratorOptions generator = options.generator;
        generator.centre = options.centreGiven ? generator.centre : user;
        return generatedTraffic(generator);
    };

    asio::io_context context;
    FeedService service(context, options.service, makeSource, sent.get());
    asio::signal_set signals(context, SIGINT, SIGTERM);
    asio::steady_timer end(context);
    const auto stop = [&](const asio::error_code& error) {
        if (!error) {
            service.stop();
            end.cancel();
            signals.cancel();
        }
    };
    signals.async_wait([&](const asio::error_code& error, int) { stop(error); });
    if (options.seconds > 0.0) {
        end.expires_after(std::chrono::milliseconds(static_cast<std::int64_t>(options.seconds * 1000.0)));
        end.async_wait(stop);
    }
    service.start();
    context.run();

    const ServiceCounts& counts = service.counts();
    fmt::print("links={} positions={} times={} unreadable={} lines={} left_out={} weather={} garbage={} "
               "send_errors={}\n",
               counts.links, counts.positions, counts.times, counts.unreadableCommands, counts.lines,
               counts.linesLeftOut, counts.weather, counts.garbage, counts.sendErrors);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const Options options = readOptions({argv + 1, argv + argc});
        if (options.help) {
            fmt::print("{}", optionsHelp());
            return 0;
        }
        return run(options);
    } catch (const std::exception& error) {
        fmt::print(stderr, "realtraffic-standin: {}\n", error.what());
        return 2;
    }
}

// measureflights: how well the simulator's objects fly what the feed told. See --help.

#include "tools/measureflights/files.h"
#include "tools/measureflights/measure.h"
#include "tools/measureflights/page.h"

#include <exception>
#include <fmt/format.h>
#include <map>
#include <stdexcept>

namespace {

using namespace kst::tool;

constexpr std::string_view helpText =
    "Holds the paths of the simulator's objects against the positions that the feed sent.\n\n"
    "  --history FILE   history of the simulator stand-in\n"
    "  --sent FILE      record of the RealTraffic stand-in\n"
    "  --page FILE      write a page with a map\n\n"
    "Ends with 1 when no object flew the track of a target.\n";

int run(std::map<std::string, std::string>& options) {
    Flights flights;
    std::ifstream sent = openFile(options["--sent"]);
    readSent(sent, flights);
    std::ifstream history = openFile(options["--history"]);
    readHistory(history, flights);
    const Measured measured = measure(flights);
    fmt::print("{}", tableOf(measured));
    if (flights.unreadableRows > 0) {
        fmt::print("unreadable rows: {}\n", flights.unreadableRows);
    }
    if (!options["--page"].empty()) {
        writeFile(options["--page"],
                  pageOf(measured, "What the feed told and what was flown", tableOf(measured)));
    }
    return measured.byObject.empty() ? 1 : 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        std::map<std::string, std::string> options = {{"--history", ""}, {"--sent", ""}, {"--page", ""}};
        for (int i = 1; i < argc; i += 2) {
            const std::string name = argv[i];
            if (name == "--help") {
                fmt::print("{}", helpText);
                return 0;
            }
            if (!options.contains(name) || i + 1 == argc) {
                throw std::runtime_error(fmt::format("cannot use {}, see --help", name));
            }
            options[name] = argv[i + 1];
        }
        if (options["--history"].empty() || options["--sent"].empty()) {
            throw std::runtime_error("needs --history and --sent, see --help");
        }
        return run(options);
    } catch (const std::exception& error) {
        fmt::print(stderr, "measureflights: {}\n", error.what());
        return 2;
    }
}

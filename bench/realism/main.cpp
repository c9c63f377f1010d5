// bench_realism: how well the program flies recorded flights. See --help.

#include "bench/realism/apronfigures.h"
#include "bench/realism/apronscenes.h"
#include "bench/realism/causes.h"
#include "bench/realism/figures.h"
#include "bench/realism/traces.h"
#include "core/reasoncounts.h"
#include "support/places.h"
#include "tools/measureflights/files.h"
#include "tools/measureflights/line.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <stdexcept>

namespace {

using namespace kst;
using namespace kst::bench;

constexpr std::string_view helpText =
    "Plays recorded flights one after the other through the whole program in virtual time and prints how\n"
    "they were flown. Then plays all traffic at once round each airport whose stands are known: scene by\n"
    "scene, and the scenes of an airport on top of each other (\"together ICAO\"), one beginning every 20 "
    "s.\n\n"
    "  FOLDER        recorded tracks; the project's own by default\n"
    "  --stands DIR  a file of stands for each airport; the project's own by default\n"
    "  --flights     only the flights\n"
    "  --apron       only the airports\n"
    "  --only TEXT   only flights (file, callsign@second) and scenes (file@second ICAO) whose name contains "
    "it\n"
    "  --page FILE   a page with the worst flight, or with the only one; with --apron the worst scene; with "
    "both\n"
    "                that scene's is beside it, named FILE-apron\n"
    "  --path FILE   what --page shows, as CSV; with both that of the flight\n";

struct Options {
    std::filesystem::path tracks = test::sourceFolder() / "data/tracks";
    std::filesystem::path stands = test::sourceFolder() / "data/stands";
    std::string only;
    std::filesystem::path page;
    std::filesystem::path path;
    bool flights = true;
    bool apron = true;
};

Options readOptions(int argc, char** argv) {
    Options options;
    const std::map<std::string_view, std::filesystem::path*> paths = {
        {"--stands", &options.stands}, {"--page", &options.page}, {"--path", &options.path}};
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const bool more = i + 1 < argc;
        if (argument == "--flights") {
            options.apron = false;
        } else if (argument == "--apron") {
            options.flights = false;
        } else if (argument == "--only" && more) {
            options.only = argv[++i];
        } else if (paths.contains(argument) && more) {
            *paths.at(argument) = std::filesystem::absolute(argv[++i]);
        } else if (!argument.starts_with('-')) {
            options.tracks = std::filesystem::absolute(argument);
        } else {
            throw std::runtime_error(fmt::format("cannot use {}, see --help", argument));
        }
    }
    return options;
}

void keepNamed(std::vector<Recording>& recordings, const std::string& text) {
    std::erase_if(recordings,
                  [&](const Recording& recording) { return recording.name.find(text) == std::string::npos; });
}

/// Writes what is asked for of one recording.
void leave(const std::filesystem::path& page, const std::filesystem::path& path, const std::string& name,
           const PlayedScene& played, const std::string& table) {
    if (!page.empty()) {
        tool::writeFile(page, pageOf(name, played, table));
    }
    if (!path.empty()) {
        tool::writeFile(path, pathOf(played));
    }
}

/// Where the aircraft was when a recorded contact with the ground, or its end, was due.
std::string whereAt(const PlayedAircraft& played, double recordedAt) {
    constexpr double sameMomentS = 1.0;
    const double due = recordedAt + tool::playDelaySeconds;
    const auto next = std::lower_bound(played.flown.begin(), played.flown.end(), due,
                                       [](const Sample& sample, double at) { return sample.at < at; });
    if (next != played.flown.end() && next->at < due + sameMomentS) {
        const auto entry = std::find_if(played.flown.begin(), next, [&](const Sample& sample) {
            return sample.objectId == next->objectId;
        });
        return fmt::format(
            "in {}, entered {} at {:.0f} s, last: {}", stageNames[static_cast<std::size_t>(next->stage)],
            entry->onGround ? "on the ground" : "in the air", entry->at, reasonText(next->reason));
    }
    std::string where = "not shown then";
    if (next != played.flown.begin()) {
        where += fmt::format(", gone {:.0f} s before", due - std::prev(next)->at);
    }
    if (next != played.flown.end()) {
        where += fmt::format(", enters {:.0f} s later {}", next->at - due,
                             next->onGround ? "on the ground" : "in the air");
    }
    return where;
}

/// A line for each recorded contact of a flight that has fewer than it should.
void noteMissing(std::vector<std::string>& lines, const Recording& flight, const PlayedAircraft& played,
                 const std::vector<double>& recorded, std::size_t shown) {
    if (shown >= recorded.size()) {
        return;
    }
    for (const double at : recorded) {
        lines.push_back(fmt::format("{} ({} of {}), due at {:.0f} s: {}", flight.name, shown, recorded.size(),
                                    at + tool::playDelaySeconds, whereAt(played, at)));
    }
}

/// What the recordings show against what was shown.
struct Outcomes {
    int flights = 0;
    int notShown = 0;
    std::size_t landings = 0;
    std::size_t departures = 0;
    std::map<std::string_view, int> reasons; ///< of those not shown
    std::vector<std::string> withoutTouchdown;
    std::vector<std::string> withoutLiftOff;

    void add(const Recording& flight, const PlayedAircraft& played, const Figures& own) {
        ++flights;
        landings += flight.landings.size();
        departures += flight.departures.size();
        if (!played.shown) {
            ++notShown;
            const bool told = played.lastReason != Reason::None;
            ++reasons[reasonText(told ? played.lastReason : played.refused)];
        }
        noteMissing(withoutTouchdown, flight, played, flight.landings, own.touchdowns.size());
        noteMissing(withoutLiftOff, flight, played, flight.departures,
                    static_cast<std::size_t>(own.liftOffs));
    }

    void print() const {
        fmt::print("{} flights, {} of them not shown; recorded landings {}, departures {}\n", flights,
                   notShown, landings, departures);
        for (const auto& [reason, count] : reasons) {
            fmt::print("  not shown: {} ({})\n", reason, count);
        }
        for (const std::string& name : withoutTouchdown) {
            fmt::print("  touchdown missing: {}\n", name);
        }
        for (const std::string& name : withoutLiftOff) {
            fmt::print("  lift-off missing: {}\n", name);
        }
    }
};

int runFlights(const Options& options) {
    std::vector<Recording> flights = readFlights(options.tracks, test::sourceFolder() / "data");
    keepNamed(flights, options.only);
    Figures flown;
    Figures ideal;
    Causes causes;
    Outcomes outcomes;
    const Recording* worst = nullptr;
    double worstBadness = -1.0;
    for (const Recording& flight : flights) {
        const PlayedAircraft played = playFlight(flight);
        flown.add(flight.name, played, played.flown);
        ideal.add(flight.name, played, played.ideal);
        Figures own;
        own.add(flight.name, played, played.flown);
        causes.add(flight.name, played, own);
        outcomes.add(flight, played, own);
        if (played.shown && badness(own) > worstBadness) {
            worstBadness = badness(own);
            worst = &flight;
        }
    }
    outcomes.print();
    fmt::print("\n{}\n{}", tableOf(flown, ideal), causes.text());
    if (worst == nullptr) {
        return 1;
    }
    fmt::print("\nworst flight: {}\n", worst->name);
    if (!options.page.empty() || !options.path.empty()) {
        const PlayedAircraft played = playFlight(*worst);
        Figures own;
        Figures ownIdeal;
        own.add(worst->name, played, played.flown);
        ownIdeal.add(worst->name, played, played.ideal);
        leave(options.page, options.path, worst->name, {{played}, {}, 0.0}, tableOf(own, ownIdeal));
    }
    return 0;
}

/// Plays the scenes and prints their figures. Returns the name of the worst.
const Recording* runScenes(const std::vector<Recording>& scenes, const Options& options) {
    ApronFigures figures;
    const Recording* worst = nullptr;
    double worstBadness = -1.0;
    for (const Recording& scene : scenes) {
        const PlayedScene played = playScene(scene, options.stands);
        figures.add(scene.name, played);
        ApronFigures own;
        own.add(scene.name, played);
        if (badness(own) > worstBadness) {
            worstBadness = badness(own);
            worst = &scene;
        }
    }
    if (worst != nullptr) {
        fmt::print("\n{}\nworst scene: {}\n", tableOf(figures), worst->name);
    }
    return worst;
}

int runApron(const Options& options) {
    constexpr double everyS = 20.0;
    std::vector<Recording> scenes = readScenes(options.tracks, options.stands, test::sourceFolder() / "data");
    std::vector<Recording> crowds = scenesTogether(scenes, everyS);
    keepNamed(scenes, options.only);
    keepNamed(crowds, options.only);
    const Recording* worst = runScenes(scenes, options);
    const Recording* worstCrowd = runScenes(crowds, options);
    worst = worst != nullptr ? worst : worstCrowd;
    if (worst == nullptr) {
        return 1;
    }
    std::filesystem::path page = options.page;
    if (!page.empty() && options.flights) {
        page.replace_filename(page.stem().string() + "-apron" + page.extension().string());
    }
    const std::filesystem::path path = options.flights ? "" : options.path;
    if (!page.empty() || !path.empty()) {
        const PlayedScene played = playScene(*worst, options.stands);
        ApronFigures own;
        own.add(worst->name, played);
        leave(page, path, worst->name, played, tableOf(own));
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc > 1 && std::string_view(argv[1]) == "--help") {
            fmt::print("{}", helpText);
            return 0;
        }
        const Options options = readOptions(argc, argv);
        const int flights = options.flights ? runFlights(options) : 1;
        const int apron = options.apron ? runApron(options) : 1;
        return std::min(flights, apron);
    } catch (const std::exception& error) {
        fmt::print(stderr, "bench_realism: {}\n", error.what());
        return 2;
    }
}

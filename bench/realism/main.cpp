// bench_realism: how well the program flies recorded flights. See --help.

#include "bench/realism/apronpage.h"
#include "bench/realism/causes.h"
#include "bench/realism/figures.h"
#include "bench/realism/linematch.h"
#include "core/reasoncounts.h"
#include "support/places.h"
#include "tools/measureflights/measure.h"
#include "tools/measureflights/page.h"

#include <algorithm>
#include <fmt/format.h>
#include <fstream>
#include <map>
#include <stdexcept>

namespace {

using namespace kst;
using namespace kst::bench;

constexpr std::string_view helpText =
    "Plays recorded flights one after the other through the whole program in virtual time and prints how\n"
    "they were flown, beside the naive replay: straight lines between the feed's points, 30 seconds late.\n"
    "Then plays all traffic at once round each airport whose stands are known: scene by scene, and the "
    "scenes\n"
    "of an airport on top of each other (\"together ICAO\"), one beginning every 20 seconds.\n\n"
    "  FOLDER        recorded tracks; the project's own by default\n"
    "  --stands DIR  a file of stands for each airport; the project's own by default\n"
    "  --flights     only the flights\n"
    "  --apron       only the airports\n"
    "  --only TEXT   only flights (file, callsign@second) and scenes (file@second ICAO) whose name contains "
    "it\n"
    "  --list        a line for each flight\n"
    "  --page FILE   a page with the worst flight, or with the only one; beside it, named FILE-apron, or "
    "alone\n"
    "                with --apron, one with the worst scene\n"
    "  --path FILE   its path as CSV, a line for each tenth of a second; with --apron the paths of the "
    "scene\n";

struct Options {
    std::filesystem::path tracks = test::sourceFolder() / "data/tracks";
    std::filesystem::path stands = test::sourceFolder() / "data/stands";
    std::string only;
    std::filesystem::path page;
    std::filesystem::path path;
    bool list = false;
    bool flights = true;
    bool apron = true;
};

Options readOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const bool more = i + 1 < argc;
        if (argument == "--list") {
            options.list = true;
        } else if (argument == "--flights") {
            options.apron = false;
        } else if (argument == "--apron") {
            options.flights = false;
        } else if (argument == "--stands" && more) {
            options.stands = std::filesystem::absolute(argv[++i]);
        } else if (argument == "--only" && more) {
            options.only = argv[++i];
        } else if (argument == "--page" && more) {
            options.page = std::filesystem::absolute(argv[++i]);
        } else if (argument == "--path" && more) {
            options.path = std::filesystem::absolute(argv[++i]);
        } else if (!argument.starts_with('-')) {
            options.tracks = std::filesystem::absolute(argument);
        } else {
            throw std::runtime_error(fmt::format("cannot use {}, see --help", argument));
        }
    }
    return options;
}

/// The path of a flight as the page draws it.
std::vector<tool::TrackPoint> pathOf(const PlayedFlight& played) {
    std::vector<tool::TrackPoint> path;
    for (const Sample& sample : played.flown) {
        path.push_back({sample.at, sample.position, sample.altFt, 0.0, sample.onGround});
    }
    return path;
}

void writePage(const std::filesystem::path& file, const RecordedFlight& flight, const PlayedFlight& played) {
    tool::Flights flights;
    flights.targets.push_back({20001, "SHOWN", "", flight.reports.front().type, played.line});
    flights.objects.push_back({3, "SHOWN", flight.name, pathOf(played)});
    Figures flown;
    Figures timed;
    Figures naive;
    flown.add(flight, played, played.flown);
    timed.add(flight, played, played.timed);
    naive.add(flight, played, played.naive);
    std::ofstream out(file, std::ios::binary);
    out << tool::flightPageOf(tool::measure(flights), flight.name, tableOf(flown, timed, naive));
    if (!out.flush()) {
        throw std::runtime_error("cannot write the page");
    }
}

void writeText(const std::filesystem::path& file, const std::string& text) {
    std::ofstream out(file, std::ios::binary);
    out << text;
    if (!out.flush()) {
        throw std::runtime_error("cannot write " + file.filename().string());
    }
}

void writePath(const std::filesystem::path& file, const PlayedFlight& played) {
    constexpr std::size_t every = 5;
    std::ofstream out(file, std::ios::binary);
    out << "at,lat,lon,alt_ft,wheels_ft,pitch_deg,bank_deg,heading_deg,speed_kt,from_line_m,lag_s,lead_limit_"
           "s,lag_limit_s,stage,on_"
           "ground,"
           "coasting,leg_left_s,leg_kind,points,timed_lag_s,timed_from_line_m\n";
    std::vector<ShownPlace> flown;
    std::vector<ShownPlace> timed;
    for (std::size_t i = 0; i < played.flown.size(); i += every) {
        const Sample& sample = played.flown[i];
        const bool anew = i > 0 && sample.objectId != played.flown[i - every].objectId;
        flown.push_back({sample.at, sample.position, anew});
        timed.push_back({sample.at, played.timed[i].position, anew});
    }
    const auto places = placesOnLine(played.line, flown);
    const auto timedPlaces = placesOnLine(played.line, timed);
    for (std::size_t i = 0; i < played.flown.size(); i += every) {
        const Sample& sample = played.flown[i];
        const auto& place = places[i / every];
        const auto& ideal = timedPlaces[i / every];
        out << fmt::format(
            "{:.2f},{:.6f},{:.6f},{:.1f},{:.1f},{:.2f},{:.2f},{:.2f},{:.1f},{:.1f},{:.2f},{:.1f},{:.1f},{},{:"
            "d},{:d},{:.2f},{:d},{:.0f},{:.2f},{:.1f}\n",
            sample.at, sample.position.lat, sample.position.lon, sample.altFt, sample.wheelsFt,
            sample.pitch * degPerRad, sample.bank * degPerRad, sample.heading * degPerRad, sample.speedKt,
            place ? place->distanceM : -1.0, place ? place->lagS : 0.0, sample.leadLimitS, sample.lagLimitS,
            stageNames[static_cast<std::size_t>(sample.stage)], sample.onGround, sample.coasting,
            sample.legLeftS, static_cast<int>(sample.leg), sample.points, ideal ? ideal->lagS : 0.0,
            ideal ? ideal->distanceM : -1.0);
    }
    if (!out.flush()) {
        throw std::runtime_error("cannot write the path");
    }
}

/// Where the aircraft was when a recorded contact with the ground, or its end, was due.
std::string whereAt(const PlayedFlight& played, double recordedAt) {
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
void noteMissing(std::vector<std::string>& lines, const RecordedFlight& flight, const PlayedFlight& played,
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

    void add(const RecordedFlight& flight, const PlayedFlight& played, const Figures& own) {
        ++flights;
        landings += flight.landings.size();
        departures += flight.departures.size();
        if (!played.shown) {
            ++notShown;
            ++reasons[reasonText(played.lastReason)];
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

void printLine(const RecordedFlight& flight, const PlayedFlight& played, Figures own) {
    double p95 = 0.0;
    double step = 0.0;
    double below = 0.0;
    int reversals = 0;
    for (StageFigures& stage : own.stages) {
        p95 = std::max(p95, tool::spreadOf(stage.fromLineM).p95);
        step = std::max(step, stage.step.value);
        below += stage.belowSeconds;
        reversals += stage.reversals;
    }
    fmt::print(
        "{:55} {} {:6} s, line 95 % {:7.1f} m, step {:5.2f}, below {:6.1f} s, reversals {}, down {}/{}, "
        "up {}/{}, qnh {}, {}\n",
        flight.name, flight.reports.front().type, played.flown.size() / 50, p95, step, below, reversals,
        own.touchdowns.size(), flight.landings.size(), own.liftOffs, flight.departures.size(), flight.qnh,
        reasonText(played.lastReason));
}

int runFlights(const Options& options) {
    std::vector<RecordedFlight> flights = readRecordings(options.tracks, test::sourceFolder() / "data");
    std::erase_if(flights, [&](const RecordedFlight& flight) {
        return flight.name.find(options.only) == std::string::npos;
    });
    Figures flown;
    Figures timed;
    Figures naive;
    Causes causes;
    Outcomes outcomes;
    const RecordedFlight* worst = nullptr;
    double worstBadness = -1.0;
    for (const RecordedFlight& flight : flights) {
        const PlayedFlight played = playFlight(flight);
        flown.add(flight, played, played.flown);
        timed.add(flight, played, played.timed);
        naive.add(flight, played, played.naive);
        Figures own;
        own.add(flight, played, played.flown);
        causes.add(flight, played, own);
        outcomes.add(flight, played, own);
        if (options.list) {
            printLine(flight, played, own);
        }
        if (played.shown && badness(own) > worstBadness) {
            worstBadness = badness(own);
            worst = &flight;
        }
    }
    outcomes.print();
    fmt::print("\n{}", tableOf(flown, timed, naive));
    fmt::print("\n{}", causes.text());
    if (worst != nullptr) {
        fmt::print("\nworst flight: {}\n", worst->name);
        const PlayedFlight played = playFlight(*worst);
        if (!options.page.empty()) {
            writePage(options.page, *worst, played);
        }
        if (!options.path.empty()) {
            writePath(options.path, played);
        }
    }
    return worst == nullptr ? 1 : 0;
}

/// Where the page of the airports goes: beside that of the flights when there are both.
std::filesystem::path apronPage(const Options& options) {
    std::filesystem::path page = options.page;
    if (!page.empty() && options.flights) {
        page.replace_filename(page.stem().string() + "-apron" + page.extension().string());
    }
    return page;
}

/// Plays scenes and keeps what the worst one leaves behind.
class ApronRun {
public:
    /// `leave`: whether the worst scene's page and paths are written.
    ApronRun(const Options& options, bool leave) : options_(options), leave_(leave) {}

    void play(const ApronScene& scene) {
        const PlayedApron played = playApron(scene, options_.stands);
        figures_.add(scene, played);
        ApronFigures own;
        own.add(scene, played);
        if (badness(own) > worstBadness_) {
            worstBadness_ = badness(own);
            worst_ = scene.name;
            page_ = !leave_ || options_.page.empty() ? "" : pageOf(scene, played);
            paths_ = !leave_ || options_.path.empty() || options_.flights ? "" : pathsOf(played);
        }
        if (options_.list) {
            fmt::print("== {}, {:.0f} s\n{}\n", scene.name, played.end, tableOf(own));
        }
    }

    void report() {
        fmt::print("\n{}\nworst scene: {}\n", tableOf(figures_), worst_);
        if (!page_.empty()) {
            writeText(apronPage(options_), page_);
        }
        if (!paths_.empty()) {
            writeText(options_.path, paths_);
        }
    }

private:
    const Options& options_;
    bool leave_;
    ApronFigures figures_;
    std::string page_;
    std::string paths_;
    std::string worst_;
    double worstBadness_ = -1.0;
};

int runApron(const Options& options) {
    constexpr double everyS = 20.0;
    std::vector<ApronScene> scenes =
        readApronScenes(options.tracks, options.stands, test::sourceFolder() / "data");
    std::vector<ApronScene> crowds = scenesTogether(scenes, everyS);
    for (std::vector<ApronScene>* all : {&scenes, &crowds}) {
        std::erase_if(*all, [&](const ApronScene& scene) {
            return scene.name.find(options.only) == std::string::npos;
        });
    }
    bool first = true;
    for (const std::vector<ApronScene>* all : {&scenes, &crowds}) {
        if (all->empty()) {
            continue;
        }
        ApronRun run(options, first);
        for (const ApronScene& scene : *all) {
            run.play(scene);
        }
        run.report();
        first = false;
    }
    return first ? 1 : 0;
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

// The scan of an installation of 6,000 files with more than 60,000 sections, beside the floor: a bare
// recursive walk that reads the same files on the same number of threads. The counter "of floor" is the ratio
// of the two, measured in turn in the same run. Before it is timed, the scan's result is held against what
// the maker of the installation expects. KST_BENCH_FILES makes another size.

#include "bench/support/besidefloor.h"
#include "catalogue/referencereader.h"
#include "catalogue/scan.h"
#include "catalogue/scanfolder.h"
#include "catalogue/scannedliveries.h"
#include "core/files.h"
#include "core/orderedtasks.h"
#include "platform/environment.h"
#include "tools/kestrane-data/codes.h"
#include "tools/makeinstallation/facts.h"
#include "tools/makeinstallation/installation.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using namespace kst;
namespace fs = std::filesystem;

constexpr std::size_t sections = 12;

std::size_t fileCount() {
    const auto text = platform::environmentText("KST_BENCH_FILES");
    return text ? std::stoul(*text) : 6000;
}

/// The installation, in a folder of its own that goes at the end.
struct Installation {
    Installation() : expected(made::makeInstallation(place, fileCount(), sections)) {
        pugi::xml_document document;
        made::addReferenceFacts(document);
        data::convertCodes(document, data::Direction::Scramble);
        readReferenceDocument(document, "made", referenceTables());
        dontUseTitles.insert(expected.unwantedTitles.begin(), expected.unwantedTitles.end());
    }

    WorkFolder folder{"liveryscan"};
    fs::path place = folder.path() / "made";
    made::Expectation expected;
};

Installation& installation() {
    static Installation made;
    return made;
}

void scan(ScanState& state) {
    scannedLiveries.clear();
    lf_searchLiveriesinFolder(1, installation().place, state);
}

bool resultIsRight() {
    ScanState state;
    scan(state);
    for (LiveryData& livery : scannedLiveries) {
        lf_correctLivery(livery, state.reports.conversionLines);
    }
    const auto& expected = installation().expected.liveries;
    const bool same = std::equal(
        scannedLiveries.begin(), scannedLiveries.end(), expected.begin(), expected.end(),
        [](const LiveryData& a, const made::ExpectedLivery& b) {
            return made::ExpectedLivery{a.airline, a.model, a.title, a.regcode, a.cargo}.text() == b.text();
        });
    auto reports = installation().expected.reports;
    const auto matches = [&](std::vector<std::string> lines, const char* name) {
        std::sort(lines.begin(), lines.end());
        std::sort(reports[name].begin(), reports[name].end());
        return lines == reports[name];
    };
    return same && matches(state.reports.invalidAirlines, "InvalidAirlineCodes.txt") &&
           matches(state.reports.invalidModels, "InvalidAircraftCodes.txt") &&
           matches(state.reports.codeFixes, "Fixes.txt") &&
           matches(state.reports.invalidCfgFiles, "InvalidAircraftCfgFiles.txt") &&
           matches(state.reports.incompleteSections, "IncompleFltsimSections.txt") &&
           matches(state.reports.noFltsimFiles, "AircraftCfgWithNoFltsimSection.txt") &&
           matches(state.reports.conversionLines, "AirlineModelConversions.txt");
}

bool isConfigFile(const fs::path& path) {
    std::string name = path.filename().string();
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return static_cast<char>(std::tolower(c)); });
    return name == "aircraft.cfg" || name == "sim.cfg";
}

/// The floor: gives the bytes read.
std::size_t walkAndRead() {
    std::size_t bytes = 0;
    OrderedTasks<std::size_t> tasks(scanThreadCount());
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(installation().place)) {
        if (entry.is_regular_file() && isConfigFile(entry.path())) {
            tasks.add([path = entry.path()] {
                std::string content;
                readFile(path, content, largestTextFile);
                return content.size();
            });
        }
    }
    while (tasks.pending() > 0) {
        bytes += tasks.take();
    }
    return bytes;
}

void liveryScan(benchmark::State& state) {
    if (!resultIsRight()) {
        state.SkipWithError("the scan found or reported something else than was made");
        return;
    }
    std::size_t bytes = walkAndRead();
    BesideFloor times(state);
    for (auto _ : state) {
        ScanState scanState;
        const double time = wallSeconds([&] { scan(scanState); });
        times.add(time, wallSeconds([&] { bytes = walkAndRead(); }));
    }
    times.report("ms", 1e3);
    state.counters["files/s"] = static_cast<double>(installation().expected.files) *
                                static_cast<double>(state.iterations()) / times.work();
    state.counters["MB read"] = static_cast<double>(bytes) * 1e-6;
    state.counters["liveries"] = static_cast<double>(scannedLiveries.size());
}
BENCHMARK(liveryScan)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(3.0);

} // namespace

#include "matchtable.h"

#include "catalogue/liveryreports.h"
#include "catalogue/matching.h"
#include "catalogue/reference.h"
#include "catalogue/referencereader.h"
#include "catalogue/scannedliveries.h"
#include "catalogue/store.h"
#include "core/parameters.h"
#include "platform/paths.h"
#include "zipfile.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>

#include <fmt/format.h>

namespace kst::data {

namespace {

constexpr std::array<std::string_view, rungCount + 1> rungNames = {
    "none",           "own livery",   "airline, model",      "airline, similar model",
    "generic livery", "any of model", "any of similar model"};

struct Counts {
    std::array<int, rungCount + 1> rungs{};
    int unknownType = 0;
    std::map<std::string, int> unmatched; ///< by size class and type
};

void readTables(const std::string& store, const std::string& reference) {
    std::string text = readZip(reference);
    readReferenceText(text, reference, referenceTables());
    readLiveriesFrom(platform::pathFromUtf8(store));
    buildMatchTables(scannedLiveries);
}

/// Registration and type in a line that introduces an aircraft:
/// `aircraft,NUMBER,ICAO24,CALLSIGN,REGISTRATION,TYPE`.
bool readAircraft(const std::string& line, std::string& regcode, std::string& type) {
    constexpr std::size_t fieldCount = 6;
    const std::vector<std::string_view> fields = splitCommaList(line);
    if (fields.size() < fieldCount || fields.front() != "aircraft") {
        return false;
    }
    regcode = fields[4];
    type = fields[5];
    return true;
}

/// The aircraft as the program sees it when it enters.
AcBase aircraftOf(const std::string& regcode, const std::string& type) {
    AcBase ac;
    ac.regcode = regcode;
    ac.acType = gf_isValidModel(type) ? type : gf_regcodeModel(regcode);
    ac.airline = privateAirline;
    if (const auto known = gf_regcodeRecord(regcode)) {
        ac.airline = known->operatorCode.empty() ? known->airline : known->operatorCode;
        ac.acType = known->model.empty() ? ac.acType : known->model;
        ac.cargo = known->cargo;
    }
    ac.category = gf_category(ac.acType);
    return ac;
}

void countAircraft(const std::string& regcode, const std::string& type, Counts& counts) {
    AcBase ac = aircraftOf(regcode, type);
    if (ac.acType.empty()) {
        ++counts.unknownType;
        return;
    }
    const Rung rung = gf_matchLivery(ac);
    ++counts.rungs.at(static_cast<std::size_t>(rung));
    if (rung == Rung::None) {
        ++counts.unmatched[fmt::format("{} {}", categoryName(ac.category), ac.acType)];
    }
}

void countTracks(const std::string& path, Counts& counts) {
    std::ifstream file(platform::pathFromUtf8(path));
    if (!file) {
        throw std::runtime_error(path + ": cannot be read");
    }
    std::string line;
    std::string regcode;
    std::string type;
    std::set<std::pair<std::string, std::string>> seen;
    while (std::getline(file, line)) {
        if (readAircraft(line, regcode, type) && (regcode.empty() || seen.emplace(regcode, type).second)) {
            countAircraft(regcode, type, counts);
        }
    }
}

void printRow(std::string_view name, const Counts& counts) {
    std::cout << fmt::format("{:34}", name);
    for (std::size_t rung = 1; rung < counts.rungs.size(); ++rung) {
        std::cout << fmt::format("{:6}", counts.rungs[rung]);
    }
    std::cout << fmt::format("{:6}{:9}\n", counts.rungs[0], counts.unknownType);
}

} // namespace

void buildMatchTables(const std::vector<LiveryData>& liveries) {
    gf_buildAirlineIndex(liveries);
    gf_buildAirlineModelTitles();
    for (const LiveryData& livery : liveries) {
        if (!livery.regcode.empty()) {
            liveryTables().regcodeTitles.try_emplace(livery.regcode, gf_findTitle(livery.title));
        }
    }
    gf_buildModelTitles();
    gf_buildSimilarTables();
    // Only the small classes' models are wanted; no switch of the user's is to be touched.
    for (const Category category : {Category::Light, Category::Buzjets, Category::Rotorcraft}) {
        listFallbackModels(category);
    }
}

void printMatches(const std::string& store, const std::string& reference,
                  const std::vector<std::string>& tracks) {
    readTables(store, reference);
    RANDOM.set(false);
    std::cout << fmt::format("{:34}{:>6}{:>6}{:>6}{:>6}{:>6}{:>6}{:>6}{:>9}\n", "recording", 1, 2, 3, 4, 5, 6,
                             "none", "no type");
    Counts all;
    for (const std::string& path : tracks) {
        Counts counts;
        countTracks(path, counts);
        printRow(platform::utf8FromPath(platform::pathFromUtf8(path).stem()), counts);
        for (std::size_t rung = 0; rung < counts.rungs.size(); ++rung) {
            all.rungs[rung] += counts.rungs[rung];
        }
        all.unknownType += counts.unknownType;
        for (const auto& [what, count] : counts.unmatched) {
            all.unmatched[what] += count;
        }
    }
    printRow("all", all);
    for (std::size_t rung = 1; rung < rungNames.size(); ++rung) {
        std::cout << fmt::format("  {}: {}\n", rung, rungNames[rung]);
    }
    std::cout
        << "none: the size class takes no livery of another airline, and no own, similar or generic one is "
           "installed\nno type: neither the recording nor the reference database knows what it is\n";
    for (const auto& [what, count] : all.unmatched) {
        std::cout << fmt::format("  {} {}\n", what, count);
    }
}

} // namespace kst::data

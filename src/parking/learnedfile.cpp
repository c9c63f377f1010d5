// The learned file of an airport: laid over the airport's own stands when that is loaded, written when it is
// left and at each renewal.

#include "core/display.h"
#include "core/files.h"
#include "core/log.h"
#include "core/runstate.h"
#include "parking/airportfile.h"
#include "parking/airportsettings.h"
#include "parking/airportxml.h"
#include "parking/learning.h"
#include "parking/parkposxml.h"
#include "parking/stands.h"
#include "platform/paths.h"

#include <algorithm>
#include <bitset>
#include <fmt/format.h>
#include <functional>
#include <unordered_map>

namespace kst {

namespace {

/// A file that cannot be read is kept under another name, so that the next save does not overwrite it.
void setAside(const std::filesystem::path& path, std::string_view why) {
    std::filesystem::path aside = path;
    aside.replace_extension(".0.xml");
    std::error_code error;
    std::filesystem::rename(path, aside, error);
    const std::string text = platform::utf8FromPath(path);
    if (error) {
        logLine(
            fmt::format("{} found, but could not be loaded nor renamed: {}, {}", text, why, error.message()));
        return;
    }
    logLine(fmt::format("{} found, but could not be loaded, saved as *.0.xml: {}", text, why));
}

void warnOfOtherAirport(const pugi::xml_document& document, const AirportFile& airport) {
    const std::string learned = textAttribute(airportParameter(document, "airport_name"));
    if (learned != airport.airport_name) {
        showMessage(
            fmt::format("Warning: learned file airport name: \"{}\" differs from archived file airport "
                        "name: \"{}\"",
                        learned, airport.airport_name),
            true);
    }
}

/// The half hours of a stand's observations, those of one aircraft on one day taken together.
class KnownHours {
public:
    explicit KnownHours(const std::vector<ParkOption>& options) {
        for (const ParkOption& option : options) {
            hoursOf(option) |= option.hours;
        }
    }
    /// Adds the observation, unless one of its half hours is known.
    bool add(const ParkOption& option) {
        std::bitset<48>& hours = hoursOf(option);
        const bool isNew = (hours & option.hours).none();
        hours |= isNew ? option.hours : std::bitset<48>{};
        return isNew;
    }

private:
    std::bitset<48>& hoursOf(const ParkOption& option) {
        return hours_[fmt::format("{}\n{}\n{}\n{}\n{}", option.day, option.real, option.reg, option.airl,
                                  option.type)];
    }
    std::unordered_map<std::string, std::bitset<48>> hours_;
};

void mergeStand(const pugi::xml_node& learned, ParkPos& stand) {
    if (boolAttribute(learned.attribute("radius_change"))) {
        stand.radius = numberAttribute(learned.attribute("radius")) / metresPerNm;
        stand.radius_change = true;
    }
    if (boolAttribute(learned.attribute("cargo_change"))) {
        stand.cargo = boolAttribute(learned.attribute("cargo"));
        stand.cargo_change = true;
    }
    std::uint32_t seq = stand.options.empty() ? 1 : stand.options.back().seq + 1;
    KnownHours known(stand.options);
    for (const pugi::xml_node opt : learned.children("opt")) {
        ParkOption option = readParkOption(opt, false);
        if (known.add(option)) {
            option.seq = seq++;
            stand.options.push_back(std::move(option));
        }
    }
}

/// Merges the stands of an ordinary learned file.
class Merge {
public:
    Merge(std::vector<ParkPos>& stands, std::string path) : stands_(stands), path_(std::move(path)) {
        for (std::size_t i = 0; i < stands_.size(); ++i) {
            places_.emplace(stands_[i].id, i);
        }
    }

    void add(const pugi::xml_node& learned) {
        const std::string id = textAttribute(learned.attribute("id"));
        const auto place = places_.find(id);
        if (boolAttribute(learned.attribute("manual"))) {
            if (place != places_.end()) {
                logLine(fmt::format("manually created standid {} already exists in {}", id, path_));
            } else {
                addManual(learned, id);
            }
        } else if (place != places_.end()) {
            mergeStand(learned, stands_[place->second]);
        } else {
            logLine(fmt::format("learned stand {} in {} not found?", id, path_));
        }
    }

private:
    void addManual(const pugi::xml_node& learned, const std::string& id) {
        ParkPos stand = readParkPos(learned, false);
        if (!positionKnown(stand.position()) || stand.radius == 0.0) {
            logLine(fmt::format("manually created standid {} misses correct attributes in {}", id, path_));
            return;
        }
        stand.manual = true;
        places_.emplace(id, stands_.size());
        stands_.push_back(std::move(stand));
    }

    std::vector<ParkPos>& stands_;
    std::string path_;
    std::unordered_map<std::string, std::size_t> places_;
};

/// A handmade file stands in place of the airport's own.
void takeHandmade(const pugi::xml_document& document, AirportFile& airport) {
    airport.handmade = true;
    airport.stands.clear();
    readParkPositions(document, airport.stands, true);
    // The mark has no meaning here, but a save keeps it.
    auto stand = airport.stands.begin();
    for (const pugi::xml_node parkpos : document.child("parkpositions").children("parkpos")) {
        (stand++)->manual = boolAttribute(parkpos.attribute("manual"));
    }
    logIndented(fmt::format("{:24}: {}", "handmade", airportParameter(document, "handmade").value()));
}

bool isLearned(const ParkOption& option) {
    return !option.fromArchive;
}

/// The airport as its learned file holds it: of its stands only those that the airport's own file has
/// otherwise, with what was seen here. A handmade airport is kept whole.
AirportFile learnedPart(const AirportFile& airport) {
    AirportFile learned{.icao = airport.icao,
                        .airport_name = airport.airport_name,
                        .BGLpath = airport.BGLpath,
                        .publisher = airport.publisher,
                        .RT_traffic_week = airport.RT_traffic_week,
                        .quality = airport.quality,
                        .altitude = airport.altitude,
                        .stands = {},
                        .handmade = airport.handmade};
    for (const ParkPos& stand : airport.stands) {
        if (airport.handmade) {
            learned.stands.push_back(stand);
        } else if (stand.manual || stand.radius_change || stand.cargo_change ||
                   std::ranges::any_of(stand.options, isLearned)) {
            ParkPos& kept = learned.stands.emplace_back(stand);
            std::erase_if(kept.options, std::not_fn(isLearned));
        }
    }
    return learned;
}

} // namespace

void lf_readLearned(const std::filesystem::path& path, AirportFile& airport) {
    try {
        pugi::xml_document document;
        if (const std::string why = loadAirportXml(path, document); !why.empty()) {
            setAside(path, why);
            return;
        }
        const std::string text = platform::utf8FromPath(path);
        logLine(fmt::format("Read from learned airport file: \"{}\"", text));
        warnOfOtherAirport(document, airport);
        takeAirportSettings(document);
        if (airportParameter(document, "handmade")) {
            takeHandmade(document, airport);
            return;
        }
        airport.handmade = false;
        Merge merge(airport.stands, text);
        for (const pugi::xml_node learned : document.child("parkpositions").children("parkpos")) {
            merge.add(learned);
        }
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {}", "lf_readLearned", error.what()));
        throw;
    }
}

void lf_saveLearned() {
    AirportFile& airport = loadedAirport();
    if (airport.handmade) {
        airport.quality = gf_qualityFactor();
    }
    const AirportFile learned = learnedPart(airport);
    const std::string name = fmt::format("{}/{}.xml", learnedFolder(airport.publisher), airport.icao);
    const std::filesystem::path path = (folders::learned / platform::pathFromUtf8(name)).make_preferred();
    std::error_code ignored;
    std::filesystem::create_directories(path.parent_path(), ignored);
    const std::string text = platform::utf8FromPath(path);
    if (!gf_saveApf(learned, path, ApfMode::Learned)) {
        showMessage(fmt::format("{} saving \"{}\" did not succeed", timeOfDay(), text), true);
        return;
    }
    const std::uint32_t saved = standChanges();
    showMessage(fmt::format("{}{} \"{}\" saved with {} update{} {}", timeOfDay(),
                            airport.handmade ? " handmade" : "", text, saved, saved == 1 ? "" : "s",
                            parametersChanged ? "and one or more parameter changes" : ""),
                true);
    clearStandChanges();
    parametersChanged = false;
}

void lf_saveLearnedChanges() {
    if (airportLoaded() && (standChanges() > 0 || parametersChanged)) {
        lf_saveLearned();
    }
}

} // namespace kst

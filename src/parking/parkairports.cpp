#include "parking/parkairports.h"

#include "core/display.h"
#include "core/files.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "engine/parkinglink.h"
#include "engine/standselection.h"
#include "parking/population.h"
#include "parking/reservedstand.h"
#include "platform/paths.h"
#include "scanner/airportdirectory.h"

#include <algorithm>
#include <exception>
#include <fmt/format.h>
#include <optional>
#include <set>

namespace kst {

std::vector<ParkAirport> parkAirports;

namespace {

constexpr std::string_view fileName = "my_park_airports.txt";
constexpr std::size_t manyAirports = 3000;
constexpr double stoppedKt = 2.0;

std::filesystem::path filePath() {
    return folders::airports / fileName;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view{}
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// The fields of a line, without the blanks round them.
std::vector<std::string_view> fieldsOf(std::string_view line) {
    std::vector<std::string_view> fields;
    while (true) {
        const std::size_t comma = line.find(',');
        fields.push_back(trimmed(line.substr(0, comma)));
        if (comma == std::string_view::npos) {
            return fields;
        }
        line.remove_prefix(comma + 1);
    }
}

bool headIs(std::string_view code) {
    return !parkAirports.empty() && parkAirports.front().code == code;
}

/// Takes one line into the list. False when its airport is unknown.
bool readLine(std::string_view line, std::set<std::string, std::less<>>& codes) {
    const auto fields = fieldsOf(line);
    if (fields.size() > 2) {
        logAlert(fmt::format("{}:{} wrong syntax, skipped", fileName, line));
        return true;
    }
    const AirportEntry* const airport = gf_airportByCode(fields.front());
    if (airport == nullptr) {
        showMessage(fmt::format("airport {} is unknown", fields.front()), true);
        return false;
    }
    if (!codes.insert(airport->code).second) {
        logLine(fmt::format("{}:{} double, skipped", fileName, airport->code));
        return true;
    }
    parkAirports.push_back(
        {airport->code, std::string(fields.size() > 1 ? fields[1] : ""), airport->position(), 0.0});
    return true;
}

bool readListFile(std::set<std::string, std::less<>>& codes) {
    std::error_code ignored;
    if (!std::filesystem::exists(filePath(), ignored)) {
        logLine(platform::utf8FromPath(filePath()) + " not found");
        return true;
    }
    std::vector<std::string> lines;
    if (!gf_readExtTextFileToStringVector(filePath(), lines)) {
        return false;
    }
    bool allKnown = true;
    for (const std::string& line : lines) {
        if (!trimmed(line).empty()) {
            allKnown = readLine(line, codes) && allKnown;
        }
    }
    return allKnown;
}

/// The user's add-on airports are park airports without being listed.
void addThirdpartyAirports(std::set<std::string, std::less<>>& codes) {
    std::error_code error;
    std::set<std::string> found;
    for (std::filesystem::directory_iterator entry(folders::myThirdparty, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored;
        if (entry->is_regular_file(ignored)) {
            found.insert(platform::utf8FromPath(entry->path().stem()));
        }
    }
    std::size_t added = 0;
    for (const std::string& code : found) {
        const AirportEntry* const airport = gf_airportByCode(code);
        if (airport != nullptr && codes.insert(airport->code).second) {
            parkAirports.push_back({airport->code, {}, airport->position(), 0.0});
            ++added;
        }
    }
    if (added > 0) {
        logLine(fmt::format("{} park airport{} added from my_thirdparty folder(-s) ", added,
                            added > 1 ? "s" : ""));
    }
}

/// Puts the line of the list's head into the lines of the file.
void placeHeadLine(std::vector<std::string>& lines) {
    const ParkAirport& head = parkAirports.front();
    const std::string newLine = head.standId.empty() ? head.code : head.code + "," + head.standId;
    const auto same = std::ranges::find_if(
        lines, [&](const std::string& line) { return fieldsOf(line).front() == head.code; });
    if (same != lines.end()) {
        *same = newLine;
        logLine(fmt::format("{}:{},{} updated stand", fileName, head.code, head.standId));
    } else {
        lines.push_back(newLine);
        logLine(fmt::format("{}:{} new entry", fileName, newLine));
    }
}

/// After the Re-read button: the head's stand takes the place of the reserved one.
bool reservedStandMayChange(const ParkAirport& head) {
    const auto airport = parkAirport();
    return userGroundKnown && !parkingRunning && airport && airport->code == head.code &&
           lf_userStand(userData.position()).empty() && !head.standId.empty() &&
           head.standId != lf_reservedStand();
}

} // namespace

bool lf_readMyParkAirports() {
    parkAirports.clear();
    try {
        std::set<std::string, std::less<>> codes;
        const bool allKnown = readListFile(codes);
        if (!parkAirports.empty()) {
            logLine(fmt::format("{} park airport{} read from \"{}\"", parkAirports.size(),
                                parkAirports.size() > 1 ? "s" : "", fileName));
        }
        if (parkAirports.size() > manyAirports) {
            showMessage(
                fmt::format("Warning: There are a lot of airports ({}) in {}, that will cost Kestrane "
                            "much cpu time, and may give stutters",
                            parkAirports.size(), fileName),
                true);
        }
        addThirdpartyAirports(codes);
        return allKnown;
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {}", "lf_readMyParkAirports", error.what()));
        return false;
    }
}

void lf_saveParkAirports() {
    std::vector<std::string> lines;
    std::error_code ignored;
    if (std::filesystem::exists(filePath(), ignored)) {
        if (!gf_readExtTextFileToStringVector(filePath(), lines)) {
            return;
        }
        std::erase_if(lines, [](const std::string& line) { return trimmed(line).empty(); });
        placeHeadLine(lines);
    } else {
        const ParkAirport& head = parkAirports.front();
        lines.push_back(head.standId.empty() ? head.code : head.code + "," + head.standId);
        logLine(fmt::format("{} created with {}", fileName, lines.front()));
    }
    std::ranges::sort(lines);
    std::string content;
    for (const std::string& line : lines) {
        content += line;
        content += '\n';
    }
    if (!replaceFile(filePath(), content)) {
        showMessage(fmt::format("could not save to \"{}\"", platform::utf8FromPath(filePath())), true);
    }
}

void orderParkAirports(LatLon user) {
    for (ParkAirport& airport : parkAirports) {
        airport.distance = gf_distanceNm(user, airport.position);
    }
    const std::string destination = DESTINATION.get();
    if (destination.empty()) {
        std::ranges::stable_sort(parkAirports, {}, &ParkAirport::distance);
        return;
    }
    const auto found = std::ranges::find(parkAirports, destination, &ParkAirport::code);
    if (found != parkAirports.end()) {
        std::rotate(parkAirports.begin(), found, found + 1);
    }
}

std::optional<double> closestParkAirportNm() {
    std::optional<double> closest;
    for (const ParkAirport& airport : parkAirports) {
        const double distance = gf_distanceNm(userData.position(), airport.position);
        closest = std::min(closest.value_or(distance), distance);
    }
    return closest;
}

void lf_setDestination(std::string_view code, LatLon position) {
    showMessage(fmt::format("New destination: {}", code), true);
    const auto found = std::ranges::find(parkAirports, code, &ParkAirport::code);
    if (found != parkAirports.end()) {
        std::rotate(parkAirports.begin(), found, found + 1);
        return;
    }
    parkAirports.insert(parkAirports.begin(),
                        {std::string(code), {}, position, gf_distanceNm(userData.position(), position)});
    lf_saveParkAirports();
}

void noteUserStand(std::string_view code, LatLon position, const std::string& standId) {
    bool changed = false;
    if (!headIs(code)) {
        const auto found = std::ranges::find(parkAirports, code, &ParkAirport::code);
        if (found != parkAirports.end()) {
            std::rotate(parkAirports.begin(), found, found + 1);
        } else {
            parkAirports.insert(parkAirports.begin(), {std::string(code), {}, position, 0.0});
            changed = true;
        }
    }
    ParkAirport& head = parkAirports.front();
    if (!standId.empty() && head.standId != standId) {
        head.standId = standId;
        changed = true;
    }
    if (changed) {
        lf_saveParkAirports();
    }
}

void lf_storeUserStand() {
    const auto airport = parkAirport();
    if (!userGroundKnown || userData.groundSpeedKt > stoppedKt || !airport || !headIs(airport->code)) {
        return;
    }
    const std::string& stand = lf_userStand(userData.position());
    if (!stand.empty()) {
        noteUserStand(airport->code, airport->position, stand);
    }
}

bool lf_reReadParkAirports(bool applyReserved, std::string& message) {
    const bool allKnown = lf_readMyParkAirports();
    if (positionKnown(userData.position())) {
        orderParkAirports(userData.position());
    }
    if (!allKnown) {
        return false;
    }
    if (applyReserved && !parkAirports.empty() && reservedStandMayChange(parkAirports.front())) {
        const std::string& next = parkAirports.front().standId;
        message = fmt::format("reserved stand changed from \"{}\" to \"{}\"", lf_reservedStand(), next);
        changeReservedStand(next);
    }
    if (message.empty()) {
        message = "park airports and stands are okay";
    }
    return true;
}

void resetParkAirports() {
    parkAirports.clear();
}

} // namespace kst

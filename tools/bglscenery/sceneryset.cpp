#include "sceneryset.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <stdexcept>

namespace kst::scenery {

namespace {

namespace fs = std::filesystem;

constexpr double metresPerFoot = 0.3048;

Airport everyKindOfStand(bool extended) {
    Airport airport;
    airport.icao = extended ? "LSX2" : "LSX1";
    airport.extended = extended;
    airport.names = {"Every kind of stand"};
    airport.otherSubRecords = 2;
    airport.helipads = {{47.001, 8.001, 24.0F, 0.0F}, {47.002, 8.002, 18.0F, 181.5F}};
    for (unsigned code = 0; code < 64; ++code) {
        const double east = 8.0 + 0.001 * code;
        airport.parkings.push_back({code, code * 65, 1 + code % 11, 10.0F + static_cast<float>(code), 45.0F,
                                    47.0, east, std::vector<std::string>(code % 3, "SWR")});
    }
    return airport;
}

/// So many stands of one name and number, each larger than the one before.
Airport namesakes(unsigned count) {
    Airport airport;
    for (unsigned i = 0; i < count; ++i) {
        airport.parkings.push_back(
            {10, 12, 9, 20.0F + static_cast<float>(i), 90.0F, 47.0, 8.0 + 0.001 * i, {}});
    }
    return airport;
}

Airport badValues() {
    constexpr float noNumber = std::numeric_limits<float>::quiet_NaN();
    Airport airport;
    airport.elevationMm = 3100000;
    airport.names = {"One name", "Another name"};
    airport.helipads = {{47.0, 8.0, noNumber, 0.0F}, {47.0, 8.0, 20.0F, 0.0F}, {-91.0, 8.0, 20.0F, 0.0F}};
    unsigned number = 0;
    for (const float radius : {1.0F, 200.0F, -5.0F, noNumber}) {
        airport.parkings.push_back({10, ++number, 9, radius, 90.0F, 47.0, 8.0, {}});
    }
    airport.parkings.push_back({10, ++number, 9, 20.0F, noNumber, 47.0, 8.0, {}});
    airport.parkings.push_back({10, ++number, 0, 20.0F, 90.0F, 47.0, 8.0, {}});
    airport.parkings.push_back({10, ++number, 9, 20.0F, 90.0F, 47.0, 200.0, {}});
    airport.parkings.push_back({10, ++number, 9, 20.0F, 90.0F, 0.0005, 0.01, {}});
    return airport;
}

File with(Airport airport) {
    File file;
    file.airports = {std::move(airport)};
    return file;
}

template <class Member, class Value>
File broken(Member member, Value value) {
    if constexpr (std::is_same_v<Member, std::optional<Value> File::*>) {
        File file = with(everyKindOfStand(false));
        file.*member = value;
        return file;
    } else {
        Airport airport = everyKindOfStand(false);
        airport.*member = value;
        return with(std::move(airport));
    }
}

std::vector<std::string> linesOf(const fs::path& path) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error("cannot read " + path.string());
    }
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// The fields of a line; the last one takes the rest of it.
std::vector<std::string> fieldsOf(const std::string& line, std::size_t count) {
    std::vector<std::string> fields;
    std::size_t begin = 0;
    while (fields.size() + 1 < count) {
        const std::size_t comma = line.find(',', begin);
        if (comma == std::string::npos) {
            break;
        }
        fields.push_back(line.substr(begin, comma - begin));
        begin = comma + 1;
    }
    fields.push_back(line.substr(begin));
    fields.resize(count);
    return fields;
}

double number(const std::string& text) {
    double value = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/// The stand's name code and number from an identifier such as "A12" or "103".
void setName(Parking& parking, const std::string& id) {
    const std::size_t digits = id.find_first_of("0123456789");
    const bool hasLetter = digits == 1 && id[0] >= 'A' && id[0] <= 'Z';
    constexpr unsigned gateA = 12;
    constexpr unsigned noPrefix = 0;
    constexpr unsigned numbers = 4096;
    parking.nameCode = hasLetter ? gateA + static_cast<unsigned>(id[0] - 'A') : noPrefix;
    const std::string rest = digits == std::string::npos ? "0" : id.substr(digits);
    parking.number = static_cast<unsigned>(number(rest)) % numbers;
}

void addStand(Airport& airport, const std::vector<std::string>& fields) {
    const double lat = number(fields[1]);
    const double lon = number(fields[2]);
    const auto heading = static_cast<float>(number(fields[3]));
    const auto radius = static_cast<float>(number(fields[4]));
    if (fields[5] == "heli") {
        airport.helipads.push_back({lat, lon, 2.0F * radius, heading});
        return;
    }
    constexpr unsigned ramp = 2;
    constexpr unsigned cargo = 5;
    constexpr unsigned gate = 9;
    Parking parking;
    setName(parking, fields[0]);
    parking.type = fields[5] == "cargo" ? cargo : fields[5] == "ramp" ? ramp : gate;
    parking.radiusM = radius;
    parking.headingDeg = heading;
    parking.lat = lat;
    parking.lon = lon;
    airport.parkings.push_back(parking);
}

} // namespace

std::vector<NamedFile> featuresAndDefects() {
    constexpr std::uint32_t anywhere = 0x7FFFFFF0;
    File both = with(everyKindOfStand(false));
    both.airports.push_back(everyKindOfStand(true));
    File longSubsections = both;
    longSubsections.longSubsections = true;
    File truncated = both;
    truncated.keepBytes = 1500;
    File listedOften = both;
    listedOften.airportSections = 6;
    listedOften.recordsOffset = 500;
    Airport behind;
    behind.parkings = {Parking{}};
    behind.helipadsBehindParkings = {Helipad{}};
    return {
        {"both", both},
        {"longsubsections", longSubsections},
        {"truncated", truncated},
        {"listedoften", listedOften},
        {"helipadbehind", with(behind)},
        {"seven", with(namesakes(7))},
        {"eight", with(namesakes(8))},
        {"badvalues", with(badValues())},
        {"noairports", plainFile(3)},
        {"headersize", broken(&File::headerBytes, std::uint32_t{64})},
        {"millionsofsections", broken(&File::sectionCount, std::uint32_t{5000000})},
        {"subsectionanywhere", broken(&File::subsectionOffset, anywhere)},
        {"recordsanywhere", broken(&File::recordsOffset, anywhere)},
        {"recordsizezero", broken(&Airport::sizeBytes, std::uint32_t{0})},
        {"recordsizeanywhere", broken(&Airport::sizeBytes, anywhere)},
        {"subrecordsizezero", broken(&Airport::subRecordBytes, std::uint32_t{0})},
        {"subrecordsizefour", broken(&Airport::subRecordBytes, std::uint32_t{4})},
        {"namewithoutend", broken(&Airport::nameBytes, std::uint32_t{0xFFFF})},
        {"toomanyparkings", broken(&Airport::parkingCount, std::uint16_t{65535})},
        {"threeletters", broken(&Airport::encodedIcao, encodedIdentifier("LSX"))},
    };
}

std::vector<NamedFile> realAirports(const fs::path& facts) {
    std::map<std::string, Airport> airports;
    for (const fs::directory_entry& entry : fs::directory_iterator(facts / "stands")) {
        if (entry.path().extension() != ".csv") {
            continue;
        }
        Airport& airport = airports[entry.path().stem().string()];
        airport.icao = entry.path().stem().string();
        const std::vector<std::string> lines = linesOf(entry.path());
        for (std::size_t i = 1; i < lines.size(); ++i) {
            addStand(airport, fieldsOf(lines[i], 6));
        }
    }
    for (const std::string& line : linesOf(facts / "airports.csv")) {
        const std::vector<std::string> fields = fieldsOf(line, 6);
        if (const auto found = airports.find(fields[0]); found != airports.end()) {
            found->second.names = {fields[5]};
            found->second.elevationMm =
                static_cast<std::int32_t>(std::lround(number(fields[4]) * metresPerFoot * 1000.0));
        }
    }
    std::vector<NamedFile> files;
    for (auto& [icao, airport] : airports) {
        airport.extended = files.size() % 2 == 1;
        files.push_back({icao, with(airport)});
    }
    return files;
}

File plainFile(unsigned sections) {
    File file;
    file.otherSections = sections;
    return file;
}

} // namespace kst::scenery

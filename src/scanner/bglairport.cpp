#include "scanner/bglairport.h"

#include "core/log.h"
#include "core/runstate.h"
#include "scanner/standids.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <unordered_set>

#include <fmt/format.h>
#include <utf8.h>

namespace kst {

namespace {

constexpr double latitudePerUnit = 180.0 / (1U << 29);
constexpr double longitudePerUnit = 360.0 / (3.0 * (1U << 28));
constexpr double feetPerMetre = 3.2808399;
constexpr int lowestFt = -20;
constexpr int highestFt = 10000;
/// As many as a list of parkings can have; far beyond what any airport has.
constexpr std::size_t mostHelipads = 65535;

/// Sub-records, by their ids.
enum SubRecord : std::uint16_t {
    nameRecord = 25,
    helipadRecord = 38,
    parkingsRecord = 61,
    extendedParkingsRecord = 173
};

/// Words of the first sub-record after the airport's own.
constexpr std::size_t subRecordsAt = 14;
constexpr std::size_t extendedSubRecordsAt = 15;
constexpr std::size_t elevationAt = 5;

/// What is kept while one airport is read.
struct Reading {
    const BglWords& d;
    std::string_view path;
    const BglOutput& output;
    BglBudget& budget;
    AirportFile airport;
    StandIds ids;
    bool duplicates = false;
    std::unordered_set<std::uint64_t> helipads; ///< their coded positions

    template <class... Values>
    void report(fmt::format_string<Values...> text, Values&&... values) const {
        output.report(fmt::format(text, std::forward<Values>(values)...));
    }
};

LatLon positionAt(const BglWords& d, std::size_t longitudeWord) {
    return {90.0 - d.word(longitudeWord + 1) * latitudePerUnit,
            d.word(longitudeWord) * longitudePerUnit - 180.0};
}

bool isGood(LatLon position) {
    return std::abs(position.lat) <= 90.0 && std::abs(position.lon) <= 180.0 && positionKnown(position);
}

std::string positionText(LatLon position) {
    return fmt::format("{:.6f},{:.6f}", position.lat, position.lon);
}

/// Radians. North is written as a full turn, which tells it from a heading that is missing; one that is no
/// number counts as north.
double headingFrom(float degrees) {
    return degrees == 0.0F || !std::isfinite(degrees) ? 2.0 * pi : degrees * radPerDeg;
}

void reportRadius(const Reading& reading, float radius) {
    reading.report("skipped position with radius {:.1F} meters, in {}", radius, reading.path);
}

void lf_readHelipad(Reading& reading, std::size_t o) {
    constexpr std::size_t longitudeAt = 3;
    constexpr std::size_t widthAt = 7;
    constexpr std::size_t headingAt = 8;
    const BglWords& d = reading.d;
    const LatLon position = positionAt(d, o + longitudeAt);
    if (!isGood(position)) {
        reading.report("lat/lon helipad incorrect (skipped): {}", positionText(position));
        return;
    }
    const std::uint64_t coded = std::uint64_t{d.word(o + longitudeAt)} << 32 | d.word(o + longitudeAt + 1);
    if (!reading.helipads.insert(coded).second) {
        reading.report("double helipad {} (skipped) {}", reading.airport.airport_name,
                       positionText(position));
        return;
    }
    const double radius = d.real(o + widthAt) * 0.5;
    if (!std::isfinite(radius)) {
        reportRadius(reading, static_cast<float>(radius));
        return;
    }
    if (reading.airport.stands.size() >= mostHelipads) {
        throw std::runtime_error(fmt::format("more than {} helipads", mostHelipads));
    }
    ParkPos stand;
    // All stands so far are helipads: an airport ends with its parkings.
    stand.id = fmt::format("helipad{}", reading.airport.stands.size() + 1);
    stand.latitude = position.lat;
    stand.longitude = position.lon;
    stand.radius = radius * nmPerMetre;
    stand.heading = headingFrom(d.real(o + headingAt));
    stand.heli = true;
    reading.airport.stands.push_back(std::move(stand));
}

/// One parking, as its first words say it.
struct Parking {
    static constexpr std::size_t words = 9;
    static constexpr unsigned firstType = 1;
    static constexpr unsigned lastType = 11;
    static constexpr unsigned cargoType = 5;
    static constexpr unsigned firstTypeOffRamp = 8;
    static constexpr float tooSmallM = 1.0F;
    static constexpr float tooLargeM = 200.0F;

    unsigned nameCode, type, number, airlineCodes;
    float radiusM, headingDeg;

    Parking(const BglWords& d, std::size_t o)
        : nameCode(d.word(o) & 0x3F), type(d.word(o) >> 8 & 0xF), number(d.word(o) >> 12 & 0xFFF),
          airlineCodes(d.word(o) >> 24), radiusM(d.real(o + 1)), headingDeg(d.real(o + 2)) {}
};

void readParking(Reading& reading, const Parking& parking, std::size_t o) {
    constexpr std::size_t longitudeAt = 7;
    if (!(parking.radiusM > Parking::tooSmallM && parking.radiusM < Parking::tooLargeM)) {
        reportRadius(reading, parking.radiusM);
        return;
    }
    if (parking.type < Parking::firstType || parking.type > Parking::lastType) {
        return;
    }
    const LatLon position = positionAt(reading.d, o + longitudeAt);
    if (!isGood(position)) {
        reading.report("lat/lon: {}, incorrect (skipped) ", positionText(position));
        return;
    }
    auto id = reading.ids.take(parking.nameCode, parking.number);
    reading.duplicates |= !id || id->suffixed;
    if (!id) {
        const std::string plain = lf_standPrefix(parking.nameCode) + std::to_string(parking.number);
        reading.report("{}Warning more then 6 the same ids {}, in {}", "===> ", plain, reading.path);
        return;
    }
    ParkPos stand;
    stand.id = std::move(id->text);
    stand.suffixed = id->suffixed;
    stand.latitude = position.lat;
    stand.longitude = position.lon;
    stand.radius = parking.radiusM * nmPerMetre;
    stand.heading = headingFrom(parking.headingDeg);
    stand.cargo = parking.type == Parking::cargoType;
    stand.ramp = parking.type < Parking::firstTypeOffRamp;
    reading.airport.stands.push_back(std::move(stand));
}

void lf_readParkings(Reading& reading, std::size_t o, bool extended) {
    const BglWords& d = reading.d;
    const std::size_t count = d.word(o + 1) >> 16;
    const std::size_t words = Parking::words + (extended ? 1 : 0);
    // No more than the rest of the file can hold, whatever the count says.
    reading.airport.stands.reserve(reading.airport.stands.size() + std::min(count, d.size() / words));
    std::size_t at = o + 2;
    for (std::size_t i = 0; i < count; ++i) {
        reading.budget.spend();
        const Parking parking(d, at);
        readParking(reading, parking, at);
        at += words + parking.airlineCodes;
    }
}

int altitudeFt(std::int32_t elevationMm) {
    const double feet = std::round(elevationMm * feetPerMetre / 1000.0);
    return feet < lowestFt || feet > highestFt ? 0 : static_cast<int>(feet);
}

/// A second name that differs makes both doubtful: the airport then has none.
void takeName(std::string& known, const std::string& name) {
    if (known.empty()) {
        known = name;
    } else if (known != name) {
        known.clear();
    }
}

std::string utf8FromLatin1(std::string_view text) {
    std::string result;
    for (const char character : text) {
        utf8::append(static_cast<char32_t>(static_cast<unsigned char>(character)), result);
    }
    return result;
}

} // namespace

void BglBudget::spend() {
    if (left_ == 0) {
        throw std::runtime_error("its records overlap without end");
    }
    --left_;
}

std::optional<std::string> lf_decodeIdentifierOrRegionCode(std::uint32_t value) {
    constexpr std::uint32_t base = 38;
    constexpr unsigned flagBits = 5;
    constexpr std::uint32_t digitZero = 2;
    constexpr std::uint32_t digitNine = 11;
    constexpr std::uint32_t zeroOffset = '0' - digitZero;
    constexpr std::uint32_t letterOffset = 'A' - (digitNine + 1);
    constexpr std::size_t length = 4;
    std::string text;
    for (std::uint32_t rest = value >> flagBits; rest > 0; rest /= base) {
        const std::uint32_t digit = rest % base;
        if (digit == 0) {
            return std::nullopt;
        }
        const bool isNumber = digit >= digitZero && digit <= digitNine;
        text.insert(text.begin(), static_cast<char>(digit + (isNumber ? zeroOffset : letterOffset)));
    }
    return text.size() == length ? std::optional(text) : std::nullopt;
}

std::string lf_decodeAirportNAME(const BglWords& d, std::size_t o3) {
    constexpr int headerBytes = 6;
    constexpr int longest = 45;
    constexpr int bytesInHeaderWord = 2;
    constexpr int bytesPerWord = BglWords::bytesPerWord;
    const int length = std::min(static_cast<int>(d.recordSize(o3) & 0xFFFF) - headerBytes, longest);
    const int wholeWords = (length - bytesInHeaderWord) / bytesPerWord;
    const std::size_t first = o3 + 2;
    const std::size_t last = first + static_cast<std::size_t>(std::max(wholeWords, 0));
    if (last >= d.size()) {
        logLine(fmt::format("! o3: {} of d out of range nrDWORDS: {}", o3, d.size()));
        return {};
    }
    std::string name;
    const auto take = [&](std::size_t word, unsigned from, unsigned to) {
        for (unsigned byte = from; byte < to; ++byte) {
            name.push_back(static_cast<char>(d.byteOf(word, byte)));
        }
    };
    take(first - 1, bytesInHeaderWord, bytesPerWord);
    for (std::size_t word = first; word < last; ++word) {
        take(word, 0, bytesPerWord);
    }
    // Never more than two: a name of 45 characters loses its last one.
    const int rest = length - bytesPerWord * wholeWords - bytesInHeaderWord;
    take(last, 0, static_cast<unsigned>(std::clamp(rest, 0, 2)));
    name.erase(name.find_last_not_of('\0') + 1);
    return utf8::is_valid(name) ? name : utf8FromLatin1(name);
}

void lf_readBglAirport(const BglWords& d, const BglRecord& record, const std::string& icao,
                       std::string_view path, const BglOutput& output, BglBudget& budget) {
    Reading reading{d, path, output, budget, {}, {}, false, {}};
    AirportFile& airport = reading.airport;
    airport.icao = icao;
    output.begun(airport);
    airport.altitude = altitudeFt(d.signedWord(record.o + elevationAt));

    const std::uint16_t parkings = record.extended ? extendedParkingsRecord : parkingsRecord;
    const std::size_t end = record.o + record.sizeInWords;
    std::size_t p = record.o + (record.extended ? extendedSubRecordsAt : subRecordsAt);
    while (p < end) {
        budget.spend();
        const std::uint16_t id = d.recordId(p);
        if (id == nameRecord) {
            takeName(airport.airport_name, lf_decodeAirportNAME(d, p));
        } else if (id == helipadRecord) {
            lf_readHelipad(reading, p);
        } else if (id == parkings) {
            lf_readParkings(reading, p, record.extended);
            break;
        }
        const std::size_t words = d.recordSize(p) / BglWords::bytesPerWord;
        if (words == 0) {
            break;
        }
        p += words;
    }
    if (reading.duplicates) {
        lf_settleDuplicateIds(airport.stands);
    }
    output.done(airport);
}

} // namespace kst

#include "bglwriter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <stdexcept>

namespace kst::scenery {

namespace {

constexpr std::uint32_t magic = 0x19920201;
constexpr std::uint32_t headerSize = 56;
constexpr std::uint32_t sectionSize = 20;
constexpr std::uint32_t airportSectionType = 3;

class Bytes {
public:
    void u16(std::uint32_t value) { number(value, 2); }
    void u32(std::uint32_t value) { number(value, 4); }
    void f32(float value) { u32(std::bit_cast<std::uint32_t>(value)); }
    void zeros(std::size_t count) { text_.append(count, '\0'); }
    /// The text, cut or filled with NUL bytes to this length.
    void padded(const std::string& text, std::size_t length) {
        std::string copy = text;
        copy.resize(length, '\0');
        text_ += copy;
    }
    void append(const std::string& bytes) { text_ += bytes; }
    void longitude(double degrees) { angle((degrees + 180.0) * (3.0 * 268435456.0) / 360.0); }
    void latitude(double degrees) { angle((90.0 - degrees) * 536870912.0 / 180.0); }
    std::uint32_t size() const { return static_cast<std::uint32_t>(text_.size()); }
    std::string take() { return std::move(text_); }

private:
    void number(std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) {
            text_.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
        }
    }
    void angle(double units) { u32(static_cast<std::uint32_t>(std::llround(units))); }

    std::string text_;
};

/// A record or sub-record: its header in front of what it holds.
std::string record(std::uint32_t id, const std::string& content, std::optional<std::uint32_t> saidSize = {}) {
    constexpr std::size_t recordHeader = 6;
    Bytes bytes;
    bytes.u16(id);
    bytes.u32(saidSize.value_or(static_cast<std::uint32_t>(recordHeader + content.size())));
    bytes.append(content);
    return bytes.take();
}

std::string nameRecord(const std::string& name, const Airport& airport) {
    constexpr std::size_t inHeaderWord = 2;
    const std::size_t words = (std::max(name.size(), inHeaderWord) - inHeaderWord + 3) / 4;
    Bytes bytes;
    bytes.padded(name, inHeaderWord + 4 * words);
    return record(25, bytes.take(), airport.nameBytes);
}

std::string helipadRecord(const Helipad& helipad) {
    Bytes bytes;
    bytes.zeros(6);
    bytes.longitude(helipad.lon);
    bytes.latitude(helipad.lat);
    bytes.zeros(4);
    bytes.f32(helipad.widthM);
    bytes.f32(helipad.widthM);
    bytes.f32(helipad.headingDeg);
    return record(38, bytes.take());
}

std::string parkingsRecord(const Airport& airport) {
    constexpr std::size_t pushbackRadii = 16;
    Bytes bytes;
    bytes.u16(airport.parkingCount.value_or(static_cast<std::uint16_t>(airport.parkings.size())));
    for (const Parking& parking : airport.parkings) {
        bytes.u32(parking.nameCode | parking.type << 8 | parking.number << 12 |
                  static_cast<std::uint32_t>(parking.airlines.size()) << 24);
        bytes.f32(parking.radiusM);
        bytes.f32(parking.headingDeg);
        bytes.zeros(pushbackRadii);
        bytes.longitude(parking.lon);
        bytes.latitude(parking.lat);
        if (airport.extended) {
            bytes.zeros(4);
        }
        for (const std::string& airline : parking.airlines) {
            bytes.padded(airline, 4);
        }
    }
    return record(airport.extended ? 173 : 61, bytes.take());
}

std::string airportRecord(const Airport& airport) {
    constexpr std::uint32_t runway = 4;
    constexpr std::size_t runwayBytes = 50;
    Bytes bytes;
    bytes.zeros(6);
    bytes.longitude(8.0);
    bytes.latitude(47.0);
    bytes.u32(static_cast<std::uint32_t>(airport.elevationMm));
    bytes.zeros(16);
    bytes.u32(airport.encodedIcao.value_or(encodedIdentifier(airport.icao)));
    bytes.zeros(airport.extended ? 16 : 12);
    for (unsigned i = 0; i < airport.otherSubRecords; ++i) {
        bytes.append(record(runway, std::string(runwayBytes, '\x11'), airport.subRecordBytes));
    }
    for (const std::string& name : airport.names) {
        bytes.append(nameRecord(name, airport));
    }
    for (const Helipad& helipad : airport.helipads) {
        bytes.append(helipadRecord(helipad));
    }
    if (!airport.parkings.empty() || airport.parkingCount) {
        bytes.append(parkingsRecord(airport));
    }
    for (const Helipad& helipad : airport.helipadsBehindParkings) {
        bytes.append(helipadRecord(helipad));
    }
    return record(airport.extended ? 171 : 60, bytes.take(), airport.sizeBytes);
}

/// One section of the file: its type and its records, which one subsection names.
struct Section {
    std::uint32_t type;
    std::string records;
    std::uint32_t recordCount;
};

std::vector<Section> sectionsOf(const File& file) {
    constexpr std::uint32_t firstOtherType = 0x13;
    std::vector<Section> sections;
    for (unsigned i = 0; i < file.otherSections; ++i) {
        sections.push_back({firstOtherType + i, record(0x22, std::string(34, '\x22')), 1});
    }
    if (!file.airports.empty()) {
        Bytes records;
        for (const Airport& airport : file.airports) {
            records.append(airportRecord(airport));
        }
        const Section airports{airportSectionType, records.take(),
                               static_cast<std::uint32_t>(file.airports.size())};
        sections.insert(sections.end(), file.airportSections, airports);
    }
    return sections;
}

} // namespace

std::uint32_t encodedIdentifier(const std::string& icao) {
    constexpr std::uint32_t base = 38;
    constexpr unsigned flagBits = 5;
    std::uint32_t value = 0;
    for (const char character : icao) {
        std::uint32_t digit = 0;
        if (character >= '0' && character <= '9') {
            digit = static_cast<std::uint32_t>(character - '0') + 2;
        } else if (character >= 'A' && character <= 'Z') {
            digit = static_cast<std::uint32_t>(character - 'A') + 12;
        } else if (character != ' ') {
            throw std::invalid_argument("an identifier has letters, digits and blanks: " + icao);
        }
        value = value * base + digit;
    }
    return value << flagBits | 1;
}

std::string bglBytes(const File& file) {
    const std::vector<Section> sections = sectionsOf(file);
    const auto count = static_cast<std::uint32_t>(sections.size());
    const std::uint32_t entrySize = file.longSubsections ? 20 : 16;
    const std::uint32_t entriesAt = headerSize + count * sectionSize;

    Bytes bytes;
    bytes.u32(magic);
    bytes.u32(file.headerBytes.value_or(headerSize));
    bytes.zeros(12);
    bytes.u32(file.sectionCount.value_or(count));
    bytes.zeros(headerSize - bytes.size());

    for (std::uint32_t i = 0; i < count; ++i) {
        const bool isAirports = sections[i].type == airportSectionType;
        const std::uint32_t entry = entriesAt + i * entrySize;
        bytes.u32(sections[i].type);
        bytes.u32(file.longSubsections ? 0x10001 : 1);
        bytes.u32(1);
        bytes.u32(isAirports ? file.subsectionOffset.value_or(entry) : entry);
        bytes.u32(entrySize);
    }
    std::uint32_t recordsAt = entriesAt + count * entrySize;
    for (const Section& section : sections) {
        const bool isAirports = section.type == airportSectionType;
        bytes.u32(0);
        bytes.zeros(entrySize - 16);
        bytes.u32(section.recordCount);
        bytes.u32(isAirports ? file.recordsOffset.value_or(recordsAt) : recordsAt);
        bytes.u32(static_cast<std::uint32_t>(section.records.size()));
        recordsAt += static_cast<std::uint32_t>(section.records.size());
    }
    for (const Section& section : sections) {
        bytes.append(section.records);
    }
    std::string text = bytes.take();
    if (file.keepBytes) {
        text.resize(std::min(text.size(), *file.keepBytes));
    }
    return text;
}

} // namespace kst::scenery

#pragma once

// Writes BGL files with airports, sound ones and such as no sound compiler makes. What is described here is
// what stands in the file, so that a reader can be held against it. Shares no code with the program's reader.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kst::scenery {

struct Parking {
    unsigned nameCode = 10; ///< 0 to 63; 10 is a gate, 12 gate A
    unsigned number = 1;    ///< 0 to 4095
    unsigned type = 9;      ///< 0 to 15; 5 is cargo, below 8 a ramp, 8 to 10 gates
    float radiusM = 20.0F;
    float headingDeg = 90.0F;
    double lat = 47.0;
    double lon = 8.0;
    std::vector<std::string> airlines{}; ///< at most 255 codes of up to 4 characters
};

struct Helipad {
    double lat = 47.0;
    double lon = 8.0;
    float widthM = 20.0F;
    float headingDeg = 90.0F;
};

struct Airport {
    std::string icao = "LSXX";
    bool extended = false; ///< the later of the two record forms
    std::int32_t elevationMm = 400000;
    std::vector<std::string> names; ///< one name sub-record each, padded to whole words
    unsigned otherSubRecords = 0;   ///< sub-records that a reader of stands passes over, such as runways
    std::vector<Helipad> helipads;
    std::vector<Parking> parkings; ///< no list when empty
    std::vector<Helipad> helipadsBehindParkings;

    // What a broken file says instead of the truth.
    std::optional<std::uint32_t> encodedIcao, sizeBytes, subRecordBytes, nameBytes;
    std::optional<std::uint16_t> parkingCount;
};

struct File {
    std::vector<Airport> airports; ///< all in one section; no such section when empty
    unsigned otherSections = 2;    ///< sections in front of the airports'
    bool longSubsections = false;  ///< subsection entries of 20 bytes in place of 16
    unsigned airportSections = 1;  ///< sections with these same airports

    // What a broken file says instead of the truth.
    std::optional<std::uint32_t> headerBytes, sectionCount, subsectionOffset, recordsOffset;
    std::optional<std::size_t> keepBytes; ///< truncated behind so many bytes
};

/// The identifier as BGL files code it: base 38, above five bits of flags. Letters must be upper case.
std::uint32_t encodedIdentifier(const std::string& icao);

/// The file's bytes.
std::string bglBytes(const File& file);

} // namespace kst::scenery

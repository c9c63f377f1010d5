#pragma once

// The airport records of a BGL file: identifier, name, elevation, helipads and parkings. The layout is in
// docs/formats.md. All state belongs to the call, so any number of threads may decode at a time.

#include "model/airportfile.h"
#include "scanner/bglwords.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kst {

/// Where decoded airports go, in the order of the file. All are set.
struct BglOutput {
    /// An airport of which only `icao` is known yet.
    std::function<void(AirportFile& airport)> begun;
    /// The same airport with all that the file says of it.
    std::function<void(AirportFile& airport)> done;
    /// A line for the report: what was left out and why.
    std::function<void(std::string_view line)> report;
};

/// How many records a file may make the reader look at. A sound file names each of its words once or twice;
/// one whose records overlap ever again would keep the reader busy without end.
class BglBudget {
public:
    explicit BglBudget(std::size_t words) : left_(words * perWord + least) {}
    /// Counts one record. Throws std::runtime_error when the file has used up what it may.
    void spend();

private:
    static constexpr std::size_t perWord = 16;
    static constexpr std::size_t least = 4096;
    std::size_t left_;
};

/// The text of an encoded airport identifier; nothing unless it has four characters without a blank.
std::optional<std::string> lf_decodeIdentifierOrRegionCode(std::uint32_t value);

/// The name held by the sub-record at word `o3`, at most 44 characters, without NUL characters at its end.
/// UTF-8; bytes that are not are read as Latin-1. Empty, with a line in the log, when it would begin or end
/// beyond the file.
std::string lf_decodeAirportNAME(const BglWords& d, std::size_t o3);

/// One airport record.
struct BglRecord {
    std::size_t o = 0; ///< its word in the file
    std::size_t sizeInWords = 0;
    bool extended = false; ///< the later form, with other places and ids
};

/// Decodes the airport record and hands it on. `path` is for the report. Throws std::out_of_range where the
/// record leads beyond the file, std::runtime_error when it is beyond reason.
void lf_readBglAirport(const BglWords& d, const BglRecord& record, const std::string& icao,
                       std::string_view path, const BglOutput& output, BglBudget& budget);

} // namespace kst

#pragma once

// Reader of recorded tracks (docs/formats.md, "Recorded tracks").

#include "model/units.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace kst::standin {

struct RecordedAircraft {
    std::uint32_t hexid = 0;
    std::string callsign;
    std::string registration;
    std::string type;
};

struct RecordedPoint {
    double at = 0.0;          ///< seconds after the file's start
    std::size_t aircraft = 0; ///< index into `RecordedTracks::aircraft`
    LatLon position;
    std::optional<double> altFt;
    std::optional<double> vsFpm;
    std::optional<double> trackDeg;
    std::optional<double> gsKt;
    std::optional<double> headingDeg;
    std::optional<bool> onGround;
};

struct RecordedTracks {
    double startedAt = 0.0; ///< seconds since 1970
    std::vector<RecordedAircraft> aircraft;
    std::vector<RecordedPoint> points; ///< in order of time
    std::size_t unreadableLines = 0;
};

/// Reads a file of tracks. Lines that cannot be read, positions off the globe and points of unknown aircraft
/// are counted and skipped.
RecordedTracks readTracks(std::istream& in);

/// As above; throws std::runtime_error when the file cannot be opened or holds no point.
RecordedTracks readTrackFile(const std::filesystem::path& path);

/// Works out what a recording lacks: speed and track from the neighbouring positions, the vertical speed from
/// the neighbouring altitudes, the altitude and the ground flag from the nearest point that has them.
void completeTracks(RecordedTracks& tracks);

} // namespace kst::standin

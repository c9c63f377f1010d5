#pragma once

// Where the traffic of the stand-in comes from: recorded flights or generated ones. A source knows neither
// sockets nor clocks. Given a time it yields the reports that are due, so that a test can drive it in virtual
// time.

#include "model/units.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kst::standin {

/// What one target says of itself at one moment.
struct TrafficReport {
    double at = 0.0;          ///< seconds after the source's beginning
    std::uint32_t hexid = 0;  ///< transponder address, above 10000
    std::string callsign;     ///< empty when unknown, as are the next four
    std::string registration; ///
    std::string type;         ///< ICAO designator
    std::string origin;
    std::string destination;
    std::string category = "A0"; ///< emitter category, two characters; "A0" when unknown
    LatLon position;
    double altFt = 0.0; ///< pressure altitude; 0 on the ground
    double vsFpm = 0.0;
    double gsKt = 0.0;
    std::optional<double> trackDeg;   ///< degrees true, 0 to 360
    std::optional<double> headingDeg; ///< degrees true, 0 to 360
    std::optional<double> rollDeg;    ///< right wing down positive
    std::optional<double> tasKt;
    bool onGround = false;
};

/// One source of traffic. One thread.
class TrafficSource {
public:
    virtual ~TrafficSource() = default;
    /// Appends to `reports` those with `at` up to `seconds` that were not given yet, in order of `at`.
    virtual void takeDue(double seconds, std::vector<TrafficReport>& reports) = 0;
    /// False when nothing will come any more.
    virtual bool hasMore() const = 0;
};

/// One file of recorded tracks (docs/formats.md, "Recorded tracks").
struct RecordedFile {
    std::filesystem::path path;
    double startSeconds = 0.0; ///< what was recorded before this many seconds into the file is left out
};

struct RecordedOptions {
    std::vector<RecordedFile> files;
    double speed = 1.0;            ///< how many recorded seconds pass in one second; above 0
    bool loop = false;             ///< begin anew after the end, with `loopPauseSeconds` of silence between
    double loopPauseSeconds = 120; ///< long enough that nobody takes the first flights for the last ones
    double longestGapSeconds =
        0; ///< a longer time in which no target speaks is shortened to this; 0 keeps it
};

/// Plays recorded tracks; the first point of each file (from its start on) is at time 0. Speed, track and
/// vertical speed that the recording lacks are worked out from the neighbouring points. Throws
/// std::runtime_error when a file cannot be opened or holds no point.
std::unique_ptr<TrafficSource> recordedTraffic(const RecordedOptions& options);

struct GeneratorOptions {
    int aircraft = 100; ///< how many are in the air at any time
    LatLon centre;      ///< arrivals and departures use an airfield here
    double radiusNm = 80.0;
    std::uint32_t seed = 1;
};

/// Draws routes round the centre (overflights, arrivals, departures) and flies them with bounded turn, bank,
/// climb and acceleration. The same options give the same reports. Never ends.
std::unique_ptr<TrafficSource> generatedTraffic(const GeneratorOptions& options);

/// The datagram of one report. `timestamp` is the feed's clock, seconds since 1970.
std::string trafficLine(const TrafficReport& report, double timestamp);

/// The weather datagram round a station.
std::string weatherLine(const std::string& station, int qnhHpa, double timestamp);

} // namespace kst::standin

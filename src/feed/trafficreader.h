#pragma once

// The Traffic Reader: the filter that decides which targets of the feed the program ever sees. One line of
// text per target and datagram comes in, one FeedMessage per accepted line goes to the worker.
//
// A line is cut at its commas; text behind the last comma is a field if it is not empty. At least 29 fields:
//
//   1 identity, decimal digits       9 callsign or "null"         15 source, "F" is tested
//   2 latitude, degrees             10 type, or "null", "0"       17 message kind, "adsb_icao" is tested
//   3 longitude, degrees            11 registration or "null"     20 true airspeed, knots, -1 unknown
//   4 altitude, feet                12 origin or "null"           23 roll, degrees, -1 or 0 unknown
//   5 vertical speed, ft/min        13 destination or "null"      25 true heading, degrees, 0 to 360
//   7 track, degrees, or empty      14 timestamp, seconds         28 category
//   8 ground speed, knots
//
// Most lines end at an early test, so a line is cut only as far as the next test needs.

#include "feed/feedreader.h"
#include "feed/rangetest.h"
#include "model/feedmessage.h"
#include "model/reasons.h"
#include "model/units.h"

#include <atomic>
#include <cstddef>
#include <limits>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kst {

class TrafficReader : public FeedReader {
public:
    /// A line with fewer fields is malformed.
    static constexpr std::size_t fieldsNeeded = 29;

    TrafficReader();

    /// Filters the line and queues what passes. Each line that is lost counts under its reason; a malformed
    /// one is logged. Traffic Reader thread.
    void processLine() override;
    void stopped() override;

    void setReferencePosition(LatLon position);
    void setFieldElevation(std::optional<double> elevationFt);
    void collectSeen(bool on);
    std::vector<std::pair<LatLon, std::string>> copySeen() const;
    /// Puts everything but the counters back. Any thread.
    void reset();

private:
    /// What the tests have found out about the line's target; its texts lie in the line.
    struct Target;

    struct ByPosition {
        bool operator()(LatLon a, LatLon b) const {
            return std::pair(a.lat, a.lon) < std::pair(b.lat, b.lon);
        }
    };

    /// A pair that one thread writes and another reads. A torn pair costs one wrong range test at most.
    struct SharedPosition {
        std::atomic<double> lat{0.0};
        std::atomic<double> lon{0.0};
    };

    Reason readLine(std::string_view text);
    Reason readPlace(Target& target);
    Reason readKind(Target& target);
    Reason readHeading(Target& target);
    Reason readIdentity(Target& target);
    Reason readHeight(Target& target);
    Reason readMotion(Target& target);
    Reason readRoute(Target& target);
    static Reason queue(const Target& target);

    void beginCutting(std::string_view text);
    std::string_view field(std::size_t index);
    void noteSeen(LatLon position, std::string_view callsign);
    double heightAboveField(double altitudeFt) const;

    static constexpr double noElevation = std::numeric_limits<double>::quiet_NaN();

    mutable std::mutex seenLock;
    std::map<LatLon, std::string, ByPosition> seen; ///< under seenLock
    std::vector<std::string_view> fields;           ///< of the present line, as far as it is cut
    std::string_view uncut;                         ///< the rest of the line
    SharedPosition referencePosition;
    std::atomic<double> fieldElevation{noElevation}; ///< feet, NaN while it is not known
    std::atomic<bool> collecting{false};
    RangeTest rangeTest;
};

/// The one Traffic Reader of the process.
extern TrafficReader trafficReader;

} // namespace kst

#pragma once

// The engine's surroundings for one test: every table and queue empty, parameters at their defaults, a small
// reference database, a livery for each of its types, and virtual time.

#include "core/geodesy.h"
#include "model/aircraft.h"
#include "model/feedmessage.h"
#include "model/parkpos.h"
#include "model/simobjects.h"
#include "support/virtualtime.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace kst::test {

/// The park airport of the tests: LSZH, 1416 ft. No airport is set until `openAirport`.
inline constexpr LatLon airportPlace{47.4647, 8.5492};
inline constexpr double airportElevationFt = 1416.0;

/// One message of the feed in the units of the engine; what a test does not name has a plausible value.
struct Sighting {
    std::uint32_t hexid = 20001;
    std::string callsign = "SWR100";
    std::string type = "A320";
    std::string registration{};
    std::string origin{};
    std::string destination{};
    LatLon position{47.6, 8.3};
    double altFt = 6000.0;
    double gsKt = 250.0;
    double trackDeg = 90.0;
    double vsFpm = 0.0;
    double timeS = 1000.0; ///< feed time
    bool airborne = true;
};

/// The message as the Traffic Reader queues it now: due 30 seconds ahead.
FeedMessage feedMessage(const Sighting& sighting);

/// A point of a track in flight, and one on the ground.
TrackPoint airPoint(LatLon position, double altFt, double gsKt, std::int32_t dueTick);
TrackPoint groundPoint(LatLon position, double gsKt, std::int32_t dueTick);

/// The point `metres` from `from` on a bearing in degrees.
LatLon offset(LatLon from, double bearingDeg, double metres);

/// One at a time.
class EngineWorld {
public:
    EngineWorld();
    ~EngineWorld();
    EngineWorld(const EngineWorld&) = delete;
    EngineWorld& operator=(const EngineWorld&) = delete;

    VirtualTime time;

    /// Sets the engine's clock.
    void setTick(std::int32_t tick);
    /// Where the user is, heading in degrees.
    void placeUser(LatLon position, bool onGround, double altitudeFt = 0.0, double headingDeg = 0.0);
    /// Makes LSZH the park airport, at another elevation if told; or leaves none.
    void openAirport(double elevationFt = airportElevationFt);
    void closeAirport();
    /// Adds a stand to the loaded airport; its number is its place in the table.
    ParkPos& addStand(std::string_view id, LatLon position, double radiusM = 30.0);
    void clearStands();

    /// Adds a live aircraft whose track begins with `points`; the table has room for 512 before records move.
    /// The identity is the next free one above 30000; in any state but `Buffered` and `Requested` it has an
    /// object, of number hexid - 20000.
    LiveAc& addLive(std::string_view callsign, AcState state, AcPhase phase, std::vector<TrackPoint> points,
                    std::string_view type = "A320");
    /// Adds a static aircraft on a stand.
    StaticAc& addStatic(std::string_view callsign, AcState state, const ParkPos& stand,
                        std::string_view type = "A320");

private:
    std::uint32_t nextLiveHexid_ = 30001;
    std::uint32_t nextStaticHexid_ = 1;
};

} // namespace kst::test

#pragma once

// The records of all traffic: what a live aircraft and a static parked aircraft are. Plain data; the rules
// are in engine/ and parking/. All of it belongs to the worker thread.

#include "model/category.h"
#include "model/dayhh.h"
#include "model/reasons.h"
#include "model/units.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// Where a record stands between the first feed message and the end of its simulator object.
enum class AcState : int {
    Buffered = 0,   ///< points are being gathered; not in the simulator
    Requested = 1,  ///< creation is requested, no object yet
    Live = 2,       ///< object exists and is moved every tick
    Respawning = 3, ///< object is being removed, to be created again under a new identity
    Removing = 4    ///< object removal is requested
};

/// What an aircraft is doing.
enum class AcPhase : int {
    PushBack = 0,  ///< pushed backwards from the stand
    AfterPush = 1, ///< stopped after the push, waits for the feed to show it moving
    Taxi = 2,      ///< moves on the ground
    TakeOff = 3,   ///< rotation and initial climb
    Air = 4,       ///< flies
    Parking = 5,   ///< on the last leg onto a stand
    Parked = 6,    ///< stands on a stand
    Unknown = 7    ///< not yet decided; the value of every new record
};

/// Values of `throttleLevel` and `flapsLevel` that mean none was sent yet.
inline constexpr int throttleNotSent = 5;
inline constexpr int flapsNotSent = 4;

/// One position of a target's track.
struct TrackPoint {
    double lat = 0.0;              ///< degrees
    double lon = 0.0;              ///< degrees
    std::optional<double> roll;    ///< radians, in the simulator's sign
    std::optional<double> heading; ///< true heading, radians
    double altFt = 0.0;            ///< 0 on the ground
    double gsKt = 0.0;
    double trackDeg = 0.0;
    double vsFpm = 0.0;
    double tasKt = 0.0;
    std::int32_t dueTick = 0; ///< engine tick at which the aircraft is to be here
    bool airborne = false;
    bool stationary = false;      ///< the position equals the point before
    bool headingFromFeed = false; ///< the feed delivered a true heading for this point

    LatLon position() const { return {lat, lon}; }
};

/// Exactly what is sent to the simulator each tick, in its order and units.
struct SimState {
    double lat = 0.0;
    double lon = 0.0;
    double pitch = 0.0;   ///< radians, negative is nose up
    double bank = 0.0;    ///< radians
    double heading = 0.0; ///< radians, 0 to 2 pi
    double altFt = 0.0;
    double vsFps = 0.0; ///< feet per second
    double airspeedKt = 0.0;

    LatLon position() const { return {lat, lon}; }
};

/// The head that live and static aircraft share.
struct AcBase {
    std::string airline; ///< ICAO operator code
    std::string acType;  ///< ICAO type designator
    std::string origin;
    std::string destination;
    std::string callsign;        ///< the callsign in use; a final '_' marks a ghost
    std::string primaryCallsign; ///< the callsign as the feed gave it
    std::string coupledCallsign; ///< the second callsign of the same visit
    std::string regcode;         ///< registration
    bool coupledChecked = false;
    Category category = Category::Light;
    double halfSpanNm = 0.0; ///< half wing span
    double cgHeightFt = 0.0; ///< static centre of gravity above ground, 0 until the simulator has answered
    double staticPitch = 0.0;
    double rotatePitch = 0.0;
    double climbPitch = 0.0;
    double baseTurnRate = 0.0;    ///< radians per tick
    double turnRate = 0.0;        ///< radians per tick, scaled per leg
    double maxClimbStep = 0.0;    ///< feet per tick
    double pushSpeedKt = 0.0;     ///< of push back and of the last leg onto a stand
    std::string_view liveryTitle; ///< into the catalogue; empty when none is found yet
    std::uint32_t hexid = 0;      ///< above 10000 for live targets, 10000 or below for static ones
    int flareTicks = 0;
    int derotateTicks = 0;
    int rotateTicks = 0;
    int climbOutTicks = 0;
    bool cargo = false;
    bool fsltlLivery = false;   ///< the livery title contains "FSLTL_"
    std::uint32_t objectId = 0; ///< the simulator's object id; 0 until created
    double standLat = 0.0;
    double standLon = 0.0;
    double standHeading = 0.0; ///< radians; 0 when none
    DayHH parkStamp;           ///< half hour of arrival on the stand
    std::uint32_t sid = 0;     ///< the chosen stand, 0 when none
    AcState state = AcState::Buffered;
    int throttleLevel = throttleNotSent;
    int flapsLevel = flapsNotSent;
    bool standCargo = false;
    bool removeWhenCreated = false;
    bool erase = false;           ///< the record is to leave the table at the end of this pass
    Reason reason = Reason::None; ///< why it was last refused, held back or removed
};

/// One real target, from its first message until it has left the simulator.
struct LiveAc : AcBase {
    SimState simState;
    /// Front: the point being left; second: the point flown to. Contiguous, so that a flight which takes a
    /// point in for each one that it leaves allocates nothing.
    std::vector<TrackPoint> track;
    double lastMsgTime = 0.0; ///< feed time of the last accepted record, seconds since 1970
    double checkedLat = 0.0;  ///< position at the last collision check against static aircraft
    double checkedLon = 0.0;
    std::int64_t parkedSince = 0; ///< system clock, 100 ns units
    std::int32_t reckonLeft = 0;  ///< dead-reckoned points still allowed; 0 none running, -1 used up
    std::int32_t holdStartTick = 0;
    AcPhase phase = AcPhase::Unknown;
    AcPhase prevPhase = AcPhase::Unknown;
    bool feedWhileParked = false;
    bool onGround = false;
    bool flightPlanLoaded = false;
    bool heldForUser = false; ///< kept out of the simulator for the sake of the user
    bool holding = false;     ///< the taxiing aircraft waits with no data
    double dLat = 0.0;        ///< change per tick, degrees
    double dLon = 0.0;
    double dPitch = 0.0; ///< radians per tick
    double dBank = 0.0;
    double dHeading = 0.0;
    double dAlt = 0.0;                                               ///< feet per tick
    double vsTarget = 0.0;                                           ///< feet per minute
    double airspeedTarget = 0.0;                                     ///< knots; negative while pushing back
    LatLon curveOrigin;                                              ///< degrees
    double curveEndNorth = std::numeric_limits<double>::quiet_NaN(); ///< metres; NaN when no curve is active
    double curveEndEast = std::numeric_limits<double>::quiet_NaN();
    double curveControlNorth = std::numeric_limits<double>::quiet_NaN();
    double curveControlEast = std::numeric_limits<double>::quiet_NaN();
    double curveT = 0.0;
    double curveStep = 0.0;
    double curveTurnDeg = 0.0;
    TrackPoint pushSidePoint; ///< the alternative end point of a push back
    double searchedLat = 0.0; ///< position of the last stand search
    double searchedLon = 0.0;
    std::int32_t maxLeadTicks = 1000; ///< how far `dueTick` may move ahead of the feed's time
    std::int32_t maxLagTicks = 1000;  ///< and behind it
    int groundCountdown = 1;          ///< rotation countdown in `TakeOff`, 1 otherwise
    int pushStep = 0;
    int awayCount = 0;                 ///< consecutive feed positions that moved away from a stand
    double targetHeading = 0.0;        ///< heading to turn to on the ground, radians
    double heightAgl = 2500.0;         ///< feet, as the simulator reports it below 2500
    std::optional<double> groundAltFt; ///< of the ground below, from the same report
    double heightFlare = 0.0;
    double touchdownHeading = 0.0;
    double moveOffRef = 0.0;
    double firstParkDist = 0.0;
    double lastParkDist = 0.0;
    double turnDeg = 0.0;
    std::optional<double> respawnHeading;
    bool pushRight = false;
    bool pushKnown = false;
    std::optional<double> flareElevation;
    int flareStage = 0; ///< 0 to 4
    bool landing = false;
    bool landed = false;
    bool towed = false;
    bool goAroundDone = false;
    bool departing = false;
    bool highLights = false;
    bool lowLights = false;
    bool flaring = false;    ///< the nose is coming down after touchdown
    bool rollingOut = false; ///< on the landing roll
    bool moveOffSeen = false;
    bool turnOnly = false;
};

/// A parked aircraft that comes from the observations of a stand, not from the feed.
struct StaticAc : AcBase {};

} // namespace kst

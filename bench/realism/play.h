#pragma once

// One recording through the whole program in virtual time.

#include "bench/realism/recordings.h"
#include "model/aircraft.h"
#include "model/category.h"
#include "model/parkpos.h"
#include "model/reasons.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace kst::bench {

enum class Stage { Air, Approach, Flare, Rollout, TakeOff, Ground, Count };
inline constexpr auto stageCount = static_cast<std::size_t>(Stage::Count);
inline constexpr std::array<std::string_view, stageCount> stageNames = {"air",     "approach", "flare",
                                                                        "rollout", "take-off", "ground"};

/// By AcPhase.
inline constexpr std::array<std::string_view, 8> phaseNames = {
    "pushed", "after its push", "taxiing", "taking off", "in the air", "parking", "parked", "undecided"};

/// What makes the present leg's speed another than the one told.
enum class LegKind {
    Usual,
    Cut,     ///< the lag limit ends it well before its speed does
    Resumed, ///< timed from an invented point, on the way to which data came back
    Curve    ///< round a corner, by a curve that is faster at one end
};

/// The object as one frame shows it.
struct Sample {
    double at = 0.0; ///< seconds since the flight's world began
    LatLon position;
    double altFt = 0.0;
    double pitch = 0.0; ///< radians, as are the next two
    double bank = 0.0;
    double heading = 0.0;
    double wheelsFt = 0.0;   ///< above the ground
    double speedKt = 0.0;    ///< as shown
    float leadLimitS = 0.0F; ///< that this leg and the one before were timed by, as is the next
    float lagLimitS = 0.0F;
    std::uint32_t objectId = 0; ///< another one after a respawn
    Stage stage = Stage::Air;
    bool onGround = false;        ///< the simulator has it on its wheels
    bool coasting = false;        ///< no data: on invented points
    Reason reason = Reason::None; ///< of the last thing that befell the record
    bool dueMoved = false;      ///< the leg's due time came later than the feed's, behind that of a late leg
    bool respawned = false;     ///< not its first object
    float sinceSpawnS = 0.0F;   ///< with this object
    float sinceCoastedS = 0.0F; ///< 0 while on invented points
    LegKind leg = LegKind::Usual;
    float turnDeg = 0.0F;  ///< that the leg turns on the ground, or its corner
    float legLeftS = 0.0F; ///< until the present leg ends
    // What the apron asks for.
    AcPhase phase = AcPhase::Unknown;
    std::uint32_t sid = 0;  ///< of its stand
    float turnShare = 0.0F; ///< of three base rates, the fastest turn on the ground since the last sample
};

/// Its object leaves the simulator.
struct Leaving {
    double at = 0.0;
    Reason reason = Reason::None;
    AcPhase phase = AcPhase::Unknown;
};

struct PlayedAircraft {
    std::uint32_t hexid = 0;
    std::string callsign;
    std::string type; ///< empty for a vehicle
    Category category = Category::Light;
    double halfSpanM = 0.0;
    Line line;                 ///< what the feed told
    std::vector<Sample> flown; ///< in a scene: on the ground only
    std::vector<Sample> ideal; ///< what the timing of legs alone gives, at the same moments
    std::vector<Leaving> leavings;
    Reason lastReason = Reason::None; ///< of the record's end
    Reason refused = Reason::None;    ///< by the buffer, the last time
    bool shown = false;
};

/// The user follows the flight high above; there are no stands. Sampled each 20 ms, as the simulator's
/// frames.
PlayedAircraft playFlight(const Recording& flight);

struct PlayedScene {
    std::vector<PlayedAircraft> aircraft;
    std::vector<ParkPos> stands; ///< as they are at the end
    double end = 0.0;            ///< seconds
};

/// `stands` holds the scene's <ICAO>.csv. Static aircraft are off; the user is high above. Sampled each 100
/// ms.
PlayedScene playScene(const Recording& scene, const std::filesystem::path& stands);

/// Turn on the ground that no aircraft of this size exceeds by the program's rules, degrees per second.
double fastestGroundTurn(Category category);

} // namespace kst::bench

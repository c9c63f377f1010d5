#pragma once

// One recorded flight through the whole program in virtual time.

#include "bench/realism/recordings.h"
#include "model/category.h"
#include "model/reasons.h"
#include "tools/measureflights/line.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace kst::bench {

enum class Stage { Air, Approach, Flare, Rollout, TakeOff, Ground, Count };
inline constexpr auto stageCount = static_cast<std::size_t>(Stage::Count);
inline constexpr std::array<std::string_view, stageCount> stageNames = {"air",     "approach", "flare",
                                                                        "rollout", "take-off", "ground"};

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
    float points = 0.0F;   ///< ahead in the track
};

struct PlayedFlight {
    std::vector<Sample> flown;
    std::vector<Sample> naive;          ///< straight lines between the feed's points, at the same moments
    std::vector<Sample> timed;          ///< what the timing of legs alone gives, at the same moments
    std::vector<tool::TrackPoint> line; ///< what the feed told, in the same seconds
    Category category = Category::Light;
    Reason lastReason = Reason::None; ///< of the record's end
    bool shown = false;
};

PlayedFlight playFlight(const RecordedFlight& flight);

} // namespace kst::bench

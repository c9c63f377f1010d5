#include "engine/pass.h"

#include "core/display.h"
#include "core/log.h"
#include "core/parameters.h"
#include "engine/tables.h"
#include "engine/unmatched.h"
#include "simlink/objectcommands.h"

#include <algorithm>
#include <fmt/format.h>

namespace kst {

std::string unmatchedKey(const AcBase& ac) {
    return fmt::format("{:3} {:4} {}", ac.airline, ac.acType, ac.regcode);
}

void lf_refreshCounts() {
    std::uint64_t moving = 0;
    std::uint64_t parked = 0;
    for (const LiveAc& ac : liveAcs) {
        if (ac.state == AcState::Live) {
            ++(ac.phase == AcPhase::Parked ? parked : moving);
        }
    }
    const auto parkedStatic =
        static_cast<std::uint64_t>(std::ranges::count(staticAcs, AcState::Live, &StaticAc::state));
    const StatusValues shown = statusValues();
    if (shown.liveShown != moving) {
        updateStatus(Band::Status, [&](StatusValues& status) { status.liveShown = moving; });
    }
    if (shown.parkedLiveShown != parked || shown.parkedStaticShown != parkedStatic) {
        updateStatus(Band::Park, [&](StatusValues& status) {
            status.parkedLiveShown = parked;
            status.parkedStaticShown = parkedStatic;
        });
    }
}

void lf_logUnmatchedTargets() {
    if (!LOG || unmatchedTargets.empty()) {
        return;
    }
    std::string text = "No match found for: ";
    for (const std::string& key : unmatchedTargets) {
        text += "\n          " + key;
    }
    logLine(text);
}

void lf_applyNavLights() {
    const bool on = NAV_LIGHTS_WHILE_PARKED;
    for (const StaticAc& ac : staticAcs) {
        if (ac.state == AcState::Live) {
            lf_setNavLights(ac.objectId, on);
        }
    }
    for (const LiveAc& ac : liveAcs) {
        if (ac.state == AcState::Live && ac.phase == AcPhase::Parked) {
            lf_setNavLights(ac.objectId, on);
        }
    }
}

} // namespace kst

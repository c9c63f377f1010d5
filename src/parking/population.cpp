#include "parking/population.h"

#include "core/display.h"
#include "core/log.h"
#include "core/parameters.h"
#include "engine/meanage.h"
#include "engine/tables.h"
#include "feed/readers.h"
#include "parking/parkrequests.h"
#include "parking/stands.h"

#include <array>
#include <fmt/format.h>

namespace kst {

std::vector<ParkRequest> parkQueue;
std::set<std::string> liveCallsigns;
std::vector<LiveStayer> liveStayers;
std::vector<StaticStayer> staticStayers;
std::vector<StaticRemoval> staticRemovals;
int realFit = 0;
int softFit = -1;

void clearPopulation() {
    parkQueue.clear();
    liveStayers.clear();
    staticStayers.clear();
    staticRemovals.clear();
}

void reviveOptions() {
    for (ParkPos& stand : parkPositions()) {
        std::uint32_t seq = 0;
        for (ParkOption& option : stand.options) {
            option.seq = ++seq;
        }
    }
}

void takeLiveCallsigns() {
    collectSeenTargets(false);
    liveCallsigns.clear();
    for (auto& [position, callsign] : seenTargets()) {
        liveCallsigns.insert(std::move(callsign));
    }
}

void logPopulationTime(DayHH now) {
    constexpr std::array<std::string_view, 7> dayNames = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                                          "Friday", "Saturday", "Sunday"};
    logLine(fmt::format("\n{} (utc) It is day {} ({}), {} hours", timeOfDay(), now.day,
                        dayNames[static_cast<std::size_t>(now.day - 1) % dayNames.size()],
                        halfHoursText(now.hh)));
}

void showMeanAges() {
    MeanAge live;
    for (const LiveAc& ac : liveAcs) {
        if (ac.phase == AcPhase::Parked && isInSimulator(ac)) {
            live.add(ac.parkStamp);
        }
    }
    MeanAge parked;
    for (const StaticAc& ac : staticAcs) {
        if (isInSimulator(ac)) {
            parked.add(ac.parkStamp);
        }
    }
    updateStatus(Band::Park, [&](StatusValues& status) {
        status.liveFitShown = live.hours();
        if (!WEEK) {
            status.staticFitShown = parked.hours();
        }
    });
}

} // namespace kst

#include "engine/flown.h"

#include "core/runstate.h"
#include "engine/pass.h"
#include "engine/prediction.h"
#include "engine/simreplies.h"
#include "engine/tables.h"
#include "model/simconnect.h"
#include "simlink/objectcommands.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace kst::test {

namespace {

constexpr std::int32_t usualScanTicks = 100;
constexpr std::int32_t flareScanTicks = 20;
constexpr double highestReportFt = 2500.0;

bool isNumbers(const SimState& state) {
    return std::isfinite(state.lat) && std::isfinite(state.lon) && std::isfinite(state.pitch) &&
           std::isfinite(state.bank) && std::isfinite(state.heading) && std::isfinite(state.altFt) &&
           std::isfinite(state.vsFps) && std::isfinite(state.airspeedKt);
}

} // namespace

Flown::Flown(EngineWorld& world, const LiveAc& ac, double groundFt)
    : world_(world), hexid_(ac.hexid), groundFt_(groundFt) {
    if (ac.onGround) {
        this->ac().simState.altFt = groundFt + ac.cgHeightFt;
    }
}

void Flown::hear(std::int32_t tick, TrackPoint point) {
    point.dueTick = tick + playDelayTicks;
    feed_.push_back({tick, point});
}

bool Flown::gone() const {
    const LiveAc* ac = liveByHexid(hexid_);
    return ac == nullptr || ac->state != AcState::Live;
}

LiveAc& Flown::ac() {
    return *liveByHexid(hexid_);
}

void Flown::reportHeight() {
    const LiveAc& now = ac();
    const double agl = now.simState.altFt - groundFt_;
    if (agl > highestReportFt) {
        return;
    }
    SimCommand report;
    report.kind = SimCommand::Kind::HeightReport;
    report.objectId = now.objectId;
    report.id = agl <= now.cgHeightFt ? 1 : 0;
    report.value1 = groundFt_;
    report.value2 = agl;
    pushSimCommand(report);
    gf_SimCommands();
}

void Flown::measure(const SimState& before, const SimState& after) {
    motion_.metres =
        std::max(motion_.metres, gf_distanceNm(before.position(), after.position()) * metresPerNm);
    motion_.feet = std::max(motion_.feet, std::abs(after.altFt - before.altFt));
    motion_.pitchDeg = std::max(motion_.pitchDeg, std::abs(after.pitch - before.pitch) * degPerRad);
    motion_.bankDeg = std::max(motion_.bankDeg, std::abs(after.bank - before.bank) * degPerRad);
    motion_.headingDeg =
        std::max(motion_.headingDeg, std::abs(gf_angleDiff(before.heading, after.heading)) * degPerRad);
}

void Flown::flyTo(std::int32_t tick, const std::function<void(const LiveAc&)>& watch) {
    while (updateCount < tick && !gone()) {
        const std::int32_t now = updateCount + 1;
        world_.setTick(now);
        const std::int32_t scanTicks = flareActive ? flareScanTicks : usualScanTicks;
        if (reports_ && now % scanTicks == 0) {
            reportHeight();
        }
        const SimState before = ac().simState;
        lf_updateAllLiveAc();
        while (!gone() && nextHeard_ < feed_.size() && feed_[nextHeard_].tick <= now) {
            lf_addPosition(ac(), feed_[nextHeard_++].point);
        }
        if (gone()) {
            return;
        }
        ASSERT_TRUE(isNumbers(ac().simState)) << "at tick " << now;
        measure(before, ac().simState);
        if (watch) {
            watch(ac());
        }
    }
}

std::vector<std::uint32_t> sent(const LiveAc& ac, std::uint32_t event) {
    std::vector<std::uint32_t> values;
    for (const EventCmd& command : queuedEventsForTest()) {
        if (command.objectId == ac.objectId && command.event == event) {
            values.push_back(command.value);
        }
    }
    return values;
}

std::string lightsSent(const LiveAc& ac) {
    std::string lights;
    for (const std::uint32_t event :
         {simconnect::NavLightsSet, simconnect::BeaconLightsSet, simconnect::LandingLightsSet,
          simconnect::TaxiLightsSet, simconnect::StrobesSet, simconnect::LogoLightsSet,
          simconnect::CabinLightsSet}) {
        const std::vector<std::uint32_t> values = sent(ac, event);
        if (values.empty()) {
            return {};
        }
        lights += values.back() != 0 ? '1' : '0';
    }
    return lights;
}

std::size_t eventsSent(const LiveAc& ac) {
    const std::vector<EventCmd> events = queuedEventsForTest();
    return static_cast<std::size_t>(
        std::ranges::count(events, ac.objectId, [](const EventCmd& command) { return command.objectId; }));
}

void forgetSent() {
    resetObjectCommands();
}

} // namespace kst::test

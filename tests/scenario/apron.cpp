#include "scenario/apron.h"

#include "core/geodesy.h"
#include "engine/categories.h"
#include "engine/tables.h"
#include "parking/population.h"
#include "parking/stands.h"
#include "support/engineworld.h"

#include <algorithm>
#include <cmath>

namespace kst::test {

namespace {

LatLon placeOf(const standin::Aircraft& aircraft) {
    return {aircraft.place.lat, aircraft.place.lon};
}

double metresBetween(LatLon a, LatLon b) {
    return gf_distanceNm(a, b) * metresPerNm;
}

} // namespace

void TurnWatch::look() {
    for (const LiveAc& ac : liveAcs) {
        if (ac.state != AcState::Live || !ac.onGround) {
            continue;
        }
        const auto [last, first] = headings_.try_emplace(ac.objectId, ac.simState.heading);
        const double rate = categoryRates(ac.category).baseTurnRateDeg * radPerDeg;
        largest_ = std::max(largest_, std::abs(gf_angleDiff(last->second, ac.simState.heading)) / rate);
        last->second = ac.simState.heading;
    }
}

void Spectator::watchWay(const Seen& last, const standin::Aircraft& aircraft, double atSeconds) {
    const double wayNm = gf_distanceNm(last.place, placeOf(aircraft));
    fastestKt_ = std::max(fastestKt_, wayNm / (atSeconds - last.atSeconds) * 3600.0);
    const double way = gf_bearing(last.place, placeOf(aircraft));
    const double ahead = std::abs(std::cos(gf_angleDiff(way, aircraft.place.headingRad)));
    const double sideways = std::abs(std::sin(gf_angleDiff(way, aircraft.place.headingRad)));
    wayM_ += wayNm * metresPerNm;
    sidewaysM_ += sideways > ahead ? wayNm * metresPerNm : 0.0;
}

void Spectator::look(const standin::World& world) {
    constexpr int everyCalls = 10;
    if (++calls_ % everyCalls != 0) {
        return;
    }
    std::vector<const standin::Aircraft*> there = {&world.user()};
    for (const auto& [id, aircraft] : world.objects()) {
        there.push_back(&aircraft);
        const auto last = last_.find(id);
        if (last != last_.end() && world.onGround(aircraft)) {
            watchWay(last->second, aircraft, world.seconds());
        }
        if (aircraft.frozen() && aircraft.placed > 1) {
            last_[id] = {world.seconds(), placeOf(aircraft)};
        }
    }
    for (std::size_t i = 0; i < there.size(); ++i) {
        for (std::size_t j = i + 1; j < there.size(); ++j) {
            closestM_ = std::min(closestM_, metresBetween(placeOf(*there[i]), placeOf(*there[j])));
        }
    }
}

Way::Way(std::string_view callsign, std::uint32_t hexid) {
    report_.hexid = hexid;
    report_.callsign = callsign;
    report_.registration = "HB-JLT";
    report_.type = "A320";
    report_.headingDeg = 0.0;
}

Way& Way::aircraft(std::string_view type, std::string_view registration) {
    report_.type = type;
    report_.registration = registration;
    return *this;
}

Way& Way::at(LatLon place, double altFt) {
    report_.position = place;
    report_.altFt = altFt;
    return *this;
}

Way& Way::nose(double headingDeg) {
    report_.headingDeg = headingDeg;
    return *this;
}

Way& Way::pause(double seconds) {
    report_.at += seconds;
    return *this;
}

Way& Way::stand(double seconds) {
    report_.gsKt = 0.0;
    return report(seconds, 0.0, 0.0, 0.0);
}

Way& Way::move(double bearingDeg, double metres, double kt) {
    return fly(bearingDeg, metres, kt, 0.0);
}

Way& Way::fly(double bearingDeg, double metres, double kt, double toFt) {
    report_.gsKt = kt;
    report_.trackDeg = bearingDeg;
    return report(metres / (kt * metresPerNm / 3600.0), bearingDeg, metres, toFt);
}

Way& Way::report(double seconds, double bearingDeg, double metres, double toFt) {
    constexpr double interval = 3.0;
    const standin::TrafficReport from = report_;
    const auto advance = [&](double passed) {
        report_.at = from.at + passed;
        report_.position = offset(from.position, bearingDeg, metres * passed / seconds);
        report_.altFt = toFt > 0.0 ? from.altFt + (toFt - from.altFt) * passed / seconds : 0.0;
        report_.vsFpm = toFt > 0.0 ? (toFt - from.altFt) / seconds * 60.0 : 0.0;
    };
    report_.onGround = !(toFt > 0.0);
    for (double passed = interval; passed <= seconds; passed += interval) {
        advance(passed);
        reports_.push_back(report_);
    }
    advance(seconds);
    return *this;
}

std::unique_ptr<standin::TrafficSource> traffic(const std::vector<Way>& ways) {
    std::vector<standin::TrafficReport> all;
    for (const Way& way : ways) {
        const auto reports = way.reports();
        all.insert(all.end(), reports.begin(), reports.end());
    }
    std::ranges::stable_sort(all, {}, &standin::TrafficReport::at);
    return std::make_unique<DrawnTraffic>(std::move(all));
}

Apron::Apron(const ScenarioOptions& options) : world(options) {
    world.openAirport("LSZH", zurich, zurichFt);
    addStand("A1", zurich);
}

std::uint32_t Apron::addStand(std::string_view id, LatLon place, double radiusM) {
    ParkPos stand;
    stand.id = id;
    stand.latitude = place.lat;
    stand.longitude = place.lon;
    stand.radius = radiusM * nmPerMetre;
    parkPositions().push_back(stand);
    numberStands(parkPositions());
    return parkPositions().back().sid;
}

void Apron::park(std::uint32_t sid, const std::string& callsign, const std::string& registration) {
    ParkRequest request;
    request.sid = sid;
    request.airl = "SWR";
    request.type = "A320";
    request.cs = callsign;
    request.reg = registration;
    request.inbound = true;
    parkQueue.push_back(request);
}

bool Apron::play(double seconds) {
    world.play(seconds, [this] {
        turns.look();
        spectator.look(world.simulator());
        const LiveAc* ac = liveByHexid(firstHexid);
        pushed = pushed || (ac != nullptr && ac->phase == AcPhase::PushBack);
    });
    const LiveAc* ac = liveByHexid(firstHexid);
    return ac != nullptr && ac->state == AcState::Live;
}

const LiveAc& Apron::first() const {
    return *liveByHexid(firstHexid);
}

double Apron::metresFrom(LatLon place) const {
    return metresBetween(first().simState.position(), place);
}

double Apron::degreesOff(double headingDeg) const {
    return std::abs(gf_angleDiff(first().simState.heading, headingDeg * radPerDeg)) * degPerRad;
}

std::string Apron::standingAt(LatLon place) {
    constexpr double onStandM = 15.0;
    std::string tails;
    for (const auto& [id, aircraft] : world.simulator().objects()) {
        if (metresBetween(placeOf(aircraft), place) < onStandM) {
            tails += (tails.empty() ? "" : " ") + aircraft.tailNumber;
        }
    }
    return tails;
}

} // namespace kst::test

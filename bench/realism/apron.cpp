#include "bench/realism/apron.h"

#include "catalogue/reference.h"
#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/categories.h"
#include "engine/tables.h"
#include "parking/stands.h"
#include "scenario/scenarioworld.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace kst::bench {

namespace {

constexpr double userAltFt = 45000.0;
constexpr double rangeNm = 30.0;
constexpr double afterwardsS = 130.0; ///< the delay, and time to stop and to park
constexpr int passesPerSample = 10;
/// The simulator itself moves a new object until it is taken over.
constexpr double appearingS = 0.2;
constexpr double fastestTurnInRates = 3.0;

constexpr Reason firstRefusal = Reason::FellSilentInBuffer;
constexpr auto refusalCount =
    static_cast<std::size_t>(Reason::NeighbourStandTaken) - static_cast<std::size_t>(firstRefusal) + 1;

class ApronWorld {
public:
    ApronWorld(const ApronScene& scene, const std::filesystem::path& stands)
        : scene_(scene), world_({.user = scene.airport.position,
                                 .userAltFt = userAltFt,
                                 .rangeNm = rangeNm,
                                 .keepHistory = false}) {
        LIGHT_AIRCRAFT.set(true);
        HELICOPTERS.set(true);
        HIGH_PERF_AIRCRAFT.set(true);
        qnh = scene.qnh;
        world_.openAirport(scene.airport.code, scene.airport.position, scene.airport.elevationFt);
        world_.loadStands(scene.airport.code, stands);
        world_.feed(std::make_unique<test::DrawnTraffic>(scene.reports));
    }

    PlayedApron play() {
        world_.play(scene_.reports.back().at + afterwardsS, [this] { look(); });
        for (const standin::TrafficReport& report : world_.sent()) {
            PlayedAircraft& aircraft = of(report.hexid).played;
            aircraft.callsign = report.callsign.empty() ? report.registration : report.callsign;
            aircraft.type = report.type;
            aircraft.halfSpanM = gf_halfWingSpan(report.type) * metresPerNm;
            aircraft.line.push_back({report.at, report.position, report.altFt, report.gsKt, report.onGround});
        }
        PlayedApron played;
        for (auto& [hexid, watched] : aircraft_) {
            played.aircraft.push_back(std::move(watched.played));
        }
        played.stands = parkPositions();
        played.end = world_.seconds();
        return played;
    }

private:
    struct Watched {
        PlayedAircraft played;
        std::uint32_t objectId = 0;
        double settled = 0.0;
        double heading = 0.0;
        double turn = 0.0; ///< radians, the largest since the last sample
        bool onGround = false;
        bool leaving = false;
        bool buffered = false;
    };

    Watched& of(std::uint32_t hexid) {
        Watched& watched = aircraft_[hexid];
        watched.played.hexid = hexid;
        return watched;
    }

    void look() {
        ++passes_;
        noteRefusals();
        for (const LiveAc& ac : liveAcs) {
            Watched& watched = of(ac.hexid);
            watched.buffered = ac.state == AcState::Buffered;
            watched.played.shown |= ac.state == AcState::Live;
            if (ac.state == AcState::Removing && !watched.leaving) {
                watched.played.leavings.push_back({world_.seconds(), ac.reason, ac.phase});
            }
            watched.leaving = ac.state == AcState::Removing;
            watchTurn(ac, watched);
            if (ac.state == AcState::Live && ac.onGround && passes_ % passesPerSample == 0) {
                sample(ac, watched);
            }
        }
    }

    /// A target that the buffer refuses is gone in the same pass; only the count tells why.
    void noteRefusals() {
        Reason risen = Reason::None;
        for (std::size_t i = 0; i < refusals_.size(); ++i) {
            const auto reason = static_cast<Reason>(static_cast<int>(firstRefusal) + static_cast<int>(i));
            const std::uint64_t total = reasonTotal(reason);
            risen = total > refusals_[i] ? reason : risen;
            refusals_[i] = total;
        }
        if (risen == Reason::None) {
            return;
        }
        for (auto& [hexid, watched] : aircraft_) {
            if (watched.buffered && liveByHexid(hexid) == nullptr) {
                watched.played.refused = risen;
                watched.buffered = false;
            }
        }
    }

    static void watchTurn(const LiveAc& ac, Watched& watched) {
        const bool now = ac.state == AcState::Live && ac.onGround;
        if (now && watched.onGround) {
            watched.turn =
                std::max(watched.turn, std::abs(gf_angleDiff(watched.heading, ac.simState.heading)));
        }
        watched.heading = ac.simState.heading;
        watched.onGround = now;
    }

    void sample(const LiveAc& ac, Watched& watched) {
        const standin::Aircraft* object = world_.simulator().find(ac.objectId);
        if (object == nullptr) {
            return;
        }
        if (ac.objectId != watched.objectId) {
            watched.objectId = ac.objectId;
            watched.settled = world_.seconds() + appearingS;
        }
        if (world_.seconds() >= watched.settled) {
            const double fastest =
                categoryRates(ac.category).baseTurnRateDeg * radPerDeg * fastestTurnInRates;
            ApronSample now;
            now.at = world_.seconds();
            now.position = {object->place.lat, object->place.lon};
            now.heading = object->place.headingRad;
            now.turnDeg = watched.turn * degPerRad;
            now.turnShare = watched.turn / fastest;
            now.sid = ac.sid;
            now.phase = ac.phase;
            now.rolling = ac.departing || ac.rollingOut || ac.phase == AcPhase::TakeOff;
            now.coasting = ac.reckonLeft > 0;
            watched.played.samples.push_back(now);
        }
        watched.turn = 0.0;
    }

    const ApronScene& scene_;
    test::ScenarioWorld world_;
    std::map<std::uint32_t, Watched> aircraft_;
    std::array<std::uint64_t, refusalCount> refusals_ = {};
    std::int64_t passes_ = 0;
};

} // namespace

PlayedApron playApron(const ApronScene& scene, const std::filesystem::path& stands) {
    return ApronWorld(scene, stands).play();
}

} // namespace kst::bench

// Which feed positions enter a track, and what they do to it.

#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/flown.h"
#include "engine/prediction.h"
#include "engine/stops.h"
#include "engine/trackfilters.h"
#include "model/simconnect.h"

#include <gtest/gtest.h>
#include <limits>

namespace kst::test {
namespace {

constexpr std::int32_t now = 10000;
constexpr LatLon place{47.45, 8.56};

TrackPoint standing(LatLon position, std::int32_t dueTick) {
    TrackPoint point = groundPoint(position, 0, dueTick);
    point.stationary = true;
    return point;
}

class TrackIntake : public ::testing::Test {
protected:
    LiveAc& taxiing(std::vector<TrackPoint> points) {
        return world.addLive("SWR1", AcState::Live, AcPhase::Taxi, std::move(points));
    }
    LiveAc& flying(std::vector<TrackPoint> points, double headingDeg = 90.0) {
        LiveAc& ac = world.addLive("SWR1", AcState::Live, AcPhase::Air, std::move(points));
        ac.simState.heading = headingDeg * radPerDeg;
        return ac;
    }
    EngineWorld world;
};

TEST_F(TrackIntake, StandingAircraftPilesUpNoPoints) {
    LiveAc& ac = taxiing({standing(place, now)});
    for (int i = 1; i <= 3; ++i) {
        lf_addPosition(ac, groundPoint(place, 0, now + 500 * i));
        world.setTick(updateCount + 2);
        nextPosMain(ac);
    }
    EXPECT_EQ(ac.track.size(), 1U);
    EXPECT_TRUE(ac.track.front().stationary);
}

TEST_F(TrackIntake, JitterOfTenMetresIsStandingStill) {
    LiveAc& ac = taxiing({groundPoint(place, 8, now), groundPoint(offset(place, 90, 60), 8, now + 500)});
    const LatLon last = ac.track.back().position();
    lf_addPosition(ac, groundPoint(offset(last, 45.0, 10.0), 6, now + 1000));
    ASSERT_EQ(ac.track.size(), 3U);
    EXPECT_EQ(ac.track.back().position(), last);
    EXPECT_EQ(ac.track.back().gsKt, 0.0);
    EXPECT_TRUE(ac.track.back().stationary);
    EXPECT_EQ(ac.track.back().dueTick, now + 501) << "due times strictly rise";
}

struct Jitter {
    const char* name;
    bool departing;
    double lastKt;
    double metres; ///< from the last position
    double gsKt;
    bool airborne;
    bool accepted;
};

TEST_F(TrackIntake, JitterFilterTellsStandingFromRolling) {
    const Jitter table[] = {
        {"taxi, same place", false, 10, 0, 5, false, true},
        {"roll, same place and fast", true, 30, 0, 60, false, false},
        {"roll, same place, slow before", true, 29, 0, 60, false, true},
        {"roll, same place and stopped", true, 60, 0, 0, false, true},
        {"roll at 60 kt, nearly the same place", true, 60, 10, 60, false, false},
        {"roll at 50 kt, nearly the same place", true, 50, 10, 60, false, false},
        {"roll at 49 kt, nearly the same place", true, 49, 10, 60, false, true},
        {"in the air, same place", false, 200, 0, 200, true, false},
        {"in the air, nearly the same place", false, 200, 10, 200, true, false},
        {"in the air, moved", false, 200, 500, 200, true, true},
        {"in the air without speed", false, 200, 500, 0, true, false},
        {"in the air without speed, slow before", false, 49, 500, 0, true, true},
        {"roll without speed", true, 50, 500, 0, false, false},
        {"taxi without speed, moved", false, 60, 500, 0, false, true},
        {"roll at 60 kt, 16 m on", true, 60, 16, 60, false, false}, // 0.00015 degrees are 16.7 m
        {"roll at 60 kt, 17.5 m on", true, 60, 17.5, 60, false, true},
    };
    for (const Jitter& row : table) {
        LiveAc& ac = taxiing({groundPoint(place, row.lastKt, now)});
        ac.departing = row.departing;
        const LatLon next = row.metres == 0 ? place : offset(place, 0.0, row.metres);
        TrackPoint msg = groundPoint(next, row.gsKt, now + 500);
        msg.airborne = row.airborne;
        EXPECT_EQ(lf_filterPosition(ac, msg), row.accepted) << row.name;
        if (row.accepted && row.metres <= 10) {
            EXPECT_EQ(msg.gsKt, 0.0) << row.name << ": what stands has no speed";
        }
    }
}

TEST_F(TrackIntake, LiveAircraftInTheAirIsNotStoppedByAGroundPositionOnTheSpot) {
    LiveAc& ac = flying({airPoint(place, 2000, 140, now)});
    lf_addPosition(ac, groundPoint(place, 130, now + 500));
    EXPECT_EQ(ac.track.size(), 1U);
    EXPECT_EQ(reasonTotal(Reason::PositionRejected), 1U);
}

TEST_F(TrackIntake, HelicopterPassesWithAnyPositionAndItsHoverIsMarked) {
    LiveAc& ac = world.addLive("HELI", AcState::Live, AcPhase::Air, {airPoint(place, 900, 20, now)}, "EC35");
    lf_addPosition(ac, airPoint(offset(place, 0, 5), 900, 2, now + 500));
    lf_addPosition(ac, airPoint(offset(place, 0, 5), 900, 0, now + 1000));
    ASSERT_EQ(ac.track.size(), 3U);
    EXPECT_FALSE(ac.track[1].stationary);
    EXPECT_TRUE(ac.track[2].stationary);
}

TEST_F(TrackIntake, JitterIsFoundAcrossTheDateLine) {
    const LatLon edge{10.0, 179.99995};
    LiveAc& ac = taxiing({groundPoint(edge, 5, now)});
    lf_addPosition(ac, groundPoint({10.0, -179.99999}, 5, now + 500));
    EXPECT_TRUE(ac.track.back().stationary);
}

TEST_F(TrackIntake, DueTimesRiseEvenAtTheEndOfTheirRange) {
    constexpr std::int32_t end = std::numeric_limits<std::int32_t>::max();
    LiveAc& ac = taxiing({groundPoint(place, 8, end)});
    lf_addPosition(ac, groundPoint(offset(place, 90, 100), 8, 5));
    EXPECT_EQ(ac.track.back().dueTick, end);
}

TEST_F(TrackIntake, TargetThatNeverConsumesItsPointsIsRemoved) {
    LiveAc& ac = taxiing({});
    ac.track.assign(200, groundPoint(place, 8, now));
    lf_addPosition(ac, groundPoint(offset(place, 90, 100), 8, now + 500));
    EXPECT_EQ(ac.state, AcState::Live);
    lf_addPosition(ac, groundPoint(offset(place, 90, 100), 8, now + 500));
    EXPECT_EQ(ac.state, AcState::Removing);
    EXPECT_EQ(ac.reason, Reason::TooManyPoints);
}

TEST_F(TrackIntake, PositionThatIsNoneIsDropped) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinite = std::numeric_limits<double>::infinity();
    LiveAc& ac = taxiing({groundPoint(place, 8, now)});
    const TrackPoint good = groundPoint(offset(place, 90, 100), 8, now + 500);
    for (double TrackPoint::*field :
         {&TrackPoint::lat, &TrackPoint::lon, &TrackPoint::altFt, &TrackPoint::gsKt, &TrackPoint::trackDeg,
          &TrackPoint::vsFpm, &TrackPoint::tasKt}) {
        for (const double value : {nan, infinite, -infinite}) {
            TrackPoint bad = good;
            bad.*field = value;
            lf_addPosition(ac, bad);
        }
    }
    TrackPoint beyond = good;
    beyond.lat = 90.1;
    lf_addPosition(ac, beyond);
    TrackPoint rolled = good;
    rolled.roll = nan;
    lf_addPosition(ac, rolled);
    EXPECT_EQ(ac.track.size(), 1U);
    EXPECT_EQ(reasonTotal(Reason::PositionRejected), 23U);
    lf_addPosition(ac, good);
    EXPECT_EQ(ac.track.size(), 2U);
}

// ---- stops ----

struct Stop {
    const char* name;
    std::int32_t seconds; ///< of standing
    double onM;           ///< how far the aircraft has moved on since
    bool stays;
};

TEST_F(TrackIntake, ReplayHaltsOnlyForARealStop) {
    const Stop table[] = {{"14 s", 14, 30, false},         {"15 s", 15, 30, true},
                          {"20 s, 23 m on", 20, 23, true}, {"20 s, 21 m on", 20, 21, false},
                          {"20 s, 30 m on", 20, 30, true}, {"20 s, 10 m on", 20, 10, false}};
    for (const Stop& row : table) {
        for (const int points : {1, 2, 5}) {
            const LatLon stop = offset(place, 90, 200);
            LiveAc& ac = taxiing({groundPoint(place, 8, now), groundPoint(stop, 8, now + 2000)});
            for (int i = 1; i <= points; ++i) {
                ac.track.push_back(standing(stop, now + 2000 + row.seconds * ticksPerSecond * i / points));
            }
            const std::size_t before = ac.track.size();
            removeSmallStop(ac, offset(stop, 90, row.onM));
            EXPECT_EQ(ac.track.size(), row.stays ? before : 2U) << row.name << ", points: " << points;
        }
    }
}

TEST_F(TrackIntake, StopOfMoreThanFivePointsIsNotLookedAt) {
    const LatLon stop = offset(place, 90, 200);
    LiveAc& ac = taxiing({groundPoint(place, 8, now), groundPoint(stop, 8, now + 2000)});
    for (int i = 1; i <= 6; ++i) {
        ac.track.push_back(standing(stop, now + 2000 + 100 * i));
    }
    removeSmallStop(ac, offset(stop, 90, 30));
    EXPECT_EQ(ac.track.size(), 8U);
}

TEST_F(TrackIntake, MovingOnTakesAShortStopOutOfTheTrack) {
    const LatLon stop = offset(place, 90, 200);
    LiveAc& ac =
        taxiing({groundPoint(place, 8, now), groundPoint(stop, 8, now + 2000), standing(stop, now + 2500)});
    lf_addPosition(ac, groundPoint(offset(stop, 90, 60), 8, now + 3000));
    ASSERT_EQ(ac.track.size(), 3U);
    EXPECT_FALSE(ac.track[1].stationary);
    EXPECT_FALSE(ac.track[2].stationary);
}

TEST_F(TrackIntake, StandingAircraftTakesItsNewPointWithoutWaiting) {
    LiveAc& ac = taxiing({standing(place, now + 5000)});
    ac.track.front().gsKt = 4.0;
    lf_addPosition(ac, groundPoint(place, 0, now + 6000));
    ASSERT_EQ(ac.track.size(), 2U);
    EXPECT_EQ(ac.track.front().gsKt, 0.0);
    EXPECT_EQ(ac.track.front().dueTick, now + 1);
}

// ---- landing ----

TEST_F(TrackIntake, LandingAircraftNeverTurnsBack) {
    LiveAc& ac =
        flying({airPoint(place, 900, 140, now), airPoint(offset(place, 90, 400), 800, 140, now + 500),
                airPoint(offset(place, 90, 800), 700, 140, now + 1000),
                airPoint(offset(place, 90, 1200), 600, 140, now + 1500)});
    ac.landing = true;
    for (const bool three : {false, true}) {
        if (three) {
            ac.track = {ac.track[0], airPoint(offset(place, 90, 800), 700, 140, now + 1000),
                        airPoint(offset(place, 90, 1200), 600, 140, now + 1500)};
        }
        // Behind the last two points: both are dropped.
        TrackPoint msg = airPoint(offset(place, 90, 600), 650, 140, now + 2000);
        lf_addPosition(ac, msg);
        ASSERT_EQ(ac.track.size(), three ? 2U : 3U);
        EXPECT_EQ(ac.track.back().position(), msg.position());
        EXPECT_EQ(ac.track[ac.track.size() - 2].position(), three ? place : offset(place, 90, 400));
    }
}

TEST_F(TrackIntake, OnlyTwoPointsAreDroppedForOnePosition) {
    LiveAc& ac =
        flying({airPoint(place, 900, 140, now), airPoint(offset(place, 90, 400), 800, 140, now + 500),
                airPoint(offset(place, 90, 800), 700, 140, now + 1000),
                airPoint(offset(place, 90, 1200), 600, 140, now + 1500)});
    ac.landing = true;
    lf_addPosition(ac, airPoint(offset(place, 90, 100), 650, 140, now + 2000));
    ASSERT_EQ(ac.track.size(), 3U);
    EXPECT_EQ(ac.track[1].position(), offset(place, 90, 400)) << "the third stays until it is passed";
}

TEST_F(TrackIntake, LandingAircraftRejectsAPositionBehindItsOnlyPoint) {
    LiveAc& ac = flying({airPoint(place, 900, 140, now)});
    ac.landing = true;
    lf_addPosition(ac, airPoint(offset(place, 200, 300), 900, 140, now + 500));
    EXPECT_EQ(ac.track.size(), 1U);
    lf_addPosition(ac, airPoint(offset(place, 170, 300), 900, 140, now + 500));
    EXPECT_EQ(ac.track.size(), 2U);
}

TEST_F(TrackIntake, RolloutThatWentTooFarGoesOnFromWhereTheAircraftIs) {
    LiveAc& ac = flying({groundPoint(place, 60, now + 400)});
    ac.onGround = true;
    ac.rollingOut = true;
    ac.phase = AcPhase::Taxi;
    ac.simState.lat += 0.001;
    ac.simState.lon += 0.0001;
    lf_addPosition(ac, groundPoint(offset(place, 270, 100), 40, now + 900));
    ASSERT_EQ(ac.track.size(), 2U);
    EXPECT_EQ(ac.track.front().position(), ac.simState.position());
    EXPECT_EQ(ac.track.front().dueTick, now + 1);

    LiveAc& reckoned = flying({groundPoint(place, 60, now + 400)});
    reckoned.onGround = true;
    reckoned.rollingOut = true;
    reckoned.reckonLeft = 4;
    lf_addPosition(reckoned, groundPoint(offset(place, 270, 100), 40, now + 900));
    EXPECT_EQ(reckoned.track.size(), 1U);
}

TEST_F(TrackIntake, LandingAircraftDoesNotSpeedUp) {
    LiveAc& ac = flying({airPoint(place, 900, 140, now)});
    ac.landing = true;
    lf_addPosition(ac, airPoint(offset(place, 90, 300), 880, 155, now + 500));
    EXPECT_EQ(ac.track.back().gsKt, 140.0);
    EXPECT_EQ(ac.maxLagTicks, 1000) << "no silence has ended";
    ac.track.back().gsKt = 20.0;
    lf_addPosition(ac, airPoint(offset(place, 90, 600), 860, 40, now + 1000));
    EXPECT_EQ(ac.track.back().gsKt, 40.0) << "but it may taxi off the runway";
    lf_addPosition(ac, airPoint(offset(place, 90, 900), 860, 41, now + 1500));
    EXPECT_EQ(ac.track.back().gsKt, 40.0);
}

TEST_F(TrackIntake, LandingAircraftGoesOnAfterASilenceAndMayBeTakenBackToAPointItHas) {
    LiveAc& ac =
        flying({airPoint(place, 900, 140, now), airPoint(offset(place, 90, 400), 800, 140, now + 500)});
    ac.landing = true;
    ac.reckonLeft = 3;
    lf_addPosition(ac, airPoint(place, 790, 140, now + 1500));
    EXPECT_EQ(ac.reckonLeft, 0);
    EXPECT_EQ(ac.maxLeadTicks, 3000);
    EXPECT_EQ(ac.maxLagTicks, 3000);
    ASSERT_EQ(ac.track.size(), 2U) << "the one passed is dropped";
    EXPECT_TRUE(ac.track.back().stationary);
}

// ---- data after a silence ----

TEST_F(TrackIntake, DataAfterASilenceAreTakenUpUnlessTheyLieBehindInTheAir) {
    LiveAc& ac = flying({airPoint(place, 5000, 200, now + 700)});
    ac.reckonLeft = 5;
    lf_addPosition(ac, airPoint(offset(place, 191, 900), 5000, 200, now + 900));
    EXPECT_EQ(ac.track.size(), 1U);
    EXPECT_EQ(ac.reckonLeft, 5);
    lf_addPosition(ac, airPoint(offset(place, 189, 900), 5000, 200, now + 900));
    EXPECT_EQ(ac.track.size(), 2U);
    EXPECT_EQ(ac.reckonLeft, 0);
    EXPECT_EQ(ac.track.front().dueTick, now + 1);
    EXPECT_EQ(ac.maxLagTicks, 3000);

    LiveAc& ground = taxiing({groundPoint(place, 0, now + 700)});
    ground.reckonLeft = 1;
    ground.holding = true;
    ground.holdStartTick = now - 500;
    lf_addPosition(ground, groundPoint(offset(place, 180, 100), 8, now + 900));
    EXPECT_EQ(ground.track.size(), 2U) << "on the ground an aircraft may turn";
    EXPECT_FALSE(ground.holding);
    EXPECT_EQ(ground.holdStartTick, 0);
}

TEST_F(TrackIntake, HoldingAircraftIsRemovedWhenTheFeedShowsItElsewhere) {
    HOLDING_THRESHOLD_METERS.set(250);
    for (const auto& [metres, removed] : {std::pair{240.0, false}, std::pair{260.0, true}}) {
        LiveAc& ac = taxiing({standing(place, now + 700)});
        ac.holding = true;
        ac.reckonLeft = 1;
        lf_addPosition(ac, groundPoint(offset(place, 90, metres), 8, now + 900));
        EXPECT_EQ(ac.state == AcState::Removing, removed) << metres;
        EXPECT_EQ(ac.reason == Reason::HoldingLeftBehind, removed) << metres;
        EXPECT_FALSE(ac.holding) << metres;
    }
}

// ---- departure ----

TEST_F(TrackIntake, DepartureIsRecognisedByTwoFastPositionsOrOneInTheAir) {
    struct {
        const char* name;
        double lastKt;
        double gsKt;
        bool airborne;
        bool departs;
    } const table[] = {{"two fast ones", 43, 43, false, true},
                       {"one fast one", 42, 60, false, false},
                       {"in the air", 10, 60, true, true}};
    for (const auto& row : table) {
        LiveAc& ac = taxiing({groundPoint(place, row.lastKt, now)});
        TrackPoint msg = groundPoint(offset(place, 90, 200), row.gsKt, now + 500);
        msg.airborne = row.airborne;
        lf_addPosition(ac, msg);
        EXPECT_EQ(ac.departing, row.departs) << row.name;
    }
}

// ---- push back ----

TEST_F(TrackIntake, PositionsOfAPushedAircraftTellOnlyTheSideOfItsTurn) {
    struct {
        const char* name;
        double trackDeg;
        std::optional<double> headingDeg;
        bool straightOnly;
        int step;
        bool known;
        bool right;
    } const table[] = {{"track to the right", 100, {}, false, 2, true, true},
                       {"track to the left", 80, {}, false, 2, true, false},
                       {"heading counts before track", 80, 120.0, false, 2, true, true},
                       {"no track", 0, {}, false, 2, false, false},
                       {"straight only", 100, {}, true, 2, false, false},
                       {"too late", 100, {}, false, 1, false, false}};
    for (const auto& row : table) {
        STRAIGHT_PBS_ONLY.set(row.straightOnly);
        LiveAc& ac = taxiing({groundPoint(place, 4, now)});
        ac.phase = AcPhase::PushBack;
        ac.pushStep = row.step;
        ac.simState.heading = 90.0 * radPerDeg;
        TrackPoint msg = groundPoint(offset(place, 270, 30), 3, now + 500);
        msg.trackDeg = row.trackDeg;
        if (row.headingDeg) {
            msg.heading = *row.headingDeg * radPerDeg;
        }
        lf_addPosition(ac, msg);
        EXPECT_EQ(ac.track.size(), 1U) << row.name;
        EXPECT_EQ(ac.pushKnown, row.known) << row.name;
        EXPECT_EQ(ac.pushKnown && ac.pushRight, row.right) << row.name;
    }
}

TEST_F(TrackIntake, PushedAircraftWaitsUntilTheFeedMovesOff) {
    LiveAc& ac = taxiing({standing(place, now + 300)});
    ac.phase = AcPhase::AfterPush;
    ac.moveOffRef = 900.0;
    ac.sid = 3;
    ac.standLat = ac.standLon = ac.standHeading = 1.0;
    ac.standCargo = ac.pushKnown = true;
    ac.pushStep = 1;
    ac.reckonLeft = 1;
    const double span = ac.halfSpanNm * metresPerNm;
    lf_addPosition(ac, groundPoint(offset(place, 0, span * 3.0), 3, now + 3000));
    EXPECT_EQ(ac.phase, AcPhase::AfterPush) << "the first distance is only remembered";
    EXPECT_TRUE(ac.holding);
    EXPECT_EQ(ac.holdStartTick, now);
    world.setTick(now + 500);
    lf_addPosition(ac, groundPoint(offset(place, 0, span * 2.7), 3, now + 3500));
    EXPECT_EQ(ac.holdStartTick, now) << "it has waited since then";
    EXPECT_EQ(ac.phase, AcPhase::AfterPush) << "nearer";
    TrackPoint backwards = groundPoint(offset(place, 0, span * 2.8), 3, now + 3700);
    backwards.heading = pi;
    lf_addPosition(ac, backwards);
    EXPECT_EQ(ac.phase, AcPhase::AfterPush) << "still pushed, its nose points back";
    TrackPoint away = groundPoint(offset(place, 0, span * 2.9), 3, now + 4000);
    away.stationary = true;
    lf_addPosition(ac, away);
    EXPECT_EQ(ac.phase, AcPhase::Taxi);
    EXPECT_EQ(ac.sid, 0U);
    EXPECT_EQ(ac.standLat + ac.standLon + ac.standHeading, 0.0);
    EXPECT_FALSE(ac.standCargo);
    EXPECT_FALSE(ac.pushKnown);
    EXPECT_EQ(ac.pushStep, 0U);
    EXPECT_FALSE(ac.holding);
    EXPECT_EQ(ac.holdStartTick, 0);
    EXPECT_EQ(ac.reckonLeft, 0);
    EXPECT_EQ(ac.maxLagTicks, 3000);
    EXPECT_EQ(ac.track.front().dueTick, now + 501);
    ASSERT_EQ(ac.track.size(), 2U);
    EXPECT_FALSE(ac.track.back().stationary);
}

TEST_F(TrackIntake, WaitingAircraftDoesNotTurnRoundForANearPositionBehindIt) {
    struct Case {
        double bearingDeg, metres, gsKt;
        bool believed;
    };
    // It came from the south.
    const Case cases[] = {{180, 24, 5, false}, {180, 26, 5, true},  {180, 24, 9, true},
                          {110, 24, 5, true},  {130, 24, 5, false}, {0, 24, 5, true}};
    for (const Case& entry : cases) {
        LiveAc& ac = taxiing({groundPoint(offset(place, 180, 50), 5, now), groundPoint(place, 5, now + 300)});
        lf_addPosition(ac, groundPoint(offset(place, entry.bearingDeg, entry.metres), entry.gsKt, now + 600));
        EXPECT_EQ(ac.track.back().stationary, !entry.believed) << entry.bearingDeg << " " << entry.metres;
        EXPECT_EQ(ac.track.back().position() == place, !entry.believed);
    }
}

TEST_F(TrackIntake, PushedAircraftThatIsFarOffAlreadyGoesAtOnce) {
    LiveAc& ac = taxiing({standing(place, now + 300)});
    ac.phase = AcPhase::AfterPush;
    ac.moveOffRef = 900.0;
    lf_addPosition(ac, groundPoint(offset(place, 0, ac.halfSpanNm * metresPerNm * 6.1), 3, now + 3000));
    EXPECT_EQ(ac.phase, AcPhase::Taxi);
    EXPECT_EQ(ac.track.front().dueTick, now + 300) << "no silence has ended";
}

TEST_F(TrackIntake, BufferedTargetTakesPointsThroughTheJitterFilterOnly) {
    LiveAc& ac =
        world.addLive("SWR1", AcState::Buffered, AcPhase::Unknown, {groundPoint(place, 50, now + 3000)});
    TrackPoint fast = groundPoint(offset(place, 90, 500), 60, now + 3000);
    lf_addPosition(ac, fast);
    ASSERT_EQ(ac.track.size(), 2U);
    EXPECT_EQ(ac.track.back().dueTick, now + 3001);
    EXPECT_FALSE(ac.departing);
}

} // namespace
} // namespace kst::test

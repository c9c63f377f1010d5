// What becomes of the records of the feed: which targets enter the table, which positions enter a track.

#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "engine/categories.h"
#include "engine/feedintake.h"
#include "engine/pass.h"
#include "engine/tables.h"
#include "feed/feedqueue.h"
#include "support/engineworld.h"

#include <gtest/gtest.h>

namespace kst::test {
namespace {

class FeedIntake : public ::testing::Test {
protected:
    static void hear(const Sighting& sighting) { lf_feedRecord(feedMessage(sighting)); }

    EngineWorld world;
};

TEST_F(FeedIntake, NewTargetKeepsEverythingTheFeedSaid) {
    FeedMessage message = feedMessage({.hexid = 0x4B1805,
                                       .callsign = "SWR22Y",
                                       .type = "B77W",
                                       .registration = "HB-JNA",
                                       .origin = "LSZH",
                                       .destination = "KJFK",
                                       .position = {47.5, 8.1},
                                       .altFt = 12000.0,
                                       .gsKt = 380.0,
                                       .trackDeg = 271.0,
                                       .vsFpm = 1800.0,
                                       .timeS = 1709546400.5});
    message.trueAirspeed = 402.0;
    message.bank = 0.25;
    message.heading = 4.7;
    message.headingGiven = true;
    lf_feedRecord(message);

    ASSERT_EQ(liveAcs.size(), 1U);
    const LiveAc& ac = liveAcs.front();
    EXPECT_EQ(ac.hexid, 0x4B1805U);
    EXPECT_EQ(ac.callsign, "SWR22Y");
    EXPECT_EQ(ac.primaryCallsign, "SWR22Y");
    EXPECT_EQ(ac.acType, "B77W");
    EXPECT_EQ(ac.regcode, "HB-JNA");
    EXPECT_EQ(ac.origin, "LSZH");
    EXPECT_EQ(ac.destination, "KJFK");
    EXPECT_EQ(ac.state, AcState::Buffered);
    EXPECT_EQ(ac.phase, AcPhase::Unknown);
    EXPECT_EQ(ac.lastMsgTime, 1709546400.5);
    ASSERT_EQ(ac.track.size(), 1U);
    const TrackPoint& point = ac.track.front();
    EXPECT_EQ(point.position(), (LatLon{47.5, 8.1}));
    EXPECT_EQ(point.altFt, 12000.0);
    EXPECT_EQ(point.gsKt, 380.0);
    EXPECT_EQ(point.tasKt, 402.0);
    EXPECT_EQ(point.trackDeg, 271.0);
    EXPECT_EQ(point.vsFpm, 1800.0);
    EXPECT_EQ(point.roll, 0.25);
    EXPECT_EQ(point.heading, 4.7);
    EXPECT_TRUE(point.headingFromFeed);
    EXPECT_TRUE(point.airborne);
    EXPECT_EQ(point.dueTick, updateCount + playDelayTicks);
}

struct ClassCase {
    std::string type;
    double turnRateDeg;
    double maxClimbStep;
    double pushSpeedKt;
    int flareTicks, derotateTicks, rotateTicks, climbOutTicks;
    double rotatePitchDeg, climbPitchDeg;
};

// A rate from the wrong row makes a light aircraft turn like an airliner.
TEST_F(FeedIntake, RatesAreThoseOfTheSizeClass) {
    HELICOPTERS.set(true);
    LIGHT_AIRCRAFT.set(true);
    HIGH_PERF_AIRCRAFT.set(true);
    const ClassCase cases[] = {
        {"C172", 0.15, 0.5, 5.0, 250, 250, 100, 200, -9.0, -15.0},
        {"C56X", 0.10, 0.75, 4.5, 300, 300, 200, 250, -8.0, -18.0},
        {"A320", 0.07, 0.6, 4.0, 400, 350, 200, 300, -6.0, -16.5},
        {"B77W", 0.05, 0.5, 3.0, 450, 450, 250, 400, -5.0, -12.5},
        {"F16", 0.10, 1.0, 4.5, 150, 150, 100, 200, -6.0, -20.0},
        {"EC35", 0.20, 0.75, 5.0, 100, 100, 100, 100, -20.0, -30.0},
    };
    std::uint32_t hexid = 20001;
    for (const ClassCase& expected : cases) {
        SCOPED_TRACE(expected.type);
        hear({.hexid = hexid++, .callsign = "T" + expected.type, .type = expected.type});
        const LiveAc& ac = liveAcs.back();
        EXPECT_EQ(ac.acType, expected.type);
        EXPECT_NEAR(ac.baseTurnRate * degPerRad, expected.turnRateDeg, 1e-12);
        EXPECT_EQ(ac.turnRate, ac.baseTurnRate);
        EXPECT_EQ(ac.maxClimbStep, expected.maxClimbStep);
        EXPECT_EQ(ac.pushSpeedKt, expected.pushSpeedKt);
        EXPECT_EQ(ac.flareTicks, expected.flareTicks);
        EXPECT_EQ(ac.derotateTicks, expected.derotateTicks);
        EXPECT_EQ(ac.rotateTicks, expected.rotateTicks);
        EXPECT_EQ(ac.climbOutTicks, expected.climbOutTicks);
        const double rotateShare = ac.rotatePitch * degPerRad / expected.rotatePitchDeg;
        const double climbShare = ac.climbPitch * degPerRad / expected.climbPitchDeg;
        EXPECT_NEAR(std::abs(rotateShare - 1.0), 0.025, 1e-9);
        EXPECT_NEAR(std::abs(climbShare - 1.0), 0.05, 1e-9);
    }
}

TEST_F(FeedIntake, PitchesOfAClassAreDrawnOnBothSides) {
    int steeper = 0;
    constexpr int drawn = 200;
    for (int i = 0; i < drawn; ++i) {
        hear({.hexid = 20001U + static_cast<std::uint32_t>(i), .callsign = "T" + std::to_string(i)});
        steeper += liveAcs.back().rotatePitch < categoryRates(Category::Large).rotatePitchDeg * radPerDeg;
    }
    EXPECT_GT(steeper, drawn / 4);
    EXPECT_LT(steeper, drawn * 3 / 4);
}

struct EntryCase {
    const char* name;
    Sighting sighting;
    bool helicopters, light, highPerf;
    double airportElevationFt; ///< below -1000: no airport
    Reason refusal;            ///< None: it enters
};

TEST_F(FeedIntake, OnlyWantedTargetsEnter) {
    constexpr double noAirport = -9999.0;
    const EntryCase cases[] = {
        {"airliner with every class off", {.type = "A320"}, false, false, false, noAirport, Reason::None},
        {"business jet with every class off", {.type = "C56X"}, false, false, false, noAirport, Reason::None},
        {"heavy with every class off", {.type = "B77W"}, false, false, false, noAirport, Reason::None},
        {"helicopter off", {.type = "EC35"}, false, true, true, noAirport, Reason::CategorySwitchedOff},
        {"helicopter on", {.type = "EC35"}, true, false, false, noAirport, Reason::None},
        {"light off", {.type = "C172"}, true, false, true, noAirport, Reason::CategorySwitchedOff},
        {"light on", {.type = "C172"}, false, true, false, noAirport, Reason::None},
        {"fighter off", {.type = "F16"}, true, true, false, noAirport, Reason::CategorySwitchedOff},
        {"fighter on", {.type = "F16"}, false, false, true, noAirport, Reason::None},
        {"unknown type", {.type = "XXXX"}, true, true, true, noAirport, Reason::TypeUnknown},
        {"no type, no registration", {.type = ""}, true, true, true, noAirport, Reason::TypeUnknown},
        {"50 ft above the field", {.altFt = 3000.0}, true, true, true, 2950.0, Reason::AltitudeGate},
        {"120 ft above the field", {.altFt = 3070.0}, true, true, true, 2950.0, Reason::AltitudeGate},
        {"121 ft above the field", {.altFt = 3071.0}, true, true, true, 2950.0, Reason::None},
        {"150 ft above the field", {.altFt = 3100.0}, true, true, true, 2950.0, Reason::None},
        {"100 ft below the field", {.altFt = 2850.0}, true, true, true, 2950.0, Reason::AltitudeGate},
        {"field altitude without airport", {.altFt = 50.0}, true, true, true, noAirport, Reason::None},
        {"on the ground at sea level",
         {.altFt = 0.0, .airborne = false},
         true,
         true,
         true,
         40.0,
         Reason::None},
        {"10,000 ft over a high field", {.altFt = 10000.0}, true, true, true, 9950.0, Reason::None},
        {"9,999 ft over a high field", {.altFt = 9999.0}, true, true, true, 9950.0, Reason::AltitudeGate},
    };
    for (const EntryCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        resetCounts();
        HELICOPTERS.set(entry.helicopters);
        LIGHT_AIRCRAFT.set(entry.light);
        HIGH_PERF_AIRCRAFT.set(entry.highPerf);
        world.closeAirport();
        if (entry.airportElevationFt != noAirport) {
            world.openAirport(entry.airportElevationFt);
        }
        hear(entry.sighting);
        EXPECT_EQ(liveAcs.size(), entry.refusal == Reason::None ? 1U : 0U);
        EXPECT_EQ(happeningTotal(Happening::Buffered), entry.refusal == Reason::None ? 1U : 0U);
        EXPECT_EQ(happeningTotal(Happening::TargetsHeard), 1U);
        if (entry.refusal != Reason::None) {
            EXPECT_EQ(reasonTotal(entry.refusal), 1U);
        }
    }
}

TEST_F(FeedIntake, RefusedTargetIsHeardOnceHoweverOftenItSends) {
    HELICOPTERS.set(false);
    for (int i = 0; i < 5; ++i) {
        hear({.type = "EC35", .timeS = 1000.0 + 2.0 * i});
    }
    EXPECT_EQ(happeningTotal(Happening::TargetsHeard), 1U);
    EXPECT_EQ(reasonTotal(Reason::CategorySwitchedOff), 5U);
}

TEST_F(FeedIntake, OneAircraftUnderTwoIdentitiesStaysOne) {
    hear({.hexid = 20001, .callsign = "SWR100", .type = "A320"});
    hear({.hexid = 20002, .callsign = "SWR100", .type = "A320", .timeS = 1002.0});
    EXPECT_EQ(liveAcs.size(), 1U);
    EXPECT_EQ(liveAcs.front().hexid, 20001U);
    EXPECT_EQ(liveAcs.front().track.size(), 1U);
    EXPECT_EQ(reasonTotal(Reason::DuplicateIdentity), 1U);

    hear({.hexid = 20003, .callsign = "SWR100", .type = "B738"});
    hear({.hexid = 20004, .callsign = "", .type = "A320"});
    hear({.hexid = 20005, .callsign = "", .type = "A320"});
    EXPECT_EQ(liveAcs.size(), 4U) << "another type, or no callsign, is another aircraft";
}

struct TrackCase {
    const char* name;
    double lastGs, lastTrack;
    bool airborne;
    double gs, track, afterS;
    std::int32_t reckonLeft;
    Reason dropped; ///< None: the position enters the track
};

TEST_F(FeedIntake, NoiseAndStraightTracksAreThinned) {
    const TrackCase cases[] = {
        {"same feed time", 250, 90, true, 250, 180, 0.0, 0, Reason::RecordTooSoon},
        {"older feed time", 250, 90, true, 250, 180, -5.0, 0, Reason::RecordTooSoon},
        {"0.9 s later", 250, 90, true, 250, 180, 0.9, 0, Reason::RecordTooSoon},
        {"1.0 s later", 250, 90, true, 250, 180, 1.0, 0, Reason::RecordTooSoon},
        {"1.1 s later in a turn", 250, 90, true, 250, 180, 1.1, 0, Reason::None},
        {"20 kt then 300 kt", 20, 90, true, 300, 180, 10.0, 0, Reason::SpeedImplausible},
        {"30 kt then 299 kt", 30, 90, true, 299, 180, 10.0, 0, Reason::None},
        {"300 kt then 20 kt", 300, 90, true, 20, 180, 10.0, 0, Reason::SpeedImplausible},
        {"4 kt then 100 kt", 4, 90, true, 100, 180, 10.0, 0, Reason::SpeedImplausible},
        {"100 kt then 5 kt", 100, 90, true, 5, 180, 10.0, 0, Reason::SpeedImplausible},
        {"5 kt then 79 kt", 5, 90, true, 79, 180, 10.0, 0, Reason::None},
        {"jump of speed while coasting", 20, 90, true, 300, 180, 10.0, 3, Reason::SpeedImplausible},
        // 450 m at 250 kt take 3.499 s.
        {"straight and fast, 3.4 s", 250, 90, true, 250, 91, 3.4, 0, Reason::StraightTrackThinned},
        {"straight and fast, 3.6 s", 250, 90, true, 250, 91, 3.6, 0, Reason::None},
        {"1.1 degrees of turn", 250, 90, true, 250, 91.1, 3.4, 0, Reason::None},
        {"straight across north", 250, 359.6, true, 250, 0.4, 3.4, 0, Reason::StraightTrackThinned},
        {"straight at 120 kt", 120, 90, true, 120, 90, 3.4, 0, Reason::None},
        {"straight while coasting", 250, 90, true, 250, 90, 3.4, 1, Reason::None},
        {"straight with the coasting used up", 250, 90, true, 250, 90, 3.4, -1, Reason::StraightTrackThinned},
        // 20 m at 20 kt take 1.944 s.
        {"straight taxi, 1.9 s", 20, 90, false, 20, 92, 1.9, 0, Reason::StraightTrackThinned},
        {"straight taxi, 2.0 s", 20, 90, false, 20, 92, 2.0, 0, Reason::None},
        {"taxi in a bend", 20, 90, false, 20, 92.1, 1.9, 0, Reason::None},
        {"take-off roll", 60, 90, false, 60, 90, 1.1, 0, Reason::None},
        {"crawling, 14.9 s", 1, 90, false, 1, 90, 14.9, 0, Reason::StraightTrackThinned},
        {"crawling, 15.1 s", 1, 90, false, 1, 90, 15.1, 0, Reason::None},
        {"standing, 14.9 s", 0, 90, false, 0, 90, 14.9, 0, Reason::StraightTrackThinned},
        {"standing, 15.1 s", 0, 90, false, 0, 90, 15.1, 0, Reason::None},
    };
    for (const TrackCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        resetCounts();
        hear({.gsKt = entry.lastGs, .trackDeg = entry.lastTrack, .airborne = entry.airborne});
        ASSERT_EQ(liveAcs.size(), 1U);
        LiveAc& ac = liveAcs.front();
        ac.reckonLeft = entry.reckonLeft;
        hear({.position = offset({47.6, 8.3}, 90.0, 60.0),
              .gsKt = entry.gs,
              .trackDeg = entry.track,
              .timeS = 1000.0 + entry.afterS,
              .airborne = entry.airborne});
        const bool taken = entry.dropped == Reason::None;
        EXPECT_EQ(ac.track.size(), taken ? 2U : 1U);
        EXPECT_EQ(ac.lastMsgTime, taken ? 1000.0 + entry.afterS : 1000.0)
            << "a dropped record must not move the time that the next one is compared with";
        if (!taken) {
            EXPECT_EQ(reasonTotal(entry.dropped), 1U);
            EXPECT_EQ(ac.reason, entry.dropped);
        }
    }
}

TEST_F(FeedIntake, PlacesOutOfReachAreDroppedUntilTheTargetStaysThere) {
    const Sighting air{};
    const Sighting taxi{.gsKt = 10.0, .airborne = false};
    const Sighting roll{.gsKt = 60.0, .airborne = false};
    struct Case {
        const char* name;
        Sighting first, then;
        double metres, altFt, afterS;
        AcPhase phase;
        bool taken;
    };
    const Case cases[] = {
        {"flies on", air, air, 1300, 6000, 10, AcPhase::Air, true},
        {"flies on with a strong wind behind it", air, air, 2500, 6000, 10, AcPhase::Air, true},
        {"jumps 20 km", air, air, 20000, 6000, 10, AcPhase::Air, false},
        {"jumps 20 km before it enters", air, air, 20000, 6000, 10, AcPhase::Unknown, false},
        {"is there still two minutes later", air, air, 20000, 6000, 120, AcPhase::Air, true},
        {"stands on a stand, where other rules hold", air, air, 20000, 6000, 10, AcPhase::Parked, true},
        {"waits after its push back", air, air, 20000, 6000, 10, AcPhase::AfterPush, false},
        {"dives", air, air, 1300, 3000, 10, AcPhase::Air, true},
        {"loses 5,900 ft", air, air, 1300, 100, 10, AcPhase::Air, false},
        {"gains 30,000 ft", air, air, 1300, 36000, 10, AcPhase::Air, false},
        {"flew 6,000 ft above", {.altFt = 7500.0}, {.airborne = false}, 400, 0, 3, AcPhase::Air, false},
        {"taxis on", taxi, taxi, 160, 0, 3, AcPhase::Taxi, true},
        {"taxis farther than it can", taxi, taxi, 165, 0, 3, AcPhase::Taxi, false},
        {"is there still later", taxi, taxi, 165, 0, 4, AcPhase::Taxi, true},
        {"rolls onto its stand", taxi, taxi, 165, 0, 3, AcPhase::Parking, false},
        {"taxied on unseen while it was pushed", taxi, taxi, 600, 0, 3, AcPhase::AfterPush, true},
        {"takes off", roll, roll, 700, 0, 3, AcPhase::Taxi, true},
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        resetEngine(false);
        resetCounts();
        entry.then.airborne ? world.closeAirport() : world.openAirport();
        hear(entry.first);
        liveAcs.front().phase = entry.phase;
        Sighting then = entry.then;
        then.position = offset(then.position, 90.0, entry.metres);
        then.altFt = entry.altFt;
        then.trackDeg = 180.0;
        then.timeS += entry.afterS;
        hear(then);
        EXPECT_EQ(reasonTotal(Reason::PlaceImplausible), entry.taken ? 0U : 1U);
    }
}

TEST_F(FeedIntake, LeavingAircraftTakesNothing) {
    for (const AcState state : {AcState::Respawning, AcState::Removing}) {
        resetEngine(false);
        LiveAc& ac = world.addLive("SWR100", state, AcPhase::Air, {airPoint({47.6, 8.3}, 6000, 250, 11000)});
        hear({.hexid = ac.hexid, .callsign = "SWR999", .timeS = 2000.0});
        EXPECT_EQ(liveAcs.size(), 1U) << "the record must not make a second target either";
        EXPECT_EQ(ac.track.size(), 1U);
        EXPECT_EQ(ac.callsign, "SWR100");
    }
    EXPECT_EQ(reasonTotal(Reason::AircraftLeaving), 2U);
}

TEST_F(FeedIntake, AltitudeGateHoldsOnlyWhileBuffered) {
    world.openAirport(2950.0);
    hear({.altFt = 6000.0});
    const Sighting atField{
        .position = offset({47.6, 8.3}, 90.0, 1200.0), .altFt = 3000.0, .trackDeg = 180.0, .timeS = 1010.0};
    hear(atField);
    EXPECT_EQ(liveAcs.front().track.size(), 1U);
    EXPECT_EQ(reasonTotal(Reason::AltitudeGate), 1U);

    liveAcs.front().state = AcState::Requested;
    hear(atField);
    EXPECT_EQ(liveAcs.front().track.size(), 2U) << "an aircraft on approach passes the field's altitude";
}

TEST_F(FeedIntake, HeldTargetKeepsItsReasonWhileItsTrackIsThinned) {
    hear({});
    liveAcs.front().reason = Reason::HeldForUser;
    hear({.timeS = 1000.5});
    EXPECT_EQ(liveAcs.front().reason, Reason::HeldForUser);
    EXPECT_EQ(reasonTotal(Reason::RecordTooSoon), 1U);
}

TEST_F(FeedIntake, TwoRecordsAPassInOrderOfArrival) {
    setFeedOpen(true);
    for (std::uint32_t i = 0; i < 5; ++i) {
        ASSERT_TRUE(pushFeedMessage(feedMessage({.hexid = 20001 + i, .callsign = "T" + std::to_string(i)})));
    }
    lf_handleUdpMessages();
    ASSERT_EQ(liveAcs.size(), 2U);
    EXPECT_EQ(liveAcs[0].hexid, 20001U);
    EXPECT_EQ(liveAcs[1].hexid, 20002U);
    lf_handleUdpMessages();
    lf_handleUdpMessages();
    EXPECT_EQ(liveAcs.size(), 5U);
    lf_handleUdpMessages();
    EXPECT_EQ(liveAcs.size(), 5U);
}

} // namespace
} // namespace kst::test

// Which stand an aircraft has reached, and where one that vanished most likely stood.

#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/random.h"
#include "core/runstate.h"
#include "engine/standselection.h"
#include "engine/tables.h"
#include "parking/learning.h"
#include "parking/stands.h"
#include "support/engineworld.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

constexpr double nearM = 55.0;
constexpr double sureM = 20.0;

ParkOption seen(std::string_view callsign, std::string_view airline, std::string_view type, DayHH when,
                bool real = true) {
    ParkOption option;
    option.cs = callsign;
    option.airl = airline;
    option.type = type;
    option.day = when.day;
    option.hours.set(static_cast<std::size_t>(when.hh));
    option.real = real;
    return option;
}

void addOption(ParkPos& stand, ParkOption option) {
    option.seq = static_cast<std::uint32_t>(stand.options.size()) + 1;
    stand.options.push_back(std::move(option));
}

class StandSearch : public ::testing::Test {
protected:
    StandSearch() { world.openAirport(); }

    LiveAc aircraft(std::string_view type = "A320", std::string_view callsign = "SWR100") {
        LiveAc ac = world.addLive(callsign, AcState::Live, AcPhase::Taxi, {}, type);
        ac.airline = "SWR";
        liveAcs.pop_back();
        return ac;
    }

    EngineWorld world;
};

struct NearbyCase {
    const char* name;
    double distanceM, radiusM;
    const char* type;
    bool helipad, liveParked, found;
    double radiusThenM;
};

// An A320 is 35.8 m wide: half of that is 17.9 m.
TEST_F(StandSearch, OneStandNearby) {
    const NearbyCase cases[] = {
        {"fits", 54.0, 20.0, "A320", false, false, true, 20.0},
        {"too far", 56.0, 20.0, "A320", false, false, false, 20.0},
        {"wings 1.7 m beyond the stand", 54.0, 16.2, "A320", false, false, true, 16.2},
        {"wings 1.9 m beyond the stand", 54.0, 16.0, "A320", false, false, false, 16.0},
        {"too large, but surely on it", 19.0, 15.9, "A320", false, false, true, 16.9},
        {"too large and not surely on it", 21.0, 15.9, "A320", false, false, false, 15.9},
        {"a stand without size", 5.0, 0.0, "A320", false, false, true, 16.9},
        {"taken by another live aircraft", 5.0, 20.0, "A320", false, true, false, 20.0},
        {"helicopter at a helipad", 30.0, 20.0, "EC35", true, false, true, 20.0},
        {"helicopter at an ordinary stand", 5.0, 20.0, "EC35", false, false, false, 20.0},
        {"aeroplane at a helipad", 5.0, 20.0, "A320", true, false, false, 20.0},
        {"large aeroplane at a helipad", 5.0, 5.0, "A320", true, false, false, 5.0},
    };
    for (const NearbyCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        world.clearStands();
        clearStandChanges();
        ParkPos& stand = world.addStand("A1", airportPlace, entry.radiusM);
        stand.heli = entry.helipad;
        stand.liveParked = entry.liveParked;
        const ParkPos* found = lf_searchStandNearby(offset(airportPlace, 120.0, entry.distanceM),
                                                    aircraft(entry.type), nearM * nmPerMetre, false);
        EXPECT_EQ(found != nullptr, entry.found);
        EXPECT_NEAR(stand.radius * metresPerNm, entry.radiusThenM, 1e-6);
        const bool grew = entry.radiusThenM != entry.radiusM;
        EXPECT_EQ(stand.radius_change, grew);
        EXPECT_EQ(standChanges(), grew ? 1U : 0U);
    }
}

TEST_F(StandSearch, StandWhereTheFlightWasSeenCountsUpTo85Metres) {
    struct Case {
        const char* name;
        ParkOption option;
        double distanceM;
        bool useOptions, otherWithin, found;
    };
    const DayHH other{3, 30};
    ParkOption second = seen("SWR1", "SWR", "B738", other);
    second.cs2 = "SWR100";
    const Case cases[] = {
        {"same flight", seen("SWR100", "BAW", "B738", other), 84.0, true, false, true},
        {"same flight out", second, 84.0, true, false, true},
        {"same operator and type", seen("SWR7", "SWR", "A320", other), 84.0, true, false, true},
        {"same operator, other type", seen("SWR7", "SWR", "B738", other), 84.0, true, false, false},
        {"only guessed", seen("SWR100", "SWR", "A320", other, false), 84.0, true, false, false},
        {"too far", seen("SWR100", "SWR", "A320", other), 86.0, true, false, false},
        {"not asked for", seen("SWR100", "SWR", "A320", other), 84.0, false, false, false},
        {"another stand is near", seen("SWR100", "SWR", "A320", other), 60.0, true, true, false},
    };
    for (const bool ghost : {false, true}) {
        for (const Case& entry : cases) {
            SCOPED_TRACE(entry.name);
            world.clearStands();
            ParkPos& known = world.addStand("K1", offset(airportPlace, 0.0, entry.distanceM));
            addOption(known, entry.option);
            if (entry.otherWithin) {
                world.addStand("N1", offset(airportPlace, 180.0, 50.0));
            }
            const ParkPos* found =
                lf_searchStandNearby(airportPlace, aircraft("A320", ghost ? "SWR100_" : "SWR100"),
                                     nearM * nmPerMetre, entry.useOptions);
            EXPECT_EQ(found == &known, entry.found);
            EXPECT_EQ(found == nullptr, !entry.found && !entry.otherWithin);
            known.options.front().seq = 0;
            EXPECT_NE(lf_searchStandNearby(airportPlace, aircraft(), nearM * nmPerMetre, true), &known)
                << "a dead option counts";
        }
    }
}

/// The rule of the search, told from its result: the nearest stand that may be taken, else the nearest known
/// one.
std::uint32_t expectedStand(LatLon position, const LiveAc& ac, double maxM, bool useOptions) {
    std::vector<std::pair<double, const ParkPos*>> usable;
    std::vector<std::pair<double, const ParkPos*>> known;
    for (const ParkPos& stand : parkPositions()) {
        const double metres = gf_distanceNm(position, stand.position()) * metresPerNm;
        const bool fits = (ac.halfSpanNm - stand.radius) * metresPerNm <= 1.8;
        if (stand.liveParked) {
            continue;
        }
        if (metres <= maxM && (fits || metres <= sureM)) {
            usable.emplace_back(metres, &stand);
        }
        if (useOptions && metres <= 85.0 && fits && !stand.options.empty()) {
            known.emplace_back(metres, &stand);
        }
    }
    const auto& list = usable.empty() ? known : usable;
    if (list.empty()) {
        return 0;
    }
    const ParkPos& nearest = *std::ranges::min_element(list)->second;
    return nearest.heli ? 0 : nearest.sid;
}

TEST_F(StandSearch, AgreesWithThePlainRuleOnDrawnAprons) {
    const auto draw = [](double below) { return below * randomBelow(10000) / 10000.0; };
    int found = 0;
    for (int round = 0; round < 400; ++round) {
        world.clearStands();
        for (int i = 0; i < 30; ++i) {
            ParkPos& stand = world.addStand("S" + std::to_string(i),
                                            offset(airportPlace, draw(360.0), draw(110.0)), 5.0 + draw(30.0));
            stand.liveParked = chance(60);
            stand.heli = chance(20);
            if (chance(30)) {
                addOption(stand, seen("SWR100", "SWR", "A320", {1, 5}));
            }
        }
        const LiveAc ac = aircraft();
        const double maxM = chance(50) ? nearM : sureM;
        const bool useOptions = chance(50);
        const std::uint32_t expected = expectedStand(airportPlace, ac, maxM, useOptions);
        const ParkPos* stand = lf_searchStandNearby(airportPlace, ac, maxM * nmPerMetre, useOptions);
        ASSERT_EQ(stand != nullptr ? stand->sid : 0, expected) << "round " << round;
        found += expected != 0 ? 1 : 0;
    }
    EXPECT_GT(found, 100);
}

TEST_F(StandSearch, StandUnderTheUser) {
    EXPECT_EQ(lf_userStand(airportPlace), "");
    world.addStand("A1", offset(airportPlace, 90.0, 54.0));
    EXPECT_EQ(lf_userStand(airportPlace), "A1") << "an airport that is loaded later is looked at anew";
    world.addStand("A2", offset(airportPlace, 90.0, 30.0));
    EXPECT_EQ(lf_userStand(airportPlace), "A1") << "a user that does not move is not searched for again";
    const LatLon moved = offset(airportPlace, 90.0, 1.0);
    EXPECT_EQ(lf_userStand(moved), "A2");
    EXPECT_EQ(lf_userStand(offset(airportPlace, 270.0, 26.0)), "");
    EXPECT_EQ(lf_userStand({std::nan(""), 8.5}), "");
}

enum StandKind { gate, ramp, cargo, cargoRamp, pad };

struct SoftCase {
    const char* name;
    const char* type;
    const char* airline;
    bool freighter;
    std::vector<StandKind> kinds;
    std::vector<double> radiiM;
    int expected; ///< index of the stand, -1 for none
};

// At an airport of the United States, where airliners go to gates and nothing is drawn.
TEST_F(StandSearch, KindOfStandForAnAircraftThatVanished) {
    const SoftCase cases[] = {
        {"airliner: gate first", "A320", "SWR", false, {ramp, gate, cargo, pad}, {20, 20, 20, 20}, 1},
        {"airliner: any gate before a ramp", "A320", "SWR", false, {ramp, gate}, {20, 10}, 1},
        {"airliner: ramp if no gate", "A320", "SWR", false, {cargo, pad, ramp}, {20, 20, 20}, 2},
        {"airliner: never a cargo stand", "A320", "SWR", false, {cargo, pad}, {20, 20}, -1},
        {"tightest gate", "A320", "SWR", false, {gate, gate, gate}, {60, 18, 40}, 1},
        {"light: ramp only", "C172", "HBX", false, {gate, cargo, pad}, {20, 20, 20}, -1},
        {"light: a ramp that is too small", "C172", "HBX", false, {gate, ramp}, {20, 3}, 1},
        {"private airliner: ramp", "A320", "PVT", false, {gate, ramp}, {20, 20}, 1},
        {"freighter: cargo stand", "B77W", "CLX", true, {gate, cargo, ramp}, {40, 40, 40}, 1},
        {"freighter: small cargo stand first", "B77W", "CLX", true, {gate, cargo}, {40, 10}, 1},
        {"freighter: else a stand that fits", "B77W", "CLX", true, {gate, ramp, pad}, {10, 40, 40}, 1},
        {"helicopter: helipad", "EC35", "HEL", false, {ramp, pad, gate}, {20, 20, 20}, 1},
        {"helicopter: ramp that fits before a small pad", "EC35", "HEL", false, {pad, ramp}, {2, 20}, 1},
        {"helicopter: cargo ramps too", "EC35", "HEL", false, {gate, cargo, cargoRamp}, {20, 20, 20}, 2},
        {"helicopter: no gate", "EC35", "HEL", false, {gate, cargo}, {20, 20}, -1},
    };
    setParkAirport(ParkAirportFacts{"KSFO", "San Francisco", airportPlace, 13.0});
    for (const SoftCase& entry : cases) {
        SCOPED_TRACE(entry.name);
        world.clearStands();
        for (std::size_t i = 0; i < entry.kinds.size(); ++i) {
            ParkPos& stand =
                world.addStand(std::to_string(i), offset(airportPlace, 90.0, 100.0 * static_cast<double>(i)),
                               entry.radiiM[i]);
            stand.ramp = entry.kinds[i] == ramp || entry.kinds[i] == cargoRamp;
            stand.cargo = entry.kinds[i] == cargo || entry.kinds[i] == cargoRamp;
            stand.heli = entry.kinds[i] == pad;
        }
        LiveAc ac = aircraft(entry.type);
        ac.airline = entry.airline;
        ac.cargo = entry.freighter;
        for (int draw = 0; draw < 5; ++draw) {
            const ParkPos* stand = lf_searchSoftStand({1, 20}, ac, true);
            EXPECT_EQ(stand != nullptr ? static_cast<int>(stand->sid) - 1 : -1, entry.expected);
        }
    }
}

TEST_F(StandSearch, VanishedAircraftPrefersWhereItWasSeenAndAvoidsWhatIsTaken) {
    ParkPos& known = world.addStand("A1", airportPlace, 60.0);
    ParkPos& tight = world.addStand("A2", offset(airportPlace, 90.0, 100.0), 18.0);
    addOption(known, seen("SWR100", "SWR", "A320", {1, 8}));
    EXPECT_EQ(lf_searchSoftStand({1, 20}, aircraft(), true), &known);
    EXPECT_EQ(lf_searchSoftStand({1, 8}, aircraft(), true), &tight) << "somebody was seen there at this time";
    EXPECT_EQ(lf_searchSoftStand({2, 8}, aircraft(), true), &known) << "on another day";
    addOption(tight, seen("DLH1", "DLH", "A320", {1, 8}, false));
    EXPECT_EQ(lf_searchSoftStand({1, 8}, aircraft(), false), nullptr) << "guesses take a stand as well";
    EXPECT_EQ(lf_searchSoftStand({1, 8}, aircraft(), true), &known) << "free in half an hour";
}

TEST_F(StandSearch, OnlySmallAirportsLookAhead) {
    for (const int count : {10, 11}) {
        world.clearStands();
        for (int i = 0; i < count; ++i) {
            ParkPos& stand = world.addStand("S", offset(airportPlace, 90.0, 100.0 * i));
            addOption(stand, seen("DLH1", "DLH", "A320", {7, 47}));
        }
        EXPECT_EQ(lf_searchSoftStand({7, 47}, aircraft(), true) != nullptr, count == 10) << count;
    }
}

TEST_F(StandSearch, CoupledFlightAboutThisTime) {
    struct Case {
        const char* name;
        const char* type;
        const char* callsign;
        DayHH now;
        int seenHh;
        bool found;
    };
    // The other way round, and the edges of the range at both ends of the day.
    const Case cases[] = {
        {"inbound", "A320", "SWR100", {1, 20}, 20, true},
        {"outbound, a ghost", "A320", "SWR101_", {1, 20}, 20, true},
        {"ten half hours away", "A320", "SWR100", {1, 3}, 13, true},
        {"eleven half hours away", "A320", "SWR100", {1, 3}, 14, false},
        {"heavy: fourteen", "B77W", "SWR100", {1, 33}, 47, true},
        {"heavy: fifteen", "B77W", "SWR100", {1, 32}, 47, false},
        {"another day", "A320", "SWR100", {2, 20}, 20, false},
        {"another flight", "A320", "SWR999", {1, 20}, 20, false},
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.name);
        world.clearStands();
        ParkPos& stand = world.addStand("A1", airportPlace);
        ParkOption single = seen("SWR100", "SWR", "A320", {1, entry.seenHh});
        addOption(stand, single);
        ParkOption other = seen("SWR100", "BAW", "A320", {1, entry.seenHh});
        other.cs2 = "BAW1";
        addOption(stand, other);
        ParkOption coupled = single;
        coupled.cs2 = "SWR101";
        addOption(stand, coupled);
        LiveAc ac = aircraft(entry.type, entry.callsign);
        lf_searchForCoupledCsAroundThisTime(entry.now, ac);
        EXPECT_EQ(ac.primaryCallsign, entry.found ? "SWR100" : entry.callsign);
        EXPECT_EQ(ac.coupledCallsign, entry.found ? "SWR101" : "");
    }
}

} // namespace
} // namespace kst::test

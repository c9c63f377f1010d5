// The life of AI objects as a client sees it: creation, take-over, movement, configuration, removal.

#include "support/tempfolder.h"
#include "tests/simulator/client.h"

#include "platform/paths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>

namespace {

using namespace kst::simconnect;
using kst::standin::Aircraft;
using kst::standin::PacketReader;
using kst::standin::Placement;
using kst::standin::World;
using kst::standin::WorldSettings;
using kst::test::Client;
using kst::test::Received;

constexpr double fieldFt = 1416.0;
constexpr Placement overField{47.458, 8.548, 0.0, 0.0, 1.5, fieldFt + 1000.0};
constexpr const char* a320 = "FSX A320 Test Air";
constexpr double a320CgFt = 11.7;

class Objects : public kst::test::Declared {
protected:
    Objects() {
        world.terrain().addAirport(overField.lat, overField.lon, fieldFt);
        world.placeUser(overField.lat, overField.lon, 0.0, true);
    }

    const Aircraft& object(std::uint32_t id) const { return *world.find(id); }

    /// One by-type scan: the object ids that it names.
    std::vector<std::uint32_t> scan(std::uint32_t radiusM, std::uint32_t type = ObjectAircraft) {
        client.send(OpRequestDataOnSimObjectType, {RequestAircraftScan, DefinitionScan, radiusM, type});
        std::vector<std::uint32_t> ids;
        for (const Received& message : client.take()) {
            if (message.id != RecvSimobjectDataByType)
                continue;
            PacketReader body = message.body(1);
            ids.push_back(body.u32());
        }
        return ids;
    }
};

TEST_F(Objects, ACreationIsAssignedThenAddedThenScannedWithItsTailNumber) {
    client.create(a320, "SWR12AB", overField);
    const auto messages = client.take();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[0].id, RecvAssignedObjectId);
    PacketReader assigned = messages[0].body();
    EXPECT_EQ(assigned.u32(), RequestCreate);
    const std::uint32_t id = assigned.u32();
    EXPECT_GE(id, 3U);
    EXPECT_EQ(messages[1].id, RecvEventObjectAddRemove);
    EXPECT_EQ(messages[1].bytes.size(), 28U);
    PacketReader added = messages[1].body(1);
    EXPECT_EQ(added.u32(), EventObjectAdded);
    EXPECT_EQ(added.u32(), id);
    EXPECT_EQ(added.u32(), ObjectAircraft);

    client.send(OpRequestDataOnSimObjectType, {RequestAircraftScan, DefinitionScan, 10000, ObjectAircraft});
    const auto answers = client.take();
    ASSERT_EQ(answers.size(), 2U) << "the user and the object";
    PacketReader body = answers[1].body();
    EXPECT_EQ(body.u32(), RequestAircraftScan);
    EXPECT_EQ(body.u32(), id);
    EXPECT_EQ(body.u32(), DefinitionScan);
    body.skip(4);
    EXPECT_EQ(body.u32(), 2U) << "entry numbers count from 1";
    EXPECT_EQ(body.u32(), 2U);
    EXPECT_EQ(body.u32(), 4U);
    EXPECT_NEAR(body.f64(), 1000.0, 1e-6);
    EXPECT_NEAR(body.f64(), fieldFt, 1e-6);
    EXPECT_EQ(body.u64(), 0U);
    EXPECT_EQ(body.text(32), "SWR12AB");
    EXPECT_EQ(body.left(), 0U);
}

TEST_F(Objects, AScanGoesByRadiusAndType) {
    Placement near = overField;
    near.lat += 0.05; // 5.6 km
    Placement far = overField;
    far.lat += 0.5; // 56 km
    const std::uint32_t nearId = client.created(a320, "NEAR", near);
    const std::uint32_t farId = client.created(a320, "FAR", far);
    const std::uint32_t userId = world.user().id;
    using Ids = std::vector<std::uint32_t>;
    EXPECT_EQ(scan(0), (Ids{userId}));
    EXPECT_EQ(scan(10000), (Ids{userId, nearId}));
    EXPECT_EQ(scan(100000), (Ids{userId, nearId, farId}));
    EXPECT_EQ(scan(100000, ObjectUser), (Ids{userId}));
    EXPECT_EQ(scan(100000, ObjectGround), Ids{});
    EXPECT_EQ(client.exceptionOf(client.send(OpRequestDataOnSimObjectType,
                                             {RequestAircraftScan, DefinitionScan, 300000, 2})),
              ExceptionOutOfBounds);
}

TEST_F(Objects, AFrozenObjectStaysExactlyWhereItIsPut) {
    const std::uint32_t id = client.created(a320, "FROZEN", overField);
    client.freeze(id);
    client.set(DefinitionPosition, id, {47.5, 8.6, -0.05, 0.1, 3.0, 4000.0, 20.0, 180.0});
    for (int frame = 0; frame < 100; ++frame)
        world.frame(0.02);
    const Placement& place = object(id).place;
    EXPECT_EQ(place.lat, 47.5);
    EXPECT_EQ(place.lon, 8.6);
    EXPECT_EQ(place.pitchRad, -0.05);
    EXPECT_EQ(place.bankRad, 0.1);
    EXPECT_EQ(place.headingRad, 3.0);
    EXPECT_EQ(place.altFt, 4000.0);
    EXPECT_EQ(object(id).vsFps, 20.0);
    EXPECT_EQ(object(id).airspeedKt, 180.0);
}

TEST_F(Objects, WhatIsNotFrozenDriftsAway) {
    const std::uint32_t id = client.created(a320, "DRIFTS", overField);
    client.set(DefinitionPosition, id, {47.5, 8.6, -0.05, 0.1, 0.0, 4000.0, 0.0, 120.0});
    world.frame(1.0);
    EXPECT_GT(object(id).place.lat, 47.5) << "it flies on along its heading";
    EXPECT_NEAR(object(id).place.altFt, 3975.0, 1.0) << "and sinks";
    EXPECT_LT(std::abs(object(id).place.bankRad), 0.1);
    client.transmit(id, FreezeLatitudeLongitudeSet, 1);
    const double held = object(id).place.lat;
    world.frame(1.0);
    EXPECT_EQ(object(id).place.lat, held);
    EXPECT_NEAR(object(id).place.altFt, 3950.0, 1.0) << "each freeze holds its own part";
    client.transmit(id, FreezeAltitudeSet, 1);
    client.transmit(id, FreezeLatitudeLongitudeSet, 0);
    world.frame(1.0);
    EXPECT_GT(object(id).place.lat, held);
    EXPECT_NEAR(object(id).place.altFt, 3950.0, 1.0);
}

TEST_F(Objects, AnObjectLeftAloneComesDownAndStandsOnItsWheels) {
    const std::uint32_t id = client.created(a320, "ALONE", overField);
    for (int second = 0; second < 200; ++second)
        world.frame(1.0);
    EXPECT_TRUE(world.onGround(object(id)));
    EXPECT_NEAR(kst::standin::aboveGroundFt(object(id), world.terrain()), a320CgFt, 1e-9);
    const Placement stopped = object(id).place;
    world.frame(1.0);
    EXPECT_EQ(object(id).place.lat, stopped.lat);
}

TEST_F(Objects, OnGroundFollowsTheHeightOfTheWheels) {
    struct Case {
        double aboveFieldFt;
        bool onGround;
    };
    const Case cases[] = {{a320CgFt + 30.0, false}, {a320CgFt + 0.3, false}, {a320CgFt + 0.2, true},
                          {a320CgFt, true},         {a320CgFt - 5.0, true},  {-100.0, true}};
    const std::uint32_t id = client.created(a320, "GROUND", overField);
    client.freeze(id);
    for (const Case& each : cases) {
        client.set(DefinitionPosition, id,
                   {overField.lat, overField.lon, 0.0, 0.0, 0.0, fieldFt + each.aboveFieldFt, 0.0, 0.0});
        client.take();
        client.request(1, DefinitionOnGround, id, PeriodOnce);
        const auto answer = client.takeOne(RecvSimobjectData);
        ASSERT_TRUE(answer);
        PacketReader body = answer->body(7);
        EXPECT_EQ(body.u64(), each.onGround ? 1U : 0U) << each.aboveFieldFt;
    }
}

TEST_F(Objects, CreatedOnTheGroundItStandsThereWhateverItsAltitude) {
    const std::uint32_t id = client.created(a320, "PARKED*", overField, true);
    EXPECT_NEAR(object(id).place.altFt, fieldFt + a320CgFt, 1e-9);
    EXPECT_TRUE(world.onGround(object(id)));
}

TEST_F(Objects, SizesComeFromTheTitleUnlessSet) {
    world.setSizes("Oddity", {42.5, -0.02});
    struct Case {
        const char* title;
        double cgFt;
    };
    const Case cases[] = {{"FAIB Airbus A380-800 Test", 20.1},
                          {"AIA 737-800 Test", 9.6},
                          {"Cessna C172 Skyhawk", 4.2},
                          {"Something unknown", 9.0},
                          {"Oddity", 42.5}};
    for (const Case& each : cases) {
        const std::uint32_t id = client.created(each.title, "SIZES", overField);
        client.request(RequestStaticCg, DefinitionSizes, id, PeriodOnce);
        const auto answer = client.takeOne(RecvSimobjectData);
        ASSERT_TRUE(answer) << each.title;
        EXPECT_EQ(answer->bytes.size(), 56U);
        PacketReader body = answer->body(7);
        EXPECT_EQ(body.f64(), each.cgFt) << each.title;
    }
}

TEST_F(Objects, EventsConfigureTheAircraft) {
    using namespace kst::standin;
    const std::uint32_t id = client.created(a320, "CONFIG", overField);
    struct Case {
        std::uint32_t event;
        std::uint32_t value;
        double (*seen)(const Aircraft&);
        double expected;
    };
    const auto lights = [](const Aircraft& a) { return static_cast<double>(a.lights); };
    const auto engine = [](const Aircraft& a) { return a.engineRunning ? 1.0 : 0.0; };
    const auto gear = [](const Aircraft& a) { return a.gearDown ? 1.0 : 0.0; };
    const auto flaps = [](const Aircraft& a) { return a.flapsPercent; };
    const Case cases[] = {
        {NavLightsSet, 1, lights, LightNav},
        {BeaconLightsSet, 1, lights, LightNav | LightBeacon},
        {NavLightsSet, 0, lights, LightBeacon},
        {LandingLightsSet, 1, lights, LightBeacon | LightLanding},
        {TaxiLightsSet, 7, lights, LightBeacon | LightLanding | LightTaxi},
        {AllLightsToggle, 0, lights, 0},
        {AllLightsToggle, 0, lights, allLights},
        {StrobesSet, 0, lights, allLights & ~LightStrobe},
        {LogoLightsSet, 0, lights, allLights & ~LightStrobe & ~LightLogo},
        {CabinLightsSet, 0, lights, allLights & ~LightStrobe & ~LightLogo & ~LightCabin},
        {GearSet, 0, gear, 0},
        {GearSet, 1, gear, 1},
        {EngineAutoStart, 0, engine, 1},
        {EngineAutoShutdown, 0, engine, 0},
        {FlapsSet, 16383, flaps, 100},
        {FlapsSet, 0, flaps, 0},
        {SpoilersSet, 16383, [](const Aircraft& a) { return a.spoilersPercent; }, 100},
        {ThrottleSet, 16383, [](const Aircraft& a) { return a.throttlePercent[1]; }, 100},
    };
    for (const Case& each : cases) {
        client.transmit(id, each.event, each.value);
        EXPECT_EQ(each.seen(object(id)), each.expected) << "event " << each.event << " value " << each.value;
    }
    client.set(DefinitionControls, id, {100.0, -100.0, 40.0});
    EXPECT_EQ(object(id).spoilersPercent, 100.0);
    EXPECT_EQ(object(id).throttlePercent[0], -100.0);
    EXPECT_EQ(object(id).throttlePercent[1], 40.0);
    EXPECT_EQ(object(id).placed, 0U) << "the controls are no position";
    EXPECT_TRUE(client.session.complaints().empty());
    EXPECT_EQ(object(id).events.size(), std::size(cases));
}

TEST_F(Objects, ARemovalIsToldAndLeavesItsStory) {
    const std::uint32_t id = client.created(a320, "REMOVED", overField);
    client.request(50, DefinitionOnGround, id, PeriodSecond);
    client.take();
    world.frame(2.0);
    client.take();
    client.send(OpAIRemoveObject, {id, RequestRemove});
    const auto removed = client.takeOne(RecvEventObjectAddRemove);
    ASSERT_TRUE(removed);
    PacketReader body = removed->body(1);
    EXPECT_EQ(body.u32(), EventObjectRemoved);
    EXPECT_EQ(body.u32(), id);
    EXPECT_EQ(world.find(id), nullptr);
    ASSERT_EQ(world.gone().size(), 1U);
    EXPECT_EQ(world.gone()[0].tailNumber, "REMOVED");
    EXPECT_EQ(world.gone()[0].removedAt, 2.0);
    EXPECT_EQ(world.gone()[0].history.size(), 2U);
    world.second();
    EXPECT_TRUE(client.take().empty()) << "its periodic request ended with it";
    EXPECT_EQ(client.exceptionOf(client.send(OpAIRemoveObject, {id, RequestRemove})),
              ExceptionUnrecognizedId);
}

TEST_F(Objects, RefusalsNameTheRequest) {
    world.refuseNextCreations(1);
    EXPECT_EQ(client.exceptionOf(client.create(a320, "REFUSED", overField)), ExceptionCreateObjectFailed);
    EXPECT_EQ(client.exceptionOf(client.create(a320, "TAKEN", overField)), 0U);
    EXPECT_EQ(client.exceptionOf(client.create("", "NOTITLE", overField)), ExceptionCreateObjectFailed);
    world.setTitles({a320});
    EXPECT_EQ(client.exceptionOf(client.create("Other", "UNKNOWN", overField)), ExceptionCreateObjectFailed);
    world.setObjectLimit(2);
    EXPECT_EQ(client.exceptionOf(client.create(a320, "SECOND", overField)), 0U);
    EXPECT_EQ(client.exceptionOf(client.create(a320, "THIRD", overField)), ExceptionTooManyObjects);
    Placement nowhere = overField;
    nowhere.lat = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(client.exceptionOf(client.create(a320, "NAN", nowhere)), ExceptionOutOfBounds);
    nowhere.lat = 91.0;
    EXPECT_EQ(client.exceptionOf(client.create(a320, "POLE", nowhere)), ExceptionOutOfBounds);
    EXPECT_EQ(world.objects().size(), 2U);
}

TEST_F(Objects, WrongDataNeverMovesAnObject) {
    const std::uint32_t id = client.created(a320, "DATA", overField);
    client.freeze(id);
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double huge = std::numeric_limits<double>::max();
    EXPECT_EQ(client.exceptionOf(client.set(402, id, {1, 2, 0, 0, 0, 5000, 0, nan})), ExceptionDataError);
    EXPECT_EQ(client.exceptionOf(client.set(402, id, {1, huge, 0, 0, 0, 5000, 0, 0})), ExceptionDataError);
    EXPECT_EQ(client.exceptionOf(client.set(402, id, {1, 2, 0})), ExceptionInvalidDataSize);
    EXPECT_EQ(client.exceptionOf(client.set(402, id, {1, 2, 0, 0, 0, 0, 0, 0, 9})), ExceptionInvalidDataSize);
    EXPECT_EQ(client.exceptionOf(client.set(405, id, {1, 2})), ExceptionDataError) << "sizes are read only";
    EXPECT_EQ(client.exceptionOf(client.set(499, id, {1})), ExceptionUnrecognizedId);
    EXPECT_EQ(client.exceptionOf(client.set(402, 999, {1, 2, 0, 0, 0, 0, 0, 0})), ExceptionUnrecognizedId);
    EXPECT_EQ(object(id).place.lat, overField.lat);
    EXPECT_EQ(object(id).place.altFt, overField.altFt);
    EXPECT_EQ(object(id).placed, 0U);
}

TEST_F(Objects, OnlyItsCreatorMayTakeAnObject) {
    const std::uint32_t foreign = world.addForeignObject("Somebody's 747", "FOREIGN", overField);
    const auto added = client.takeOne(RecvEventObjectAddRemove);
    ASSERT_TRUE(added);
    EXPECT_EQ(client.exceptionOf(client.send(OpAIRemoveObject, {foreign, RequestRemove})),
              ExceptionIllegalOperation);
    EXPECT_EQ(client.exceptionOf(client.send(OpAIReleaseControl, {world.user().id, 1})),
              ExceptionIllegalOperation);
    EXPECT_NE(world.find(foreign), nullptr);
}

TEST_F(Objects, AClientThatGoesTakesItsObjectsAlong) {
    std::uint32_t id = 0;
    {
        Client other(world);
        other.declareAll();
        other.take();
        id = other.created(a320, "OTHERS", overField);
        EXPECT_NE(id, 0U);
        EXPECT_EQ(client.take().size(), 1U) << "every subscriber hears of it";
    }
    EXPECT_EQ(world.find(id), nullptr);
    EXPECT_TRUE(client.takeOne(RecvEventObjectAddRemove));
    EXPECT_EQ(world.clients(), 1U);
}

TEST_F(Objects, ADropInTheMidstOfTrafficRemovesTheObjects) {
    client.created(a320, "ONE", overField);
    client.created(a320, "TWO", overField);
    world.dropConnections();
    EXPECT_TRUE(world.objects().empty());
    world.frame(0.02);
    world.second();
}

TEST_F(Objects, AFlightPlanMustBeAFile) {
    const std::uint32_t id = client.created(a320, "PLAN", overField);
    kst::test::TempFolder folder;
    const auto plan = folder.path() / "7.pln";
    const auto setPlan = [&](const std::string& path) {
        kst::standin::PacketWriter body;
        body.u32(id).text(path, 260).u32(RequestFlightPlan);
        return client.exceptionOf(client.send(OpAISetAircraftFlightPlan, body));
    };
    const std::string path = kst::platform::utf8FromPath(plan);
    EXPECT_EQ(setPlan(path), ExceptionLoadFlightplanFailed);
    std::ofstream(plan) << "<SimBase.Document/>\n";
    EXPECT_EQ(setPlan(path), 0U);
    EXPECT_EQ(object(id).flightPlan, path);
}

TEST_F(Objects, MappingsAndGroupsAreChecked) {
    const std::uint32_t id = client.created(a320, "MAPS", overField);
    constexpr std::uint32_t eventIdDuplicate = 9;
    const auto expect = [&](std::uint32_t sendId, std::uint32_t exception, const char* what) {
        EXPECT_EQ(client.exceptionOf(sendId), exception) << what;
    };
    expect(client.send(OpMapClientEventToSimEvent, 300, "BEACON_LIGHT"), ExceptionNameUnrecognized, "name");
    expect(client.send(OpMapClientEventToSimEvent, 207, "GEAR_SET"), eventIdDuplicate, "event id taken");
    expect(client.send(OpMapClientEventToSimEvent, 300, "gear_set"), 0, "case of letters");
    expect(client.send(OpAddClientEventToNotificationGroup, {301, 399, 0}), ExceptionUnrecognizedId, "event");
    expect(client.send(OpSetNotificationGroupPriority, {999, 1}), ExceptionUnrecognizedId, "group");
    expect(client.transmit(id, 399, 1), ExceptionUnrecognizedId, "unmapped event");
    expect(client.transmit(999, GearSet, 1), ExceptionUnrecognizedId, "object");
    expect(client.send(OpTransmitClientEvent, {id, GearSet, 1, 999, 0}), ExceptionUnrecognizedId, "group");
    expect(client.send(OpSubscribeToSystemEvent, 230, "Weather"), ExceptionNameUnrecognized, "system event");
    expect(client.send(OpSubscribeToSystemEvent, 201, "Frame"), ExceptionAlreadySubscribed, "twice");
}

TEST_F(Objects, HistoryKeepsTheLatestPointsAtItsInterval) {
    WorldSettings settings;
    settings.historyIntervalSeconds = 0.5;
    settings.historyLimit = 4;
    World small(settings);
    Client other(small);
    other.declareAll();
    other.take();
    const std::uint32_t id = other.created(a320, "HISTORY", overField);
    other.freeze(id);
    for (int frame = 0; frame < 40; ++frame)
        small.frame(0.125);
    const auto& history = small.find(id)->history;
    ASSERT_EQ(history.size(), 4U);
    EXPECT_EQ(history.back().atSeconds, 5.0);
    EXPECT_EQ(history.front().atSeconds, 3.5);
}

} // namespace

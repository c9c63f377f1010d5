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
using Words = std::vector<std::uint32_t>;

constexpr double fieldFt = 1416.0;
constexpr Placement overField{47.458, 8.548, 0.0, 0.0, 1.5, fieldFt + 1000.0};
constexpr const char* a320 = "FSX A320 Test Air";
constexpr double a320CgFt = 11.7;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

class Objects : public kst::test::Declared {
protected:
    Objects() {
        world.terrain().addAirport(overField.lat, overField.lon, fieldFt);
        world.placeUser(overField.lat, overField.lon, 0.0, true);
    }

    const Aircraft& object(std::uint32_t id) const { return *world.find(id); }
};

TEST_F(Objects, ACreationIsAssignedThenAddedThenScannedWithItsTailNumber) {
    client.create(a320, "SWR12AB", overField);
    const auto messages = client.take();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[0].id, RecvAssignedObjectId);
    const std::uint32_t id = messages[0].words(2)[1];
    EXPECT_EQ(messages[0].words(2), (Words{RequestCreate, id}));
    EXPECT_GE(id, 3U);
    EXPECT_EQ(messages[1].id, RecvEventObjectAddRemove);
    EXPECT_EQ(messages[1].bytes.size(), 28U);
    EXPECT_EQ(messages[1].words(4), (Words{unused, EventObjectAdded, id, ObjectAircraft}));

    client.send(OpRequestDataOnSimObjectType, {RequestAircraftScan, DefinitionScan, 10000, ObjectAircraft});
    const auto answers = client.take();
    ASSERT_EQ(answers.size(), 2U) << "the user and the object";
    EXPECT_EQ(answers[1].words(7), (Words{RequestAircraftScan, id, DefinitionScan, 0, 2, 2, 4}))
        << "entry numbers count from 1";
    PacketReader body = answers[1].body(7);
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
    EXPECT_EQ(client.scan(0), (Words{userId}));
    EXPECT_EQ(client.scan(10000), (Words{userId, nearId}));
    EXPECT_EQ(client.scan(100000), (Words{userId, nearId, farId}));
    EXPECT_EQ(client.scan(100000, ObjectUser), (Words{userId}));
    EXPECT_EQ(client.scan(100000, ObjectGround), Words{});
    EXPECT_EQ(client.scan(200000).size(), 3U) << "the widest radius";
    EXPECT_EQ(client.exceptionOf(client.send(OpRequestDataOnSimObjectType,
                                             {RequestAircraftScan, DefinitionScan, 200001, 2})),
              ExceptionOutOfBounds);
}

TEST_F(Objects, EachFreezeHoldsItsOwnPart) {
    const std::uint32_t id = client.created(a320, "DRIFTS", overField);
    client.set(DefinitionPosition, id, {47.5, 8.6, -0.05, 0.1, 0.0, 4000.0, 20.0, 180.0});
    const Placement& p = object(id).place;
    EXPECT_EQ((std::vector{p.lat, p.lon, p.pitchRad, p.bankRad, p.headingRad, p.altFt, object(id).vsFps,
                           object(id).airspeedKt}),
              (std::vector{47.5, 8.6, -0.05, 0.1, 0.0, 4000.0, 20.0, 180.0}));
    world.frame(1.0);
    EXPECT_GT(p.lat, 47.5) << "it flies on along its heading";
    EXPECT_NEAR(p.altFt, 3975.0, 1.0) << "and sinks";
    EXPECT_LT(std::abs(p.bankRad), 0.1);
    client.transmit(id, FreezeLatitudeLongitudeSet, 1);
    const double held = p.lat;
    world.frame(1.0);
    EXPECT_EQ(p.lat, held);
    EXPECT_NEAR(p.altFt, 3950.0, 1.0);
    client.freeze(id);
    const double bank = p.bankRad;
    world.frame(1.0);
    EXPECT_EQ(p.lat, held);
    EXPECT_NEAR(p.altFt, 3950.0, 1.0);
    EXPECT_EQ(p.bankRad, bank);
}

TEST_F(Objects, WithoutAClientItComesDownAndStandsOnItsWheels) {
    const std::uint32_t id = client.created(a320, "ALONE", overField);
    Placement low = overField;
    low.altFt = fieldFt + a320CgFt + 1.0;
    const std::uint32_t landing = client.created(a320, "LOW", low);
    world.frame(1.0);
    EXPECT_NEAR(object(landing).place.altFt, fieldFt + a320CgFt, 1e-9) << "never below its wheels";
    for (int second = 0; second < 200; ++second)
        world.frame(1.0);
    EXPECT_NEAR(kst::standin::aboveGroundFt(object(id), world.terrain()), a320CgFt, 1e-9);
    const double stopped = object(id).place.lat;
    world.frame(1.0);
    EXPECT_EQ(object(id).place.lat, stopped);
}

TEST_F(Objects, OnGroundFollowsTheHeightOfTheWheels) {
    const std::uint32_t id = client.created(a320, "PARKED*", overField, true);
    EXPECT_NEAR(object(id).place.altFt, fieldFt + a320CgFt, 1e-9) << "whatever altitude it was created with";
    const std::pair<double, bool> cases[] = {{a320CgFt + 0.3, false}, {a320CgFt + 0.2, true}, {-100.0, true}};
    for (const auto& [aboveFieldFt, onGround] : cases) {
        client.set(DefinitionPosition, id,
                   {overField.lat, overField.lon, 0.0, 0.0, 0.0, fieldFt + aboveFieldFt, 0.0, 0.0});
        client.request(1, DefinitionOnGround, id, PeriodOnce);
        EXPECT_EQ(client.takeOne(RecvSimobjectData).body(7).u64(), onGround ? 1U : 0U) << aboveFieldFt;
    }
}

TEST_F(Objects, SizesComeFromTheTitleUnlessSet) {
    world.setSizes("Oddity", {42.5, -0.02});
    const std::pair<const char*, double> cases[] = {{"FAIB Airbus A380-800 Test", 20.1},
                                                    {"Cessna C172 Skyhawk", 4.2},
                                                    {"Something unknown", 9.0},
                                                    {"Oddity", 42.5}};
    for (const auto& [title, cgFt] : cases) {
        client.request(RequestStaticCg, DefinitionSizes, client.created(title, "SIZES", overField),
                       PeriodOnce);
        EXPECT_EQ(client.takeOne(RecvSimobjectData).body(7).f64(), cgFt) << title;
    }
}

TEST_F(Objects, EventsConfigureTheAircraft) {
    using namespace kst::standin;
    const std::uint32_t id = client.created(a320, "CONFIG", overField);
    const auto lightsAfter = [&](std::uint32_t event, std::uint32_t value) {
        client.transmit(id, event, value);
        return object(id).lights;
    };
    EXPECT_EQ(lightsAfter(NavLightsSet, 1), LightNav);
    EXPECT_EQ(lightsAfter(AllLightsToggle, 0), 0U);
    EXPECT_EQ(lightsAfter(AllLightsToggle, 0), allLights);
    std::uint32_t left = allLights;
    const std::pair<std::uint32_t, std::uint32_t> lights[] = {
        {StrobesSet, LightStrobe},        {LogoLightsSet, LightLogo}, {CabinLightsSet, LightCabin},
        {LandingLightsSet, LightLanding}, {TaxiLightsSet, LightTaxi}, {BeaconLightsSet, LightBeacon}};
    for (const auto& [event, light] : lights) {
        left &= ~light;
        EXPECT_EQ(lightsAfter(event, 0), left) << event;
    }
    const Aircraft& aircraft = object(id);
    for (const std::uint32_t on : {1U, 0U}) {
        client.transmit(id, GearSet, on);
        client.transmit(id, on == 1 ? EngineAutoStart : EngineAutoShutdown, 0);
        client.transmit(id, FlapsSet, on * 16383);
        client.transmit(id, SpoilersSet, on * 16383);
        client.transmit(id, ThrottleSet, on * 16383);
        EXPECT_EQ(aircraft.gearDown, on == 1);
        EXPECT_EQ(aircraft.engineRunning, on == 1);
        EXPECT_EQ((std::vector{aircraft.flapsPercent, aircraft.spoilersPercent, aircraft.throttlePercent[1]}),
                  std::vector<double>(3, 100.0 * on));
    }
    client.set(DefinitionControls, id, {100.0, -100.0, 40.0});
    EXPECT_EQ(
        (std::vector{aircraft.spoilersPercent, aircraft.throttlePercent[0], aircraft.throttlePercent[1]}),
        (std::vector{100.0, -100.0, 40.0}));
    EXPECT_EQ(aircraft.placed, 0U) << "the controls are no position";
    EXPECT_TRUE(client.session.complaints().empty());
}

TEST_F(Objects, ARemovalIsToldAndLeavesItsStory) {
    const std::uint32_t id = client.created(a320, "REMOVED", overField);
    client.request(50, DefinitionOnGround, id, PeriodSecond);
    world.frame(2.0);
    client.take();
    client.send(OpAIRemoveObject, {id, RequestRemove});
    EXPECT_EQ(client.takeOne(RecvEventObjectAddRemove).words(3), (Words{unused, EventObjectRemoved, id}));
    EXPECT_EQ(world.find(id), nullptr);
    ASSERT_EQ(world.gone().size(), 1U);
    EXPECT_EQ(world.gone()[0].tailNumber, "REMOVED");
    EXPECT_EQ(world.gone()[0].removedAt, 2.0);
    EXPECT_EQ(world.gone()[0].history.size(), 2U);
    world.second();
    EXPECT_TRUE(client.take().empty()) << "its periodic request ended with it";
}

TEST_F(Objects, RefusalsNameTheRequest) {
    const auto created = [&](const char* title, double lat = overField.lat) {
        Placement place = overField;
        place.lat = lat;
        return client.exceptionOf(client.create(title, "ANY", place));
    };
    world.refuseNextCreations(1);
    EXPECT_EQ(created(a320), ExceptionCreateObjectFailed);
    EXPECT_EQ(created(a320), 0U);
    EXPECT_EQ(created(""), ExceptionCreateObjectFailed);
    world.setTitles({a320});
    EXPECT_EQ(created("Other"), ExceptionCreateObjectFailed);
    world.setObjectLimit(2);
    EXPECT_EQ(created(a320), 0U);
    EXPECT_EQ(created(a320), ExceptionTooManyObjects);
    EXPECT_EQ(created(a320, nan), ExceptionOutOfBounds);
    EXPECT_EQ(created(a320, 91.0), ExceptionOutOfBounds);
    EXPECT_EQ(world.objects().size(), 2U);
}

TEST_F(Objects, WrongDataNeverMovesAnObject) {
    const std::uint32_t id = client.created(a320, "DATA", overField);
    constexpr double huge = std::numeric_limits<double>::max();
    const auto expect = [&](std::uint32_t definition, std::initializer_list<double> values,
                            std::uint32_t exception, const char* what) {
        EXPECT_EQ(client.exceptionOf(client.set(definition, id, values)), exception) << what;
    };
    expect(402, {1, 2, 0, 0, 0, 5000, 0, nan}, ExceptionDataError, "no number");
    expect(402, {1, huge, 0, 0, 0, 5000, 0, 0}, ExceptionDataError, "a longitude that cannot be");
    expect(402, {1, 2, 0}, ExceptionInvalidDataSize, "too few");
    expect(402, {1, 2, 0, 0, 0, 0, 0, 0, 9}, ExceptionInvalidDataSize, "too many");
    expect(405, {1, 2}, ExceptionDataError, "sizes are read only");
    expect(499, {1}, ExceptionUnrecognizedId, "definition");
    EXPECT_EQ(client.exceptionOf(client.set(402, 999, {1, 2, 0, 0, 0, 0, 0, 0})), ExceptionUnrecognizedId);
    EXPECT_EQ(object(id).place.lat, overField.lat);
    EXPECT_EQ(object(id).place.altFt, overField.altFt);
    EXPECT_EQ(object(id).placed, 0U);
}

TEST_F(Objects, OnlyItsCreatorMayTakeAnObject) {
    const std::uint32_t foreign = world.addForeignObject("Somebody's 747", "FOREIGN", overField);
    EXPECT_EQ(client.takeAll(RecvEventObjectAddRemove).size(), 1U);
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
        id = other.created(a320, "OTHERS", overField);
        EXPECT_NE(id, 0U);
        EXPECT_EQ(client.take().size(), 1U) << "every subscriber hears of it";
    }
    EXPECT_EQ(world.find(id), nullptr);
    EXPECT_EQ(client.takeAll(RecvEventObjectAddRemove).size(), 1U);
    EXPECT_EQ(world.clients(), 1U);
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
    expect(client.send(OpTransmitClientEvent, {id, GearSet, 1, 999, 0x10}), 0, "a priority in its place");
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

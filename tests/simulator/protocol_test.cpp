// What a client sees of the stand-in's protocol: sizes, places of fields, answers and refusals.

#include "tests/simulator/client.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace kst::simconnect;
using kst::standin::Bytes;
using kst::standin::PacketReader;
using kst::standin::PacketWriter;
using kst::standin::World;
using kst::standin::WorldSettings;
using kst::test::Client;
using kst::test::Declared;
using kst::test::Received;
using Words = std::vector<std::uint32_t>;

constexpr double zurichLat = 47.458;
constexpr double zurichLon = 8.548;

Words idsOf(const std::vector<Received>& messages) {
    Words ids;
    for (const Received& message : messages)
        ids.push_back(message.id);
    return ids;
}

TEST(Protocol, OpenIsAnsweredByteForByteAsPublished) {
    WorldSettings settings;
    settings.applicationName = "Sim v5";
    settings.applicationVersion = {5, 3, 0x0102, 0xA1B2C3D4};
    settings.simConnectVersion = {6, 7, 8, 9};
    World world(settings);
    kst::standin::Session session(world);
    Bytes open(296, 0);
    const Bytes head{0x28, 0x01, 0, 0, 35, 0, 0, 0, 0x01, 0, 0, 0xF0, 1, 0, 0, 0, 'M', 'e'};
    std::copy(head.begin(), head.end(), open.begin());
    const Bytes tail{0x00, 0x44, 0x33, 0x50, 5, 0, 0, 0, 3, 0, 0, 0};
    std::copy(tail.begin(), tail.end(), open.begin() + 276);
    session.receive(open);

    Bytes answer;
    ASSERT_TRUE(session.take(answer));
    Bytes expected(308, 0);
    const Bytes answerHead{0x34, 0x01, 0, 0, 35, 0, 0, 0, 2, 0, 0, 0, 'S', 'i', 'm', ' ', 'v', '5'};
    std::copy(answerHead.begin(), answerHead.end(), expected.begin());
    const Bytes versions{5, 0, 0, 0, 3, 0, 0, 0, 2, 1, 0, 0, 0xD4, 0xC3, 0xB2, 0xA1,
                         6, 0, 0, 0, 7, 0, 0, 0, 8, 0, 0, 0, 9,    0,    0,    0};
    std::copy(versions.begin(), versions.end(), expected.begin() + 268);
    EXPECT_EQ(answer, expected);
    EXPECT_FALSE(session.take(answer));
    EXPECT_EQ(session.clientName(), "Me");
}

TEST(Protocol, PacketsMayArriveInAnyPieces) {
    World world;
    Client client(world);
    PacketWriter stream;
    for (std::uint32_t sendId = 1; sendId <= 2; ++sendId) {
        stream.u32(20).u32(protocolVersion).u32(operationMark + OpClearDataDefinition).u32(sendId).u32(401);
    }
    for (const std::uint8_t byte : stream.data())
        client.session.receive({&byte, 1});
    const auto answers = client.takeAll(RecvException);
    ASSERT_EQ(answers.size(), 2U);
    EXPECT_EQ(answers[0].words(2), (Words{ExceptionUnopened, 1}));
    EXPECT_EQ(answers[1].words(2), (Words{ExceptionUnopened, 2}));
}

TEST_F(Declared, TheUserSnapshotHoldsTwelveValuesInTheirUnits) {
    world.terrain().addAirport(zurichLat, zurichLon, 1416.0);
    world.setUtc(1709251199.0); // 2024-02-29 23:59:59
    world.setUserAircraft("Airbus A320 Neo", "A20N");
    world.placeUser(zurichLat, zurichLon, 0.0, true);
    world.user().place.headingRad = 2.5;
    world.user().place.pitchRad = -0.01;
    world.user().lights = 0x213;
    client.request(RequestUserPosition, DefinitionUser, objectIdUser, PeriodOnce);

    const Received message = client.takeOne(RecvSimobjectData);
    EXPECT_EQ(message.words(7), (Words{RequestUserPosition, 1, DefinitionUser, 0, 1, 1, 12}))
        << "with the user's own object id, not 0";
    PacketReader body = message.body(7);
    for (const double expected : {zurichLat, zurichLon, -0.01, 0.0, 2.5, 1416.0 + 11.7, 11.7, 0.0})
        EXPECT_NEAR(body.f64(), expected, 1e-9);
    for (const std::uint64_t expected : {86399, 60, 2024, 0x213}) // 29 February is the 60th day
        EXPECT_EQ(body.u64(), expected);
    EXPECT_EQ(body.left(), 0U);
}

TEST_F(Declared, TextsComeInTheirFields) {
    world.setUserAircraft("Aerosoft A320", "A320");
    client.request(RequestUserTitle, DefinitionTitle, objectIdUser, PeriodOnce);
    const Received ofTitle = client.takeOne(RecvSimobjectData);
    PacketReader title = ofTitle.body(7);
    EXPECT_EQ(title.openText(), "Aerosoft A320");
    EXPECT_EQ(title.left(), 0U);
    client.request(RequestUserModel, DefinitionModel, objectIdUser, PeriodOnce);
    const Received ofModel = client.takeOne(RecvSimobjectData);
    PacketReader model = ofModel.body(7);
    EXPECT_EQ(model.text(32), "A320");
    EXPECT_EQ(model.left(), 0U);
}

TEST(Protocol, ADefinitionAnswersInTheAskedUnitAndTypeOrIsRefused) {
    struct Case {
        const char* name;
        const char* unit;
        std::uint32_t type;
        double expected = 0.0;
        std::uint32_t exception = 0;
    };
    const Case cases[] = {
        {"plane altitude", "feet", TypeFloat64, 10000.0},
        {"PLANE ALTITUDE", "Meters", TypeFloat64, 3048.0},
        {"Plane Latitude", "radians", TypeFloat64, 0.8283},
        {"Plane Heading Degrees True", "degrees", TypeFloat32, 90.0},
        {"Vertical Speed", "feet per minute", TypeFloat64, 600.0},
        {"Airspeed True", "meters per second", TypeFloat64, 128.6111},
        {"Ground Velocity", "knots", TypeInt32, 250.0},
        {"ZULU TIME", "hours", TypeFloat64, 12.5},
        {"SIM ON GROUND", "Bool", TypeInt32, 0.0},
        {"Plane Latitud", "degree", TypeFloat64, 0, ExceptionNameUnrecognized},
        {"Plane Latitude", "feet", TypeFloat64, 0, ExceptionNameUnrecognized},
        {"Plane Latitude", "furlongs", TypeFloat64, 0, ExceptionNameUnrecognized},
        {"Plane Latitude", "degree", TypeString32, 0, ExceptionInvalidDataType},
        {"Plane Latitude", "degree", 99, 0, ExceptionInvalidDataType},
        {"TITLE", "", TypeFloat64, 0, ExceptionInvalidDataType},
    };
    World world;
    world.setUtc(12.5 * 3600.0);
    world.placeUser(zurichLat, zurichLon, 10000.0, false);
    world.user().place.headingRad = 3.14159265358979 / 2.0;
    world.user().vsFps = 10.0;
    world.user().airspeedKt = 250.0;
    world.user().groundSpeedKt = 250.9;
    Client client(world);
    client.open();
    std::uint32_t definition = 0;
    for (const Case& each : cases) {
        SCOPED_TRACE(std::string(each.name) + " in " + each.unit);
        EXPECT_EQ(client.exceptionOf(client.define(++definition, each.name, each.unit, each.type)),
                  each.exception);
        const std::uint32_t request = client.request(1, definition, objectIdUser, PeriodOnce);
        if (each.exception != 0) {
            EXPECT_EQ(client.exceptionOf(request), ExceptionUnrecognizedId) << "nothing of it stays";
            continue;
        }
        const Received answer = client.takeOne(RecvSimobjectData);
        PacketReader body = answer.body(7);
        const double value = each.type == TypeInt32     ? body.i32()
                             : each.type == TypeFloat32 ? static_cast<double>(body.f32())
                                                        : body.f64();
        EXPECT_NEAR(value, each.expected, 1e-4);
        EXPECT_EQ(body.left(), 0U);
    }
}

TEST_F(Declared, ASecondRequestAnswersOnceASecondAndAPauseStopsItAndIsTold) {
    client.request(RequestUserOnGround, DefinitionOnGround, objectIdUser, PeriodSecond);
    client.take();
    // What a second brings: the values of "Sim", and the answers.
    const auto second = [&] {
        world.frame(1.0);
        world.second();
        std::string seen;
        for (const Received& message : client.take()) {
            if (message.id == RecvEvent)
                seen += message.words(3) == Words{unused, EventSim, 1} ? "starts " : "stops ";
            if (message.id == RecvSimobjectData)
                seen += "answer";
        }
        return seen;
    };
    EXPECT_EQ(second(), "answer");
    EXPECT_EQ(second(), "answer");
    world.pause();
    EXPECT_EQ(second(), "stops ");
    world.resume();
    EXPECT_EQ(second(), "starts answer");
    world.pause(false);
    EXPECT_EQ(second(), "") << "a pause that the event does not tell";
    world.resume();
    EXPECT_EQ(second(), "answer");
    world.setFlightRunning(false);
    EXPECT_EQ(second(), "stops ");
    world.setFlightRunning(true);
    EXPECT_EQ(second(), "starts answer");
    client.request(RequestUserOnGround, DefinitionOnGround, objectIdUser, PeriodNever);
    EXPECT_EQ(second(), "");
}

TEST_F(Declared, IntervalOriginAndLimitOfARequestHold) {
    // From the second second on, every third one, twice; and one that answers changes only.
    client.send(OpRequestDataOnSimObject, {9, DefinitionOnGround, 0, PeriodSecond, 0, 1, 2, 2});
    client.send(OpRequestDataOnSimObject, {10, DefinitionOnGround, 0, PeriodSecond, 1, 0, 0, 0});
    std::string counted;
    std::string changed;
    for (int second = 0; second < 10; ++second) {
        world.placeUser(zurichLat, zurichLon, 9000.0, second < 5);
        world.second();
        const auto answers = client.takeAll(RecvSimobjectData);
        const auto has = [&](std::uint32_t request) {
            return std::any_of(answers.begin(), answers.end(),
                               [&](const Received& answer) { return answer.words(1)[0] == request; });
        };
        counted += has(9) ? '1' : '0';
        changed += has(10) ? '1' : '0';
    }
    EXPECT_EQ(counted, "0100100000");
    EXPECT_EQ(changed, "1000010000");
}

TEST(Protocol, FramesTellTheirRate) {
    WorldSettings settings;
    settings.framesWhilePaused = false;
    World world(settings);
    Client client(world);
    client.declareAll();
    world.frame(0.02);
    const Received frame = client.takeOne(RecvEventFrame);
    EXPECT_EQ(frame.words(3), (Words{unused, EventFrame, 0}));
    PacketReader body = frame.body(3);
    EXPECT_FLOAT_EQ(body.f32(), 50.0F);
    EXPECT_FLOAT_EQ(body.f32(), 1.0F);
    EXPECT_EQ(body.left(), 0U);
    world.pause();
    client.take();
    world.frame(0.02);
    EXPECT_TRUE(client.take().empty());
}

TEST_F(Declared, ALoadedFlightNamesItsFile) {
    world.loadFlight("C:\\flights\\morning.fxml");
    const Received loaded = client.takeOne(RecvEventFilename);
    EXPECT_EQ(loaded.bytes.size(), 288U);
    EXPECT_EQ(loaded.words(2)[1], EventFlightLoaded);
    EXPECT_EQ(loaded.body(3).text(260), "C:\\flights\\morning.fxml");
    world.loadFlight("", false);
    EXPECT_EQ(client.takeAll(RecvEvent).size(), 1U);
}

TEST_F(Declared, AnUnsubscribedEventIsNotSent) {
    client.send(OpUnsubscribeFromSystemEvent, {EventFrame});
    world.frame(0.05);
    EXPECT_TRUE(client.take().empty());
    EXPECT_EQ(client.exceptionOf(client.send(OpUnsubscribeFromSystemEvent, {EventFrame})),
              ExceptionUnrecognizedId);
}

TEST_F(Declared, QuitIsToldAndThenTheConnectionEnds) {
    world.quit();
    EXPECT_FALSE(client.session.closed()) << "the last message is still to be taken";
    EXPECT_EQ(idsOf(client.take()), Words{RecvQuit});
    EXPECT_TRUE(client.session.closed());
}

TEST(Protocol, DelayedAnswersComeLaterAndInOrder) {
    World world;
    Client client(world);
    world.setAnswerDelay(0.5);
    client.open();
    world.setAnswerDelay(0.0);
    client.send(OpClearDataDefinition, {401});
    world.frame(0.4);
    EXPECT_TRUE(client.take().empty());
    world.frame(0.2);
    EXPECT_EQ(idsOf(client.take()), (Words{RecvOpen, RecvException}));
}

} // namespace

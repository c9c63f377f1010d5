// What a client sees of the stand-in's protocol: sizes, places of fields, answers and refusals.

#include "tests/simulator/client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace {

using namespace kst::simconnect;
using kst::standin::Bytes;
using kst::standin::ByteView;
using kst::standin::PacketReader;
using kst::standin::PacketWriter;
using kst::standin::World;
using kst::standin::WorldSettings;
using kst::test::Client;
using kst::test::Declared;
using kst::test::Received;

constexpr double zurichLat = 47.458;
constexpr double zurichLon = 8.548;

std::vector<std::uint32_t> idsOf(const std::vector<Received>& messages) {
    std::vector<std::uint32_t> ids;
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
    kst::standin::Session session(world);
    PacketWriter stream;
    for (std::uint32_t sendId = 1; sendId <= 2; ++sendId) {
        stream.u32(20).u32(protocolVersion).u32(operationMark + OpClearDataDefinition).u32(sendId).u32(401);
    }
    for (const std::uint8_t byte : stream.data())
        session.receive({&byte, 1});
    ASSERT_EQ(session.complaints().size(), 2U);
    EXPECT_EQ(session.complaints()[0].sendId, 1U);
    EXPECT_EQ(session.complaints()[1].sendId, 2U);
    EXPECT_EQ(session.complaints()[1].exception, ExceptionUnopened);
}

TEST(Protocol, TheUserSnapshotHoldsTwelveValuesInTheirUnits) {
    World world;
    world.terrain().addAirport(zurichLat, zurichLon, 1416.0);
    world.setUtc(1709251199.0); // 2024-02-29 23:59:59
    world.setUserAircraft("Airbus A320 Neo", "A20N");
    world.placeUser(zurichLat, zurichLon, 0.0, true);
    world.user().place.headingRad = 2.5;
    world.user().place.pitchRad = -0.01;
    world.user().lights = 0x213;
    Client client(world);
    client.declareAll();
    client.take();
    client.request(RequestUserPosition, DefinitionUser, objectIdUser, PeriodOnce);

    const auto message = client.takeOne(RecvSimobjectData);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->bytes.size(), 40U + 12U * 8U);
    PacketReader body = message->body();
    EXPECT_EQ(body.u32(), RequestUserPosition);
    EXPECT_EQ(body.u32(), 1U) << "the user's own object id, not 0";
    EXPECT_EQ(body.u32(), DefinitionUser);
    EXPECT_EQ(body.u32(), 0U);
    EXPECT_EQ(body.u32(), 1U);
    EXPECT_EQ(body.u32(), 1U);
    EXPECT_EQ(body.u32(), 12U);
    EXPECT_DOUBLE_EQ(body.f64(), zurichLat);
    EXPECT_DOUBLE_EQ(body.f64(), zurichLon);
    EXPECT_DOUBLE_EQ(body.f64(), -0.01);
    EXPECT_DOUBLE_EQ(body.f64(), 0.0);
    EXPECT_DOUBLE_EQ(body.f64(), 2.5);
    EXPECT_NEAR(body.f64(), 1416.0 + 11.7, 1e-6);
    EXPECT_NEAR(body.f64(), 11.7, 1e-6);
    EXPECT_DOUBLE_EQ(body.f64(), 0.0);
    EXPECT_EQ(body.u64(), 86399U);
    EXPECT_EQ(body.u64(), 60U) << "29 February is the 60th day";
    EXPECT_EQ(body.u64(), 2024U);
    EXPECT_EQ(body.u64(), 0x213U);
    EXPECT_EQ(body.left(), 0U);
}

TEST(Protocol, TextsComeInTheirFields) {
    World world;
    world.setUserAircraft("Aerosoft A320 professional", "A320");
    Client client(world);
    client.declareAll();
    client.take();
    client.request(RequestUserTitle, DefinitionTitle, objectIdUser, PeriodOnce);
    const auto title = client.takeOne(RecvSimobjectData);
    ASSERT_TRUE(title);
    EXPECT_EQ(title->bytes.size(), 40U + 26U + 1U);
    EXPECT_EQ(std::string(title->bytes.begin() + 40, title->bytes.end() - 1), "Aerosoft A320 professional");
    EXPECT_EQ(title->bytes.back(), 0);
    client.request(RequestUserModel, DefinitionModel, objectIdUser, PeriodOnce);
    const auto model = client.takeOne(RecvSimobjectData);
    ASSERT_TRUE(model);
    ASSERT_EQ(model->bytes.size(), 40U + 32U);
    EXPECT_EQ(std::string(model->bytes.begin() + 40, model->bytes.begin() + 45), std::string("A320\0", 5));
}

TEST(Protocol, ADefinitionAnswersInTheAskedUnitAndType) {
    struct Case {
        const char* name;
        const char* unit;
        std::uint32_t type;
        double expected;
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
        SCOPED_TRACE(each.name);
        client.define(++definition, each.name, each.unit, each.type);
        client.take();
        client.request(1, definition, objectIdUser, PeriodOnce);
        const auto message = client.takeOne(RecvSimobjectData);
        ASSERT_TRUE(message);
        PacketReader body = message->body(7);
        const double value = each.type == TypeInt32     ? body.i32()
                             : each.type == TypeFloat32 ? static_cast<double>(body.f32())
                                                        : body.f64();
        EXPECT_NEAR(value, each.expected, 1e-4);
        EXPECT_EQ(body.left(), 0U);
    }
}

TEST(Protocol, WhatADefinitionCannotHoldIsRefused) {
    struct Case {
        const char* name;
        const char* unit;
        std::uint32_t type;
        std::uint32_t exception;
    };
    const Case cases[] = {
        {"Plane Latitud", "degree", TypeFloat64, ExceptionNameUnrecognized},
        {"", "", TypeFloat64, ExceptionNameUnrecognized},
        {"Plane Latitude", "feet", TypeFloat64, ExceptionNameUnrecognized},
        {"Plane Latitude", "furlongs", TypeFloat64, ExceptionNameUnrecognized},
        {"Plane Latitude", "degree", TypeString32, ExceptionInvalidDataType},
        {"Plane Latitude", "degree", 0, ExceptionInvalidDataType},
        {"Plane Latitude", "degree", 99, ExceptionInvalidDataType},
        {"TITLE", "", TypeFloat64, ExceptionInvalidDataType},
        {"TITLE", "", TypeInitPosition, ExceptionInvalidDataType},
    };
    World world;
    Client client(world);
    client.open();
    for (const Case& each : cases) {
        const std::uint32_t sendId = client.define(7, each.name, each.unit, each.type);
        EXPECT_EQ(client.exceptionOf(sendId), each.exception) << each.name << " in " << each.unit;
    }
    EXPECT_EQ(client.exceptionOf(client.request(1, 7, 0, PeriodOnce)), ExceptionUnrecognizedId)
        << "nothing of the refused fields stays";
}

TEST_F(Declared, ASecondRequestAnswersOnceASecondAndNotWhilePaused) {
    client.request(RequestUserOnGround, DefinitionOnGround, objectIdUser, PeriodSecond);
    client.take();
    const auto answers = [&] {
        world.frame(1.0);
        world.second();
        const auto messages = client.take();
        return std::count_if(messages.begin(), messages.end(),
                             [](const Received& message) { return message.id == RecvSimobjectData; });
    };
    EXPECT_EQ(answers(), 1);
    EXPECT_EQ(answers(), 1);
    world.pause();
    EXPECT_EQ(answers(), 0);
    world.resume();
    EXPECT_EQ(answers(), 1);
    world.setFlightRunning(false);
    EXPECT_EQ(answers(), 0);
    world.setFlightRunning(true);
    EXPECT_EQ(answers(), 1);
    client.request(RequestUserOnGround, DefinitionOnGround, objectIdUser, PeriodNever);
    EXPECT_EQ(answers(), 0);
}

TEST_F(Declared, IntervalOriginAndLimitOfARequestHold) {
    // From the second second on, every third one, twice.
    client.send(OpRequestDataOnSimObject, {9, DefinitionOnGround, 0, PeriodSecond, 0, 1, 2, 2});
    std::string answered;
    for (int second = 0; second < 10; ++second) {
        world.second();
        answered += client.takeOne(RecvSimobjectData) ? '1' : '0';
    }
    EXPECT_EQ(answered, "0100100000");
}

TEST_F(Declared, PauseAndResumeAreToldAsSim) {
    const auto simValue = [&]() -> int {
        const auto event = client.takeOne(RecvEvent);
        if (!event)
            return -1;
        PacketReader body = event->body(1);
        return body.u32() == EventSim ? static_cast<int>(body.u32()) : -2;
    };
    world.pause();
    EXPECT_EQ(simValue(), 0);
    world.resume();
    EXPECT_EQ(simValue(), 1);
    world.pause(false);
    EXPECT_EQ(simValue(), -1) << "a pause that the event does not tell";
    world.resume();
    EXPECT_EQ(simValue(), -1);
}

TEST(Protocol, FramesTellTheirRate) {
    WorldSettings settings;
    settings.framesWhilePaused = false;
    World world(settings);
    Client client(world);
    client.declareAll();
    client.take();
    world.frame(0.02);
    const auto frame = client.takeOne(RecvEventFrame);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->bytes.size(), 32U);
    PacketReader body = frame->body(1);
    EXPECT_EQ(body.u32(), EventFrame);
    body.skip(4);
    EXPECT_FLOAT_EQ(body.f32(), 50.0F);
    EXPECT_FLOAT_EQ(body.f32(), 1.0F);
    world.pause();
    client.take();
    world.frame(0.02);
    EXPECT_FALSE(client.takeOne(RecvEventFrame));
}

TEST_F(Declared, ALoadedFlightNamesItsFile) {
    world.loadFlight("C:\\flights\\morning.fxml");
    const auto loaded = client.takeOne(RecvEventFilename);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->bytes.size(), 288U);
    PacketReader body = loaded->body(1);
    EXPECT_EQ(body.u32(), EventFlightLoaded);
    body.skip(4);
    EXPECT_EQ(body.text(260), "C:\\flights\\morning.fxml");
    world.loadFlight("", false);
    EXPECT_TRUE(client.takeOne(RecvEvent));
}

TEST_F(Declared, AnUnsubscribedEventIsNotSent) {
    client.send(OpUnsubscribeFromSystemEvent, {EventFrame});
    client.take();
    world.frame(0.05);
    EXPECT_TRUE(client.take().empty());
    EXPECT_EQ(client.exceptionOf(client.send(OpUnsubscribeFromSystemEvent, {EventFrame})),
              ExceptionUnrecognizedId);
}

TEST_F(Declared, QuitIsToldAndThenTheConnectionEnds) {
    world.quit();
    EXPECT_FALSE(client.session.closed()) << "the last message is still to be taken";
    EXPECT_EQ(idsOf(client.take()), std::vector<std::uint32_t>{RecvQuit});
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
    EXPECT_EQ(idsOf(client.take()), (std::vector<std::uint32_t>{RecvOpen, RecvException}));
}

} // namespace

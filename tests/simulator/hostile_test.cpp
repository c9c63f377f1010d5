// Packets that no honest client sends: each is answered or ignored, and the simulator goes on.

#include "tests/simulator/client.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace {

using namespace kst::simconnect;
using namespace kst::standin;
using kst::test::Client;

constexpr std::array operations{OpOpen,
                                OpMapClientEventToSimEvent,
                                OpTransmitClientEvent,
                                OpAddClientEventToNotificationGroup,
                                OpSetNotificationGroupPriority,
                                OpAddToDataDefinition,
                                OpClearDataDefinition,
                                OpRequestDataOnSimObject,
                                OpRequestDataOnSimObjectType,
                                OpSetDataOnSimObject,
                                OpSubscribeToSystemEvent,
                                OpUnsubscribeFromSystemEvent,
                                OpAICreateNonATCAircraft,
                                OpAIReleaseControl,
                                OpAIRemoveObject,
                                OpAISetAircraftFlightPlan};

/// A world with a client, an object of its own and a running request; still well if it answers a scan.
struct Scene {
    World world;
    Client client{world};
    std::uint32_t object = 0;

    Scene() {
        client.declareAll();
        client.take();
        object = client.created("A320", "SCENE", {0.0, 0.0, 0.0, 0.0, 0.0, 1000.0});
        client.request(RequestUserOnGround, DefinitionOnGround, objectIdUser, PeriodSecond);
    }
    bool answersScan() {
        client.take();
        client.send(OpRequestDataOnSimObjectType, {RequestAircraftScan, DefinitionScan, 100000, 2});
        for (const auto& message : client.take())
            if (message.id == RecvSimobjectDataByType)
                return true;
        return false;
    }
};

TEST(Hostile, APacketTooShortForItsOperationIsRefused) {
    Scene scene;
    for (const Operation operation : operations) {
        EXPECT_EQ(scene.client.exceptionOf(scene.client.send(operation, {})), ExceptionSizeMismatch)
            << "operation " << operation;
    }
    EXPECT_TRUE(scene.answersScan());
}

TEST(Hostile, ATextWithoutItsEndIsRefused) {
    Scene scene;
    const Bytes endless(256, 'x');
    PacketWriter subscribe;
    subscribe.u32(230).bytes(endless);
    EXPECT_EQ(scene.client.exceptionOf(scene.client.send(OpSubscribeToSystemEvent, subscribe)),
              ExceptionNameUnrecognized);
    PacketWriter define;
    define.u32(450).bytes(endless).bytes(endless).u32(TypeFloat64).f32(0).u32(unused);
    EXPECT_EQ(scene.client.exceptionOf(scene.client.send(OpAddToDataDefinition, define)),
              ExceptionNameUnrecognized);
    PacketWriter create;
    create.bytes(endless).bytes(Bytes(12, 'y')).bytes(Bytes(56 + 4, 0));
    EXPECT_EQ(scene.client.exceptionOf(scene.client.send(OpAICreateNonATCAircraft, create)),
              ExceptionSizeMismatch);
    EXPECT_TRUE(scene.answersScan());
}

TEST(Hostile, UnknownOperationsAndProtocolsAreRefused) {
    Scene scene;
    EXPECT_EQ(scene.client.exceptionOf(scene.client.send(0x77, {1, 2, 3})), ExceptionError);
    PacketWriter wrongProtocol;
    wrongProtocol.u32(20).u32(4).u32(operationMark + OpClearDataDefinition).u32(4711).u32(401);
    scene.client.session.receive(wrongProtocol.data());
    EXPECT_EQ(scene.client.exceptionOf(4711), ExceptionVersionMismatch);
    EXPECT_TRUE(scene.answersScan());
}

TEST(Hostile, ALengthThatCannotBeBreaksTheConnection) {
    for (const std::uint32_t size : {0U, 1U, 15U, 0x00100000U, 0xFFFFFFFFU}) {
        World world;
        Client client(world);
        client.open();
        client.take();
        PacketWriter packet;
        packet.u32(size).u32(protocolVersion).u32(operationMark + OpClearDataDefinition).u32(2).u32(401);
        client.session.receive(packet.data());
        EXPECT_TRUE(client.takeOne(RecvException)) << size;
        EXPECT_TRUE(client.session.closed()) << size;
        client.session.receive(packet.data());
    }
}

TEST(Hostile, AClientThatTakesNothingIsCutOff) {
    Scene scene;
    scene.client.take();
    int frames = 0;
    while (!scene.client.session.closed() && ++frames < 10'000'000) {
        scene.client.send(OpRequestDataOnSimObjectType, {RequestAircraftScan, DefinitionScan, 200000, 2});
        scene.world.frame(0.01);
    }
    EXPECT_TRUE(scene.client.session.closed());
    scene.world.frame(0.01);
    scene.world.second();
}

TEST(Hostile, EndlessDefinitionsAndRequestsMeetALimit) {
    Scene scene;
    std::uint32_t exception = 0;
    for (std::uint32_t id = 1000; id < 3000 && exception == 0; ++id)
        exception = scene.client.exceptionOf(scene.client.define(id, "Plane Altitude", "feet", TypeFloat64));
    EXPECT_EQ(exception, ExceptionOutOfBounds);
    exception = 0;
    for (std::uint32_t id = 1000; id < 3000 && exception == 0; ++id)
        exception = scene.client.exceptionOf(scene.client.request(id, DefinitionOnGround, 0, PeriodSecond));
    EXPECT_EQ(exception, ExceptionTooManyRequests);
    EXPECT_TRUE(scene.answersScan());
}

TEST(Hostile, RandomPacketsOfEveryOperationDoNoHarm) {
    constexpr std::array<std::uint32_t, 16> sizes{296, 276, 36,  28, 24,  544, 20, 48,
                                                  32,  100, 276, 20, 344, 24,  24, 284};
    std::mt19937 engine(20240229); // the same bytes in each run
    const auto random = [&] { return static_cast<std::uint32_t>(engine()); };
    for (int round = 0; round < 300; ++round) {
        Scene scene;
        for (int count = 0; count < 40; ++count) {
            const std::size_t which = random() % operations.size();
            PacketWriter packet;
            packet.u32(sizes[which]).u32(protocolVersion).u32(operationMark + operations[which]);
            packet.u32(static_cast<std::uint32_t>(count));
            while (packet.data().size() < sizes[which]) {
                // Mostly ids and small numbers that mean something, so that handlers get far.
                switch (random() % 5) {
                case 0:
                    packet.u32(scene.object);
                    break;
                case 1:
                    packet.u32(401 + random() % 9);
                    break;
                case 2:
                    packet.u32(random() % 6);
                    break;
                case 3:
                    packet.u32(201 + random() % 30);
                    break;
                default:
                    packet.u32(random());
                    break;
                }
            }
            scene.client.session.receive(packet.data());
            scene.world.frame(0.05);
            scene.world.second();
        }
        ASSERT_FALSE(scene.client.session.closed()) << "round " << round;
        ASSERT_GE(scene.world.objects().size() + scene.world.gone().size(), 1U);
    }
}

} // namespace

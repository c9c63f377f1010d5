// Packets that no honest client sends: each is answered or ignored, and the simulator goes on. Random ones
// are the matter of the fuzz target.

#include "tests/simulator/client.h"

#include <gtest/gtest.h>

namespace {

using namespace kst::simconnect;
using namespace kst::standin;
using kst::test::Client;

/// A simulator that answers a scan at the test's end, when nothing has put it out of step.
class Hostile : public kst::test::Declared {
protected:
    void TearDown() override { EXPECT_TRUE(client.session.closed() || client.scan(100000).size() == 1U); }
};

TEST_F(Hostile, APacketTooShortForItsOperationIsRefused) {
    for (const Operation operation :
         {OpOpen, OpMapClientEventToSimEvent, OpTransmitClientEvent, OpAddClientEventToNotificationGroup,
          OpSetNotificationGroupPriority, OpAddToDataDefinition, OpClearDataDefinition,
          OpRequestDataOnSimObject, OpRequestDataOnSimObjectType, OpSetDataOnSimObject,
          OpSubscribeToSystemEvent, OpUnsubscribeFromSystemEvent, OpAICreateNonATCAircraft,
          OpAIReleaseControl, OpAIRemoveObject, OpAISetAircraftFlightPlan}) {
        EXPECT_EQ(client.exceptionOf(client.send(operation, {})), ExceptionSizeMismatch) << operation;
    }
}

TEST_F(Hostile, ATextWithoutItsEndIsRefused) {
    const Bytes endless(256, 'x');
    PacketWriter subscribe;
    subscribe.u32(230).bytes(endless);
    EXPECT_EQ(client.exceptionOf(client.send(OpSubscribeToSystemEvent, subscribe)),
              ExceptionNameUnrecognized);
    PacketWriter define;
    define.u32(450).bytes(endless).bytes(endless).u32(TypeFloat64).f32(0).u32(unused);
    EXPECT_EQ(client.exceptionOf(client.send(OpAddToDataDefinition, define)), ExceptionNameUnrecognized);
    PacketWriter create;
    create.bytes(endless).bytes(Bytes(12, 'y')).bytes(Bytes(56 + 4, 0));
    EXPECT_EQ(client.exceptionOf(client.send(OpAICreateNonATCAircraft, create)), ExceptionSizeMismatch);
}

TEST_F(Hostile, WhatMakesNoSenseIsRefused) {
    struct Case {
        Operation operation;
        std::initializer_list<std::uint32_t> words;
        std::uint32_t exception;
    };
    const Case cases[] = {
        {OpRequestDataOnSimObject, {1, 999, 0, PeriodSecond, 0, 0, 0, 0}, ExceptionUnrecognizedId},
        {OpRequestDataOnSimObject, {1, 403, 999, PeriodSecond, 0, 0, 0, 0}, ExceptionUnrecognizedId},
        {OpRequestDataOnSimObject, {1, 403, 0, 99, 0, 0, 0, 0}, ExceptionInvalidEnum},
        {OpRequestDataOnSimObject, {1, 403, 0, PeriodSecond, 2, 0, 0, 0}, ExceptionInvalidEnum},
        {OpRequestDataOnSimObjectType, {1, 999, 100, ObjectAircraft}, ExceptionUnrecognizedId},
        {OpRequestDataOnSimObjectType, {1, 404, 100, 99}, ExceptionInvalidEnum},
        {OpSetDataOnSimObject, {402, 0, 1, 1, 0}, ExceptionInvalidEnum},
        {OpSetDataOnSimObject, {402, 0, 0, 2, 0}, ExceptionInvalidArray},
        {OpSetDataOnSimObject, {402, 0, 0, 1, 8}, ExceptionSizeMismatch},
        {OpClearDataDefinition, {999}, ExceptionUnrecognizedId},
        {OpAIRemoveObject, {999, RequestRemove}, ExceptionUnrecognizedId},
    };
    for (const Case& c : cases)
        EXPECT_EQ(client.exceptionOf(client.send(c.operation, c.words)), c.exception) << c.operation;
    EXPECT_EQ(client.exceptionOf(client.open()), ExceptionIllegalOperation) << "opened twice";
}

TEST_F(Hostile, UnknownOperationsAndProtocolsAreRefused) {
    EXPECT_EQ(client.exceptionOf(client.send(0x77, {1, 2, 3})), ExceptionError);
    PacketWriter wrongProtocol;
    wrongProtocol.u32(20).u32(4).u32(operationMark + OpClearDataDefinition).u32(4711).u32(401);
    client.session.receive(wrongProtocol.data());
    EXPECT_EQ(client.exceptionOf(4711), ExceptionVersionMismatch);
}

TEST(HostileLength, BreaksTheConnection) {
    for (const std::uint32_t size : {0U, 1U, 15U, 0x00100000U, 0xFFFFFFFFU}) {
        World world;
        Client client(world);
        PacketWriter packet;
        packet.u32(size).u32(protocolVersion).u32(operationMark + OpClearDataDefinition).u32(2).u32(401);
        client.session.receive(packet.data());
        EXPECT_EQ(client.takeAll(RecvException).size(), 1U) << size;
        EXPECT_TRUE(client.session.closed()) << size;
        client.session.receive(packet.data());
    }
}

TEST_F(Hostile, AClientThatTakesNothingIsCutOff) {
    for (int frame = 0; !client.session.closed() && frame < 10'000'000; ++frame) {
        client.send(OpRequestDataOnSimObjectType, {RequestAircraftScan, DefinitionScan, 200000, 2});
        world.frame(0.01);
    }
    EXPECT_TRUE(client.session.closed());
    world.frame(0.01);
    world.second();
}

TEST_F(Hostile, EndlessDefinitionsAndRequestsMeetALimit) {
    std::uint32_t exception = 0;
    for (std::uint32_t id = 1000; id < 3000 && exception == 0; ++id)
        exception = client.exceptionOf(client.define(id, "Plane Altitude", "feet", TypeFloat64));
    EXPECT_EQ(exception, ExceptionOutOfBounds);
    exception = 0;
    for (std::uint32_t id = 1000; id < 3000 && exception == 0; ++id)
        exception = client.exceptionOf(client.request(id, DefinitionOnGround, 0, PeriodSecond));
    EXPECT_EQ(exception, ExceptionTooManyRequests);
}

} // namespace

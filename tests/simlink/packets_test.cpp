// What the simulator reads of each operation: every packet byte for byte.

#include "model/simconnect.h"
#include "simlink/packets.h"
#include "simlink/simconnect.h"
#include "simlink/simscene.h"

#include <cstring>
#include <functional>

#include <gtest/gtest.h>

namespace kst::test {
namespace {

using namespace simconnect;

class Packets : public testing::Test {
protected:
    Packets() { EXPECT_EQ(SimConnect_Open(handle, "Kestrane_P3D", nullptr, 0, nullptr, 0), simOk); }
    ~Packets() override { SimConnect_Close(handle); }

    SimScene scene;
    SimHandle handle = noSimHandle;
};

TEST_F(Packets, EachOperationHasItsLayout) {
    const InitPosition place{47.5, 8.5, 1400.5, -1.0, 2.0, 270.25, 1, 120};
    const double controls[] = {0.0, 33.25, 66.5};
    const auto fields = [](std::initializer_list<std::uint32_t> first) { return PacketFields(first); };
    struct Case {
        std::uint32_t operation;
        std::function<SimResult()> call;
        PacketFields body;
    };
    const Case cases[] = {
        {0x01, [] { return simOk; }, // sent by the opening of the session
         fields({}).text("Kestrane_P3D", 256).u32(0).u32(0x50334400).u32(5).u32(3).u32(0).u32(0)},
        {0x04, [&] { return SimConnect_MapClientEventToSimEvent(handle, 220, "GEAR_SET"); },
         fields({220}).text("GEAR_SET", 256)},
        {0x05, [&] { return SimConnect_TransmitClientEvent(handle, 7, 218, 16383, 301, 0x10); },
         fields({7, 218, 16383, 301, 0x10})},
        {0x07, [&] { return SimConnect_AddClientEventToNotificationGroup(handle, 301, 208, true); },
         fields({301, 208, 1})},
        {0x09, [&] { return SimConnect_SetNotificationGroupPriority(handle, 301, 1); }, fields({301, 1})},
        {0x0C,
         [&] {
             return SimConnect_AddToDataDefinition(handle, 402, "Plane Latitude", "degree", TypeFloat64, 0.5F,
                                                   unused);
         },
         fields({402}).text("Plane Latitude", 256).text("degree", 256).u32(4).f32(0.5F).u32(0xFFFFFFFF)},
        {0x0D, [&] { return SimConnect_ClearDataDefinition(handle, 403); }, fields({403})},
        {0x0E,
         [&] { return SimConnect_RequestDataOnSimObject(handle, 108, 409, 0, PeriodSecond, 1, 2, 3, 4); },
         fields({108, 409, 0, 4, 1, 2, 3, 4})},
        {0x0F, [&] { return SimConnect_RequestDataOnSimObjectType(handle, 101, 404, 74080, ObjectAircraft); },
         fields({101, 404, 74080, 2})},
        {0x10, // count 0
         [&] { return SimConnect_SetDataOnSimObject(handle, 401, 9, 0, 0, sizeof controls, controls); },
         fields({401, 9, 0, 1, 24}).raw(controls, 24)},
        {0x10, // an array
         [&] { return SimConnect_SetDataOnSimObject(handle, 401, 9, 2, 3, 8, controls); },
         fields({401, 9, 2, 3, 8}).raw(controls, 24)},
        {0x17, [&] { return SimConnect_SubscribeToSystemEvent(handle, 204, "Frame"); },
         fields({204}).text("Frame", 256)},
        {0x18, [&] { return SimConnect_UnsubscribeFromSystemEvent(handle, 204); }, fields({204})},
        {0x29, [&] { return SimConnect_AICreateNonATCAircraft(handle, "Some A320", "SWR100", place, 104); },
         fields({})
             .text("Some A320", 256)
             .text("SWR100", 12)
             .f64(47.5)
             .f64(8.5)
             .f64(1400.5)
             .f64(-1.0)
             .f64(2.0)
             .f64(270.25)
             .u32(1)
             .u32(120)
             .u32(104)},
        {0x2B, [&] { return SimConnect_AIReleaseControl(handle, 77, 103); }, fields({77, 103})},
        {0x2C, [&] { return SimConnect_AIRemoveObject(handle, 77, 105); }, fields({77, 105})},
        {0x2D, [&] { return SimConnect_AISetAircraftFlightPlan(handle, 77, "/a/77.pln", 110); },
         fields({77}).text("/a/77.pln", 260).u32(110)},
    };
    std::uint32_t sendId = 0;
    for (const Case& c : cases) {
        EXPECT_EQ(c.call(), simOk) << c.operation;
        const Packet expected =
            PacketFields{0, 35, 0xF0000000U + c.operation, ++sendId}.append(c.body).bytes();
        ASSERT_EQ(scene.sent, std::vector<Packet>{expected}) << "operation " << c.operation;
        scene.sent.clear();
        std::uint32_t last = 0;
        EXPECT_EQ(SimConnect_GetLastSentPacketID(handle, last), simOk);
        EXPECT_EQ(last, sendId);
    }
}

TEST_F(Packets, ATextThatDoesNotFitIsRefusedAndNothingIsSent) {
    const auto create = [&](std::size_t title, std::size_t tail) {
        return SimConnect_AICreateNonATCAircraft(handle, std::string(title, 'T'), std::string(tail, 'N'), {},
                                                 104);
    };
    scene.sent.clear();
    EXPECT_EQ(static_cast<std::uint32_t>(create(20, 16)), 0x8007007AU);
    EXPECT_EQ(create(20, 12), simTextTooLong) << "the field holds the ending zero too";
    EXPECT_EQ(create(256, 5), simTextTooLong);
    EXPECT_EQ(SimConnect_AISetAircraftFlightPlan(handle, 7, std::string(260, 'p'), 110), simTextTooLong);
    EXPECT_EQ(SimConnect_SubscribeToSystemEvent(handle, 201, std::string(256, 'e')), simTextTooLong);
    EXPECT_TRUE(scene.sent.empty());
    EXPECT_EQ(create(255, 11), simOk);
    ASSERT_EQ(scene.sent.size(), 1U);
    EXPECT_EQ(fieldOf(scene.sent[0], 12), 2U) << "a refused call uses up no send id";
}

TEST_F(Packets, DataThatFitNoPacketAreABadArgument) {
    const std::vector<std::byte> data(sendBlockSize);
    scene.sent.clear();
    EXPECT_EQ(SimConnect_SetDataOnSimObject(handle, 401, 9, 0, 0, sendBlockSize - 35, data.data()),
              simBadArgument);
    EXPECT_EQ(SimConnect_SetDataOnSimObject(handle, 401, 9, 0, 0xFFFFFFFFU, 0xFFFFFFFFU, data.data()),
              simBadArgument);
    EXPECT_EQ(SimConnect_SetDataOnSimObject(handle, 401, 9, 0, 1, 8, nullptr), simBadArgument);
    EXPECT_TRUE(scene.sent.empty());
    EXPECT_EQ(SimConnect_SetDataOnSimObject(handle, 401, 9, 0, 0, sendBlockSize - 36, data.data()), simOk);
    ASSERT_EQ(scene.sent.size(), 1U);
    EXPECT_EQ(scene.sent[0].size(), sendBlockSize);
}

TEST(SendId, WrapsPastZero) {
    EXPECT_EQ(nextSendId(0), 1U);
    EXPECT_EQ(nextSendId(0xFFFFFFFEU), 0xFFFFFFFFU);
    EXPECT_EQ(nextSendId(0xFFFFFFFFU), 1U);
}

} // namespace
} // namespace kst::test

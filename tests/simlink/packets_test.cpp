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

/// A packet written out field by field: its head, then what the case adds.
class Expected {
public:
    Expected(std::uint32_t operation, std::uint32_t sendId) {
        u32(0).u32(35).u32(0xF0000000U + operation).u32(sendId);
    }
    Expected& u32(std::uint32_t value) { return raw(&value, 4); }
    Expected& f64(double value) { return raw(&value, 8); }
    Expected& text(std::string_view value, std::size_t field) {
        std::string padded(value);
        padded.resize(field, '\0');
        return raw(padded.data(), field);
    }
    Expected& raw(const void* data, std::size_t size) {
        const auto* first = static_cast<const std::byte*>(data);
        bytes_.insert(bytes_.end(), first, first + size);
        return *this;
    }
    Packet packet() const {
        Packet whole = bytes_;
        const auto size = static_cast<std::uint32_t>(whole.size());
        std::memcpy(whole.data(), &size, 4);
        return whole;
    }

private:
    Packet bytes_;
};

class Packets : public testing::Test {
protected:
    Packets() { EXPECT_EQ(SimConnect_Open(handle, "Kestrane_P3D", nullptr, 0, nullptr, 0), simOk); }
    ~Packets() override { SimConnect_Close(handle); }

    SimScene scene;
    SimHandle handle = noSimHandle;
};

TEST_F(Packets, TheFirstPacketOpensTheSession) {
    const Packet expected = Expected(0x01, 1)
                                .text("Kestrane_P3D", 256)
                                .u32(0)
                                .u32(0x50334400)
                                .u32(5)
                                .u32(3)
                                .u32(0)
                                .u32(0)
                                .packet();
    ASSERT_EQ(scene.sent.size(), 1U);
    EXPECT_EQ(scene.sent[0].size(), 296U);
    EXPECT_EQ(scene.sent[0], expected);
}

TEST_F(Packets, EachOperationHasItsLayout) {
    const InitPosition place{47.5, 8.5, 1400.5, -1.0, 2.0, 270.25, 1, 120};
    const double controls[] = {0.0, 33.25, 66.5};
    struct Case {
        std::string_view name;
        std::size_t size;
        std::function<SimResult()> call;
        std::function<void(Expected&)> body;
        std::uint32_t operation;
    };
    const Case cases[] = {
        {"map event", 276, [&] { return SimConnect_MapClientEventToSimEvent(handle, 220, "GEAR_SET"); },
         [](Expected& e) { e.u32(220).text("GEAR_SET", 256); }, 0x04},
        {"transmit event", 36,
         [&] { return SimConnect_TransmitClientEvent(handle, 7, 218, 16383, 301, 0x10); },
         [](Expected& e) { e.u32(7).u32(218).u32(16383).u32(301).u32(0x10); }, 0x05},
        {"add to group", 28,
         [&] { return SimConnect_AddClientEventToNotificationGroup(handle, 301, 208, true); },
         [](Expected& e) { e.u32(301).u32(208).u32(1); }, 0x07},
        {"group priority", 24, [&] { return SimConnect_SetNotificationGroupPriority(handle, 301, 1); },
         [](Expected& e) { e.u32(301).u32(1); }, 0x09},
        {"add datum", 544,
         [&] {
             return SimConnect_AddToDataDefinition(handle, 402, "Plane Latitude", "degree", TypeFloat64, 0.5F,
                                                   unused);
         },
         [](Expected& e) {
             const float epsilon = 0.5F;
             e.u32(402)
                 .text("Plane Latitude", 256)
                 .text("degree", 256)
                 .u32(4)
                 .raw(&epsilon, 4)
                 .u32(0xFFFFFFFF);
         },
         0x0C},
        {"clear definition", 20, [&] { return SimConnect_ClearDataDefinition(handle, 403); },
         [](Expected& e) { e.u32(403); }, 0x0D},
        {"request data", 48,
         [&] { return SimConnect_RequestDataOnSimObject(handle, 108, 409, 0, PeriodSecond, 1, 2, 3, 4); },
         [](Expected& e) { e.u32(108).u32(409).u32(0).u32(4).u32(1).u32(2).u32(3).u32(4); }, 0x0E},
        {"request by type", 32,
         [&] { return SimConnect_RequestDataOnSimObjectType(handle, 101, 404, 74080, ObjectAircraft); },
         [](Expected& e) { e.u32(101).u32(404).u32(74080).u32(2); }, 0x0F},
        {"set data, count 0", 60,
         [&] { return SimConnect_SetDataOnSimObject(handle, 401, 9, 0, 0, sizeof controls, controls); },
         [&](Expected& e) { e.u32(401).u32(9).u32(0).u32(1).u32(24).raw(controls, 24); }, 0x10},
        {"set data, an array", 60,
         [&] { return SimConnect_SetDataOnSimObject(handle, 401, 9, 2, 3, 8, controls); },
         [&](Expected& e) { e.u32(401).u32(9).u32(2).u32(3).u32(8).raw(controls, 24); }, 0x10},
        {"subscribe", 276, [&] { return SimConnect_SubscribeToSystemEvent(handle, 204, "Frame"); },
         [](Expected& e) { e.u32(204).text("Frame", 256); }, 0x17},
        {"unsubscribe", 20, [&] { return SimConnect_UnsubscribeFromSystemEvent(handle, 204); },
         [](Expected& e) { e.u32(204); }, 0x18},
        {"create", 344,
         [&] { return SimConnect_AICreateNonATCAircraft(handle, "Some A320", "SWR100", place, 104); },
         [](Expected& e) {
             e.text("Some A320", 256).text("SWR100", 12);
             e.f64(47.5).f64(8.5).f64(1400.5).f64(-1.0).f64(2.0).f64(270.25).u32(1).u32(120).u32(104);
         },
         0x29},
        {"release", 24, [&] { return SimConnect_AIReleaseControl(handle, 77, 103); },
         [](Expected& e) { e.u32(77).u32(103); }, 0x2B},
        {"remove", 24, [&] { return SimConnect_AIRemoveObject(handle, 77, 105); },
         [](Expected& e) { e.u32(77).u32(105); }, 0x2C},
        {"flight plan", 284, [&] { return SimConnect_AISetAircraftFlightPlan(handle, 77, "/a/77.pln", 110); },
         [](Expected& e) { e.u32(77).text("/a/77.pln", 260).u32(110); }, 0x2D},
    };
    std::uint32_t sendId = 1; // the Open packet's
    for (const Case& c : cases) {
        scene.sent.clear();
        EXPECT_EQ(c.call(), simOk) << c.name;
        ASSERT_EQ(scene.sent.size(), 1U) << c.name << ": each call leaves as one packet";
        Expected expected(c.operation, ++sendId);
        c.body(expected);
        EXPECT_EQ(expected.packet().size(), c.size) << c.name;
        EXPECT_EQ(scene.sent[0], expected.packet()) << c.name;
        std::uint32_t last = 0;
        EXPECT_EQ(SimConnect_GetLastSentPacketID(handle, last), simOk);
        EXPECT_EQ(last, sendId) << c.name;
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

// What reaches the simulator of the worker's commands, and when; and the ceremony of a new object.

#include "core/display.h"
#include "core/log.h"
#include "core/reasoncounts.h"
#include "simlink/objectcommands.h"
#include "simlink/sessionstate.h"
#include "simlink/simscene.h"

#include <cstring>
#include <thread>

#include <gtest/gtest.h>

namespace kst::test {
namespace {

PositionUpdate positionOf(std::uint32_t objectId, double altFt = 3000.0) {
    return {{47.1, 8.1, -0.01, 0.02, 1.5, altFt, -10.0, 140.0}, objectId};
}

class ObjectCommands : public testing::Test {
protected:
    ObjectCommands() {
        scene.open();
        scene.knowUser();
        scene.sent.clear();
    }
    /// One rendered frame.
    void frame() { scene.tell(frameMessage(60.0F)); }
    /// What the last frames sent, in order: operation, first field, second field.
    std::vector<std::vector<std::uint32_t>> sentFields() const {
        std::vector<std::vector<std::uint32_t>> fields;
        for (const Packet& packet : scene.sent) {
            fields.push_back({operationOf(packet), fieldOf(packet, 16), fieldOf(packet, 20)});
        }
        return fields;
    }

    SimScene scene;
};

using Fields = std::vector<std::vector<std::uint32_t>>;

TEST_F(ObjectCommands, PositionsLeaveWithTheNextFrameAfterTheirTick) {
    gf_updateAircraft(positionOf(77));
    frame();
    EXPECT_TRUE(scene.sent.empty()) << "the worker's list is not the frame's";
    lf_swapPositionBuffers();
    frame();
    ASSERT_EQ(scene.sent.size(), 1U);
    EXPECT_EQ(operationOf(scene.sent[0]), 0x10U);
    EXPECT_EQ(fieldOf(scene.sent[0], 16), 402U);
    EXPECT_EQ(fieldOf(scene.sent[0], 20), 77U);
    EXPECT_EQ(fieldOf(scene.sent[0], 28), 1U);
    EXPECT_EQ(fieldOf(scene.sent[0], 32), 64U);
    double values[8];
    std::memcpy(values, scene.sent[0].data() + 36, sizeof values);
    EXPECT_EQ(std::vector<double>(values, values + 8),
              (std::vector<double>{47.1, 8.1, -0.01, 0.02, 1.5, 3000.0, -10.0, 140.0}));
    EXPECT_EQ(happeningTotal(Happening::PositionsSent), 1U);
    frame();
    EXPECT_EQ(scene.sent.size(), 1U) << "and only once";
}

TEST_F(ObjectCommands, ASlowSimulatorSeesOnlyTheLatestTick) {
    for (int tick = 0; tick < 3; ++tick) {
        gf_updateAircraft(positionOf(77, 1000.0 + tick));
        lf_swapPositionBuffers();
    }
    frame();
    ASSERT_EQ(scene.sent.size(), 1U);
    double altFt = 0.0;
    std::memcpy(&altFt, scene.sent[0].data() + 36 + 40, sizeof altFt);
    EXPECT_EQ(altFt, 1002.0);
}

TEST_F(ObjectCommands, NothingIsEverDoneToTheUsersOwnAircraft) {
    scene.tell(userMessage({.objectId = 5}));
    for (const std::uint32_t objectId : {0U, 1U, 5U}) {
        gf_updateAircraft(positionOf(objectId));
        lf_queueRemoval(objectId);
    }
    lf_swapPositionBuffers();
    scene.sent.clear();
    frame();
    EXPECT_TRUE(scene.sent.empty());
    EXPECT_TRUE(scene.logged(timeOfDay() + " Simconnect call to remove ac with objectid 5\n"));
}

TEST_F(ObjectCommands, AFrameWhileTheLockIsTakenWaitsForTheNext) {
    lf_queueRemoval(77);
    {
        const std::lock_guard lock(simLock);
        std::thread([] { lf_onFrame(); }).join(); // gives way instead of waiting
    }
    EXPECT_TRUE(scene.sent.empty());
    frame();
    EXPECT_EQ(sentFields(), (Fields{{0x2C, 77, 105}}));
}

TEST_F(ObjectCommands, AtASlowFrameRateABusyLockCostsTheTick) {
    // The rate is at most 50 until 30 frames have come.
    gf_updateAircraft(positionOf(77));
    {
        const std::lock_guard lock(simLock);
        std::thread([] { lf_swapPositionBuffers(); }).join();
    }
    lf_swapPositionBuffers();
    frame();
    EXPECT_TRUE(scene.sent.empty()) << "the tick's positions were dropped";
}

TEST_F(ObjectCommands, AtAFastFrameRateABusyLockIsWaitedFor) {
    for (int i = 0; i < 30; ++i) {
        scene.tell(frameMessage(50.5F));
    }
    gf_updateAircraft(positionOf(77));
    std::thread worker;
    {
        const std::lock_guard lock(simLock);
        worker = std::thread([] { lf_swapPositionBuffers(); });
    }
    worker.join();
    frame();
    EXPECT_EQ(scene.sent.size(), 1U);
}

TEST_F(ObjectCommands, EventsLeaveInOrderAndFlapsBetweenReleases) {
    lf_queueEvent({77, 220, 1});
    lf_queueEvent({77, 218, 3072});
    lf_setLights(78, {.nav = true,
                      .beacon = true,
                      .landing = false,
                      .taxi = true,
                      .strobes = false,
                      .logo = true,
                      .cabin = true});
    lf_setNavLights(79, false);
    lf_setCabinLights(79, true);
    frame();
    const Fields expected = {
        {0x05, 77, 220}, {0x2B, 77, 103}, {0x05, 77, 218}, {0x2B, 77, 103}, {0x05, 78, 208},
        {0x05, 78, 207}, {0x05, 78, 211}, {0x05, 78, 209}, {0x05, 78, 210}, {0x05, 78, 213},
        {0x05, 78, 212}, {0x05, 79, 208}, {0x05, 79, 212},
    };
    EXPECT_EQ(sentFields(), expected);
    std::vector<std::uint32_t> values;
    for (const Packet& packet : scene.sentOf(0x05)) {
        values.push_back(fieldOf(packet, 24));
        EXPECT_EQ(fieldOf(packet, 28), 301U) << "group";
    }
    EXPECT_EQ(values, (std::vector<std::uint32_t>{1, 3072, 1, 1, 0, 1, 0, 1, 1, 0, 1}));
}

TEST_F(ObjectCommands, ControlsAreSetAtOnce) {
    lf_setControls(77, 100.0, 20.0, 30.0);
    ASSERT_EQ(scene.sent.size(), 1U);
    EXPECT_EQ(fieldOf(scene.sent[0], 16), 401U);
    EXPECT_EQ(fieldOf(scene.sent[0], 20), 77U);
    double values[3];
    std::memcpy(values, scene.sent[0].data() + 36, sizeof values);
    EXPECT_EQ(values[0], 100.0);
    EXPECT_EQ(values[2], 30.0);
    EXPECT_TRUE(lf_transmitEvent(77, 214, 0));
    EXPECT_EQ(fieldOf(scene.sent.back(), 20), 214U);
}

TEST_F(ObjectCommands, AfterTheThirdErrorAFrameOnlyEmptiesTheBuffers) {
    gf_updateAircraft(positionOf(77));
    lf_swapPositionBuffers();
    lf_queueEvent({77, 220, 1});
    lf_createFromQueue({{}, "SWR1", "Title", 20001});
    lf_queueRemoval(77);
    latchedSimError = true;
    frame();
    latchedSimError = false;
    frame();
    EXPECT_TRUE(scene.sent.empty());
}

TEST_F(ObjectCommands, APauseForgetsPositionsButNoRemovalOrCreation) {
    gf_updateAircraft(positionOf(77));
    lf_swapPositionBuffers();
    gf_updateAircraft(positionOf(78));
    lf_createFromQueue({{}, "SWR1", "Title", 20001});
    lf_queueRemoval(79);
    lf_emptyCommandBuffers();
    lf_swapPositionBuffers();
    frame();
    EXPECT_TRUE(scene.sentOf(0x10).empty());
    EXPECT_EQ(scene.sentOf(0x29).size(), 1U);
    EXPECT_EQ(scene.sentOf(0x2C).size(), 1U);
}

// ---- the life of a creation ----

TEST_F(ObjectCommands, ANewObjectIsMatchedByItsTailNumberFrozenAndReported) {
    struct Case {
        std::string tail;
        std::uint32_t hexid;
        SimCommand::Kind kind;
        double value2;
    };
    const Case cases[] = {
        {"SWR100", 20001, SimCommand::Kind::LiveCreated, 1234.5},
        {"SWR101", 10001, SimCommand::Kind::LiveCreated, 1234.5},
        {"SWR102*", 10000, SimCommand::Kind::StaticCreated, 0.0},
    };
    std::uint32_t objectId = 80;
    for (const Case& c : cases) {
        ++objectId;
        scene.sent.clear();
        lf_createFromQueue({{}, c.tail, "Title", c.hexid});
        frame();
        ASSERT_EQ(scene.sentOf(0x29).size(), 1U);
        EXPECT_EQ(textOf(scene.sent[0], 272), c.tail);
        scene.tell(addRemoveMessage(202, objectId));
        scene.sent.clear();
        scene.tell(scanMessage(objectId, 1234.5, 1400.0, false, c.tail));
        EXPECT_EQ(sentFields(), (Fields{{0x2B, objectId, 103}})) << "its pilot is sent away at once";
        auto answers = scene.answers();
        ASSERT_EQ(answers.size(), 1U);
        EXPECT_EQ(answers[0].kind, c.kind);
        EXPECT_EQ(answers[0].objectId, objectId);
        EXPECT_EQ(answers[0].id, c.hexid);
        EXPECT_EQ(answers[0].counter, 0);
        EXPECT_EQ(answers[0].value1, 0.0);
        EXPECT_EQ(answers[0].value2, c.value2);
        scene.sent.clear();
        frame();
        EXPECT_EQ(sentFields(),
                  (Fields{{0x05, objectId, 215}, {0x05, objectId, 216}, {0x05, objectId, 217}}));
        for (const Packet& packet : scene.sent) {
            EXPECT_EQ(fieldOf(packet, 24), 1U);
        }
        scene.tell(scanMessage(objectId, 1234.5, 1400.0, false, c.tail));
        answers = scene.answers();
        EXPECT_EQ(answers.size(), c.tail.ends_with('*') ? 0U : 1U) << "from now on it is a known object";
        EXPECT_TRUE(answers.empty() || answers[0].kind == SimCommand::Kind::HeightReport);
    }
}

TEST_F(ObjectCommands, AScanBeforeObjectAddedIsThatOfAKnownObject) {
    lf_createFromQueue({{}, "SWR100", "Title", 20001});
    frame();
    scene.tell(scanMessage(81, 10.0, 1400.0, false, "SWR100"));
    EXPECT_EQ(scene.answers().at(0).kind, SimCommand::Kind::HeightReport);
    scene.tell(addRemoveMessage(202, 81));
    scene.tell(scanMessage(81, 10.0, 1400.0, false, "SWR100"));
    EXPECT_EQ(scene.answers().at(0).kind, SimCommand::Kind::LiveCreated);
}

TEST_F(ObjectCommands, AnObjectOfSomebodyElseIsShownAndLeftAlone) {
    for (const std::string_view tail : {"N123", ""}) {
        lf_createFromQueue({{}, "", "Title without tail number", 20001});
        frame();
        scene.sent.clear();
        scene.tell(addRemoveMessage(202, 90));
        scene.tell(scanMessage(90, 12.4, 1400.6, true, tail));
        EXPECT_TRUE(scene.answers().empty());
        EXPECT_TRUE(scene.sent.empty());
        EXPECT_EQ(messageLine().message, "just spawned, but not by Kestrane_P3D, oid: 90, callsign \"" +
                                             std::string(tail) +
                                             "\", altaboveGnd:12 ft, onground:1, gnd_alt:1401 ft ");
    }
}

TEST_F(ObjectCommands, ARefusedCreationIsReportedBySendId) {
    lf_createFromQueue({{}, "SWR1", "Title A", 20001});
    lf_createFromQueue({{}, "SWR2", "Title B", 20002});
    lf_createFromQueue({{}, "SWR3", "Title C", 20003});
    frame();
    const auto creations = scene.sentOf(0x29);
    ASSERT_EQ(creations.size(), 3U);
    scene.tell(exceptionMessage(22, fieldOf(creations[1], 12)));
    auto answers = scene.answers();
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(answers[0].kind, SimCommand::Kind::CreationRefused);
    EXPECT_EQ(answers[0].id, 20002U);
    scene.tell(exceptionMessage(22, fieldOf(creations[1], 12)));
    scene.tell(exceptionMessage(22, 999999));
    EXPECT_TRUE(scene.answers().empty()) << "once, and never for a send id that is not ours";
    scene.tell(addRemoveMessage(202, 91));
    scene.tell(scanMessage(91, 0.0, 0.0, true, "SWR3"));
    EXPECT_EQ(scene.answers().at(0).id, 20003U) << "the others are still expected";
}

TEST_F(ObjectCommands, ACreationThatCannotBeSentIsCounted) {
    lf_createFromQueue({{}, "SIXTEENLETTERSXX", "Title", 20001}); // the field holds 11 and a zero
    frame();
    EXPECT_TRUE(scene.logged("! Simcon call to create ac in sim failed, hexid:20001, liv: \"Title\", "
                             "callsign: SIXTEENLETTERSXX\n"));
    EXPECT_TRUE(scene.sentOf(0x29).empty());
    lf_simRequestError();
    EXPECT_FALSE(latchedSimError);
    lf_simRequestError();
    EXPECT_TRUE(latchedSimError) << "it was the first of three";
}

TEST_F(ObjectCommands, AnObjectRemovedBeforeItsFirstScanGivesItsNumberFree) {
    scene.tell(addRemoveMessage(202, 81));
    scene.tell(addRemoveMessage(203, 81));
    scene.answers();
    scene.tell(scanMessage(81, 5.0, 1400.0, true, "SWR9"));
    EXPECT_EQ(scene.answers().at(0).kind, SimCommand::Kind::HeightReport);
    EXPECT_EQ(messageLine().message, "");
}

// ---- queues ----

TEST_F(ObjectCommands, QueuesAreServedOneByOneInOrder) {
    queueObjectRemoval(81);
    queueObjectRemoval(82);
    queueLiveCreation({{}, "SWR1", "Title", 20001});
    queueLiveCreation({{}, "SWR2", "Title", 20002});
    queueStaticCreation({{}, "SWR3*", "Title", 7});
    EXPECT_EQ(liveCreateQueueSize(), 2U);
    EXPECT_EQ(staticCreateQueueSize(), 1U);
    lf_serveRemovalQueue();
    EXPECT_TRUE(lf_serveLiveCreateQueue());
    frame();
    EXPECT_EQ(sentFields().size(), 2U);
    EXPECT_EQ(textOf(scene.sentOf(0x29).at(0), 272), "SWR1");
    EXPECT_EQ(fieldOf(scene.sentOf(0x2C).at(0), 16), 81U);
    EXPECT_TRUE(lf_serveLiveCreateQueue());
    EXPECT_FALSE(lf_serveLiveCreateQueue()) << "empty";
    EXPECT_TRUE(lf_serveStaticCreateQueue());
    EXPECT_FALSE(lf_serveStaticCreateQueue());
    lf_serveRemovalQueue();
    lf_serveRemovalQueue();
    frame();
    EXPECT_EQ(scene.sentOf(0x29).size(), 3U);
    EXPECT_EQ(scene.sentOf(0x2C).size(), 2U);
}

TEST_F(ObjectCommands, AWaitingCreationCanBeTakenBack) {
    queueLiveCreation({{}, "SWR1", "Title", 20001});
    queueStaticCreation({{}, "SWR1*", "Title", 7});
    queueStaticCreation({{}, "SWR2*", "Title", 8});
    std::uint32_t hexid = 0;
    EXPECT_FALSE(takeBackStaticCreation("SWR9*", hexid));
    EXPECT_TRUE(takeBackStaticCreation("SWR2*", hexid));
    EXPECT_EQ(hexid, 8U);
    EXPECT_FALSE(takeBackLiveCreation(7));
    EXPECT_TRUE(takeBackLiveCreation(20001));
    EXPECT_EQ(liveCreateQueueSize(), 0U);
    EXPECT_EQ(staticCreateQueueSize(), 1U);
}

TEST_F(ObjectCommands, TheEndOfARunFlushesRemovalsAndEmptiesTheRest) {
    queueObjectRemoval(81);
    queueObjectRemoval(82);
    lf_flushRemovalQueue();
    frame();
    EXPECT_EQ(scene.sentOf(0x2C).size(), 2U);
    queueLiveCreation({{}, "SWR1", "Title", 20001});
    queueObjectRemoval(83);
    lf_queueRemoval(84);
    lf_queueEvent({77, 220, 1});
    gf_updateAircraft(positionOf(77));
    pushSimCommand({.objectId = 77, .kind = SimCommand::Kind::Removed});
    resetObjectCommands();
    scene.sent.clear();
    lf_serveRemovalQueue();
    lf_swapPositionBuffers();
    frame();
    EXPECT_TRUE(scene.sent.empty());
    EXPECT_EQ(liveCreateQueueSize(), 0U);
    EXPECT_TRUE(scene.answers().empty());
}

TEST_F(ObjectCommands, FlapsWhoseEventFailsReleaseControlOnce) {
    // The connection breaks as soon as the first release has been sent.
    scene.connection.onPacket([&](std::span<const std::byte> packet) {
        scene.sent.emplace_back(packet.begin(), packet.end());
        if (operationOf(scene.sent.back()) == 0x2B) {
            scene.connection.transport()->breakConnection();
        }
    });
    scene.open();
    lf_queueEvent({77, 218, 3072});
    lf_onFrame();
    EXPECT_EQ(sentFields(), (Fields{{0x2B, 77, 103}}));
}

} // namespace
} // namespace kst::test

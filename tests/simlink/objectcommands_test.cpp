// What reaches the simulator of the worker's commands, and when; and the ceremony of a new object.

#include "core/display.h"
#include "core/log.h"
#include "core/reasoncounts.h"
#include "simlink/objectcommands.h"
#include "simlink/sessionstate.h"
#include "simlink/simscene.h"

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
        scene.tell(userMessage());
        scene.sent.clear();
    }
    /// One rendered frame.
    void frame() { scene.tell(frameMessage(60.0F)); }
    void create(const std::string& tail, std::uint32_t hexid) {
        lf_createFromQueue({{}, tail, "Title", hexid});
    }

    SimScene scene;
};

TEST_F(ObjectCommands, PositionsLeaveOnceWithTheNextFrameAndOnlyTheLatest) {
    gf_updateAircraft(positionOf(77, 1000.0));
    frame();
    EXPECT_EQ(scene.sentFields(), Fields{}) << "the worker's list is not the frame's";
    lf_swapPositionBuffers();
    gf_updateAircraft(positionOf(77, 3000.0));
    lf_swapPositionBuffers();
    frame();
    frame();
    EXPECT_EQ(scene.sentFields(5), (Fields{{0x10, 402, 77, 0, 1, 64}}));
    EXPECT_EQ(doublesOf(scene.sent[0], 36),
              (std::vector<double>{47.1, 8.1, -0.01, 0.02, 1.5, 3000.0, -10.0, 140.0}));
    EXPECT_EQ(happeningTotal(Happening::PositionsSent), 1U);
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
    EXPECT_EQ(scene.sentFields(), Fields{});
    EXPECT_TRUE(scene.logged(timeOfDay() + " Simconnect call to remove ac with objectid 5\n"));
}

TEST_F(ObjectCommands, AFrameWhileTheLockIsTakenWaitsForTheNext) {
    lf_queueRemoval(77);
    {
        const std::lock_guard lock(simLock);
        std::thread([] { lf_onFrame(); }).join(); // gives way instead of waiting
    }
    EXPECT_EQ(scene.sentFields(), Fields{});
    frame();
    EXPECT_EQ(scene.sentFields(), (Fields{{0x2C, 77, 105}}));
}

TEST_F(ObjectCommands, ABusyLockCostsTheTickAtASlowFrameRateAndIsWaitedForAtAFastOne) {
    const auto swapWhileBusy = [](bool endsBeforeTheLock) {
        std::thread worker;
        {
            const std::lock_guard lock(simLock);
            worker = std::thread([] { lf_swapPositionBuffers(); });
            if (endsBeforeTheLock) {
                worker.join();
            }
        }
        if (worker.joinable()) {
            worker.join();
        }
    };
    gf_updateAircraft(positionOf(77)); // the rate is at most 50 until 30 frames have come
    swapWhileBusy(true);
    lf_swapPositionBuffers();
    for (int i = 0; i < 30; ++i) {
        scene.tell(frameMessage(50.5F));
    }
    EXPECT_EQ(scene.sentFields(), Fields{}) << "the tick's positions were dropped";
    gf_updateAircraft(positionOf(77));
    swapWhileBusy(false);
    frame();
    EXPECT_EQ(scene.sent.size(), 1U);
}

TEST_F(ObjectCommands, EventsLeaveInOrderAndFlapsBetweenReleases) {
    lf_queueEvent({77, 220, 1});
    lf_queueEvent({77, 218, 3072});
    lf_setLights(78, {true, true, false, true, false, true, true});
    lf_setNavLights(79, false);
    lf_setCabinLights(79, true);
    frame();
    const auto event = [](std::uint32_t object, std::uint32_t number, std::uint32_t value) {
        return std::vector<std::uint32_t>{0x05, object, number, value, 301, 0};
    };
    const std::vector<std::uint32_t> release = {0x2B, 77, 103};
    const Fields expected = {event(77, 220, 1), release,           event(77, 218, 3072), release,
                             event(78, 208, 1), event(78, 207, 1), event(78, 211, 0),    event(78, 209, 1),
                             event(78, 210, 0), event(78, 213, 1), event(78, 212, 1),    event(79, 208, 0),
                             event(79, 212, 1)};
    EXPECT_EQ(scene.sentFields(5), expected);
}

TEST_F(ObjectCommands, ControlsAreSetAtOnce) {
    lf_setControls(77, 100.0, 20.0, 30.0);
    EXPECT_TRUE(lf_transmitEvent(77, 214, 0));
    EXPECT_EQ(scene.sentFields(), (Fields{{0x10, 401, 77}, {0x05, 77, 214}}));
    EXPECT_EQ(doublesOf(scene.sent[0], 36), (std::vector{100.0, 20.0, 30.0}));
}

TEST_F(ObjectCommands, AfterTheThirdErrorAFrameOnlyEmptiesTheBuffers) {
    gf_updateAircraft(positionOf(77));
    lf_swapPositionBuffers();
    lf_queueEvent({77, 220, 1});
    create("SWR1", 20001);
    lf_queueRemoval(77);
    latchedSimError = true;
    frame();
    latchedSimError = false;
    frame();
    EXPECT_EQ(scene.sentFields(), Fields{});
}

TEST_F(ObjectCommands, APauseForgetsPositionsButNoRemovalOrCreation) {
    gf_updateAircraft(positionOf(77));
    lf_swapPositionBuffers();
    gf_updateAircraft(positionOf(78));
    create("SWR1", 20001);
    lf_queueRemoval(79);
    lf_emptyCommandBuffers();
    lf_swapPositionBuffers();
    frame();
    EXPECT_EQ(scene.sentFields(0), (Fields{{0x29}, {0x2C}}));
}

// ---- the life of a creation ----

TEST_F(ObjectCommands, ANewObjectIsMatchedByItsTailNumberFrozenAndReported) {
    struct Case {
        std::string tail;
        std::uint32_t hexid;
        std::string created;
        Texts known; ///< what a scan reports from then on
    };
    const Case cases[] = {
        {"SWR100", 20001, "LiveCreated 81 20001 0 0 1234.5", {"HeightReport 81 1 0 1400.6 1234.5"}},
        {"SWR101", 10001, "LiveCreated 81 10001 0 0 1234.5", {"HeightReport 81 1 0 1400.6 1234.5"}},
        {"SWR102*", 10000, "StaticCreated 81 10000 0 0 0", {}},
    };
    for (const Case& c : cases) {
        create(c.tail, c.hexid);
        frame();
        ASSERT_EQ(scene.sentOf(0x29).size(), 1U);
        EXPECT_EQ(textOf(scene.sent[0], 272), c.tail);
        scene.sent.clear();
        scene.tell(scanMessage(81, 10.0, "SWR9"));
        EXPECT_EQ(scene.answers(), Texts{"HeightReport 81 1 0 1400.6 10"}) << "not yet told to be new";
        scene.tell(addRemoveMessage(202, 81));
        scene.tell(scanMessage(81, 1234.5, c.tail));
        EXPECT_EQ(scene.sentFields(), (Fields{{0x2B, 81, 103}})) << "its pilot is sent away at once";
        EXPECT_EQ(scene.answers(), Texts{c.created});
        scene.sent.clear();
        frame();
        EXPECT_EQ(scene.sentFields(3), (Fields{{0x05, 81, 215, 1}, {0x05, 81, 216, 1}, {0x05, 81, 217, 1}}));
        scene.sent.clear();
        scene.tell(scanMessage(81, 1234.5, c.tail));
        EXPECT_EQ(scene.answers(), c.known);
    }
}

TEST_F(ObjectCommands, AnObjectOfSomebodyElseIsShownAndLeftAlone) {
    for (const std::string tail : {"N123", ""}) {
        create("", 20001);
        frame();
        scene.sent.clear();
        scene.tell(addRemoveMessage(202, 90));
        scene.tell(scanMessage(90, 12.4, tail));
        EXPECT_EQ(scene.answers(), Texts{});
        EXPECT_EQ(scene.sentFields(), Fields{});
        EXPECT_EQ(messageLine().message, "just spawned, but not by Kestrane_P3D, oid: 90, callsign \"" +
                                             tail + "\", altaboveGnd:12 ft, onground:1, gnd_alt:1401 ft ");
    }
}

TEST_F(ObjectCommands, ARefusedCreationIsReportedBySendId) {
    create("SWR1", 20001);
    create("SWR2", 20002);
    create("SWR3", 20003);
    frame();
    ASSERT_EQ(scene.sent.size(), 3U);
    const std::uint32_t sendId = fieldOf(scene.sent[1], 12);
    for (const std::uint32_t refused : {sendId, sendId, 999999U}) {
        scene.tell(exceptionMessage(22, refused));
    }
    EXPECT_EQ(scene.answers(), Texts{"CreationRefused 0 20002 0 0 0"})
        << "once, and never for a send id that is not ours";
    scene.tell(addRemoveMessage(202, 91));
    scene.tell(scanMessage(91, 0.0, "SWR3"));
    EXPECT_EQ(scene.answers(), Texts{"LiveCreated 91 20003 0 0 0"}) << "the others are still expected";
}

TEST_F(ObjectCommands, ACreationThatCannotBeSentIsCounted) {
    create("SIXTEENLETTERSXX", 20001); // the field holds 11 and a zero
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
    scene.tell(scanMessage(81, 5.0, "SWR9"));
    EXPECT_EQ(scene.answers(), (Texts{"Removed 81 0 0 0 0", "HeightReport 81 1 0 1400.6 5"}));
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
    Texts created;
    for (int pass = 0; pass < 3; ++pass) {
        lf_serveRemovalQueue();
        EXPECT_EQ(lf_serveLiveCreateQueue(), pass < 2);
        EXPECT_EQ(lf_serveStaticCreateQueue(), pass < 1);
        frame();
    }
    for (const Packet& packet : scene.sentOf(0x29)) {
        created.push_back(textOf(packet, 272));
    }
    EXPECT_EQ(created, (Texts{"SWR1", "SWR3*", "SWR2"}));
    EXPECT_EQ(scene.sentFields(0), (Fields{{0x29}, {0x29}, {0x2C}, {0x29}, {0x2C}}));
    EXPECT_EQ(fieldOf(scene.sentOf(0x2C)[0], 16), 81U);
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
    EXPECT_EQ(scene.sentFields(), Fields{});
    EXPECT_EQ(liveCreateQueueSize(), 0U);
    EXPECT_EQ(scene.answers(), Texts{});
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
    EXPECT_EQ(scene.sentFields(), (Fields{{0x2B, 77, 103}}));
}

} // namespace
} // namespace kst::test

#include "core/display.h"

#include "core/corescene.h"
#include "core/progress.h"
#include "support/virtualtime.h"

#include <memory>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

using test::RecordingWindow;
using testing::ElementsAre;

class DisplayTest : public test::CoreScene {
protected:
    static std::string message() { return messageLine().message; }
    static void age(int ticks) {
        for (int tick = 0; tick < ticks; ++tick) {
            ageMessage();
        }
    }
};

TEST_F(DisplayTest, AMessageGivesWayToAnErrorAndNeverCoversIt) {
    showMessage("scanning", false);
    showError("no path");
    EXPECT_EQ(message(), "");
    showMessage("later", true);
    clearMessage();
    age(1000);
    EXPECT_EQ(message(), "");
    EXPECT_EQ(messageLine().error, "no path") << "an error does not age";
    showError("worse");
    EXPECT_EQ(messageLine().error, "worse");
    clearError();
    showMessage("after", true);
    EXPECT_EQ(message(), "after");
    showMessage("", true);
    EXPECT_EQ(message(), "");
    EXPECT_EQ(log(), "Error no path\nError worse\nafter\n") << "a dropped message is not logged either";
}

TEST_F(DisplayTest, AMessageStandsTwentyFiveTicks) {
    showMessage("before the first tick", false);
    age(25);
    EXPECT_EQ(message(), "before the first tick");
    age(1);
    EXPECT_EQ(message(), "");
    age(100);
    showMessage("first", false);
    age(20);
    showMessage("second", false);
    age(24);
    EXPECT_EQ(message(), "second");
    RecordingWindow window;
    age(1);
    EXPECT_EQ(message(), "");
    age(1);
    EXPECT_THAT(window.bands, ElementsAre(Band::Message)) << "an empty line is not painted each second";
}

TEST_F(DisplayTest, ThePaintSeesTheChangeThatAskedForIt) {
    RecordingWindow window;
    updateStatus(Band::Park, [](StatusValues& values) { values.standsShown = 17; });
    EXPECT_EQ(window.seenStands, 17U);
    showMessage("text", false);
    EXPECT_EQ(window.seenMessage, "text");
    EXPECT_THAT(window.bands, ElementsAre(Band::Park, Band::Message));
}

TEST_F(DisplayTest, StatusChangesAreSeenWhole) {
    std::thread writer([] {
        for (std::uint64_t i = 1; i <= 2000; ++i) {
            updateStatus(Band::Status, [&](StatusValues& values) {
                values.liveShown = i;
                values.simText.assign(40, static_cast<char>('a' + i % 26));
            });
        }
    });
    std::uint64_t seen = 0;
    while (seen < 2000) {
        const StatusValues values = statusValues();
        EXPECT_GE(values.liveShown, seen);
        seen = values.liveShown;
        if (seen > 0) {
            ASSERT_EQ(values.simText, std::string(40, static_cast<char>('a' + seen % 26)));
        }
    }
    writer.join();
}

TEST_F(DisplayTest, ControlsAndParametersArePassedOnAndControlsRemembered) {
    RecordingWindow window;
    for (const bool enabled : {true, false}) {
        enableControl(control::ReRead, enabled);
        EXPECT_EQ(controlEnabled(control::ReRead), enabled);
    }
    EXPECT_FALSE(controlEnabled(31)) << "a control that nobody has enabled";
    showParameter(MAX_LIVE);
    blankParameter(parking_percentage);
    const std::string id = std::to_string(control::ReRead);
    EXPECT_THAT(window.asked,
                ElementsAre("enable " + id, "disable " + id, "show MAX_LIVE=-1", "blank parking_percentage"));
    EXPECT_THAT(window.bands, ElementsAre(Band::Control)) << "for the shown parameter";
}

TEST_F(DisplayTest, TheNextRunBeginsWithAnEmptyDisplay) {
    updateStatus(Band::Status, [](StatusValues& values) {
        values.airportCode = "LSZH";
        values.trafficStatus = 1;
    });
    showError("gone");
    resetDisplay();
    EXPECT_EQ(statusValues().airportCode, "");
    EXPECT_EQ(statusValues().trafficStatus, 3);
    EXPECT_EQ(messageLine().error, "");
    showMessage("new", false);
    EXPECT_EQ(message(), "new");
}

TEST_F(DisplayTest, ProgressOfALongTaskStandsAtMostTwiceASecondAndTakesOnlyItsOwnTextAway) {
    test::VirtualTime time;
    const auto bar = [] { return statusValues().progress; };
    auto task = std::make_unique<Progress>();
    time.advance(std::chrono::milliseconds{499});
    EXPECT_FALSE(task->due());
    time.advance(std::chrono::milliseconds{1});
    EXPECT_TRUE(task->due());
    EXPECT_FALSE(task->due());
    task->show("one of two", 0.5);
    EXPECT_EQ(message(), "one of two");
    EXPECT_EQ(bar().to, 0.5);
    task->show("three of two", 1.5);
    EXPECT_EQ(bar().to, 1.0);
    task.reset();
    EXPECT_EQ(message(), "");
    EXPECT_EQ(bar().to, 0.0);

    task = std::make_unique<Progress>();
    for (int round = 0; round < 20; ++round) {
        const double before = bar().from;
        task->show("how many?", std::nullopt);
        EXPECT_TRUE(round == 0 || bar().from != before);
        EXPECT_GT(bar().to, bar().from);
        EXPECT_LE(bar().to, 1.0);
    }
    showMessage("something else", false);
    task.reset();
    EXPECT_EQ(message(), "something else");
    EXPECT_EQ(bar().to, 0.0);
}

} // namespace
} // namespace kst

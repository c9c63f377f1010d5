#include "core/display.h"

#include "core/log.h"
#include "core/progress.h"
#include "support/tempfolder.h"
#include "support/virtualtime.h"

#include <memory>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A window that remembers what it was asked, and that asks back as a window may do.
class RecordingWindow : public DisplaySink {
public:
    RecordingWindow() { setDisplaySink(this); }
    ~RecordingWindow() override { setDisplaySink(nullptr); }
    void repaint(Band band) override {
        bands.push_back(band);
        seenMessage = messageLine().message;
        seenStands = statusValues().standsShown;
    }
    void showParameter(const Parameter& parameter) override { shown.emplace_back(parameter.name()); }
    void blankParameter(const Parameter& parameter) override { blanked.emplace_back(parameter.name()); }
    void enableControl(int controlId, bool enabled) override { controls.emplace_back(controlId, enabled); }
    void applyAlwaysOnTop() override {}
    void postStartWorker() override {}
    void postQuit() override {}

    std::vector<Band> bands;
    std::vector<std::string> shown;
    std::vector<std::string> blanked;
    std::vector<std::pair<int, bool>> controls;
    std::string seenMessage;
    std::uint64_t seenStands = 0;
};

class DisplayTest : public testing::Test {
protected:
    DisplayTest() {
        resetDisplay();
        openLog();
    }
    ~DisplayTest() override {
        closeLog();
        resetDisplay();
    }
    std::string logged() const {
        const std::string content = folder.read("Log.txt").value_or("");
        return content.substr(content.find('\n') + 1);
    }

    test::TempFolder folder;
};

TEST_F(DisplayTest, AMessageGivesWayToAnErrorAndNeverCoversIt) {
    showMessage("scanning", false);
    showError("no path");
    EXPECT_EQ(messageLine().message, "");
    EXPECT_EQ(messageLine().error, "no path");
    showMessage("later", true);
    EXPECT_EQ(messageLine().message, "");
    clearMessage();
    EXPECT_EQ(messageLine().error, "no path");
    showError("worse");
    EXPECT_EQ(messageLine().error, "worse");
    clearError();
    showMessage("after", true);
    EXPECT_EQ(messageLine().message, "after");
    EXPECT_EQ(logged(), "Error no path\nError worse\nafter\n") << "a dropped message is not logged either";
}

TEST_F(DisplayTest, OnlyWantedMessagesGoToTheLog) {
    showMessage("quiet", false);
    showMessage("", true);
    EXPECT_EQ(messageLine().message, "");
    EXPECT_EQ(logged(), "");
}

TEST_F(DisplayTest, AMessageStandsTwentyFiveTicks) {
    for (int tick = 0; tick < 100; ++tick) {
        ageMessage();
    }
    showMessage("first", false);
    for (int tick = 0; tick < 20; ++tick) {
        ageMessage();
    }
    showMessage("second", false);
    for (int tick = 0; tick < 24; ++tick) {
        ageMessage();
        EXPECT_EQ(messageLine().message, "second") << tick;
    }
    RecordingWindow window;
    ageMessage();
    EXPECT_EQ(messageLine().message, "");
    EXPECT_THAT(window.bands, ElementsAre(Band::Message));
    ageMessage();
    EXPECT_EQ(window.bands.size(), 1U) << "an empty line is not painted each second";
}

TEST_F(DisplayTest, AMessageBeforeTheFirstTickGoesToo) {
    showMessage("at start", false);
    for (int tick = 0; tick < 26; ++tick) {
        EXPECT_EQ(messageLine().message, "at start") << tick;
        ageMessage();
    }
    EXPECT_EQ(messageLine().message, "");
}

TEST_F(DisplayTest, AnErrorDoesNotAge) {
    showError("stays");
    for (int tick = 0; tick < 1000; ++tick) {
        ageMessage();
    }
    EXPECT_EQ(messageLine().error, "stays");
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

TEST_F(DisplayTest, ControlsAreRememberedAndPassedOn) {
    RecordingWindow window;
    enableControl(control::ReRead, true);
    EXPECT_TRUE(controlEnabled(control::ReRead));
    enableControl(control::ReRead, false);
    EXPECT_FALSE(controlEnabled(control::ReRead));
    EXPECT_FALSE(controlEnabled(31)) << "a control that nobody has enabled";
    EXPECT_THAT(window.controls,
                ElementsAre(std::pair(control::ReRead, true), std::pair(control::ReRead, false)));
}

TEST_F(DisplayTest, AShownParameterRepaintsTheControlArea) {
    RecordingWindow window;
    showParameter(MAX_LIVE);
    blankParameter(parking_percentage);
    EXPECT_THAT(window.shown, ElementsAre("MAX_LIVE"));
    EXPECT_THAT(window.blanked, ElementsAre("parking_percentage"));
    EXPECT_THAT(window.bands, ElementsAre(Band::Control));
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
    showMessage("", false);
    showMessage("new", false);
    EXPECT_EQ(messageLine().message, "new");
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
    EXPECT_EQ(messageLine().message, "one of two");
    EXPECT_EQ(bar().to, 0.5);
    task->show("three of two", 1.5);
    EXPECT_EQ(bar().to, 1.0);
    task.reset();
    EXPECT_EQ(messageLine().message, "");
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
    EXPECT_EQ(messageLine().message, "something else");
    EXPECT_EQ(bar().to, 0.0);
}

} // namespace
} // namespace kst

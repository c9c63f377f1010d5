// The window as the process makes it, with its place on the desktop.

#include "window/window.h"

#include "core/display.h"
#include "platform/ui.h"
#include "window/commandworld.h"

#include <string>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

class MainWindowTest : public test::CommandWorld {
protected:
    MainWindowTest() { setDisplaySink(nullptr); }
    ~MainWindowTest() override { destroyMainWindow(); }

    void storePosition(const std::string& x, const std::string& y) {
        folder.write(std::filesystem::relative(parametersFile(), folder.path()),
                     fmt::format("<parameters><parameter name=\"MAIN_WINDOW_X\" value=\"{}\"/>"
                                 "<parameter name=\"MAIN_WINDOW_Y\" value=\"{}\"/></parameters>",
                                 x, y));
    }
    bool create() {
        return createMainWindow({[this] { ++workersStarted; }, [this] { ++closesAsked; }});
    }
    /// Lets the window serve what is posted, then end the loop as the exit does.
    static int runToTheEnd() {
        displaySink()->postQuit();
        return runMainWindow();
    }

    int workersStarted = 0;
    int closesAsked = 0;
};

TEST_F(MainWindowTest, PositionSurvivesARestartOfTheProcess) {
    storePosition("123", "45");
    ASSERT_TRUE(create());
    EXPECT_EQ(runToTheEnd(), 0);
    EXPECT_EQ(stored(MAIN_WINDOW_X), "123");
    EXPECT_EQ(stored(MAIN_WINDOW_Y), "45");
}

TEST_F(MainWindowTest, CoordinateOnALimitGivesWayToTheDefault) {
    for (const auto& [stored, wanted] : {std::pair("30000", "400"),
                                         {"-30000", "400"},
                                         {"99999", "400"},
                                         {"-99999", "400"},
                                         {"", "400"},
                                         {"77", "77"}}) {
        storePosition(stored, "33");
        ASSERT_TRUE(create());
        EXPECT_EQ(MAIN_WINDOW_X.text(), wanted) << stored;
        if (*stored != '\0') {
            EXPECT_EQ(storedParameterText("MAIN_WINDOW_X"), wanted) << stored;
        }
        EXPECT_EQ(MAIN_WINDOW_Y, 33);
        destroyMainWindow();
    }
}

TEST_F(MainWindowTest, PlaceThatNoDisplayShowsIsLeft) {
    storePosition("-20000", "20000");
    ASSERT_TRUE(create());
    EXPECT_EQ(runToTheEnd(), 0);
    EXPECT_GT(MAIN_WINDOW_X, -1000);
    EXPECT_LT(MAIN_WINDOW_Y, 5000);
}

TEST_F(MainWindowTest, OpensWithoutAParametersFile) {
    std::filesystem::remove(parametersFile());
    ASSERT_TRUE(create());
    EXPECT_EQ(MAIN_WINDOW_X, 400);
    EXPECT_EQ(MAIN_WINDOW_Y, 20);
}

TEST_F(MainWindowTest, PostedStartReachesTheProcess) {
    ASSERT_TRUE(create());
    displaySink()->postStartWorker();
    EXPECT_EQ(runToTheEnd(), 0);
    EXPECT_EQ(workersStarted, 1);
    EXPECT_EQ(closesAsked, 0);
}

TEST_F(MainWindowTest, RequestToCloseAsksTheProcessAndTheWindowStays) {
    ASSERT_TRUE(create());
    platform::requestClose();
    EXPECT_EQ(runToTheEnd(), 0);
    EXPECT_EQ(closesAsked, 1);
    EXPECT_NE(displaySink(), nullptr);
}

TEST_F(MainWindowTest, CheckBoxesStartEnabledAndAllElseDisabled) {
    ASSERT_TRUE(create());
    EXPECT_TRUE(controlEnabled(control::ScanLiveries));
    EXPECT_TRUE(controlEnabled(control::InitialLoadOnly));
    EXPECT_FALSE(controlEnabled(control::AllInstallPath));
    EXPECT_FALSE(controlEnabled(control::ReRead));
}

TEST_F(MainWindowTest, DisplayMayBeWrittenToAfterTheWindowIsGone) {
    ASSERT_TRUE(create());
    DisplaySink* const late = displaySink();
    destroyMainWindow();
    EXPECT_EQ(displaySink(), nullptr);
    late->repaint(Band::Park);
    late->showParameter(LATERAL_RANGE);
    late->postQuit();
    showMessage("The end", false);
    EXPECT_EQ(message(), "The end");
}

} // namespace
} // namespace kst

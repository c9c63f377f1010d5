// The window of the Windows program, worked from outside with a real mouse and a real keyboard.

#include "system/linux/display.h"
#include "system/linux/host.h"
#include "system/linux/systemworld.h"

#include <gtest/gtest.h>

#include <fmt/format.h>

namespace kst {
namespace {

using namespace std::chrono_literals;
using test::Hand;
using test::Place;
using test::SystemWorld;
using test::waitFor;

bool stored(const SystemWorld& world, const std::string& name, const std::string& value) {
    const std::string wanted = fmt::format("name=\"{}\" value=\"{}\"", name, value);
    return waitFor([&] { return test::contentOf(world.parametersFile()).find(wanted) != std::string::npos; },
                   10s);
}

void startAtPlace(SystemWorld& world, int x, int y) {
    world.writeParameters({{"MAIN_WINDOW_X", std::to_string(x)}, {"MAIN_WINDOW_Y", std::to_string(y)}});
    world.startProgram();
    ASSERT_TRUE(world.logSays("Waiting for Prepar3Dv5 ..."));
}

TEST(WindowsWindow, MouseAndKeyboardReachTheParametersFile) {
    SystemWorld world;
    Hand hand(world);
    ASSERT_NO_FATAL_FAILURE(startAtPlace(world, 130, 70));
    const Place window = hand.window();
    EXPECT_EQ(window.x, 130) << "not at the saved place";
    EXPECT_EQ(window.y, 70);
    ASSERT_GE(window.width, layout::windowWidth) << "no window has the program's name as its title";
    hand.click(control::AlwaysOnTop);
    EXPECT_TRUE(stored(world, "ALWAYS_ON_TOP", "1"));
    hand.click(control::AlwaysOnTop);
    EXPECT_TRUE(stored(world, "ALWAYS_ON_TOP", "0"));
    hand.click(control::LateralRange);
    hand.press({"End", "BackSpace", "BackSpace", "BackSpace", "5", "5", "Return"});
    EXPECT_TRUE(stored(world, "LATERAL_RANGE", "55"));
    hand.press({"Tab", "space"});
    EXPECT_TRUE(stored(world, "AUTO_RANGE", "1")) << "Tab does not lead to the next control";
}

TEST(WindowsWindow, CloseButtonSavesWhereTheWindowWasDraggedTo) {
    SystemWorld world;
    Hand hand(world);
    ASSERT_NO_FATAL_FAILURE(startAtPlace(world, 40, 30));
    hand.drag(200, 120);
    Place moved;
    EXPECT_TRUE(waitFor(
        [&] {
            hand.forget();
            moved = hand.window();
            return moved.x == 240 && moved.y == 150;
        },
        10s))
        << moved.x << ", " << moved.y;
    hand.clickCloseButton();
    EXPECT_EQ(world.program().wait(20s), 0);
    EXPECT_TRUE(stored(world, "MAIN_WINDOW_X", "240"));
    EXPECT_TRUE(stored(world, "MAIN_WINDOW_Y", "150"));
    EXPECT_TRUE(world.logSays("User closed Kestrane_P3D", 1s));
}

} // namespace
} // namespace kst

// The window of the Windows program, worked from outside with a real mouse and a real keyboard.

#include "support/places.h"
#include "system/linux/systemworld.h"
#include "window/layout.h"

#include <gtest/gtest.h>

#include <charconv>

#include <fmt/format.h>

namespace kst {
namespace {

using namespace std::chrono_literals;
using test::SystemWorld;
using test::waitFor;

/// Where the window stands on the display, frame included.
struct Place {
    int x = -1;
    int y = -1;
    int width = 0;
    int height = 0;
};

/// Mouse and keyboard of the display that the Windows programs appear on.
class Hand {
public:
    explicit Hand(const SystemWorld& world) : folder_(world.folder()) {}

    std::string run(const std::vector<std::string>& words) const {
        std::vector<std::string> all = {(test::sourceFolder() / "scripts" / "wine-session").string(), "run",
                                        "xdotool"};
        all.insert(all.end(), words.begin(), words.end());
        const auto output = folder_ / "xdotool.txt";
        std::filesystem::remove(output);
        test::ChildProcess process(all, {}, folder_, output);
        process.wait(20s);
        return test::contentOf(output);
    }

    /// The window with the program's name as its title, once it is shown.
    Place window() const {
        const std::string text = run({"search", "--sync", "--onlyvisible", "--name", "^Kestrane_P3D$",
                                      "getwindowgeometry", "--shell"});
        return {numberOf(text, "X="), numberOf(text, "Y="), numberOf(text, "WIDTH="),
                numberOf(text, "HEIGHT=")};
    }

    void click(int x, int y) const { run({"mousemove", std::to_string(x), std::to_string(y), "click", "1"}); }

    /// Clicks the middle of a control.
    void click(const Place& window, int controlId) const {
        const platform::Rect area = layout::controlArea(layout::controls[layout::controlIndex(controlId)]);
        const int frame = (window.width - layout::windowWidth) / 2;
        const int caption = window.height - layout::windowHeight - frame;
        click(window.x + frame + (area.left + area.right) / 2,
              window.y + caption + (area.top + area.bottom) / 2);
    }

    void press(const std::vector<std::string>& keys) const {
        std::vector<std::string> words = {"key", "--delay", "20"};
        words.insert(words.end(), keys.begin(), keys.end());
        run(words);
    }

    /// Takes the window by its caption.
    void drag(const Place& window, int rightwards, int downwards) const {
        const int x = window.x + window.width / 2;
        const int y = window.y + captionGrip;
        run({"mousemove", std::to_string(x), std::to_string(y), "mousedown", "1"});
        run({"mousemove", std::to_string(x + rightwards / 2), std::to_string(y + downwards / 2)});
        run({"mousemove", std::to_string(x + rightwards), std::to_string(y + downwards), "mouseup", "1"});
    }

    void clickCloseButton(const Place& window) const {
        click(window.x + window.width - captionGrip, window.y + captionGrip);
    }

private:
    static constexpr int captionGrip = 12; ///< from the outer edge into the caption, and into its last button

    static int numberOf(const std::string& text, const std::string& name) {
        int value = -1;
        if (const auto at = text.find("\n" + name); at != std::string::npos) {
            const char* first = text.data() + at + 1 + name.size();
            std::from_chars(first, text.data() + text.size(), value);
        }
        return value;
    }

    std::filesystem::path folder_;
};

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
    const Hand hand(world);
    ASSERT_NO_FATAL_FAILURE(startAtPlace(world, 130, 70));
    const Place window = hand.window();
    EXPECT_EQ(window.x, 130) << "not at the saved place";
    EXPECT_EQ(window.y, 70);
    ASSERT_GE(window.width, layout::windowWidth) << "no window has the program's name as its title";
    hand.click(window, control::AlwaysOnTop);
    EXPECT_TRUE(stored(world, "ALWAYS_ON_TOP", "1"));
    hand.click(window, control::AlwaysOnTop);
    EXPECT_TRUE(stored(world, "ALWAYS_ON_TOP", "0"));
    hand.click(window, control::LateralRange);
    hand.press({"End", "BackSpace", "BackSpace", "BackSpace", "5", "5", "Return"});
    EXPECT_TRUE(stored(world, "LATERAL_RANGE", "55"));
    hand.press({"Tab", "space"});
    EXPECT_TRUE(stored(world, "AUTO_RANGE", "1")) << "Tab does not lead to the next control";
}

TEST(WindowsWindow, CloseButtonSavesWhereTheWindowWasDraggedTo) {
    SystemWorld world;
    const Hand hand(world);
    ASSERT_NO_FATAL_FAILURE(startAtPlace(world, 40, 30));
    hand.drag(hand.window(), 200, 120);
    Place moved;
    EXPECT_TRUE(waitFor(
        [&] {
            moved = hand.window();
            return moved.x == 240 && moved.y == 150;
        },
        10s))
        << moved.x << ", " << moved.y;
    hand.clickCloseButton(moved);
    EXPECT_EQ(world.program().wait(20s), 0);
    EXPECT_TRUE(stored(world, "MAIN_WINDOW_X", "240"));
    EXPECT_TRUE(stored(world, "MAIN_WINDOW_Y", "150"));
    EXPECT_TRUE(world.logSays("User closed Kestrane_P3D", 1s));
}

} // namespace
} // namespace kst

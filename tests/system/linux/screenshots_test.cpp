// The pictures of the window in docs/images: the real program in each state between its stand-ins, without
// drawing or retouching. scripts/screenshots runs it.

#include "support/places.h"
#include "system/linux/display.h"
#include "system/linux/host.h"
#include "system/linux/systemworld.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::Picture;
using test::SystemWorld;
using test::waitFor;

constexpr const char* standB37 = "47.451608,8.558787,1416,186";
constexpr const char* wednesdayNoon = "1700049600";
constexpr platform::Rect parkingLabel{5, 315, 140, 331};

/// Takes pictures of one program's window; KESTRANE_SCREENSHOTS names the folder and the ending of each file,
/// with an asterisk in the place of the state.
class Camera {
public:
    explicit Camera(const SystemWorld& world) : hand(world), folder_(world.folder()) {}

    /// Takes a picture each time until one is as wanted, and keeps that one.
    void take(
        const std::string& state, std::chrono::seconds limit,
        const std::function<bool(const Picture&)>& wanted = [](const Picture&) { return true; }) {
        std::string pattern = std::getenv("KESTRANE_SCREENSHOTS");
        pattern.replace(pattern.find('*'), 1, state);
        const fs::path raw = folder_ / "picture.ppm";
        const test::Place& place = hand.window();
        const std::string area = fmt::format("{}x{}+{}+{}", place.width, place.height, place.x, place.y);
        EXPECT_TRUE(waitFor(
            [&] {
                run({"/usr/bin/import", "-window", "root", "-crop", area, "+repage", "-depth", "8",
                     raw.string()});
                const int frame = (place.width - layout::windowWidth) / 2;
                return wanted(
                    Picture(test::contentOf(raw), frame, place.height - layout::windowHeight - frame));
            },
            limit))
            << state;
        run({"convert", raw.string(), "-strip", pattern});
    }

    test::Hand hand;

private:
    void run(const std::vector<std::string>& command) const {
        std::vector<std::string> words = test::host::onDisplay();
        words.insert(words.end(), command.begin(), command.end());
        test::ChildProcess process(words, {}, folder_, folder_ / "camera.txt");
        EXPECT_EQ(process.wait(20s), 0) << command[0] << ": " << test::contentOf(folder_ / "camera.txt");
    }

    fs::path folder_;
};

bool parkingIsActive(const Picture& picture) {
    return picture.count(parkingLabel, layout::yellow) > 0;
}

/// The one that is drawn last is there.
bool controlsAreDrawn(const Picture& picture) {
    const platform::Rect last = layout::controlArea(layout::controls.back());
    return picture.at(last.left + 4, last.top + 4) != layout::black;
}

class Screenshots : public testing::Test {
protected:
    void SetUp() override {
        if (std::getenv("KESTRANE_SCREENSHOTS") == nullptr) {
            GTEST_SKIP() << "scripts/screenshots takes pictures";
        }
    }
};

TEST_F(Screenshots, FromTheStartToARenewal) {
    SystemWorld world;
    fs::copy(test::buildFolder() / "made" / "downloads" / "P3D", world.folder() / "downloads" / "P3D",
             fs::copy_options::recursive);
    std::ofstream(world.folder() / "airports" / "my_park_airports.txt") << "LSZH,B35\n";
    world.startProgram();
    ASSERT_TRUE(world.logSays("Waiting for Prepar3Dv5 ..."));
    Camera camera(world);
    camera.take("no-simulator", 10s, controlsAreDrawn);

    std::vector<std::string> arguments = test::host::simulatorArguments(world.folder());
    for (const char* word : {"--user", standB37, "--on-ground", "--time", wednesdayNoon}) {
        arguments.emplace_back(word);
    }
    world.startSimulator(arguments);
    ASSERT_TRUE(world.logSays("Waiting for RealTraffic"));
    camera.take("waiting", 20s, [](const Picture& picture) {
        return picture.at(layout::realTrafficLamp.left + 4, layout::lampLineTop + 4) == layout::red;
    });

    const std::string tracks = (test::sourceFolder() / "data" / "tracks").string();
    world.startRealTraffic(
        {"--tracks", fmt::format("{0}/enroute_switzerland_2018.csv@2340,{0}/lszh_surface_2019.csv", tracks),
         "--loop"});
    ASSERT_TRUE(world.logSays("RealTraffic connected"));
    camera.take("renewal", 120s, parkingIsActive);
    ASSERT_TRUE(waitFor([&] { return world.objectCount() > 25; }, 120s)) << world.objectCount();
    camera.take("running", 120s, [](const Picture& picture) { return !parkingIsActive(picture); });
    camera.hand.click(control::Week);
    camera.take("renewal", 40s, parkingIsActive);
}

TEST_F(Screenshots, AnError) {
    SystemWorld world;
    world.writeParameters({{"SCAN_LIVERIES", "1"}, {"LIG_AUTOMATIC", "0"}});
    world.startProgram();
    ASSERT_TRUE(world.logSays("Set lfolder parameter(-s)"));
    Camera camera(world);
    camera.take("error", 20s, [](const Picture& picture) { return picture.at(870, 470) == layout::red; });
}

TEST_F(Screenshots, AScan) {
    SystemWorld world;
    const fs::path aircraft = world.folder() / "aircraft";
    test::ChildProcess maker({(test::buildFolder() / "tools/makeinstallation").string(), "--demo",
                              (test::sourceFolder() / "data").string(), aircraft.string()},
                             {}, world.folder(), world.folder() / "tool.txt");
    ASSERT_EQ(maker.wait(120s), 0);
    // So few aircraft are read in a moment: they are there ten times, and the program gets its time in
    // slices.
    std::map<std::string, std::string> values = {{"SCAN_LIVERIES", "1"}, {"LIG_AUTOMATIC", "0"}};
    for (int number = 0; number < 10; ++number) {
        values[fmt::format("lfolder{}", number)] = test::host::pathText(aircraft);
    }
    world.writeParameters(values);
    world.startProgram();
    Camera camera(world);
    camera.hand.window();
    const auto slice = [&](int signal) { world.program().signal(signal); };
    camera.take("scan", 60s, [&](const Picture& picture) {
        const int y = layout::progressBar.top + 1;
        const bool halfway = picture.at(layout::windowWidth / 5, y) == layout::black &&
                             picture.at(layout::windowWidth - 1, y) == layout::lime;
        slice(SIGCONT);
        std::this_thread::sleep_for(60ms);
        slice(halfway ? SIGCONT : SIGSTOP);
        return halfway;
    });
    slice(SIGCONT);
}

} // namespace
} // namespace kst

// The window on displays of several finenesses, seen from outside: scaled back, each picture shows the same.

#include "system/linux/display.h"
#include "system/linux/host.h"
#include "system/linux/systemworld.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

using platform::Colour;
using platform::Rect;
using test::Picture;

/// A control without its frame, or the room of a painted text: letters and marks have soft edges, which no
/// two displays draw alike.
struct Inked {
    std::string name;
    Rect room;
    int frame = 0;
};

std::vector<Inked> inkedRooms() {
    std::vector<Inked> rooms;
    for (const layout::Control& control : layout::controls) {
        rooms.push_back({fmt::format("control {}", control.id), layout::controlArea(control), 3});
    }
    for (const layout::Label& label : layout::labels) {
        rooms.push_back(
            {std::string(label.text),
             {label.x, label.row, layout::labelRight(label), label.row + platform::textLineHeight}});
    }
    for (const layout::Field& field :
         {layout::field::version, layout::field::programName, layout::field::copyright,
          layout::field::liveries, layout::field::simaddon, layout::field::thirdparty,
          layout::field::simLampLabel, layout::field::message}) {
        rooms.push_back({fmt::format("field at {}, {}", field.x, field.y),
                         {field.x, field.y, field.right, field.y + platform::textLineHeight}});
    }
    return rooms;
}

/// What lies between the first and the last pixel that is not of the room's own colour.
Rect inkOf(const Picture& picture, const Inked& inked) {
    constexpr int faint = 30;
    const Rect& room = inked.room;
    const Rect inner{room.left + inked.frame, room.top + inked.frame, room.right - inked.frame,
                     room.bottom - inked.frame};
    const Colour ground = picture.at(inner.right - 1, inner.top);
    Rect ink{room.right, room.bottom, room.left, room.top};
    for (int y = inner.top; y < inner.bottom; ++y) {
        for (int x = inner.left; x < inner.right; ++x) {
            if (picture.contrast(x, y, ground) > faint) {
                ink = {std::min(ink.left, x), std::min(ink.top, y), std::max(ink.right, x + 1),
                       std::max(ink.bottom, y + 1)};
            }
        }
    }
    return ink;
}

bool near(const Rect& one, const Rect& other) {
    constexpr int soft = 2;
    // Each letter takes whole pixels of the display: a text is up to a tenth wider or narrower.
    const int width = soft + std::abs(one.right - one.left) / 10;
    return std::abs(one.left - other.left) <= soft && std::abs(one.right - other.right) <= width &&
           std::abs(one.top - other.top) <= soft && std::abs(one.bottom - other.bottom) <= soft;
}

/// Bands, lines and lamps: every pixel that is in no room.
int differentPixels(const Picture& one, const Picture& other, const std::vector<Inked>& rooms) {
    int different = 0;
    for (int y = 0; y < layout::windowHeight; ++y) {
        for (int x = 0; x < layout::windowWidth; ++x) {
            const bool inked = std::any_of(rooms.begin(), rooms.end(), [&](const Inked& each) {
                return x >= each.room.left - 1 && x <= each.room.right && y >= each.room.top - 1 &&
                       y <= each.room.bottom;
            });
            different += !inked && one.at(x, y) != other.at(x, y) ? 1 : 0;
        }
    }
    return different;
}

/// The controls as the system knows them, where it tells.
void expectControlsScaled(const test::SystemWorld& world, int dotsPerInch) {
    const auto state = test::host::windowState(world.folder());
    if (!state) {
        return;
    }
    constexpr int plain = platform::plainDotsPerInch;
    const auto scaled = [&](int pixels, int layoutPixels) {
        return std::abs(pixels * plain - layoutPixels * dotsPerInch) <= plain;
    };
    EXPECT_TRUE(scaled(state->width, layout::windowWidth) && scaled(state->height, layout::windowHeight));
    for (const layout::Control& control : layout::controls) {
        const Rect wanted = layout::controlArea(control);
        const Rect seen = state->controls.at(control.id).area;
        EXPECT_TRUE(scaled(seen.left, wanted.left) && scaled(seen.top, wanted.top) &&
                    scaled(seen.right, wanted.right) && scaled(seen.bottom, wanted.bottom))
            << control.id << ": " << seen.left << ", " << seen.top << " to " << seen.right << ", "
            << seen.bottom;
    }
}

/// The window of a program that waits for a simulator.
Picture pictureAt(test::SystemWorld& world, int dotsPerInch) {
    test::host::setDotsPerInch(world.environment(), dotsPerInch);
    world.startProgram();
    EXPECT_TRUE(world.logSays("Waiting for Prepar3Dv5 ..."));
    test::Hand hand(world, dotsPerInch);
    hand.rest();
    Picture picture;
    EXPECT_TRUE(test::waitFor(
        [&] {
            const Picture before = std::exchange(picture, hand.look());
            return picture == before && picture.count(layout::bandArea(Band::Message), layout::yellow) > 0;
        },
        std::chrono::seconds{10}))
        << "the picture never comes to rest";
    expectControlsScaled(world, dotsPerInch);
    test::host::askToClose(world.program());
    EXPECT_EQ(world.program().wait(std::chrono::seconds{20}), 0);
    return picture;
}

TEST(FinerDisplay, ShowsTheSamePicture) {
    const std::vector<Inked> rooms = inkedRooms();
    test::SystemWorld world;
    world.writeParameters({{"MAIN_WINDOW_X", "20"}, {"MAIN_WINDOW_Y", "20"}});
    const Picture plain = pictureAt(world, platform::plainDotsPerInch);
    ASSERT_EQ(plain.at(1, 200), layout::lightBlue) << "no picture of the window";
    for (const int dotsPerInch : {120, 144, 192}) {
        SCOPED_TRACE(dotsPerInch);
        const Picture fine = pictureAt(world, dotsPerInch);
        EXPECT_EQ(differentPixels(plain, fine, rooms), 0);
        for (const Inked& each : rooms) {
            const Rect wanted = inkOf(plain, each);
            const Rect seen = inkOf(fine, each);
            EXPECT_TRUE(near(wanted, seen))
                << each.name << ": " << seen.left << ", " << seen.top << " to " << seen.right << ", "
                << seen.bottom << " instead of " << wanted.left << ", " << wanted.top << " to "
                << wanted.right << ", " << wanted.bottom;
        }
    }
    test::host::setDotsPerInch(world.environment(), platform::plainDotsPerInch);
}

} // namespace
} // namespace kst

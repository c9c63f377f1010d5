// The real window with its real controls, worked as a person works it.

#include "platform/ui.h"
#include "platform/uiplace.h"
#include "platformui/driver.h"

#include <clocale>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace kst::platform {
namespace {

constexpr int checkBox = 11;
constexpr int textBox = 12;
constexpr int pushButton = 13;
constexpr int lastBox = 14;
constexpr int disabledBox = 15;
constexpr int textLimit = 511;
constexpr Colour background{1, 2, 3};
constexpr Colour mark{250, 120, 10};

/// Keeps what the window told.
class Owner : public WindowEvents {
public:
    void paint(Painter& painter, const Rect& dirty) override {
        painted.push_back(dirty);
        painter.fill({0, 0, 400, 200}, background);
        painter.fill({300, 100, 310, 110}, mark);
        painter.line(0, 150, 400, 150, mark);
        painter.line(350, 120, 350, 140, mark);
        painter.text(20, 170, text, mark);
    }
    void clicked(int controlId) override { clicks.push_back(controlId); }
    void entered(int controlId) override { enters.push_back(controlId); }
    void closeRequested() override { ++closes; }
    void posted(int message) override {
        messages.push_back(message);
        if (message == quitNumber) {
            quitMessageLoop(7);
        }
    }

    static constexpr int quitNumber = -1;
    std::string text = "text";
    std::vector<Rect> painted;
    std::vector<int> clicks;
    std::vector<int> enters;
    std::vector<int> messages;
    int closes = 0;
};

ControlDescription describe(int id, ControlKind kind, int y, bool enabled = true) {
    ControlDescription control;
    control.id = id;
    control.kind = kind;
    control.area = kind == ControlKind::CheckBox ? Rect{10, y, 22, y + 12} : Rect{10, y, 110, y + 20};
    control.accessibleName = "Name " + std::to_string(id);
    control.toolTip = "Tip " + std::to_string(id);
    control.caption = kind == ControlKind::PushButton ? "Press" : "";
    control.textLimit = textLimit;
    control.enabled = enabled;
    return control;
}

class RealWindow : public ::testing::Test {
protected:
    RealWindow() : window(createWindow("Title", 30, 40, 400, 200, owner)) {
        window->addControl(describe(checkBox, ControlKind::CheckBox, 10));
        window->addControl(describe(textBox, ControlKind::TextBox, 30));
        window->addControl(describe(pushButton, ControlKind::PushButton, 60));
        window->addControl(describe(disabledBox, ControlKind::CheckBox, 90, false));
        window->addControl(describe(lastBox, ControlKind::CheckBox, 110));
        window->show();
        test::settle();
        owner.painted.clear();
    }

    void showText(const std::string& text) {
        owner.text = text;
        window->invalidate({0, 0, 400, 200});
        test::settle();
    }

    Owner owner;
    std::unique_ptr<Window> window;
};

TEST_F(RealWindow, CheckBoxChangesOnlyWhenTheProgramSaysSo) {
    test::clickControl(checkBox);
    test::pressSpace(checkBox);
    test::toggleAccessibly(checkBox);
    EXPECT_EQ(owner.clicks, std::vector<int>(3, checkBox));
    EXPECT_FALSE(test::isChecked(checkBox));
    window->setChecked(checkBox, true);
    EXPECT_TRUE(test::isChecked(checkBox));
    test::clickControl(checkBox);
    test::toggleAccessibly(checkBox);
    EXPECT_TRUE(test::isChecked(checkBox));
    EXPECT_EQ(owner.clicks.size(), 5U);
}

TEST_F(RealWindow, StormOfClicksIsToldInFull) {
    for (int click = 0; click < 1000; ++click) {
        test::clickControl(checkBox);
    }
    EXPECT_EQ(owner.clicks.size(), 1000U);
    EXPECT_FALSE(test::isChecked(checkBox));
}

TEST_F(RealWindow, DisabledControlsTakeNoInput) {
    for (const int id : {checkBox, textBox, pushButton}) {
        window->setEnabled(id, false);
    }
    test::clickControl(checkBox);
    test::clickControl(pushButton);
    test::clickControl(disabledBox);
    test::pressEnter(textBox);
    EXPECT_TRUE(owner.clicks.empty());
    EXPECT_TRUE(owner.enters.empty());
    window->setEnabled(disabledBox, true);
    test::clickControl(disabledBox);
    EXPECT_EQ(owner.clicks, std::vector<int>{disabledBox});
}

TEST_F(RealWindow, EnterReportsTheBoxOnce) {
    test::typeText(textBox, "swr 1");
    EXPECT_TRUE(owner.enters.empty()) << "text without Enter has no effect";
    test::pressEnter(textBox);
    EXPECT_EQ(owner.enters, std::vector<int>{textBox});
    EXPECT_EQ(window->text(textBox), "swr 1");
    EXPECT_TRUE(owner.clicks.empty()) << "the key must go no further";
}

TEST_F(RealWindow, PushButtonTakesMouseSpaceAndEnter) {
    test::clickControl(pushButton);
    test::pressSpace(pushButton);
    test::pressEnter(pushButton);
    EXPECT_EQ(owner.clicks, std::vector<int>(3, pushButton));
}

TEST_F(RealWindow, TextBoxHoldsNoMoreThanItsLimit) {
    test::pasteText(textBox, std::string(10000, 'W'));
    EXPECT_EQ(window->text(textBox), std::string(textLimit, 'W'));
    window->setText(textBox, "");
    test::pasteText(textBox, "/opt/simulator\r\n");
    EXPECT_EQ(window->text(textBox), "/opt/simulator") << "copied with the end of its line";
    test::pasteText(textBox, std::string(textLimit, 'W'));
    test::typeText(textBox, "more");
    EXPECT_EQ(window->text(textBox).size(), static_cast<std::size_t>(textLimit));
}

TEST_F(RealWindow, TextsOfAnyScriptComeBackAsTheyWent) {
    for (const std::string text : {"Z\u00fcrich", "\u6771\u4eac", "\U0001F6EC\U0001F6EB", "", "a\"b\\c{}"}) {
        window->setText(textBox, text);
        EXPECT_EQ(window->text(textBox), text);
    }
    window->setText(textBox, "bad \xff end");
    EXPECT_EQ(window->text(textBox), "bad \uFFFD end");
}

TEST_F(RealWindow, ControlsThatDoNotExistAreIgnored) {
    window->setText(999, "text");
    window->setChecked(999, true);
    window->setEnabled(999, true);
    window->setText(checkBox, "text");
    window->setChecked(textBox, true);
    EXPECT_EQ(window->text(999), "");
    EXPECT_EQ(window->text(textBox), "");
}

TEST_F(RealWindow, KeyboardReachesEveryEnabledControlInOrder) {
    test::focusControl(checkBox);
    EXPECT_EQ(test::pressTab(), textBox);
    EXPECT_EQ(test::pressTab(), pushButton);
    EXPECT_EQ(test::pressTab(), lastBox);
    EXPECT_EQ(test::pressTab(), checkBox);
}

TEST_F(RealWindow, NoControlGetsKeysThatWereMeantForAnother) {
    EXPECT_EQ(test::pressTab(), checkBox) << "none has the keyboard at first";
    test::focusControl(textBox);
    window->setEnabled(textBox, false);
    window->setEnabled(textBox, true);
    EXPECT_EQ(test::pressTab(), pushButton) << "not given back";
    test::focusControl(textBox);
    window->setEnabled(textBox, false);
    EXPECT_EQ(test::pressTab(), checkBox) << "handed on to the next control";
    window->setEnabled(textBox, true);
    EXPECT_EQ(test::pressTab(), textBox) << "taken from the control that has it now";
}

TEST_F(RealWindow, FocusMarkAndStateCanBeSeen) {
    test::focusControl(lastBox);
    for (const int id : {checkBox, textBox, pushButton}) {
        const auto plain = test::lookOf(id);
        test::focusControl(id);
        EXPECT_NE(test::lookOf(id), plain) << "focus of " << id;
        test::focusControl(lastBox);
        EXPECT_EQ(test::lookOf(id), plain);
        window->setEnabled(id, false);
        EXPECT_NE(test::lookOf(id), plain) << "disabled " << id;
        window->setEnabled(id, true);
    }
    const auto unchecked = test::lookOf(checkBox);
    window->setChecked(checkBox, true);
    EXPECT_NE(test::lookOf(checkBox), unchecked);
}

TEST_F(RealWindow, ScreenReadersAndToolTipsSayWhatAControlIs) {
    for (const int id : {checkBox, textBox, pushButton, disabledBox}) {
        EXPECT_EQ(test::shownToolTip(id), "Tip " + std::to_string(id));
        if (id == checkBox || id == disabledBox || test::namesAreTaken()) {
            EXPECT_EQ(test::spokenName(id), "Name " + std::to_string(id));
        }
    }
}

TEST_F(RealWindow, WhatIsPaintedIsSeen) {
    EXPECT_EQ(test::pixelAt(200, 20), background);
    EXPECT_EQ(test::pixelAt(300, 100), mark);
    EXPECT_EQ(test::pixelAt(309, 109), mark);
    EXPECT_EQ(test::pixelAt(310, 109), background);
    EXPECT_EQ(test::pixelAt(399, 150), mark);
    EXPECT_EQ(test::pixelAt(399, 151), background);
    EXPECT_EQ(test::pixelAt(350, 139), mark);
    EXPECT_EQ(test::pixelAt(350, 140), background);
    EXPECT_EQ(test::pixelAt(60, 33), textBoxColour);
}

TEST_F(RealWindow, TextKeepsToItsLine) {
    showText("\u00c5gjpqy|");
    for (int x = 0; x < 100; ++x) {
        EXPECT_EQ(test::pixelAt(x, 169), background) << x;
        EXPECT_EQ(test::pixelAt(x, 170 + textLineHeight), background) << x;
    }
}

TEST_F(RealWindow, TextIsAsWideAsMeasured) {
    showText("Straight push backs only WWi"); // a W may lean out of its width
    constexpr int lastLetter = 12;
    const int end = 20 + createMeasuringPainter()->textWidth(owner.text);
    int inked = 0;
    for (int y = 170; y < 170 + textLineHeight; ++y) {
        for (int x = end - lastLetter; x < end; ++x) {
            inked += test::pixelAt(x, y) == background ? 0 : 1;
        }
        EXPECT_EQ(test::pixelAt(end + 1, y), background) << y;
    }
    EXPECT_GT(inked, 0);
}

TEST_F(RealWindow, OnlyTheAreaThatWasAskedForIsPainted) {
    const Rect area{0, 100, 400, 120};
    for (int round = 0; round < 1000; ++round) {
        window->invalidate(area);
    }
    EXPECT_TRUE(owner.painted.empty()) << "never at once";
    test::settle();
    EXPECT_EQ(owner.painted, std::vector<Rect>{area});
}

TEST_F(RealWindow, CloseButtonAsksAndTheWindowStays) {
    test::clickCloseButton();
    test::clickCloseButton();
    EXPECT_EQ(owner.closes, 2);
    EXPECT_TRUE(test::windowIsVisible());
}

TEST_F(RealWindow, RequestToCloseFromAnotherThreadIsTheCloseButton) {
    std::thread([] { requestClose(); }).join();
    EXPECT_EQ(owner.closes, 0);
    test::settle();
    EXPECT_EQ(owner.closes, 1);
    EXPECT_TRUE(test::windowIsVisible());
}

TEST(WindowPlace, OneThatNoDisplayShowsGivesWayToAVisibleOne) {
    Owner owner;
    EXPECT_EQ(createWindow("Title", 31, 42, 400, 200, owner)->x(), 31);
    for (const int far : {-20000, 20000}) {
        const auto window = createWindow("Title", far, far, 400, 200, owner);
        EXPECT_LT(std::abs(window->x()), 5000);
        EXPECT_LT(std::abs(window->y()), 5000);
    }
}

TEST(WindowPlace, EnoughOfTheCaptionIsSeen) {
    const Rect displays[] = {{0, 0, 1000, 800}, {-1000, 0, 0, 800}};
    const Place elsewhere{60, 60};
    const std::pair<Place, Place> places[] = {
        {{-900, 100}, {-900, 100}},   {{940, 100}, {940, 100}},  {{941, 100}, elsewhere},
        {{-1340, 100}, {-1340, 100}}, {{-1341, 100}, elsewhere}, {{10, -15}, {10, -15}},
        {{10, -16}, elsewhere},       {{10, 785}, {10, 785}},    {{10, 786}, elsewhere},
    };
    for (const auto& [wanted, place] : places) {
        EXPECT_EQ(reachablePlace(wanted, 400, displays), place) << wanted.x << ", " << wanted.y;
    }
}

TEST_F(RealWindow, SizeIsFixedAndTheClientAreaIsWhatWasAsked) {
    EXPECT_EQ(test::windowWidth(), 400);
    EXPECT_EQ(test::windowHeight(), 200);
    EXPECT_FALSE(test::windowCanBeResized());
}

TEST_F(RealWindow, StayOnTopNeitherMovesNorHidesTheWindow) {
    const int x = window->x();
    const int y = window->y();
    for (const bool topMost : {true, false, true}) {
        window->setTopMost(topMost);
        EXPECT_EQ(test::windowIsTopMost(), topMost);
        EXPECT_TRUE(test::windowIsVisible());
        EXPECT_EQ(window->x(), x);
        EXPECT_EQ(window->y(), y);
    }
}

TEST_F(RealWindow, MessagesOfManyThreadsArriveInTheOrderOfEach) {
    constexpr int threadCount = 4;
    constexpr int perThread = 250;
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number) {
        threads.emplace_back([this, number] {
            for (int count = 0; count < perThread; ++count) {
                window->post(number * perThread + count);
                window->invalidate({0, number, 400, number + 1});
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    window->post(Owner::quitNumber);
    EXPECT_EQ(runMessageLoop(), 7);
    ASSERT_EQ(owner.messages.size(), static_cast<std::size_t>(threadCount * perThread + 1));
    std::vector<int> next(threadCount, 0);
    for (const int message : owner.messages) {
        if (message != Owner::quitNumber) {
            EXPECT_EQ(message % perThread, next[static_cast<std::size_t>(message / perThread)]++);
        }
    }
}

TEST_F(RealWindow, NumbersDoNotFollowTheUsersLocale) {
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
}

TEST(MeasuringPainter, MeasuresTextAndRefusesWhatIsNotUtf8) {
    const auto painter = createMeasuringPainter();
    EXPECT_EQ(painter->textWidth(""), 0);
    EXPECT_LT(painter->textWidth("iii"), painter->textWidth("WWW"));
    EXPECT_THROW(painter->textWidth("\xff"), TextConversionError);
    EXPECT_THROW(painter->textWidth("cut \xe6\x9d"), TextConversionError);
}

} // namespace
} // namespace kst::platform

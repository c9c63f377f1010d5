// Wishes of other threads on their way to the window.

#include "core/display.h"
#include "core/parameters.h"
#include "window/displayqueue.h"
#include "window/window.h"

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace kst {
namespace {

/// Controls as a window would show them, and what was posted.
class FakeWindow : public platform::Window {
public:
    void addControl(const platform::ControlDescription&) override {}
    void show() override {}
    void setChecked(int controlId, bool checked) override { checks[controlId] = checked; }
    void setText(int controlId, std::string_view text) override { texts[controlId] = text; }
    std::string text(int controlId) const override { return texts.at(controlId); }
    void setEnabled(int controlId, bool enabled) override { enables[controlId] = enabled; }
    void setTopMost(bool wanted) override { topMost = wanted; }
    int x() const override { return 0; }
    int y() const override { return 0; }
    void invalidate(const platform::Rect& area) override {
        const std::lock_guard guard(mutex);
        invalidated.push_back(area);
    }
    void post(int message) override {
        const std::lock_guard guard(mutex);
        messages.push_back(message);
    }

    std::vector<int> takeMessages() {
        const std::lock_guard guard(mutex);
        return std::exchange(messages, {});
    }

    std::map<int, bool> checks;
    std::map<int, std::string> texts;
    std::map<int, bool> enables;
    bool topMost = false;
    std::mutex mutex; ///< guards the two below
    std::vector<int> messages;
    std::vector<platform::Rect> invalidated;
};

class Queue : public ::testing::Test {
protected:
    Queue() {
        queue.attach(&window);
        setDisplaySink(&queue);
        window.takeMessages();
        queue.apply(window);
    }
    ~Queue() override {
        setDisplaySink(nullptr);
        for (Parameter* parameter : allParameters()) {
            parameter->setDefault();
        }
        MAX_FIT_FL.setDefault();
    }

    FakeWindow window;
    DisplayQueue queue;
};

TEST_F(Queue, BoxesShowEachKindOfValue) {
    LATERAL_RANGE.set(35);
    MAX_FIT_FL.set(3.5F);
    BLOCK_CALLSIGN.set("SWR1");
    WEEK.set(true);
    for (const Parameter* parameter :
         {static_cast<const Parameter*>(&LATERAL_RANGE), static_cast<const Parameter*>(&MAX_FIT_FL),
          static_cast<const Parameter*>(&BLOCK_CALLSIGN), static_cast<const Parameter*>(&WEEK),
          static_cast<const Parameter*>(&MAIN_WINDOW_X)}) {
        showParameter(*parameter);
    }
    queue.apply(window);
    EXPECT_EQ(window.texts[control::LateralRange], "35");
    EXPECT_EQ(window.texts[control::MaxFitFl], "3.5");
    EXPECT_EQ(window.texts[control::BlockCallsign], "SWR1");
    EXPECT_TRUE(window.checks[control::Week]);
    EXPECT_EQ(window.texts.size(), 3U) << "a hidden parameter has no box";
    MAX_FIT_FL.set(24.0F);
    showParameter(MAX_FIT_FL);
    queue.apply(window);
    EXPECT_EQ(window.texts[control::MaxFitFl], "24");
}

TEST_F(Queue, TheLastOfBlankAndShownCounts) {
    showParameter(LATERAL_RANGE);
    blankParameter(LATERAL_RANGE);
    queue.apply(window);
    EXPECT_EQ(window.texts[control::LateralRange], "");
    blankParameter(LATERAL_RANGE);
    showParameter(LATERAL_RANGE);
    queue.apply(window);
    EXPECT_EQ(window.texts[control::LateralRange], "40");
}

TEST_F(Queue, StartAndQuitReachTheWindowByTheirNumbers) {
    displaySink()->postStartWorker();
    displaySink()->postQuit();
    EXPECT_EQ(window.takeMessages(), (std::vector<int>{32769, 32770}));
}

TEST_F(Queue, StayOnTopTakesThePresentValue) {
    ALWAYS_ON_TOP.set(true);
    displaySink()->applyAlwaysOnTop();
    queue.apply(window);
    EXPECT_TRUE(window.topMost);
    ALWAYS_ON_TOP.set(false);
    displaySink()->applyAlwaysOnTop();
    queue.apply(window);
    EXPECT_FALSE(window.topMost);
}

TEST_F(Queue, WishesBeforeTheWindowAreNotLost) {
    DisplayQueue early;
    early.showParameter(AIRPORT_RANGE);
    early.attach(&window);
    EXPECT_EQ(window.takeMessages(), std::vector<int>{DisplayQueue::controlsMessage});
    early.apply(window);
    EXPECT_EQ(window.texts[control::AirportRange], "20");
}

TEST_F(Queue, NothingReachesAWindowThatIsGone) {
    queue.attach(nullptr);
    repaint(Band::Park);
    showParameter(LATERAL_RANGE);
    enableControl(control::LateralRange, true);
    displaySink()->postQuit();
    EXPECT_TRUE(window.takeMessages().empty());
    EXPECT_TRUE(window.invalidated.empty());
}

TEST_F(Queue, StormFromManyThreadsIsBoundedAndEndsRight) {
    constexpr int threadCount = 4;
    constexpr int rounds = 500;
    std::atomic<int> running{threadCount};
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number) {
        threads.emplace_back([&, number] {
            for (int round = 0; round < rounds; ++round) {
                LATERAL_RANGE.set(2 + (number + round) % 90);
                showParameter(LATERAL_RANGE);
                enableControl(control::LateralRange, round % 2 == 0);
                AUTO_RANGE.set(round % 2 == 0);
                showParameter(AUTO_RANGE);
            }
            --running;
        });
    }
    int applied = 0;
    std::size_t posted = 0;
    while (running > 0) {
        posted += window.takeMessages().size();
        queue.apply(window);
        ++applied;
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    posted += window.takeMessages().size();
    queue.apply(window);
    EXPECT_LE(posted, static_cast<std::size_t>(applied) + 1) << "more messages than services";
    EXPECT_EQ(window.texts[control::LateralRange], LATERAL_RANGE.text());
    EXPECT_EQ(window.checks[control::AutoRange], AUTO_RANGE.get());
    EXPECT_EQ(window.enables[control::LateralRange], controlEnabled(control::LateralRange));
}

} // namespace
} // namespace kst

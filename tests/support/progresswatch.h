#pragma once

#include "core/clock.h"
#include "core/display.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace kst::test {

/// Watches the bar and the message of a task on one thread, in a time that runs on at each look at the clock,
/// so that the fastest task is a long one.
class ProgressWatch : public TimeSource, public DisplaySink {
public:
    ProgressWatch() {
        setTimeSource(this);
        setDisplaySink(this);
    }
    ~ProgressWatch() override {
        setDisplaySink(nullptr);
        setTimeSource(nullptr);
    }
    ProgressWatch(const ProgressWatch&) = delete;
    ProgressWatch& operator=(const ProgressWatch&) = delete;

    std::chrono::nanoseconds monotonic() override { return now_ += std::chrono::milliseconds{300}; }
    std::chrono::system_clock::time_point wall() override { return {}; }
    void sleepUntil(std::chrono::nanoseconds deadline) override { now_ = deadline; }

    void repaint(Band band) override {
        const ProgressBar bar = statusValues().progress;
        if (band == Band::Message && bar.to > bar.from) {
            bars.push_back(bar);
            texts.push_back(messageLine().message);
        }
    }
    void showParameter(const Parameter&) override {}
    void blankParameter(const Parameter&) override {}
    void enableControl(int, bool) override {}
    void applyAlwaysOnTop() override {}
    void postStartWorker() override {}
    void postQuit() override {}

    /// The bar of the texts that begin so was seen, grew from the left and never shrank, and is gone with its
    /// text. Returns the last text.
    std::string expectGrowth(const std::string& beginning) const {
        double first = 1.0;
        double last = 0.0;
        std::string text;
        for (std::size_t index = 0; index < bars.size(); ++index) {
            if (texts[index].starts_with(beginning)) {
                text = texts[index];
                EXPECT_EQ(bars[index].from, 0.0) << text;
                EXPECT_GE(bars[index].to, last) << text;
                EXPECT_LE(bars[index].to, 1.0) << text;
                last = bars[index].to;
                first = std::min(first, last);
            } else {
                EXPECT_NE(texts[index], "") << "a bar without a text";
            }
        }
        EXPECT_LT(first, last);
        EXPECT_EQ(statusValues().progress.to, 0.0);
        EXPECT_EQ(messageLine().message, "");
        return text;
    }

    std::vector<ProgressBar> bars;
    std::vector<std::string> texts;

private:
    std::chrono::nanoseconds now_{0};
};

} // namespace kst::test

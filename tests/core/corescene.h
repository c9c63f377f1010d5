#pragma once

// What the tests of the core share: a log to look into, and a window that remembers what it was asked.

#include "core/display.h"
#include "core/log.h"
#include "core/parameters.h"
#include "support/tempfolder.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace kst::test {

/// An open log in a fresh folder, and an empty display; all parameters at their defaults.
class CoreScene : public testing::Test {
protected:
    CoreScene() {
        reset();
        openLog();
    }
    ~CoreScene() override {
        closeLog();
        reset();
    }
    /// The log behind its first line.
    std::string log() const {
        const std::string content = folder.read("Log.txt").value_or("");
        return content.substr(content.find('\n') + 1);
    }

    TempFolder folder;

private:
    static void reset() {
        resetDisplay();
        for (Parameter* parameter : allParameters()) {
            parameter->setDefault();
        }
    }
};

/// The window while it lives. Asks back at a repaint, as a window may do.
class RecordingWindow : public DisplaySink {
public:
    RecordingWindow() { setDisplaySink(this); }
    ~RecordingWindow() override { setDisplaySink(nullptr); }
    void repaint(Band band) override {
        bands.push_back(band);
        seenMessage = messageLine().message;
        seenStands = statusValues().standsShown;
    }
    void showParameter(const Parameter& parameter) override {
        asked.push_back("show " + std::string(parameter.name()) + "=" + parameter.text());
    }
    void blankParameter(const Parameter& parameter) override {
        asked.push_back("blank " + std::string(parameter.name()));
    }
    void enableControl(int controlId, bool enabled) override {
        asked.push_back((enabled ? "enable " : "disable ") + std::to_string(controlId));
    }
    void applyAlwaysOnTop() override {}
    void postStartWorker() override {}
    void postQuit() override {}

    std::vector<Band> bands;
    std::vector<std::string> asked;
    std::string seenMessage;
    std::uint64_t seenStands = 0;
};

} // namespace kst::test

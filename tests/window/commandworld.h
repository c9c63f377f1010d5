#pragma once

#include "core/display.h"
#include "core/exit.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "core/workerinbox.h"
#include "support/tempfolder.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace kst::test {

/// Keeps what would have reached the window.
class FakeSink : public DisplaySink {
public:
    void repaint(Band band) override { repainted.push_back(band); }
    void showParameter(const Parameter& parameter) override { shown.push_back(&parameter); }
    void blankParameter(const Parameter& parameter) override { blanked.push_back(&parameter); }
    void enableControl(int, bool) override {}
    void applyAlwaysOnTop() override { ++alwaysOnTopApplied; }
    void postStartWorker() override {}
    void postQuit() override {}

    bool hasShown(const Parameter& parameter) const;

    std::vector<Band> repainted;
    std::vector<const Parameter*> shown;
    std::vector<const Parameter*> blanked;
    int alwaysOnTopApplied = 0;
};

/// A process as the operator meets it after the start: defaults, no airport, no run state, a fresh folder
/// with an open log and a parameters.xml.
class CommandWorld : public ::testing::Test {
protected:
    CommandWorld();
    ~CommandWorld() override;

    /// The value in parameters.xml.
    static std::string stored(const Parameter& parameter) { return storedParameterText(parameter.name()); }
    static std::string message() { return messageLine().message; }
    /// A line of the log holds these words.
    bool logged(const std::string& words) const;
    static void loadParkAirport();
    static std::vector<WorkerRequest> workerRequests();

    TempFolder folder;
    FakeSink sink;
    std::optional<int> exitSeconds; ///< of the exit that was asked for
};

} // namespace kst::test

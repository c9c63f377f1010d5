#pragma once

// What the operator sees, as seen by the rest of the program: the message line, the status values, the state
// of controls. Any thread writes here; the window (window/) draws it. Without a window, as in tests, the
// values stand.

#include "core/parameters.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kst {

enum class Band : int { Header, Status, Control, Park, Message };

/// The part of the message band's lower edge that the bar of a running scan or download covers, in shares of
/// the window's width. Empty while none runs.
struct ProgressBar {
    double from = 0.0;
    double to = 0.0;
};

/// The status values that the window draws. Copied as a whole under one lock, so a paint never sees half a
/// change.
struct StatusValues {
    bool simConnected = false;
    bool simRunningShown = false;
    bool wingSpanKnown = true;
    std::string simText;
    std::string userAircraftText;
    std::string userStandText;
    std::uint64_t liveryCount = 0;
    std::uint64_t simaddonCount = 0;
    bool simaddonComplete = true;
    std::uint64_t thirdpCount = 0;
    bool rtLampDark = true;
    bool rtConnected = false;
    std::string rtEditionText;
    int weatherStatus = 3; ///< 1 data flows, 2 no data, 3 not running
    int trafficStatus = 3;
    int qnhShown = 0;
    std::uint64_t liveShown = 0;
    std::string airportCode; ///< the park airport's ICAO code, empty when none is chosen
    std::string airportName;
    std::string publisherText;
    std::string qualityText;
    std::string headStand; ///< the stand that the head of the park list names
    int trafficWeek = 0;   ///< RT_traffic_week of the loaded file
    bool handmadeShown = false;
    bool parkFileOk = false;
    std::string reservedStand;
    bool reservedStandOk = false;
    std::uint64_t standsShown = 0;
    std::uint64_t parkedLiveShown = 0;
    std::uint64_t parkedStaticShown = 0;
    float liveFitShown = -1.0F;
    float staticFitShown = -1.0F;
    int maxParkShown = 0;
    int maxParkPercentShown = 0;
    std::uint32_t updatesShown = 0;
    bool staticBusyShown = false;
    std::uint32_t nextRenewalMinutes = 0;
    std::uint64_t offlineAirports = 0; ///< airports that the last scan copied for off-line learning
    std::string offlineFolder;
    ProgressBar progress;
};

/// Changes status values under their lock, then asks for a repaint of the band.
void updateStatus(Band band, const std::function<void(StatusValues&)>& change);
/// A copy of all status values. Any thread.
StatusValues statusValues();

/// The message line: does nothing while an error stands. With `logIt` and a non-empty text it also goes to
/// the log.
void showMessage(std::string_view text, bool logIt);
void clearMessage();
/// A message that is not logged, with the bar below it; `endProgress` takes the bar away, and the message if
/// it still stands. Progress (core/progress.h) paces them.
void showProgress(std::string_view text, ProgressBar bar);
void endProgress(std::string_view text);
/// The error line: clears the message, stores the text, logs "Error {}". It stands until `clearError`.
void showError(std::string_view text);
void clearError();

struct MessageLine {
    std::string message;
    std::string error;
};
MessageLine messageLine();

/// Once per tick of the simulator: a message that has stood 25 ticks goes. Worker.
void ageMessage();

/// Asks for a repaint of one band. Any thread.
void repaint(Band band);

/// Writes the parameter's value into its box, or its check mark, and repaints the control area. Any thread.
void showParameter(const Parameter& parameter);
/// Empties the parameter's text box without touching the value.
void blankParameter(const Parameter& parameter);
/// Enables or disables a control by its number (core/controlids.h). Remembered, so it can be asked for.
void enableControl(int controlId, bool enabled);
bool controlEnabled(int controlId);

/// The window's side of the above. Set once when the window exists; its functions are called on any thread,
/// without a lock held, and must only post.
class DisplaySink {
public:
    virtual ~DisplaySink() = default;
    virtual void repaint(Band band) = 0;
    virtual void showParameter(const Parameter& parameter) = 0;
    virtual void blankParameter(const Parameter& parameter) = 0;
    virtual void enableControl(int controlId, bool enabled) = 0;
    virtual void applyAlwaysOnTop() = 0;
    /// Ends the process's message loop, or starts a worker: posted to the window by the exit thread.
    virtual void postStartWorker() = 0;
    virtual void postQuit() = 0;
};
void setDisplaySink(DisplaySink* sink);
DisplaySink* displaySink();

/// Puts every status value, the messages and the error back to their first values, at the end of a run.
void resetDisplay();

} // namespace kst

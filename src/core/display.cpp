#include "core/display.h"

#include "core/log.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::uint32_t ticksMessageStands = 25;

std::mutex paintLock; ///< guards all that follows but for the sink
StatusValues status;
MessageLine texts;
std::uint32_t messageTick = 0;
std::uint32_t messageTickShown = 0; ///< 0 while no message stands
std::map<int, bool> enabledControls;

std::atomic<DisplaySink*> sink{nullptr};

/// Called with `paintLock` held.
void storeMessage(std::string_view text) {
    texts.message = text;
    messageTickShown = text.empty() ? 0 : std::max(messageTick, 1U);
}

} // namespace

void updateStatus(Band band, const std::function<void(StatusValues&)>& change) {
    {
        const std::lock_guard guard(paintLock);
        change(status);
    }
    repaint(band);
}

StatusValues statusValues() {
    const std::lock_guard guard(paintLock);
    return status;
}

void showMessage(std::string_view text, bool logIt) {
    {
        const std::lock_guard guard(paintLock);
        if (!texts.error.empty()) {
            return;
        }
        storeMessage(text);
    }
    if (logIt && !text.empty()) {
        logLine(text);
    }
    repaint(Band::Message);
}

void clearMessage() {
    showMessage({}, false);
}

void showProgress(std::string_view text, ProgressBar bar) {
    {
        const std::lock_guard guard(paintLock);
        status.progress = bar;
    }
    showMessage(text, false);
}

void endProgress(std::string_view text) {
    {
        const std::lock_guard guard(paintLock);
        status.progress = {};
        if (texts.message == text) {
            storeMessage({});
        }
    }
    repaint(Band::Message);
}

void showError(std::string_view text) {
    {
        const std::lock_guard guard(paintLock);
        storeMessage({});
        texts.error = text;
    }
    logLine(fmt::format("Error {}", text));
    repaint(Band::Message);
}

void clearError() {
    {
        const std::lock_guard guard(paintLock);
        texts.error.clear();
    }
    repaint(Band::Message);
}

MessageLine messageLine() {
    const std::lock_guard guard(paintLock);
    return texts;
}

void ageMessage() {
    {
        const std::lock_guard guard(paintLock);
        ++messageTick;
        if (messageTickShown == 0 || messageTick - messageTickShown < ticksMessageStands) {
            return;
        }
        storeMessage({});
    }
    repaint(Band::Message);
}

void repaint(Band band) {
    if (DisplaySink* const window = sink.load()) {
        window->repaint(band);
    }
}

void showParameter(const Parameter& parameter) {
    if (DisplaySink* const window = sink.load()) {
        window->showParameter(parameter);
    }
    repaint(Band::Control);
}

void blankParameter(const Parameter& parameter) {
    if (DisplaySink* const window = sink.load()) {
        window->blankParameter(parameter);
    }
}

void enableControl(int controlId, bool enabled) {
    {
        const std::lock_guard guard(paintLock);
        enabledControls[controlId] = enabled;
    }
    if (DisplaySink* const window = sink.load()) {
        window->enableControl(controlId, enabled);
    }
}

bool controlEnabled(int controlId) {
    const std::lock_guard guard(paintLock);
    const auto found = enabledControls.find(controlId);
    return found != enabledControls.end() && found->second;
}

void setDisplaySink(DisplaySink* window) {
    sink = window;
}

DisplaySink* displaySink() {
    return sink;
}

void resetDisplay() {
    {
        const std::lock_guard guard(paintLock);
        status = {};
        texts = {};
        messageTick = 0;
        messageTickShown = 0;
    }
    for (const Band band : {Band::Header, Band::Status, Band::Control, Band::Park, Band::Message}) {
        repaint(band);
    }
}

} // namespace kst

#include "window/displayqueue.h"

#include "core/log.h"
#include "core/parameters.h"
#include "window/window.h"

#include <string>
#include <utility>

namespace kst {

namespace {

std::string boxText(const Parameter& parameter) {
    if (const auto* hours = dynamic_cast<const FloatParameter*>(&parameter)) {
        return formatHours(static_cast<double>(hours->get()));
    }
    return parameter.text();
}

void showValue(platform::Window& window, const Parameter& parameter) {
    if (const auto* flag = dynamic_cast<const BoolParameter*>(&parameter)) {
        window.setChecked(parameter.controlId(), flag->get());
    } else {
        window.setText(parameter.controlId(), boxText(parameter));
    }
}

} // namespace

void DisplayQueue::attach(platform::Window* window) {
    const std::lock_guard guard(mutex_);
    window_ = window;
    serviceAsked_ = false;
    if (window != nullptr) {
        askForService();
    }
}

void DisplayQueue::apply(platform::Window& window) {
    std::array<Wish, layout::controls.size()> wishes;
    bool alwaysOnTop = false;
    {
        const std::lock_guard guard(mutex_);
        wishes = std::exchange(wishes_, {});
        alwaysOnTop = std::exchange(alwaysOnTopWaits_, false);
        serviceAsked_ = false;
    }
    for (std::size_t index = 0; index < wishes.size(); ++index) {
        const int id = layout::controls[index].id;
        const Wish& wish = wishes[index];
        if (wish.blank) {
            window.setText(id, {});
        } else if (wish.shown != nullptr) {
            showValue(window, *wish.shown);
        }
        if (wish.enabled) {
            window.setEnabled(id, controlEnabled(id));
        }
    }
    if (alwaysOnTop) {
        window.setTopMost(ALWAYS_ON_TOP);
    }
}

void DisplayQueue::repaint(Band band) {
    const std::lock_guard guard(mutex_);
    if (window_ != nullptr) {
        window_->invalidate(layout::bandArea(band));
    }
}

void DisplayQueue::showParameter(const Parameter& parameter) {
    wish(parameter.controlId(), [&](Wish& waiting) {
        waiting.shown = &parameter;
        waiting.blank = false;
    });
}

void DisplayQueue::blankParameter(const Parameter& parameter) {
    wish(parameter.controlId(), [](Wish& waiting) { waiting.blank = true; });
}

void DisplayQueue::enableControl(int controlId, bool) {
    wish(controlId, [](Wish& waiting) { waiting.enabled = true; });
    // The colour of a label may follow the state of its control.
    repaint(Band::Control);
}

void DisplayQueue::applyAlwaysOnTop() {
    const std::lock_guard guard(mutex_);
    alwaysOnTopWaits_ = true;
    askForService();
}

void DisplayQueue::postStartWorker() {
    post(startWorkerMessage);
}

void DisplayQueue::postQuit() {
    post(quitMessage);
}

void DisplayQueue::wish(int controlId, const std::function<void(Wish&)>& change) {
    const std::size_t index = layout::controlIndex(controlId);
    if (index == wishes_.size()) {
        return;
    }
    const std::lock_guard guard(mutex_);
    change(wishes_[index]);
    askForService();
}

void DisplayQueue::post(int message) {
    const std::lock_guard guard(mutex_);
    if (window_ != nullptr) {
        window_->post(message);
    }
}

/// Called with the lock held. One message is enough for all that waits.
void DisplayQueue::askForService() {
    if (window_ != nullptr && !serviceAsked_) {
        serviceAsked_ = true;
        window_->post(controlsMessage);
    }
}

} // namespace kst

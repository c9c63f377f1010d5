#include "core/progress.h"

#include "core/display.h"

#include <algorithm>

namespace kst {

namespace {

constexpr int movingSteps = 8; ///< in which a bar without a share crosses the window

} // namespace

void Progress::end() {
    if (!shown_.empty()) {
        endProgress(shown_);
        shown_.clear();
    }
}

void Progress::show(std::string_view text, std::optional<double> share) {
    shown_ = text;
    if (share) {
        showProgress(text, {0.0, std::clamp(*share, 0.0, 1.0)});
        return;
    }
    const double from = static_cast<double>(step_) / movingSteps;
    step_ = (step_ + 1) % movingSteps;
    showProgress(text, {from, from + 1.0 / movingSteps});
}

} // namespace kst

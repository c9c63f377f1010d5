#include "platform/uiplace.h"

#include <algorithm>

namespace kst::platform {

Place reachablePlace(Place wanted, int width, std::span<const Rect> workAreas) {
    constexpr int captionHeight = 30;
    constexpr int grip = 60;
    const auto graspable = [&](const Rect& area) {
        const int seenWidth = std::min(wanted.x + width, area.right) - std::max(wanted.x, area.left);
        const int seenHeight = std::min(wanted.y + captionHeight, area.bottom) - std::max(wanted.y, area.top);
        return seenWidth >= grip && seenHeight >= captionHeight / 2;
    };
    if (workAreas.empty() || std::any_of(workAreas.begin(), workAreas.end(), graspable)) {
        return wanted;
    }
    return {workAreas.front().left + grip, workAreas.front().top + grip};
}

} // namespace kst::platform

#pragma once

// Where a window may come up.

#include "platform/ui.h"

#include <span>

namespace kst::platform {

struct Place {
    int x = 0;
    int y = 0;
    friend bool operator==(const Place&, const Place&) = default;
};

/// The wanted place while enough of a caption of this width can be grasped there on one of the work areas,
/// else one on the first of them, which is the primary display's. Without any the wanted place.
Place reachablePlace(Place wanted, int width, std::span<const Rect> workAreas);

} // namespace kst::platform

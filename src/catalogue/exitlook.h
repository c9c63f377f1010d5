#pragma once

#include "core/runstate.h"

namespace kst {

/// Looks for an exit now and then in a loop of very many short steps.
class ExitLook {
public:
    /// One step more; true once an exit is asked for and it is time to look.
    bool stops() { return ++steps_ % stepsPerLook == 0 && stopAsked(); }

private:
    static constexpr unsigned stepsPerLook = 1024;
    unsigned steps_ = 0;
};

} // namespace kst

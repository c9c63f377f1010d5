#include "core/exit.h"

#include "core/runstate.h"

namespace kst {

namespace {
std::function<void(int)>& exitHandler() {
    static std::function<void(int)> handler;
    return handler;
}
} // namespace

void setExitHandler(std::function<void(int seconds)> handler) {
    exitHandler() = std::move(handler);
}

void gf_requestExit(ExitReason reason, int seconds) {
    bool expected = false;
    if (!exitRequested.compare_exchange_strong(expected, true)) {
        return;
    }
    exitReason = reason;
    if (exitHandler()) {
        exitHandler()(seconds);
    }
}

} // namespace kst

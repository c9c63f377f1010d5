// The process entry on Linux: signals, the toolkit, then the program.

#include "platform/entry.h"
#include "platform/ui.h"

#include <csignal>
#include <memory>

namespace {

void askToClose(int) {
    kst::platform::requestClose();
}

void prepareSignals() {
    // A peer that is gone is an error of the write, not the end of the process.
    std::signal(SIGPIPE, SIG_IGN);
    struct sigaction action = {};
    action.sa_handler = askToClose;
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}

} // namespace

int main() {
    prepareSignals();
    const std::unique_ptr<kst::platform::Toolkit> toolkit = kst::platform::startToolkit();
    return kst::programMain();
}

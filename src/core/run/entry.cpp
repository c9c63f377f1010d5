#include "platform/entry.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/run/finalexit.h"
#include "core/run/worker.h"
#include "engine/pass.h"
#include "feed/realtrafficlink.h"
#include "platform/singleinstance.h"
#include "simlink/objectcommands.h"
#include "window/window.h"

#include <cstdio>

namespace kst {

namespace {

constexpr int alreadyRunning = -1;
constexpr int logUnwritable = 1;

/// The worker waits for the link's return from now on, so nothing serves the removal queue: it goes out
/// whole.
void removeTrafficOfLostLink() {
    lf_removeAllLive(Reason::LinkLost);
    lf_flushRemovalQueue();
}

} // namespace

int programMain() {
    const platform::SingleInstance instance("$Kestrane_P3D$");
    if (!instance.acquired()) {
        return alreadyRunning;
    }
    try {
        openLog();
    } catch (const SysErrorException& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return logUnwritable;
    }
    installExit();
    setLinkLostHandler(removeTrafficOfLostLink);
    if (!createMainWindow({.startWorker = startWorker, .closeRequested = requestClose})) {
        logLine("initInstance failed");
        return 0;
    }
    std::error_code ignored;
    std::filesystem::create_directories(parametersFolder(), ignored);
    displaySink()->postStartWorker();
    const int result = runMainWindow();
    joinExit();
    joinWorker();
    destroyMainWindow();
    closeLog();
    return result;
}

} // namespace kst

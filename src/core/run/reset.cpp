#include "core/run/reset.h"

#include "core/display.h"
#include "core/reasoncounts.h"
#include "core/run/startup.h"
#include "core/runstate.h"
#include "core/workerinbox.h"
#include "engine/tables.h"
#include "feed/feedqueue.h"
#include "feed/readers.h"
#include "parking/parkairportchoice.h"
#include "parking/parkairports.h"
#include "simlink/objectcommands.h"
#include "simlink/session.h"

#include <vector>

namespace kst {

void resetForNextRun(bool restartFollows) {
    clearError();
    clearMessage();
    lf_resetReaders();
    resetEngine(restartFollows);
    resetParkAirports();
    resetParkAirportChoice();
    resetObjectCommands();
    resetSimSession();
    resetFeedQueue();
    std::vector<WorkerRequest> unserved;
    takeWorkerRequests(unserved);
    resetRunState();
    resetDisplay();
    resetCounts();
    lf_takeEnteredRange();
}

} // namespace kst

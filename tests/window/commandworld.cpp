#include "window/commandworld.h"

#include "core/log.h"
#include "core/parkairport.h"

#include <algorithm>

namespace kst::test {

namespace {

void resetProcess() {
    for (Parameter* parameter : allParameters()) {
        parameter->setDefault();
    }
    MAX_FIT_FL.setDefault();
    resetRunState();
    resetDisplay();
    exitRequested = false;
    exitReason = ExitReason::NotYetSet;
    rememberedRangeNm = LATERAL_RANGE.get();
    workingRangeNm = LATERAL_RANGE.get();
    requestRangeM = LATERAL_RANGE.get() * metresPerNm;
    setParkAirport(std::nullopt);
    std::vector<WorkerRequest> requests;
    takeWorkerRequests(requests);
}

} // namespace

bool FakeSink::hasShown(const Parameter& parameter) const {
    return std::find(shown.begin(), shown.end(), &parameter) != shown.end();
}

CommandWorld::CommandWorld() {
    resetProcess();
    std::filesystem::create_directories(parametersFolder());
    openLog();
    readParameters();
    setDisplaySink(&sink);
    setExitHandler([this](int seconds) { exitSeconds = seconds; });
}

CommandWorld::~CommandWorld() {
    setDisplaySink(nullptr);
    setExitHandler(nullptr);
    closeLog();
    resetProcess();
}

bool CommandWorld::logged(const std::string& words) const {
    return folder.read("Log.txt").value_or("").find(words) != std::string::npos;
}

void CommandWorld::loadParkAirport() {
    setParkAirport(ParkAirportFacts{"LSZH", "Zurich", {47.458, 8.548}, 1416.0});
}

std::vector<WorkerRequest> CommandWorld::workerRequests() {
    std::vector<WorkerRequest> requests;
    takeWorkerRequests(requests);
    return requests;
}

} // namespace kst::test

#include "scanner/scanreport.h"

#include <mutex>

namespace kst {

namespace {

constexpr std::size_t usualLines = 2048;

std::mutex scanLogLock; ///< guards `scanLog`
std::vector<std::string> scanLog;

} // namespace

void lf_scanLogLine(std::string_view text) {
    const std::lock_guard guard(scanLogLock);
    scanLog.emplace_back(text);
}

std::vector<std::string> takeScanLog() {
    std::vector<std::string> fresh;
    fresh.reserve(usualLines);
    const std::lock_guard guard(scanLogLock);
    scanLog.swap(fresh);
    return fresh;
}

} // namespace kst

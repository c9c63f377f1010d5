#include "core/workerinbox.h"

#include <algorithm>
#include <mutex>

namespace kst {

namespace {
std::mutex inboxLock;
std::vector<WorkerRequest> inbox;
} // namespace

void askWorker(const WorkerRequest& request) {
    const std::lock_guard lock(inboxLock);
    const auto same = std::find_if(inbox.begin(), inbox.end(), [&](const WorkerRequest& waiting) {
        return waiting.kind == request.kind;
    });
    if (same != inbox.end()) {
        *same = request;
    } else {
        inbox.push_back(request);
    }
}

void takeWorkerRequests(std::vector<WorkerRequest>& requests) {
    requests.clear();
    const std::lock_guard lock(inboxLock);
    requests.swap(inbox);
}

} // namespace kst

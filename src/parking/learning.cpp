#include "parking/learning.h"

#include "core/display.h"

namespace kst {

namespace {

std::uint32_t changes = 0;
bool softBarred = false;

void showChanges() {
    updateStatus(Band::Park, [](StatusValues& status) { status.updatesShown = changes; });
}

} // namespace

void noteStandChange() {
    ++changes;
    showChanges();
}

std::uint32_t standChanges() {
    return changes;
}

void clearStandChanges() {
    changes = 0;
    showChanges();
}

bool softLearningBarred() {
    return softBarred;
}

} // namespace kst

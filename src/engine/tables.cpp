#include "engine/tables.h"

#include "engine/conflicts.h"
#include "engine/feedintake.h"
#include "engine/simreplies.h"
#include "engine/standselection.h"

#include <algorithm>

namespace kst {

std::vector<LiveAc> liveAcs;
std::vector<StaticAc> staticAcs;
std::vector<std::uint32_t> spawnList;
std::list<std::uint32_t> spawnedIds;
std::vector<std::string> ghostCallsigns;
std::set<std::string> unmatchedTargets;
std::unordered_map<std::uint32_t, std::string_view> liveryCache;

namespace {

constexpr std::size_t liveReserve = 512;
constexpr std::size_t staticReserve = 256;
constexpr std::size_t listReserve = 64;

// Where the last search by object id ended. The simulator reports its objects in much the same order each
// time, so the next one asked for is mostly the next one found.
std::size_t nextObjectIndex = 0;

template <typename Record>
void moveLastInto(std::vector<Record>& table, Record& record) {
    if (&record != &table.back()) {
        record = std::move(table.back());
    }
    table.pop_back();
}

} // namespace

void reserveTables() {
    liveAcs.reserve(liveReserve);
    staticAcs.reserve(staticReserve);
    spawnList.reserve(listReserve);
    ghostCallsigns.reserve(listReserve);
}

LiveAc* liveByHexid(std::uint32_t hexid) {
    const auto found = std::ranges::find(liveAcs, hexid, &LiveAc::hexid);
    return found != liveAcs.end() ? &*found : nullptr;
}

LiveAc* liveByObjectId(std::uint32_t objectId) {
    // 0 marks a record without an object.
    if (objectId == 0 || liveAcs.empty()) {
        return nullptr;
    }
    const std::size_t count = liveAcs.size();
    std::size_t index = nextObjectIndex < count ? nextObjectIndex : 0;
    for (std::size_t tried = 0; tried < count; ++tried) {
        if (liveAcs[index].objectId == objectId) {
            nextObjectIndex = index + 1;
            return &liveAcs[index];
        }
        index = index + 1 < count ? index + 1 : 0;
    }
    return nullptr;
}

StaticAc* staticByHexid(std::uint32_t hexid) {
    const auto found = std::ranges::find(staticAcs, hexid, &StaticAc::hexid);
    return found != staticAcs.end() ? &*found : nullptr;
}

void deleteRecord(LiveAc& ac) {
    spawnedIds.remove(ac.hexid);
    moveLastInto(liveAcs, ac);
}

void deleteRecord(StaticAc& ac) {
    moveLastInto(staticAcs, ac);
}

void resetEngine(bool restartFollows) {
    liveAcs.clear();
    staticAcs.clear();
    spawnList.clear();
    spawnedIds.clear();
    liveryCache.clear();
    nextObjectIndex = 0;
    if (!restartFollows) {
        ghostCallsigns.clear();
        unmatchedTargets.clear();
    }
    resetFeedIntake();
    resetSimReplies();
    resetConflicts();
    resetStandSelection();
}

} // namespace kst

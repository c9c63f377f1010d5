#include "parking/stands.h"

namespace kst {

std::vector<ParkPos>& parkPositions() {
    static std::vector<ParkPos> positions;
    return positions;
}

ParkPos* standBySid(std::uint32_t sid) {
    auto& positions = parkPositions();
    // A stand's number is its place in the table, counted from 1.
    return sid >= 1 && sid <= positions.size() ? &positions[sid - 1] : nullptr;
}

std::string standName(std::uint32_t sid) {
    if (sid == 0) {
        return "sid==0?";
    }
    const ParkPos* stand = standBySid(sid);
    return stand != nullptr ? stand->id : "unknown";
}

} // namespace kst

#pragma once

// The identifiers of stands that come out of a scenery file, where several stands may bear one name and
// number.

#include "model/parkpos.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kst {

/// The letters that begin the identifier of a stand with this name code, 0 to 63.
std::string lf_standPrefix(unsigned nameCode);

/// The identifiers handed out at one airport, so that each is unique.
class StandIds {
public:
    /// The highest that a parking's number can be.
    static constexpr unsigned highestNumber = 4095;

    struct Id {
        std::string text;
        bool suffixed = false; ///< it got a letter behind it
    };

    /// The identifier of a stand with this name code (0 to 63) and number, or with the first letter of "a" to
    /// "f" behind it that is free. Nothing when all are taken.
    std::optional<Id> take(unsigned nameCode, unsigned number);

private:
    /// How many stands have each number, for one prefix.
    using Counts = std::array<std::uint8_t, highestNumber + 1>;
    std::array<std::unique_ptr<Counts>, 64> counts_; ///< by the lowest name code with that prefix
};

/// Deals the letters of stands that share a name and number out again, now by size: the largest takes the
/// plain identifier, the others follow from "a" on. Clears every `suffixed`.
void lf_settleDuplicateIds(std::vector<ParkPos>& stands);

} // namespace kst

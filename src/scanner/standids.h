#pragma once

// The identifiers of stands that come out of a scenery file, where several stands may bear one name and
// number.

#include "model/parkpos.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace kst {

/// The letters that begin the identifier of a stand with this name code, 0 to 63.
std::string lf_standPrefix(unsigned nameCode);

/// The identifiers handed out at one airport, so that each is unique.
class StandIds {
public:
    struct Id {
        std::string text;
        bool suffixed = false; ///< it got a letter behind it
    };

    /// The identifier itself, or with the first letter of "a" to "f" behind it that is free. Nothing when all
    /// are taken.
    std::optional<Id> take(std::string id);

private:
    std::unordered_set<std::string> taken_;
};

/// Deals the letters of stands that share a name and number out again, now by size: the largest takes the
/// plain identifier, the others follow from "a" on. Clears every `suffixed`.
void lf_settleDuplicateIds(std::vector<ParkPos>& stands);

} // namespace kst

#pragma once

#include <string_view>

namespace kst {

/// Size class of an aircraft model. The numbers are used as indices of per-category tables.
enum class Category : int { Light = 0, Buzjets = 1, Large = 2, Heavy = 3, HighPerf = 4, Rotorcraft = 5 };

inline constexpr int categoryCount = 6;

/// The name shown to the user and written to the log.
constexpr std::string_view categoryName(Category category) {
    constexpr std::string_view names[categoryCount] = {"Light", "Buzjets",  "Large",
                                                       "Heavy", "HighPerf", "Rotorcraft"};
    return names[static_cast<int>(category)];
}

} // namespace kst

#pragma once

// How each size class flies: the fixed figures behind every record's rates and limits. Read-only.

#include "model/category.h"

#include <array>
#include <cstddef>

namespace kst {

/// What every record of a size class starts with. Angles in degrees, a negative pitch is nose up.
struct CategoryRates {
    double baseTurnRateDeg; ///< degrees per tick
    double maxClimbStepFt;  ///< feet per tick
    double pushSpeedKt;     ///< of push back and of the last leg onto a stand
    int flareTicks;
    int derotateTicks;
    int rotateTicks;
    int climbOutTicks;
    double rotatePitchDeg; ///< at rotation
    double climbPitchDeg;  ///< in the initial climb
};

/// Limits that the flight laws hold a size class to.
struct CategoryLimits {
    double takeOffSpeedKt;
    double maxBankDeg;
    double bankRateDeg;  ///< degrees per tick
    double pitchRateDeg; ///< degrees per tick
};

namespace category_tables {

inline constexpr std::array<CategoryRates, categoryCount> rates = {{
    {0.15, 0.5, 5.0, 250, 250, 100, 200, -9.0, -15.0},  // Light
    {0.10, 0.75, 4.5, 300, 300, 200, 250, -8.0, -18.0}, // Buzjets
    {0.07, 0.6, 4.0, 400, 350, 200, 300, -6.0, -16.5},  // Large
    {0.05, 0.5, 3.0, 450, 450, 250, 400, -5.0, -12.5},  // Heavy
    {0.10, 1.0, 4.5, 150, 150, 100, 200, -6.0, -20.0},  // HighPerf
    {0.20, 0.75, 5.0, 100, 100, 100, 100, -20.0, -30.0} // Rotorcraft
}};

inline constexpr std::array<CategoryLimits, categoryCount> limits = {{
    {90.0, 40.0, 0.035, 0.01},     // Light
    {110.0, 35.0, 0.0275, 0.0085}, // Buzjets
    {140.0, 30.0, 0.02, 0.0075},   // Large
    {150.0, 20.0, 0.015, 0.005},   // Heavy
    {220.0, 90.0, 0.1, 0.03},      // HighPerf
    {0.0, 75.0, 0.06, 0.03}        // Rotorcraft
}};

} // namespace category_tables

constexpr const CategoryRates& categoryRates(Category category) {
    return category_tables::rates[static_cast<std::size_t>(category)];
}

constexpr const CategoryLimits& categoryLimits(Category category) {
    return category_tables::limits[static_cast<std::size_t>(category)];
}

/// Size classes 1, 2 and 3: aircraft with jet engines of the airlines and of business.
constexpr bool isJetCategory(Category category) {
    return category == Category::Buzjets || category == Category::Large || category == Category::Heavy;
}

} // namespace kst

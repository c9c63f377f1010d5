#pragma once

// Counts of why traffic is not there: each dropped feed line, each refused target and each removed aircraft
// counts under its rule. Also the program's own record of its passes. Any thread; relaxed atomics, no lock.

#include "model/reasons.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace kst {

/// A few words for the log and the summary, lower case, at most 40 characters.
std::string_view reasonText(Reason reason);

void countReason(Reason reason);
std::uint64_t reasonTotal(Reason reason);

/// What happened to the traffic since the run began.
enum class Happening : int {
    LinesHeard,
    LinesAccepted,
    TargetsHeard,
    Buffered,
    Created,
    PositionsSent,
    Removed,
    Count
};
void countHappening(Happening happening, std::uint64_t by = 1);
std::uint64_t happeningTotal(Happening happening);

/// One pass of the 10 ms loop took `microseconds`. Worker.
void countPass(std::uint64_t microseconds);
std::uint64_t passTotal();
std::uint64_t passOverrunTotal(); ///< passes longer than 10 ms
std::uint64_t passLongestMicroseconds();

/// Writes all counts above zero to the log: one line "traffic: ..." and one line "reason {}: {}" each. Hourly
/// and at the end of a run.
void logCounts();

void resetCounts();

} // namespace kst

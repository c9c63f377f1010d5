#pragma once

// The report of an airport scan, AirportsScanLog.txt, while it is being gathered.

#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// Appends a line to the report. Any thread.
void lf_scanLogLine(std::string_view text);

/// Takes all lines out, which leaves the report empty with room for the next one. Any thread.
std::vector<std::string> takeScanLog();

} // namespace kst

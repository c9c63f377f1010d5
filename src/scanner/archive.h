#pragma once

// The scan of add-on airports as a whole: from the folders of scenery to the local airport files, with the
// report and the airports that can be learned off line. Worker.

#include <string>
#include <vector>

namespace kst {

/// Empties the local airport folders, scans the user's add-on airports and fills them again, then switches
/// `SCAN_AIRPORTS` off. A scan that an exit cuts short leaves it on. Throws UserErrorException when the
/// folders to scan are not what they should be; the local folders are untouched then.
void gf_scanAirports();

/// Scans these folders and writes the report. Returns whether any airport was linked or generated since the
/// process began.
bool lf_runAirportScan(const std::vector<std::string>& folders);

} // namespace kst

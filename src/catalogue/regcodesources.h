#pragma once

// Which title belongs to which registration: the liveries' own registrations, the downloaded list and the
// user's files, each outranking the one before. Worker, while no scan task runs.

#include <string>
#include <vector>

namespace kst {

/// Fills `dontUseTitles` from the downloaded list and the user's files, before a scan. What cannot be had or
/// read is logged.
void gf_readDontUseTitles();

} // namespace kst

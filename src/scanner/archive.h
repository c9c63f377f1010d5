#pragma once

namespace kst {

/// Scans the user's add-on airports and builds their parking files. Worker.
void gf_scanAirports();

} // namespace kst

#pragma once

namespace kst {

/// Remembers the folder of the stock airports below the install path; shows a message when it does not exist.
/// Worker.
void lf_setStockAirportsPath();

/// Scans the user's add-on airports and builds their parking files. Worker.
void gf_scanAirports();

} // namespace kst

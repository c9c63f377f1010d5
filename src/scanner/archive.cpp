#include "scanner/archive.h"

namespace kst {

void gf_scanAirports() {}

} // namespace kst

#pragma once

namespace kst {

/// Compares the version of the last run with this one and turns on the rescans that an update needs. Worker.
void lf_migrateVersion();
/// Asks the download server for a newer version and tells the user. Worker.
void gf_checkNewVersion();

} // namespace kst

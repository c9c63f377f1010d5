#pragma once

#include <filesystem>

namespace kst {

/// LiveriesScanned.xml in the output folder: what the last scan found.
std::filesystem::path liveriesStorePath();

/// Scans the liveries if `SCAN_LIVERIES` asks for it. Throws UserErrorException when the scan finds nothing.
/// Worker.
void gf_scanLiveries();
/// Reads the store and builds the tables of the matcher, once per process. Throws UserErrorException 51, 52,
/// 533.
void gf_processScannedLiveries();
/// Forgets the tables: a scan was asked for.
void gf_emptyCatalogue();

} // namespace kst

#pragma once

#include <filesystem>
#include <string>

namespace kst {

/// LiveriesScanned.xml in the output folder: what the last scan found.
std::filesystem::path liveriesStorePath();

/// Scans the liveries if `SCAN_LIVERIES` asks for it. Throws UserErrorException when the scan finds nothing.
/// Worker.
void gf_scanLiveries();
/// Reads the store into `scannedLiveries`, in order. Throws UserErrorException 51, 52, 533. Worker.
void lf_readLiveries();
/// The same from another file.
void readLiveriesFrom(const std::filesystem::path& path);
/// The same from a text, which is used up; `name` stands for the file in messages.
void readLiveriesText(std::string& text, const std::string& name);
/// Reads the store and builds the tables of the matcher, once per process: a later run finds them
/// ready. Throws UserErrorException 51, 52, 533. Worker.
void gf_processScannedLiveries();
/// Has the tables forgotten before `gf_processScannedLiveries` runs next: a scan was asked for. Any thread;
/// the worker may still be reading them.
void gf_emptyCatalogue();

} // namespace kst

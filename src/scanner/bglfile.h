#pragma once

// BGL files, the simulator's compiled scenery: which of them hold airports, and the airports that one holds.
// The layout is in docs/formats.md.

#include "scanner/bglairport.h"
#include "scanner/bglwords.h"

#include <filesystem>
#include <string_view>

namespace kst {

/// Whether the file has a section of airports. Reads no more than its head, so it is cheap on the many files
/// that have none. False for a file that cannot be read. Any thread.
bool lf_bglHasAirports(const std::filesystem::path& path);

/// Decodes all airports of a file. `path` is for the report. Throws std::out_of_range where the file leads
/// beyond its own end and std::runtime_error when it is beyond reason; what was handed on before stands. Any
/// thread.
void decodeBgl(const BglWords& d, std::string_view path, const BglOutput& output);

} // namespace kst

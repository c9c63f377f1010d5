#pragma once

// The local entry of a scanned airport: a link to the download server's archive, a parking file made from the
// scenery, or both. Any thread. The layout of the archive is in docs/formats.md.

#include "model/airportfile.h"

#include <atomic>
#include <filesystem>
#include <string_view>

namespace kst {

/// Some airport was linked or generated since the process began.
extern std::atomic<bool> scanFoundAirports;

/// Forgets which files the last scan wrote. Before a scan.
void beginArchive();

/// Fills `BGLpath` and `publisher` from the path of the scenery file, and writes the link where the archive
/// has the airport. `archivedCount` receives the number of stands there, 0 when unknown. Of several files
/// with one airport the link of the highest `order` stays. Returns whether the airport is linked.
bool lf_linkArchived(AirportFile& airport, int& archivedCount, const std::filesystem::path& path,
                     std::size_t order);

/// Generates the parking file of an airport that is not linked, or that has more stands than the archive. Of
/// several files with one airport that of the highest `order` stays. Sorts the stands by their ids. Throws
/// std::filesystem::filesystem_error when its folder cannot be made.
void lf_finishScannedAirport(AirportFile& airport, bool linked, int archivedCount, std::size_t order);

} // namespace kst

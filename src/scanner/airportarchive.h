#pragma once

// The local entry of a scanned airport: a link to the download server's archive, a parking file made from the
// scenery, or both. Any thread. The layout of the archive is in docs/formats.md.

#include "model/airportfile.h"

#include <atomic>
#include <cstddef>
#include <string>

namespace kst {

/// Some airport was linked or generated since the process began.
extern std::atomic<bool> scanFoundAirports;

/// Forgets which files the last scan wrote. Before a scan.
void beginArchive();

/// The scenery file that airports come from.
struct SceneryFile {
    std::string path; ///< UTF-8
    std::string publisher;
    std::size_t order = 0; ///< its place in the scan
};

/// Fills `BGLpath` and `publisher`, and writes the link where the archive has the airport. `archivedCount`
/// receives the number of stands there, 0 when unknown. Of several files with one airport the link of the
/// highest order stays. Returns whether the airport is linked.
bool lf_linkArchived(AirportFile& airport, int& archivedCount, const SceneryFile& file);

/// Generates the parking file of an airport that is not linked, or that has more stands than the archive. Of
/// several files with one airport that of the highest `order` stays. Sorts the stands by their ids. Throws
/// std::filesystem::filesystem_error when its folder cannot be made.
void lf_finishScannedAirport(AirportFile& airport, bool linked, int archivedCount, std::size_t order);

} // namespace kst

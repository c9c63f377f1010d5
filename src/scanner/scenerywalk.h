#pragma once

// The walk through the folders of add-on scenery, and the tasks that read the BGL files found in it.

#include "core/orderedtasks.h"
#include "core/progress.h"

#include <cstddef>
#include <filesystem>
#include <string_view>

namespace kst {

/// What is known over all folders of one scan. Worker.
struct SceneryScan {
    std::size_t folders = 0;       ///< to be walked
    std::size_t foldersWalked = 0; ///< done
    std::size_t bglFiles = 0;      ///< seen
    std::size_t airportFiles = 0;  ///< of these, given to a task
    double shareOfFolder = 0.0;    ///< done of the present folder
    Progress progress;
};

/// Whether a file of this name (UTF-8) is looked into: only the spellings ".BGL" and ".bgl" count.
bool lf_isBglName(std::string_view name);

/// Checks one folder of the list, by its text, and walks it; all its tasks have ended when this returns. What
/// cannot be walked is shown or stands in the report. Worker.
void lf_scanEntry(std::string_view folder, SceneryScan& scan);

/// The body of a task: decodes all airports of one file and passes each on to the archive, which keeps of
/// equal airports the one with the highest `order`. A file that cannot be opened gives none. Throws what the
/// decoder throws. Any thread.
void lf_readBglFile(const std::filesystem::path& path, std::size_t order);

} // namespace kst

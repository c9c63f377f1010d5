#pragma once

// The walk through a folder and all that lies below it, as the scans need it: always in the same order,
// through links but never in a circle, past what cannot be read, and at its end at once when an exit is asked
// for.

#include "platform/folderlisting.h"

#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

namespace kst {

/// What a walk tells its caller, on the thread that walks. Each may throw, which ends the walk.
struct FolderWalk {
    /// Asked before each folder below the first; false leaves it out with all that is in it. Unset enters
    /// all.
    std::function<bool(const std::filesystem::path& folder)> enter;
    /// All entries of a folder, in no particular order, before any of them is visited.
    std::function<void(const std::filesystem::path& folder,
                       const std::vector<platform::FolderEntry>& entries)>
        listed;
    /// Asked for each file with its name (UTF-8): false passes over it. Unset wants all. Saves the making of
    /// a path where few of very many files count.
    std::function<bool(const std::string& name)> wants;
    /// Each regular file that is wanted, links to files included.
    std::function<void(const std::filesystem::path& file)> file;
    /// The share of the walk that is done, 0 to 1, before each entry: as if all folders beside each other
    /// were alike. Never falls.
    std::function<void(double share)> progressed;
    /// A folder whose entries cannot be listed, or not all of them. Unset passes over it in silence.
    std::function<void(const std::filesystem::path& folder, const std::error_code& error)> unreadable;
};

/// Walks the folder: the entries of each folder in ascending order of their names, a folder's content in its
/// place among them. A folder that several links lead to is entered once. Ends early once `stopAsked()`.
void walkFolder(const std::filesystem::path& folder, const FolderWalk& walk);

} // namespace kst

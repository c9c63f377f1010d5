#include "core/folderwalk.h"

#include "core/runstate.h"
#include "platform/folderidentity.h"
#include "platform/paths.h"

#include <algorithm>
#include <set>

namespace kst {

namespace {

namespace fs = std::filesystem;
using platform::EntryKind;
using platform::FolderEntry;

class Walker {
public:
    explicit Walker(const FolderWalk& walk) : walk_(walk) {}

    void visit(const fs::path& folder) {
        const auto identity = platform::folderIdentity(folder);
        if (identity && !seen_.insert(*identity).second) {
            return;
        }
        for (const FolderEntry& entry : entriesToVisit(folder)) {
            if (stopAsked()) {
                return;
            }
            const fs::path path = folder / platform::pathFromUtf8(entry.name);
            if (entry.kind == EntryKind::File) {
                walk_.file(path);
            } else if (!walk_.enter || walk_.enter(path)) {
                visit(path);
            }
        }
    }

private:
    bool isToVisit(const FolderEntry& entry) const {
        return entry.kind == EntryKind::Folder ||
               (entry.kind == EntryKind::File && walk_.file && (!walk_.wants || walk_.wants(entry.name)));
    }

    std::vector<FolderEntry> entriesToVisit(const fs::path& folder) const {
        std::vector<FolderEntry> entries;
        const std::error_code error = platform::listFolder(folder, entries);
        if (error && walk_.unreadable) {
            walk_.unreadable(folder, error);
        }
        if (walk_.listed) {
            walk_.listed(folder, entries);
        }
        std::erase_if(entries, [this](const FolderEntry& entry) { return !isToVisit(entry); });
        std::sort(entries.begin(), entries.end(),
                  [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
        return entries;
    }

    const FolderWalk& walk_;
    std::set<platform::FolderIdentity> seen_;
};

} // namespace

void walkFolder(const fs::path& folder, const FolderWalk& walk) {
    Walker(walk).visit(folder);
}

} // namespace kst

#include "core/folderwalk.h"

#include "core/runstate.h"
#include "platform/paths.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <unordered_set>

namespace kst {

namespace {

namespace fs = std::filesystem;
using platform::EntryKind;
using platform::FolderEntry;

struct IdentityHash {
    std::size_t operator()(const platform::FolderIdentity& identity) const {
        return std::hash<std::uint64_t>{}(identity.index) ^
               (std::hash<std::uint64_t>{}(identity.volume) << 1);
    }
};

class Walker {
public:
    explicit Walker(const FolderWalk& walk) : walk_(walk) {}

    /// `begin` and `width` are the folder's part of the whole walk.
    void visit(const fs::path& folder, double begin, double width) {
        platform::FolderListing listing = platform::listFolder(folder);
        if (listing.error && walk_.unreadable) {
            walk_.unreadable(folder, listing.error);
        }
        if (listing.identity && !seen_.insert(*listing.identity).second) {
            return;
        }
        if (walk_.listed) {
            walk_.listed(folder, listing.entries);
        }
        const std::vector<FolderEntry> entries = entriesToVisit(std::move(listing.entries));
        const double step = entries.empty() ? 0.0 : width / static_cast<double>(entries.size());
        double share = begin - step;
        for (const FolderEntry& entry : entries) {
            if (stopAsked()) {
                return;
            }
            share += step;
            if (walk_.progressed) {
                walk_.progressed(share);
            }
            const fs::path path = folder / platform::pathFromUtf8(entry.name);
            if (entry.kind == EntryKind::File) {
                walk_.file(path);
            } else if (!walk_.enter || walk_.enter(path)) {
                visit(path, share, step);
            }
        }
    }

private:
    bool isToVisit(const FolderEntry& entry) const {
        return entry.kind == EntryKind::Folder ||
               (entry.kind == EntryKind::File && walk_.file && (!walk_.wants || walk_.wants(entry.name)));
    }

    std::vector<FolderEntry> entriesToVisit(std::vector<FolderEntry> entries) const {
        std::erase_if(entries, [this](const FolderEntry& entry) { return !isToVisit(entry); });
        std::sort(entries.begin(), entries.end(),
                  [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
        return entries;
    }

    const FolderWalk& walk_;
    std::unordered_set<platform::FolderIdentity, IdentityHash> seen_;
};

} // namespace

void walkFolder(const fs::path& folder, const FolderWalk& walk) {
    Walker(walk).visit(folder, 0.0, 1.0);
}

} // namespace kst

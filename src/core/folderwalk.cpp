#include "core/folderwalk.h"

#include "core/runstate.h"
#include "platform/folderidentity.h"

#include <algorithm>
#include <set>
#include <vector>

namespace kst {

namespace {

namespace fs = std::filesystem;

class Walker {
public:
    explicit Walker(const FolderWalk& walk) : walk_(walk) {}

    void visit(const fs::path& folder) {
        const auto identity = platform::folderIdentity(folder);
        if (identity && !seen_.insert(*identity).second) {
            return;
        }
        for (const fs::directory_entry& entry : sortedEntries(folder)) {
            if (stopAsked()) {
                return;
            }
            std::error_code gone;
            if (entry.is_directory(gone)) {
                if (!walk_.enter || walk_.enter(entry.path())) {
                    visit(entry.path());
                }
            } else if (entry.is_regular_file(gone) && walk_.file) {
                walk_.file(entry.path());
            }
        }
    }

private:
    std::vector<fs::directory_entry> sortedEntries(const fs::path& folder) const {
        std::vector<fs::directory_entry> entries;
        std::error_code error;
        for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator{};
             entry.increment(error)) {
            entries.push_back(*entry);
            if (stopAsked()) {
                break;
            }
        }
        if (error && walk_.unreadable) {
            walk_.unreadable(folder, error);
        }
        std::sort(entries.begin(), entries.end(),
                  [](const auto& a, const auto& b) { return a.path().native() < b.path().native(); });
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

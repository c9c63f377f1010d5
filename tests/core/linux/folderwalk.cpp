#include "core/folderwalk.h"

#include "core/runstate.h"
#include "platform/paths.h"
#include "support/tempfolder.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace kst {
namespace {

using testing::ElementsAre;

TEST(FolderWalk, ComesBackFromLinksInTheSameOrderAndGoesOnPastWhatIsMissing) {
    const test::TempFolder folder;
    for (const char* name : {"tree/b/two", "tree/a", "tree/c", "tree/left/out", "elsewhere/three"}) {
        folder.write(name, "x");
    }
    std::filesystem::create_directory_symlink("..", "tree/b/loop");
    std::filesystem::create_directory_symlink("../elsewhere", "tree/d");
    std::filesystem::create_directory_symlink("../elsewhere", "tree/e");
    std::filesystem::create_directory_symlink("nowhere", "tree/dead");

    std::vector<std::string> files;
    std::vector<std::string> missing;
    FolderWalk walk;
    walk.enter = [](const auto& entered) { return entered.filename() != "left"; };
    walk.file = [&](const auto& file) { files.push_back(platform::utf8FromPath(file)); };
    walk.unreadable = [&](const auto& gone, const auto&) { missing.push_back(platform::utf8FromPath(gone)); };
    walkFolder("tree", walk);
    walkFolder("absent", walk);
    EXPECT_THAT(files, ElementsAre("tree/a", "tree/b/two", "tree/c", "tree/d/three"));
    EXPECT_THAT(missing, ElementsAre("absent"));
}

TEST(FolderWalk, EndsAtOnceWhenAnExitIsAskedFor) {
    const test::TempFolder folder;
    folder.write("tree/a", "x");
    folder.write("tree/b", "x");
    int files = 0;
    FolderWalk walk;
    walk.file = [&](const auto&) {
        ++files;
        userClosed = true;
    };
    walkFolder("tree", walk);
    userClosed = false;
    EXPECT_EQ(files, 1);
}

} // namespace
} // namespace kst

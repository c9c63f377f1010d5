// The Debian package: what is in it, and the program as its launcher starts it.

#include "core/log.h"
#include "support/linux/childprocess.h"
#include "support/places.h"
#include "support/tempfolder.h"

#include <csignal>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::contentOf;
using test::waitFor;

class DebianPackage : public testing::Test {
protected:
    void SetUp() override {
        run({(test::sourceFolder() / "scripts/package-linux").string(), "--no-build", "--preset",
             test::buildFolder().filename().string(), "--to", folder_.path().string()});
        package_ = folder_.path() / fmt::format("kestrane-p3d_{}_amd64.deb", programVersionText());
        run({"/usr/bin/dpkg", "-x", package_.string(), root_.string()});
    }

    /// What a program that ends well prints.
    std::string run(const std::vector<std::string>& words) {
        const fs::path output = folder_.path() / "output.txt";
        fs::remove(output);
        test::ChildProcess process(words, {}, folder_.path(), output);
        EXPECT_EQ(process.wait(120s), 0) << words.front() << ": " << contentOf(output);
        return contentOf(output);
    }

    /// Starts the program as the menu does and ends it when it works.
    void startAndClose() {
        fs::remove(work_ / "Log.txt");
        const std::map<std::string, std::string> environment = {
            {"KESTRANE_DOWNLOAD_ROOT", test::fileUrl(folder_.path() / "nothing") + "/"},
            {"QT_QPA_PLATFORM", "offscreen"}};
        test::ChildProcess program({(root_ / "usr/bin/kestrane-p3d").string()}, environment, folder_.path(),
                                   folder_.path() / "program.txt");
        EXPECT_TRUE(waitFor(
            [&] {
                return contentOf(work_ / "Log.txt").find("Program Version file not found?") !=
                       std::string::npos;
            },
            60s))
            << contentOf(folder_.path() / "program.txt") << contentOf(work_ / "Log.txt");
        program.signal(SIGTERM);
        EXPECT_EQ(program.wait(20s), 0);
    }

    /// Names itself and the libraries that it needs, and has its files at their places.
    void checkPackage() {
        const std::string fields = run({"/usr/bin/dpkg-deb", "--field", package_.string()});
        for (const std::string& part :
             {std::string("Package: kestrane-p3d\n"), fmt::format("Version: {}\n", programVersionText()),
              std::string("libqt6widgets6"), std::string("libcurl4"), std::string("libzip4")}) {
            EXPECT_NE(fields.find(part), std::string::npos) << part << " is not in\n" << fields;
        }
        const std::string contents = run({"/usr/bin/dpkg-deb", "--contents", package_.string()});
        for (const char* const line :
             {"-rwxr-xr-x root/root", "usr/bin/kestrane-p3d\n", "usr/lib/kestrane-p3d/Kestrane_P3D\n",
              "usr/bin/kestrane-data\n", "usr/share/kestrane-p3d/docs/manual.md\n",
              "usr/share/kestrane-p3d/airports/airports_p3d.xml\n",
              "usr/share/kestrane-p3d/downloads/P3D/archive/stock/LSZH.xml\n",
              "usr/share/applications/kestrane-p3d.desktop\n",
              "usr/share/icons/hicolor/256x256/apps/kestrane-p3d.png\n"}) {
            EXPECT_NE(contents.find(line), std::string::npos) << line << " is not in\n" << contents;
        }
        EXPECT_TRUE(contentOf(root_ / "usr/share/icons/hicolor/256x256/apps/kestrane-p3d.png")
                        .starts_with("\x89PNG\r\n"));
    }

    const test::TempFolder folder_;
    fs::path package_;
    fs::path root_ = folder_.path() / "root";
    fs::path work_ = folder_.programData() / "Kestrane_P3D";
};

TEST_F(DebianPackage, IsCompleteAndItsLauncherGivesEachUserAFolderThatFollowsUpdatesAndKeepsHisFiles) {
    checkPackage();
    startAndClose();
    EXPECT_FALSE(contentOf(work_ / "docs/manual.md").empty());
    EXPECT_FALSE(contentOf(work_ / "airports/airports_p3d.xml").empty());

    // An update moves what is installed for all; the user has a directory of airports of his own by now.
    folder_.write(work_ / "airports/my_park_airports.txt", "of the user");
    fs::remove(work_ / "airports/airports_p3d.xml");
    folder_.write(work_ / "airports/airports_p3d.xml", "of the user");
    const fs::path newer = folder_.path() / "newer";
    fs::rename(root_, newer);
    root_ = newer;
    startAndClose();
    EXPECT_TRUE(fs::equivalent(work_ / "docs", newer / "usr/share/kestrane-p3d/docs"));
    EXPECT_EQ(contentOf(work_ / "airports/my_park_airports.txt"), "of the user");
    EXPECT_EQ(contentOf(work_ / "airports/airports_p3d.xml"), "of the user");
}

} // namespace
} // namespace kst

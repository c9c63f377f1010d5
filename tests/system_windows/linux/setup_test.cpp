// The installer, from the zip that users download to the uninstaller, and the fetch of a newer one over
// HTTPS.

#include "core/log.h"
#include "install/download.h"
#include "install/ziparchive.h"
#include "standins/downloadserver/downloadserver.h"
#include "support/linux/childprocess.h"
#include "support/places.h"
#include "support/tempfolder.h"
#include "system/linux/host.h"
#include "system_windows/linux/wine.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::contentOf;
using test::waitFor;
using test::wine::pathText;

constexpr const char* entryKey = R"(Software\Microsoft\Windows\CurrentVersion\Uninstall\Kestrane_P3D)";
constexpr const char* foldersKey =
    R"(HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders)";

standin::DownloadOptions withHttps(const fs::path& folder) {
    standin::DownloadOptions options;
    options.folder = folder;
    options.https = true;
    return options;
}

/// A user's PC with the unpacked installer in the download folder.
class WindowsSetup : public testing::Test {
protected:
    void SetUp() override {
        environment_ = test::host::prepare(folder_.path());
        fs::create_directories(local_);
        fs::create_directories(menu_);
        test::wine::setRegistry(folder_.path(), {{foldersKey, "Local AppData", pathText(local_)},
                                                 {foldersKey, "Programs", pathText(menu_)}});
        for (const char* const hive : {"HKCU", "HKLM"}) { // what a test left that did not come to its end
            run(test::wine::words("reg", {"delete", fmt::format("{}\\{}", hive, entryKey), "/f"}));
        }
        const fs::path packages = folder_.path() / "packages";
        ASSERT_EQ(run({(test::sourceFolder() / "scripts/package-windows").string(), "--no-build", "--to",
                       packages.string()}),
                  0)
            << contentOf(output_);
        zip_ = packages / fmt::format("setup_Kestrane_P3D_d_v{}.zip", programVersionText());
        ZipArchive archive(zip_);
        ASSERT_TRUE(archive.open()) << zip_ << " was not made";
        const std::vector<ZipEntry> entries = archive.getEntries();
        ASSERT_EQ(entries.size(), 1U) << "the zip holds one file";
        EXPECT_EQ(entries.front().name(), zip_.stem().string() + ".exe");
        ASSERT_EQ(unpackEntry(entries.front(), setup_), 0);
    }

    /// The exit status of a program that ends by itself, -1 when it does not.
    int run(const std::vector<std::string>& words) {
        fs::remove(output_);
        test::ChildProcess process(words, environment_, folder_.path(), output_);
        return process.wait(120s).value_or(-1);
    }

    /// As the list of installed programs shows it; empty when it is not there.
    std::string installedEntry(const std::string& hive, const std::string& name) {
        run(test::wine::words("reg", {"query", hive + "\\" + entryKey, "/v", name}));
        const std::string text = contentOf(output_);
        constexpr std::string_view mark = "REG_SZ    ";
        const std::size_t at = text.find(mark);
        return at == std::string::npos
                   ? std::string()
                   : text.substr(at + mark.size(), text.find_first_of("\r\n", at) - at - mark.size());
    }

    std::unique_ptr<test::ChildProcess> start(const fs::path& installation) {
        return std::make_unique<test::ChildProcess>(test::wine::words(installation / "Kestrane_P3D.exe", {}),
                                                    environment_, installation,
                                                    folder_.path() / "program.txt");
    }

    static bool logSays(const fs::path& installation, const std::string& text) {
        return waitFor([&] { return contentOf(installation / "Log.txt").find(text) != std::string::npos; },
                       60s);
    }

    const test::TempFolder folder_;
    std::map<std::string, std::string> environment_;
    fs::path output_ = folder_.path() / "output.txt";
    fs::path local_ = folder_.path() / "J\u00fcrgen's data" / "Local";
    fs::path menu_ = folder_.path() / "menu";
    fs::path zip_;
    fs::path setup_ = folder_.path() / "setup.exe";
};

TEST_F(WindowsSetup, InstallsUpdatesFromADownloadAndUninstallsWithoutTouchingTheUsersFiles) {
    ASSERT_EQ(run(test::wine::words(setup_, {"/S", "/CurrentUser"})), 0);
    const fs::path installation = local_ / "Programs" / "Kestrane_P3D";
    const char* const installed[] = {"Kestrane_P3D.exe",
                                     "kestrane-data.exe",
                                     "docs/manual.md",
                                     "airports/airports_p3d.xml",
                                     "input",
                                     "downloads/P3D/archive/stock/LSZH.xml",
                                     "uninstall.exe"};
    for (const char* const name : installed) {
        EXPECT_TRUE(fs::exists(installation / name)) << name << " was not installed";
    }
    EXPECT_TRUE(fs::exists(menu_ / "Kestrane_P3D.lnk"));
    EXPECT_EQ(installedEntry("HKCU", "DisplayVersion"), programVersionText());

    // A download server has a newer one, and its certificate is trusted.
    const fs::path downloads = folder_.path() / "server";
    fs::create_directories(downloads / "release");
    fs::copy_file(zip_, downloads / "release/setup_Kestrane_P3D_d_v99.0.0.zip");
    folder_.write("server/release/version_P3D.json", "99.0.0\n");
    const standin::DownloadServer server(withHttps(downloads));
    environment_["KESTRANE_DOWNLOAD_ROOT"] = fmt::format("https://localhost:{}/downloads/", server.port());
    environment_["KESTRANE_CA_FILE"] = pathText(folder_.write("ca.pem", server.certificate()));
    const auto program = start(installation);
    EXPECT_TRUE(logSays(installation, "Error New version 99.0.0 available."))
        << contentOf(installation / "Log.txt");
    test::host::askToClose(*program);
    EXPECT_EQ(program->wait(20s), 0);

    const char* const ofTheUser[] = {"airports/my_park_airports.txt", "airports/my_thirdparty/LSZH.xml",
                                     "airports/learned/stock/LSZH.xml", "input/my_regcodes/own.txt",
                                     "output/LiveriesScanned.xml"};
    for (const char* const name : ofTheUser) {
        folder_.write(installation / name, name);
    }
    folder_.write(installation / "docs/manual.md", "of the old version");
    ASSERT_EQ(run(test::wine::words(installation / "install_new_version.exe", {"/S"})), 0);
    EXPECT_NE(contentOf(installation / "docs/manual.md"), "of the old version") << "not updated in its place";
    for (const char* const name : ofTheUser) {
        EXPECT_EQ(contentOf(installation / name), name) << "the update did not keep it";
    }

    EXPECT_TRUE(
        installedEntry("HKCU", "QuietUninstallString").ends_with(R"(\uninstall.exe" /CurrentUser /S)"));
    run(test::wine::words(installation / "uninstall.exe", {"/CurrentUser", "/S"}));
    // It goes on in a copy of itself.
    EXPECT_TRUE(waitFor([&] { return installedEntry("HKCU", "DisplayVersion").empty(); }, 60s));
    for (const char* const name : installed) {
        EXPECT_TRUE(!fs::exists(installation / name) || fs::is_directory(installation / name))
            << name << " was left";
    }
    EXPECT_FALSE(fs::exists(menu_ / "Kestrane_P3D.lnk"));
    for (const char* const name : ofTheUser) {
        EXPECT_EQ(contentOf(installation / name), name) << "the uninstaller did not leave it";
    }
}

TEST_F(WindowsSetup, InstalledForAllUsersAndNeverOverARunningProgram) {
    const fs::path installation = folder_.path() / "f\u00fcr-alle";
    const std::vector<std::string> words =
        test::wine::words(setup_, {"/S", "/AllUsers", "/D=" + pathText(installation)});
    ASSERT_EQ(run(words), 0);
    EXPECT_EQ(installedEntry("HKLM", "DisplayVersion"), programVersionText());
    EXPECT_EQ(installedEntry("HKCU", "DisplayVersion"), "");
    EXPECT_TRUE(fs::exists(installation / "Kestrane_P3D.exe"));

    // A server whose authority is not the trusted one is no server.
    fs::create_directories(folder_.path() / "server");
    const standin::DownloadServer server(withHttps(folder_.path() / "server"));
    const standin::DownloadServer stranger(withHttps(folder_.path() / "server"));
    folder_.write("server/release/version_P3D.json", "99.0.0\n");
    environment_["KESTRANE_DOWNLOAD_ROOT"] = fmt::format("https://localhost:{}/downloads/", server.port());
    environment_["KESTRANE_CA_FILE"] = pathText(folder_.write("ca.pem", stranger.certificate()));
    const auto program = start(installation);
    EXPECT_TRUE(logSays(installation, "Program Version file not found?"));
    EXPECT_EQ(server.requests().size(), 0U) << "the request went to a server that nobody vouches for";

    EXPECT_EQ(run(words), 2) << "an installer wrote over a running program";
    test::host::askToClose(*program);
    EXPECT_EQ(program->wait(20s), 0);
    run(test::wine::words(installation / "uninstall.exe", {"/AllUsers", "/S"}));
    EXPECT_TRUE(waitFor([&] { return installedEntry("HKLM", "DisplayVersion").empty(); }, 60s));
    EXPECT_FALSE(fs::exists(installation / "Kestrane_P3D.exe"));
}

} // namespace
} // namespace kst

// What a server or a network can do wrong: nothing of it is ever taken for data.

#include "core/runstate.h"
#include "install/download.h"
#include "install/newversion.h"
#include "support/environment.h"
#include "support/tempfolder.h"
#include "tools/kestrane-data/zipfile.h"

#include "standins/downloadserver/downloadserver.h"

#include <gtest/gtest.h>

#include <functional>

namespace kst {
namespace {

namespace fs = std::filesystem;
using standin::DownloadOptions;

class BadServer : public testing::Test {
protected:
    BadServer() {
        fs::create_directories("served/release");
        data::writeZip("served/dbase.zip", "dbase.xml", std::string(200'000, 'x'));
    }
    ~BadServer() override {
        downloadLimits() = {};
        exitRequested = false;
        test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", std::nullopt);
        test::setEnvironment("KESTRANE_CA_FILE", std::nullopt);
    }
    /// Serves what lies in served/, with these faults.
    void serve(const std::function<void(DownloadOptions&)>& change) {
        DownloadOptions options;
        options.folder = "served";
        change(options);
        test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", std::nullopt);
        server_ = std::make_unique<standin::DownloadServer>(std::move(options));
        test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", server_->root());
    }

    const test::TempFolder folder_;
    std::unique_ptr<standin::DownloadServer> server_;
};

TEST_F(BadServer, NothingOfAFailedTransferStays) {
    struct Case {
        const char* name;
        std::function<void(DownloadOptions&)> change;
    };
    const Case cases[] = {
        {"not found", [](auto& options) { options.faults.status = 404; }},
        {"server error", [](auto& options) { options.faults.status = 500; }},
        {"truncated", [](auto& options) { options.faults.truncate = 100; }},
        {"stalled", [](auto& options) { options.faults.stallSeconds = 30.0; }},
        {"too large", [](auto& options) { options.faults.endless = true; }},
        {"unknown certificate", [](auto& options) { options.https = true; }},
        {"to plain HTTP",
         [](auto& options) { options.faults.redirect = "http://127.0.0.1:1/downloads/dbase.zip"; }},
        {"to a file", [](auto& options) { options.faults.redirect = "file:///etc/hostname"; }},
    };
    downloadLimits().stallSeconds = 1;
    downloadLimits().largest = 1'000'000;
    for (const Case& row : cases) {
        serve(row.change);
        folder_.write("out.xml", "old");
        EXPECT_FALSE(lf_fetchDatabase("out.xml")) << row.name;
        EXPECT_EQ(folder_.read("out.xml"), "old") << row.name;
        EXPECT_FALSE(fs::exists("dbase.zip") || fs::exists("dbase.zip.part") || fs::exists("out.xml.part"))
            << row.name;
    }
}

TEST_F(BadServer, ArchiveThatIsNoneOrABombLeavesNoFile) {
    std::string damaged = *folder_.read("served/dbase.zip");
    damaged[damaged.size() / 3] = static_cast<char>(~damaged[damaged.size() / 3]);
    data::writeZip("bomb.zip", "dbase.xml", std::string(20'000'000, '\0'));
    downloadLimits().largest = 1'000'000;
    for (const std::string& archive : {damaged, damaged.substr(0, 60), std::string(),
                                       std::string("PK but no archive"), *folder_.read("bomb.zip")}) {
        folder_.write("served/dbase.zip", archive);
        serve([](DownloadOptions&) {});
        folder_.write("out.xml", "old");
        EXPECT_FALSE(lf_fetchDatabase("out.xml")) << archive.size();
        EXPECT_FALSE(fs::exists("out.xml") || fs::exists("out.xml.part") || fs::exists("dbase.zip"))
            << archive.size();
    }
}

TEST_F(BadServer, TrustedCertificateIsAcceptedAndARedirectMayStayWithinHttps) {
    serve([](DownloadOptions& options) { options.https = true; });
    test::setEnvironment("KESTRANE_CA_FILE", folder_.write("ca.pem", server_->certificate()).string());
    EXPECT_TRUE(lf_fetchDatabase("out.xml"));
    EXPECT_EQ(folder_.read("out.xml"), std::string(200'000, 'x'));
}

TEST_F(BadServer, InstallerIsThereWholeOrNotAtAll) {
    const fs::path zip = "served/release/setup_Kestrane_P3D_d_v99.1.2.zip";
    data::writeZip(zip.string(), "setup.exe", "program");
    serve([](DownloadOptions&) {});
    EXPECT_TRUE(lf_downloadInstaller({99, 1, 2}));
    EXPECT_EQ(folder_.read("install_new_version.exe"), "program");

    data::writeZip(zip.string(), "setup.exe", std::string(2'000'000, '\0'));
    downloadLimits().largest = 1'000'000;
    EXPECT_FALSE(lf_downloadInstaller({99, 1, 2}));
    EXPECT_FALSE(fs::exists("install_new_version.exe")) << "an older or half installer would be run";
    EXPECT_FALSE(fs::exists("setup_Kestrane_P3D_d_v99.1.2.zip"));
}

} // namespace
} // namespace kst

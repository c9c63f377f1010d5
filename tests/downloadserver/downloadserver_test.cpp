// The download server stand-in as a client sees it: what it serves, whom it lets in, and how it fails when
// told to.

#include "standins/downloadserver/downloadserver.h"
#include "support/tempfolder.h"

#include <chrono>
#include <fstream>
#include <gtest/gtest.h>
#include <httplib.h>

namespace kst::standin {
namespace {

class DownloadServerTest : public testing::Test {
protected:
    DownloadServerTest() {
        folder_.write("served/dbase.zip", std::string(100000, 'd'));
        folder_.write("served/P3D/archive/stock/LSZH.xml", "<airport/>");
        folder_.write("secret.txt", "not served");
        options_.folder = folder_.path() / "served";
    }

    static httplib::Result get(const DownloadServer& server, const std::string& path) {
        httplib::Client client("127.0.0.1", server.port());
        return client.Get(path);
    }

    kst::test::TempFolder folder_;
    DownloadOptions options_;
};

TEST_F(DownloadServerTest, ServesTheFolderAndNothingElse) {
    const DownloadServer server(std::move(options_));
    EXPECT_EQ(get(server, "/downloads/dbase.zip")->body.size(), 100000U);
    EXPECT_EQ(get(server, "/downloads/P3D/archive/stock/LSZH.xml")->body, "<airport/>");
    for (const std::string path :
         {"/downloads/none.zip", "/dbase.zip", "/downloads/", "/downloads/P3D", "/downloads/../secret.txt",
          "/downloads/%2e%2e/secret.txt", "/downloads//etc/passwd"}) {
        EXPECT_EQ(get(server, path)->status, 404) << path;
    }
    EXPECT_EQ(server.requests().front(), "/downloads/dbase.zip 200");
    EXPECT_EQ(server.requests().size(), 9U);
}

TEST_F(DownloadServerTest, HttpsIsVerifiedAgainstItsOwnCertificateOnly) {
    options_.https = true;
    const DownloadServer server(std::move(options_));
    httplib::SSLClient trusting("127.0.0.1", server.port());
    trusting.set_ca_cert_path(folder_.write("ca.pem", server.certificate()).c_str());
    trusting.enable_server_certificate_verification(true);
    const auto result = trusting.Get("/downloads/dbase.zip");
    ASSERT_TRUE(result) << httplib::to_string(result.error());
    EXPECT_EQ(result->body.size(), 100000U);

    httplib::SSLClient stranger("127.0.0.1", server.port());
    stranger.set_ca_cert_path(folder_.write("other.pem", certificatePem(makeTestCertificate())).c_str());
    stranger.enable_server_certificate_verification(true);
    EXPECT_FALSE(stranger.Get("/downloads/dbase.zip"));
}

TEST_F(DownloadServerTest, FaultsHoldForThePathsTheyAreSetFor) {
    options_.faults.status = 503;
    options_.faults.onlyPath = "dbase";
    const DownloadServer server(std::move(options_));
    EXPECT_EQ(get(server, "/downloads/dbase.zip")->status, 503);
    EXPECT_EQ(get(server, "/downloads/P3D/archive/stock/LSZH.xml")->status, 200);
}

TEST_F(DownloadServerTest, TruncatedFileAnnouncesMoreThanItSends) {
    options_.faults.truncate = 1000;
    const DownloadServer server(std::move(options_));
    std::size_t received = 0;
    std::string announced;
    httplib::Client client("127.0.0.1", server.port());
    const auto result = client.Get(
        "/downloads/dbase.zip",
        [&](const httplib::Response& response) {
            announced = response.get_header_value("Content-Length");
            return true;
        },
        [&](const char*, std::size_t size) {
            received += size;
            return true;
        });
    EXPECT_FALSE(result);
    EXPECT_EQ(announced, "100000");
    EXPECT_EQ(received, 1000U);
}

TEST_F(DownloadServerTest, StalledFileMakesAClientWithATimeLimitGiveUp) {
    options_.faults.stallSeconds = 600.0;
    const DownloadServer server(std::move(options_));
    httplib::Client client("127.0.0.1", server.port());
    client.set_read_timeout(0, 200000);
    const auto result = client.Get("/downloads/dbase.zip");
    EXPECT_FALSE(result);
    // The server's end must not wait for the stall: the test's time limit is shorter than the stall.
}

TEST_F(DownloadServerTest, RedirectAndEndlessContent) {
    {
        DownloadOptions options;
        options.folder = options_.folder;
        options.faults.redirect = "http://127.0.0.1:1/elsewhere";
        const DownloadServer server(std::move(options));
        const auto result = get(server, "/downloads/dbase.zip");
        EXPECT_EQ(result->status, 302);
        EXPECT_EQ(result->get_header_value("Location"), "http://127.0.0.1:1/elsewhere");
    }
    options_.faults.endless = true;
    const DownloadServer server(std::move(options_));
    httplib::Client client("127.0.0.1", server.port());
    std::size_t received = 0;
    const auto result = client.Get("/downloads/dbase.zip", [&](const char*, std::size_t size) {
        received += size;
        return received < 5000000;
    });
    EXPECT_FALSE(result);
    EXPECT_GE(received, 5000000U);
}

TEST_F(DownloadServerTest, AFolderThatIsNotThereIsAnError) {
    options_.folder = folder_.path() / "none";
    EXPECT_THROW(DownloadServer{std::move(options_)}, std::runtime_error);
}

} // namespace
} // namespace kst::standin

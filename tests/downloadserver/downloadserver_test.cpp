// The download server stand-in as a client sees it. What the program makes of its faults and certificates is
// shown in tests/install.

#include "standins/downloadserver/downloadserver.h"
#include "support/tempfolder.h"

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
    httplib::Client client("127.0.0.1", server.port());
    std::string announced;
    std::size_t received = 0;
    const auto head = [&](const httplib::Response& response) {
        announced = response.get_header_value("Content-Length");
        return true;
    };
    const auto part = [&](const char*, std::size_t size) {
        received += size;
        return true;
    };
    EXPECT_FALSE(client.Get("/downloads/dbase.zip", head, part));
    EXPECT_EQ(announced, "100000");
    EXPECT_EQ(received, 1000U);
}

TEST_F(DownloadServerTest, AFolderThatIsNotThereIsAnError) {
    options_.folder = folder_.path() / "none";
    EXPECT_THROW(DownloadServer{std::move(options_)}, std::runtime_error);
}

} // namespace
} // namespace kst::standin

#include "core/runstate.h"
#include "install/download.h"
#include "install/ziparchive.h"
#include "platform/paths.h"
#include "support/environment.h"
#include "support/progresswatch.h"
#include "support/tempfolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include <fmt/format.h>
#include <httplib.h>
#include <zip.h>

namespace kst {
namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// An archive with these entries; an entry whose name ends in '/' is a folder.
void makeZip(const fs::path& path, const std::vector<std::pair<std::string, std::string>>& entries) {
    int error = 0;
    zip_t* archive = zip_open(platform::utf8FromPath(path).c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    ASSERT_NE(archive, nullptr);
    for (const auto& [name, content] : entries) {
        if (name.back() == '/') {
            zip_dir_add(archive, name.c_str(), 0);
        } else {
            zip_file_add(archive, name.c_str(), zip_source_buffer(archive, content.data(), content.size(), 0),
                         0);
        }
    }
    ASSERT_EQ(zip_close(archive), 0);
}

/// A real HTTP server on a free port, whose root the program is pointed to.
class Download : public testing::Test {
protected:
    Download() {
        serve("plain.txt", "text");
        server_.Get("/downloads/slow.txt", [this](const httplib::Request&, httplib::Response& reply) {
            reply.set_chunked_content_provider("text/plain", [this](std::size_t, httplib::DataSink& sink) {
                exitRequested = true;
                sink.write("x", 1);
                return server_.is_running();
            });
        });
        const int port = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        while (!server_.is_running()) {
            std::this_thread::yield();
        }
        test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", fmt::format("http://127.0.0.1:{}/downloads/", port));
    }
    ~Download() override {
        server_.stop();
        thread_.join();
        // Only now: what the server still sends asks for the exit again.
        exitRequested = false;
        test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", std::nullopt);
    }

    void serve(const std::string& name, const std::string& content) {
        server_.Get("/downloads/" + name, [content](const httplib::Request&, httplib::Response& reply) {
            reply.set_content(content, "text/plain");
        });
    }

    test::TempFolder folder_;
    httplib::Server server_;
    std::thread thread_;
};

TEST_F(Download, AFileArrivesWholeOrLeavesTheOldOne) {
    const DownloadHandle handle;
    folder_.write("got.txt", "old");
    for (const std::string& address : {downloadRoot() + "missing.txt", std::string("http://127.0.0.1:1/x"),
                                       std::string("gopher://127.0.0.1/x")}) {
        EXPECT_FALSE(gf_fetchFile(handle, address, "got.txt", true)) << address;
        EXPECT_EQ(contentOf("got.txt"), "old") << address;
        EXPECT_FALSE(fs::exists("got.txt.part")) << address;
    }
    EXPECT_FALSE(gf_fetchFile(handle, downloadRoot() + "plain.txt", "no/such/folder/got.txt", true));
    EXPECT_TRUE(gf_fetchFile(handle, downloadRoot() + "plain.txt", "got.txt", false));
    EXPECT_EQ(contentOf("got.txt"), "text");
}

TEST_F(Download, ExitEndsATransferThatNeverEnds) {
    const DownloadHandle handle;
    EXPECT_FALSE(gf_fetchFile(handle, downloadRoot() + "slow.txt", "got.txt", true));
    EXPECT_FALSE(fs::exists("got.txt"));
}

TEST_F(Download, ProgressCountsTheBytes) {
    constexpr std::size_t chunk = 100'000;
    constexpr std::size_t size = 4 * chunk;
    const auto bar = [] { return std::pair(statusValues().progress.from, statusValues().progress.to); };
    auto shown = bar();
    // The next chunk leaves when the one before it has been shown.
    const auto send = [&](std::size_t sent, std::size_t, httplib::DataSink& sink) {
        while (sent > 0 && bar() == shown && server_.is_running()) {
            std::this_thread::yield();
        }
        shown = bar();
        sink.write(std::string(chunk, 'x').data(), chunk);
        return true;
    };
    server_.Get("/downloads/large.bin", [&](const httplib::Request&, httplib::Response& reply) {
        reply.set_content_provider(size, "application/octet-stream", send);
    });
    server_.Get("/downloads/chunks.bin", [&](const httplib::Request&, httplib::Response& reply) {
        reply.set_chunked_content_provider("application/octet-stream",
                                           [&](std::size_t sent, httplib::DataSink& sink) {
                                               if (sent < size) {
                                                   return send(sent, 0, sink);
                                               }
                                               sink.done();
                                               return true;
                                           });
    });
    const DownloadHandle handle;
    const test::ProgressWatch watch;
    EXPECT_TRUE(gf_fetchFile(handle, downloadRoot() + "large.bin", "got.bin", true));
    const std::string last = watch.expectGrowth("Downloading large.bin ... 0.");
    EXPECT_TRUE(last.ends_with(" of 0.4 MB")) << last;

    const std::size_t before = watch.bars.size();
    EXPECT_TRUE(gf_fetchFile(handle, downloadRoot() + "chunks.bin", "got.bin", true));
    ASSERT_GT(watch.bars.size(), before + 1);
    EXPECT_NE(watch.bars[before].from, watch.bars[before + 1].from) << "without a size the bar moves";
    EXPECT_EQ(watch.texts.back().find(" of "), std::string::npos) << watch.texts.back();
}

TEST_F(Download, ArchiveGivesItsFileAndIsGoneAfterwards) {
    makeZip("dbase.zip", {{"folder/", ""}, {"folder/dbase.xml", "<content/>"}});
    serve("dbase.zip", contentOf("dbase.zip"));
    fs::remove("dbase.zip");
    EXPECT_TRUE(lf_fetchDatabase("out.xml"));
    EXPECT_EQ(contentOf("out.xml"), "<content/>");
    EXPECT_FALSE(fs::exists("dbase.zip"));
}

TEST(Archive, ContentBeyondTheLimitIsRefused) {
    const test::TempFolder folder;
    makeZip("bomb.zip", {{"zeros", std::string(1'000'000, '\0')}});
    ZipArchive archive("bomb.zip");
    ASSERT_TRUE(archive.open());
    const auto entries = archive.getEntries();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_FALSE(entries[0].readAsText(999'999).has_value());
    EXPECT_EQ(entries[0].readAsText(1'000'000)->size(), 1'000'000U);
}

} // namespace
} // namespace kst

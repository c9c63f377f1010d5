// A pipe here is a socket in the file system.

#include "platform/pipe.h"
#include "support/tempfolder.h"

#include <vector>

#include <asio/local/stream_protocol.hpp>
#include <gtest/gtest.h>

namespace kst {
namespace {

TEST(PipeSocketTest, NamesThatCannotBeServedOrReachedAreRefused) {
    const test::TempFolder folder;
    asio::io_context context;
    const platform::PipeListener first(context, "\\\\.\\pipe\\A\\B");
    EXPECT_THROW(platform::PipeListener(context, "\\\\.\\pipe\\A\\B"), std::system_error) << "taken";
    for (const char* name : {"\\\\OTHERPC\\pipe\\A\\B", "\\\\.\\pipe\\..\\B", "\\\\.\\pipe\\", "A\\B",
                             "\\\\.\\pipe\\A\\..\\B", "\\\\.\\pipe\\A/../B", ""}) {
        platform::PipeStream stream(context);
        EXPECT_TRUE(platform::connectPipe(stream, name, [] { return false; })) << name;
        EXPECT_THROW(platform::PipeListener(context, name), std::system_error) << name;
    }
    platform::PipeStream stream(context);
    EXPECT_TRUE(platform::connectPipe(stream, "\\\\.\\pipe\\A\\Nobody", [] { return false; }));
}

TEST(PipeSocketTest, APipeThatADeadServerLeftBehindIsServedAnew) {
    const test::TempFolder folder;
    asio::io_context context;
    const std::filesystem::path left = folder.runtime() / "pipe" / "A" / "B";
    std::filesystem::create_directories(left.parent_path());
    {
        asio::local::stream_protocol::acceptor dead(context);
        dead.open();
        dead.bind(asio::local::stream_protocol::endpoint(left.native()));
    }
    ASSERT_TRUE(std::filesystem::exists(left));
    const platform::PipeListener listener(context, "\\\\.\\pipe\\A\\B");
    platform::PipeStream stream(context);
    EXPECT_FALSE(platform::connectPipe(stream, "\\\\.\\pipe\\A\\B", [] { return false; }));
}

TEST(PipeSocketTest, ABusyPipeIsWaitedForUntilTheStop) {
    const test::TempFolder folder;
    asio::io_context context;
    const std::filesystem::path path = folder.runtime() / "pipe" / "A" / "B";
    std::filesystem::create_directories(path.parent_path());
    asio::local::stream_protocol::acceptor busy(context);
    busy.open();
    busy.bind(asio::local::stream_protocol::endpoint(path.native()));
    busy.listen(0);
    int asked = 0;
    const auto stopAtThird = [&] { return ++asked > 3; };
    std::vector<platform::PipeStream> waiting;
    asio::error_code error;
    while (!error) {
        asked = 0;
        error = platform::connectPipe(waiting.emplace_back(context), "\\\\.\\pipe\\A\\B", stopAtThird);
    }
    EXPECT_EQ(error, asio::error::operation_aborted);
    EXPECT_EQ(asked, 4) << "tried until it was told to stop";
    EXPECT_LT(waiting.size(), 10U);
}

} // namespace
} // namespace kst

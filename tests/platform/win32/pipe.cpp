// Pipes that are missing, busy, of another kind, broken, or keep messages apart.

#include "platform/pipe.h"
#include "support/tempfolder.h"

#include <array>
#include <string>

#include <asio/buffer.hpp>
#include <gtest/gtest.h>

#include <windows.h>

namespace kst {
namespace {

using platform::connectPipe;
using platform::PipeStream;

bool goOn() {
    return false;
}

/// A pipe that another program serves, with one instance.
class ForeignPipe {
public:
    explicit ForeignPipe(DWORD mode)
        : name(R"(\\.\pipe\Kestrane_P3D test)" + std::to_string(GetCurrentProcessId())), mode_(mode) {
        open();
    }
    ~ForeignPipe() { CloseHandle(server); }
    /// Ends the connection of the one caller; the next one is welcome.
    void takeNext() {
        CloseHandle(server);
        open();
    }
    ForeignPipe(const ForeignPipe&) = delete;
    ForeignPipe& operator=(const ForeignPipe&) = delete;

    std::string name;
    HANDLE server = nullptr;

private:
    void open() {
        server = CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX, mode_, 1, 4096, 4096, 0, nullptr);
        ASSERT_NE(server, INVALID_HANDLE_VALUE);
    }

    DWORD mode_;
};

TEST(WindowsPipe, WhatIsNoPipeIsRefusedWithTheSystemsError) {
    const test::TempFolder folder;
    folder.write("file.txt", "");
    asio::io_context context;
    PipeStream stream(context);
    EXPECT_EQ(connectPipe(stream, R"(\\.\pipe\Kestrane_P3D nobody)", goOn).value(), ERROR_FILE_NOT_FOUND);
    EXPECT_TRUE(connectPipe(stream, (folder.path() / "missing" / "x").string(), goOn));
    EXPECT_TRUE(connectPipe(stream, "", goOn));
    EXPECT_TRUE(connectPipe(stream, std::string(40'000, 'x'), goOn));
}

TEST(WindowsPipe, ABusyOneIsWaitedForUntilTheStopOrItsTurn) {
    ForeignPipe pipe(PIPE_TYPE_BYTE);
    asio::io_context context;
    PipeStream first(context);
    ASSERT_FALSE(connectPipe(first, pipe.name, goOn));
    PipeStream second(context);
    int asked = 0;
    EXPECT_EQ(connectPipe(second, pipe.name, [&] { return ++asked > 3; }), asio::error::operation_aborted);
    EXPECT_EQ(asked, 4);
    asked = 0;
    EXPECT_FALSE(connectPipe(second, pipe.name, [&] {
        if (++asked == 3) {
            pipe.takeNext();
        }
        return asked > 200;
    })) << "the server took the next caller";
}

TEST(WindowsPipe, ALongMessageComesInPartsAndABrokenPipeIsAnError) {
    const ForeignPipe pipe(PIPE_TYPE_MESSAGE);
    asio::io_context context;
    PipeStream stream(context);
    ASSERT_FALSE(connectPipe(stream, pipe.name, goOn));
    DWORD mode = PIPE_READMODE_MESSAGE;
    ASSERT_TRUE(SetNamedPipeHandleState(stream.native_handle(), &mode, nullptr, nullptr));
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(pipe.server, "0123456789", 10, &written, nullptr));

    std::string text;
    std::array<char, 4> part{};
    asio::error_code error;
    const auto read = [&] {
        stream.async_read_some(asio::buffer(part), [&](asio::error_code e, std::size_t length) {
            error = e;
            text.append(part.data(), length);
        });
        context.restart();
        context.run();
    };
    read();
    EXPECT_TRUE(platform::isPartOfPipeMessage(error)) << error.message();
    read();
    EXPECT_TRUE(platform::isPartOfPipeMessage(error)) << error.message();
    read();
    EXPECT_FALSE(error) << error.message();
    EXPECT_EQ(text, "0123456789");
    DisconnectNamedPipe(pipe.server);
    read();
    EXPECT_TRUE(error);
    EXPECT_FALSE(platform::isPartOfPipeMessage(error));
}

} // namespace
} // namespace kst

#include "core/socketerrors.h"

#include <gtest/gtest.h>

#include <asio.hpp>

namespace kst {
namespace {

TEST(SocketErrorTest, NumbersAndWords) {
    const std::pair<int, const char*> cases[] = {
        {10058, "10058 Can't send numLines socket shutdown"},
        {10004, "10004 Interrupted system call"}, // the first
        {10061, "10061 Connection refused"},
        {11004, "11004 No host data of that type was found"}, // the last
        {1, "1 Unknown errror code"},
        {10005, "10005 Unknown errror code"},
        {11005, "11005 Unknown errror code"},
    };
    for (const auto& [number, text] : cases) {
        EXPECT_EQ(socketErrorText(number), text);
    }
}

/// Real errors of the system's sockets have the same words everywhere.
TEST(SocketErrorTest, ErrorsOfTheSystemHaveTheirWords) {
    asio::io_context context;
    asio::error_code error;

    asio::ip::tcp::acceptor listener(context, {asio::ip::address_v4::loopback(), 0});
    asio::ip::tcp::acceptor second(context, asio::ip::tcp::v4());
    second.bind(listener.local_endpoint(), error);
    EXPECT_EQ(socketErrorText(error), "10048 Address already in use");

    const asio::ip::tcp::endpoint closed = listener.local_endpoint();
    listener.close();
    asio::ip::tcp::socket socket(context);
    socket.connect(closed, error);
    EXPECT_EQ(socketErrorText(error), "10061 Connection refused");

    asio::ip::udp::socket datagrams(context, asio::ip::udp::v4());
    datagrams.send_to(asio::buffer(std::string(70000, 'x')), {asio::ip::address_v4::loopback(), 9}, 0, error);
    EXPECT_EQ(socketErrorText(error), "10040 Messenger too long");

    EXPECT_EQ(socketErrorText(asio::error_code(asio::error::host_not_found)), "11001 Host not found");
    EXPECT_EQ(socketErrorText(asio::error_code(asio::error::connection_reset)),
              "10054 Connection reset by peer");
    EXPECT_EQ(socketErrorText(asio::error_code(asio::error::timed_out)), "10060 Connection timed out");
}

} // namespace
} // namespace kst

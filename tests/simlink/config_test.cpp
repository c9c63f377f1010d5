// SimConnect.cfg: what each key does, which file wins, and files that are not what they should be.

#include "simlink/simconnect.h"
#include "simlink/simconnectconfig.h"
#include "support/tempfolder.h"

#include <gtest/gtest.h>

namespace kst {
namespace {

std::string portOf(SimProtocol protocol) {
    return protocol == SimProtocol::IPv6 ? "66" : "44";
}

TEST(SimConnectCfg, EachKeyDoesWhatTheTableSays) {
    struct Case {
        std::string_view name;
        std::string_view text;
        std::uint32_t index = 0;
        SimConnectConfig expected{};
        std::string_view portBefore = "";
    };
    using enum SimProtocol;
    const Case cases[] = {
        {"nothing", ""},
        {"all keys",
         "[SimConnect]\nProtocol=IPv4\nAddress=sim.lan\nPort=500\nMaxReceiveSize=99999\nDisableNagle=1\n",
         0,
         {IPv4, "sim.lan", "500", 99999, true}},
        {"auto", "[SimConnect]\nProtocol=Auto\n", 0, {Pipe}},
        {"pipe", "[SimConnect]\nProtocol=Pipe\nPort=My Sim\\Pipe\n", 0, {Pipe, "", "My Sim\\Pipe"}},
        {"v6", "[SimConnect]\nProtocol=IPv6\n", 0, {IPv6}},
        {"a protocol outside the four", "[SimConnect]\nProtocol=UDP\nAddress=a\n", 0, {Pipe, "a"}},
        {"an earlier port is replaced by the registry's",
         "[SimConnect]\nProtocol=IPv4\n",
         0,
         {IPv4, "", "44"},
         "7"},
        {"the same for v6", "[SimConnect]\nProtocol=IPv6\n", 0, {IPv6, "", "66"}, "7"},
        {"but not by this file's own", "[SimConnect]\nPort=8\nProtocol=IPv6\n", 0, {IPv6, "", "8"}, "7"},
        {"a pipe keeps an earlier port", "[SimConnect]\nProtocol=Pipe\n", 0, {Pipe, "", "7"}, "7"},
        {"a smaller limit has no effect", "[SimConnect]\nMaxReceiveSize=1000\n"},
        {"a limit that is no number", "[SimConnect]\nMaxReceiveSize=lots\n"},
        {"a limit beyond numbers", "[SimConnect]\nMaxReceiveSize=99999999999999999999\n"},
        {"a negative limit", "[SimConnect]\nMaxReceiveSize=-1\n"},
        {"nagle off is 0", "[SimConnect]\nDisableNagle=0\n"},
        {"case and blanks",
         " [ SIMCONNECT ] \r\n  protocol = ipv4 \r\n ADDRESS =\t10.0.0.1\r\n",
         0,
         {IPv4, "10.0.0.1"}},
        {"quotes", "[SimConnect]\nAddress=\"a b\"\nPort='5'\n", 0, {Pipe, "a b", "5"}},
        {"comments", "[SimConnect]\n;Address=x\nAddress=y\n", 0, {Pipe, "y"}},
        {"the first key counts", "[SimConnect]\nAddress=a\nAddress=b\n", 0, {Pipe, "a"}},
        {"the first section counts",
         "[SimConnect]\nPort=1\n[Other]\nPort=2\n[SimConnect]\nPort=3\n",
         0,
         {Pipe, "", "1"}},
        {"another index", "[SimConnect]\nAddress=a\n[SimConnect.2]\nAddress=b\n", 2, {Pipe, "b"}},
        {"index 0 does not read a numbered section", "[SimConnect.0]\nAddress=a\n"},
        {"no line end", "[SimConnect]\nAddress=z", 0, {Pipe, "z"}},
        {"lines of no form",
         "[SimConnect\n]\n=\n==\n[]\nAddress\n[SimConnect]\n=5\nAddress=k\n",
         0,
         {Pipe, "k"}},
    };
    for (const Case& c : cases) {
        SimConnectConfig config;
        config.port = c.portBefore;
        applySimConnectText(c.text, c.index, portOf, config);
        EXPECT_EQ(config.protocol, c.expected.protocol) << c.name;
        EXPECT_EQ(config.address, c.expected.address) << c.name;
        EXPECT_EQ(config.port, c.expected.port) << c.name;
        EXPECT_EQ(config.maxReceiveSize, c.expected.maxReceiveSize) << c.name;
        EXPECT_EQ(config.disableNagle, c.expected.disableNagle) << c.name;
    }
}

TEST(SimConnectCfg, LaterFilesOverrideEarlierOnes) {
    const test::TempFolder folder;
    folder.write("user/public/SimConnect.cfg",
                 "[SimConnect]\nProtocol=IPv4\nAddress=public\nPort=1\nDisableNagle=1\n");
    folder.write("user/documents/simconnect.CFG", "[SimConnect]\nAddress=documents\nPort=2\n");
    folder.write("SimConnect.cfg", "[SimConnect]\nPort=3\n");
    SimConnectConfig config;
    ASSERT_TRUE(readSimConnectConfig(0, config));
    EXPECT_EQ(config.protocol, SimProtocol::IPv4);
    EXPECT_EQ(config.address, "documents");
    EXPECT_EQ(config.port, "3");
    EXPECT_TRUE(config.disableNagle);

    SimConnectConfig untouched;
    ASSERT_TRUE(readSimConnectConfig(noConfigIndex, untouched));
    EXPECT_EQ(untouched.address, "") << "the index without files reads none";
}

TEST(SimConnectCfg, AFileInUtf16OrWithAMarkIsRead) {
    const test::TempFolder folder;
    std::string wide = "\xFF\xFE";
    for (const char c : std::string_view("[SimConnect]\r\nAddress=wide\r\n")) {
        wide += c;
        wide += '\0';
    }
    struct Case {
        std::string content;
        std::string_view address;
    };
    const Case cases[] = {
        {wide, "wide"},
        {"\xEF\xBB\xBF[SimConnect]\nAddress=marked\n", "marked"},
        {"\xFF\xFE\x00\xD8\x00\xD8", ""}, // half a character pair
        {std::string(3 << 20, 'x'), ""},
    };
    for (const Case& c : cases) {
        folder.write("SimConnect.cfg", c.content);
        SimConnectConfig config;
        EXPECT_TRUE(readSimConnectConfig(0, config));
        EXPECT_EQ(config.address, c.address);
    }
}

TEST(SimConnectCfg, AnIndexNeedsItsSection) {
    const test::TempFolder folder;
    folder.write("SimConnect.cfg", "[SimConnect.3]\n[SimConnect.4]\n;only words\n[SimConnect.5]\nPort=1\n");
    SimConnectConfig config;
    EXPECT_TRUE(readSimConnectConfig(0, config)) << "index 0 needs none";
    EXPECT_FALSE(readSimConnectConfig(2, config));
    EXPECT_FALSE(readSimConnectConfig(3, config)) << "an empty section is none";
    EXPECT_FALSE(readSimConnectConfig(4, config));
    EXPECT_TRUE(readSimConnectConfig(5, config));
    SimHandle handle = noSimHandle;
    EXPECT_EQ(SimConnect_Open(handle, "Kestrane_P3D", nullptr, 0, nullptr, 2), simBadArgument);
}

} // namespace
} // namespace kst

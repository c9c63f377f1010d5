// SimConnect.cfg: what each key does, which file wins, and files that are not what they should be.

#include "simlink/simconnect.h"
#include "simlink/simconnectconfig.h"
#include "support/tempfolder.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

std::string portOf(SimProtocol protocol) {
    return protocol == SimProtocol::IPv6 ? "66" : "44";
}

std::string described(const SimConnectConfig& config) {
    return fmt::format("{} a:{} p:{} {} {}", static_cast<std::uint32_t>(config.protocol), config.address,
                       config.port, config.maxReceiveSize, config.disableNagle ? "no Nagle" : "Nagle");
}

/// What the files say; "no" when they have no section for the index.
std::string filesSay(std::uint32_t index = 0) {
    SimConnectConfig config;
    return readSimConnectConfig(index, config) ? described(config) : "no";
}

constexpr std::string_view defaults = "1 a: p: 41088 Nagle";

TEST(SimConnectCfg, EachKeyDoesWhatTheTableSays) {
    struct Case {
        std::string_view name;
        std::string_view text; ///< of the section
        std::string_view expected = defaults;
        std::string_view portBefore = "";
        std::uint32_t index = 0;
    };
    const Case cases[] = {
        {"nothing", ""},
        {"all keys", "Protocol=IPv4\nAddress=sim.lan\nPort=500\nMaxReceiveSize=99999\nDisableNagle=1\n",
         "2 a:sim.lan p:500 99999 no Nagle"},
        {"auto", "Protocol=Auto\n"},
        {"pipe", "Protocol=Pipe\nPort=My Sim\\Pipe\n", "1 a: p:My Sim\\Pipe 41088 Nagle"},
        {"v6", "Protocol=IPv6\n", "23 a: p: 41088 Nagle"},
        {"a protocol outside the four", "Protocol=UDP\nAddress=a\n", "1 a:a p: 41088 Nagle"},
        {"an earlier port is replaced by the registry's", "Protocol=IPv4\n", "2 a: p:44 41088 Nagle", "7"},
        {"the same for v6", "Protocol=IPv6\n", "23 a: p:66 41088 Nagle", "7"},
        {"but not by this file's own", "Port=8\nProtocol=IPv6\n", "23 a: p:8 41088 Nagle", "7"},
        {"a pipe keeps an earlier port", "Protocol=Pipe\n", "1 a: p:7 41088 Nagle", "7"},
        {"a smaller limit has no effect", "MaxReceiveSize=1000\n"},
        {"a limit that is no number", "MaxReceiveSize=lots\n"},
        {"a limit beyond numbers", "MaxReceiveSize=99999999999999999999\n"},
        {"a negative limit", "MaxReceiveSize=-1\n"},
        {"nagle off is 0", "DisableNagle=0\n"},
        {"case and blanks", " [ SIMCONNECT ] \r\n  protocol = ipv4 \r\n ADDRESS =\t10.0.0.1\r\n",
         "2 a:10.0.0.1 p: 41088 Nagle"},
        {"quotes", "Address=\"a b\"\nPort='5'\n", "1 a:a b p:5 41088 Nagle"},
        {"comments", ";Address=x\nAddress=y\n", "1 a:y p: 41088 Nagle"},
        {"the first key counts", "Address=a\nAddress=b\n", "1 a:a p: 41088 Nagle"},
        {"the first section counts", "Port=1\n[Other]\nPort=2\n[SimConnect]\nPort=3\n",
         "1 a: p:1 41088 Nagle"},
        {"another index", "Address=a\n[SimConnect.2]\nAddress=b\n", "1 a:b p: 41088 Nagle", "", 2},
        {"index 0 does not read a numbered section", " [SimConnect.0]\nAddress=a\n"},
        {"no line end", "Address=z", "1 a:z p: 41088 Nagle"},
        {"lines of no form", " [SimConnect\n]\n=\n==\n[]\nAddress\n[SimConnect]\n=5\nAddress=k\n",
         "1 a:k p: 41088 Nagle"},
    };
    for (const Case& c : cases) {
        SimConnectConfig config;
        config.port = c.portBefore;
        const std::string_view head = c.text.starts_with(" [") ? "" : "[SimConnect]\n";
        applySimConnectText(fmt::format("{}{}", head, c.text), c.index, portOf, config);
        EXPECT_EQ(described(config), c.expected) << c.name;
    }
}

TEST(SimConnectCfg, LaterFilesOverrideEarlierOnes) {
    const test::TempFolder folder;
    folder.write("user/public/SimConnect.cfg",
                 "[SimConnect]\nProtocol=IPv4\nAddress=public\nPort=1\nDisableNagle=1\n");
    folder.write("user/documents/simconnect.CFG", "[SimConnect]\nAddress=documents\nPort=2\n");
    folder.write("SimConnect.cfg", "[SimConnect]\nPort=3\n");
    EXPECT_EQ(filesSay(), "2 a:documents p:3 41088 no Nagle");
    EXPECT_EQ(filesSay(noConfigIndex), defaults) << "the index without files reads none";
}

TEST(SimConnectCfg, AFileInUtf16OrWithAMarkIsRead) {
    const test::TempFolder folder;
    std::string wide = "\xFF\xFE";
    for (const char c : std::string_view("[SimConnect]\r\nAddress=wide\r\n")) {
        wide += {c, '\0'};
    }
    const std::pair<std::string, std::string_view> cases[] = {
        {wide, "1 a:wide p: 41088 Nagle"},
        {"\xEF\xBB\xBF[SimConnect]\nAddress=marked\n", "1 a:marked p: 41088 Nagle"},
        {"\xFF\xFE\x00\xD8\x00\xD8", defaults}, // half a character pair
        {std::string(3 << 20, 'x'), defaults},
    };
    for (const auto& [content, expected] : cases) {
        folder.write("SimConnect.cfg", content);
        EXPECT_EQ(filesSay(), expected);
    }
}

TEST(SimConnectCfg, AnIndexNeedsItsSection) {
    const test::TempFolder folder;
    folder.write("SimConnect.cfg", "[SimConnect.3]\n[SimConnect.4]\n;only words\n[SimConnect.5]\nPort=1\n");
    const std::pair<std::uint32_t, std::string_view> cases[] = {
        {0, defaults}, {2, "no"}, {3, "no"}, {4, "no"}, {5, "1 a: p:1 41088 Nagle"}};
    for (const auto& [index, expected] : cases) {
        EXPECT_EQ(filesSay(index), expected) << index;
    }
    SimHandle handle = noSimHandle;
    EXPECT_EQ(SimConnect_Open(handle, "Kestrane_P3D", nullptr, 0, nullptr, 2), simBadArgument);
}

} // namespace
} // namespace kst

// The stand-in simulator as a user watches it: the real program, a client over TCP, a real browser.

#include "model/simconnect.h"
#include "standins/simulator/wire.h"
#include "support/tempfolder.h"
#include "tests/browser/linux/browser.h"

#include "support/places.h"

#include <gtest/gtest.h>

#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <csignal>
#include <map>
#include <memory>
#include <regex>
#include <string_view>

namespace {

using namespace kst::simconnect;
using kst::standin::Bytes;
using kst::standin::ByteView;
using kst::standin::PacketReader;
using kst::standin::PacketWriter;
using kst::test::Browser;
using kst::test::ChildProcess;
using nlohmann::json;

/// A traffic program that puts two aircraft into the simulator: one parked and frozen, one that the
/// simulator flies on by itself.
class TrafficProgram {
public:
    explicit TrafficProgram(std::uint16_t port) : socket_(context_) {
        socket_.connect({asio::ip::address_v4::loopback(), port});
        PacketWriter open;
        open.text("Browser test", 256).u32(0).u32(0x50334400).u32(5).u32(3).u32(0).u32(0);
        send(OpOpen, open);
        PacketWriter speed;
        speed.u32(1).text("Airspeed True", 256).text("knots", 256).u32(TypeFloat64).f32(0).u32(unused);
        send(OpAddToDataDefinition, speed);
        mapEvent(LandingLightsSet, "LANDING_LIGHTS_SET");
        mapEvent(FreezeLatitudeLongitudeSet, "FREEZE_LATITUDE_LONGITUDE_SET");
    }

    std::uint32_t create(std::string_view title, std::string_view tailNumber, double lat, double lon,
                         double altFt, bool onGround) {
        PacketWriter body;
        body.text(title, 256).text(tailNumber, 12).f64(lat).f64(lon).f64(altFt).f64(0).f64(0).f64(45);
        body.u32(onGround ? 1 : 0).u32(0).u32(RequestCreate);
        send(OpAICreateNonATCAircraft, body);
        while (true) {
            const Bytes message = receive();
            PacketReader reader(message);
            reader.skip(8);
            if (reader.u32() != RecvAssignedObjectId)
                continue;
            reader.skip(4);
            return reader.u32();
        }
    }
    void setSpeed(std::uint32_t object, double knots) {
        PacketWriter body;
        body.u32(1).u32(object).u32(0).u32(1).u32(8).f64(knots);
        send(OpSetDataOnSimObject, body);
    }
    void transmit(std::uint32_t object, std::uint32_t event, std::uint32_t value) {
        PacketWriter body;
        body.u32(object).u32(event).u32(value).u32(notificationGroup).u32(0);
        send(OpTransmitClientEvent, body);
    }
    /// Reads on until a message of that kind comes.
    void await(std::uint32_t id) {
        while (true) {
            const Bytes message = receive();
            PacketReader reader(message);
            reader.skip(8);
            if (reader.u32() == id)
                return;
        }
    }
    /// Whether the simulator has closed the connection; reads all that comes before.
    bool closed() {
        std::array<std::uint8_t, 4096> rest{};
        asio::error_code error;
        while (!error)
            socket_.read_some(asio::buffer(rest), error);
        return error == asio::error::eof || error == asio::error::connection_reset;
    }

private:
    void mapEvent(std::uint32_t id, std::string_view name) {
        PacketWriter map;
        map.u32(id).text(name, 256);
        send(OpMapClientEventToSimEvent, map);
        PacketWriter group;
        group.u32(notificationGroup).u32(id).u32(1);
        send(OpAddClientEventToNotificationGroup, group);
    }
    void send(std::uint32_t operation, PacketWriter& body) {
        PacketWriter packet;
        packet.u32(static_cast<std::uint32_t>(16 + body.data().size()))
            .u32(protocolVersion)
            .u32(operationMark + operation)
            .u32(++sendId_)
            .bytes(body.data());
        asio::write(socket_, asio::buffer(packet.data()));
    }
    Bytes receive() {
        Bytes message(4);
        asio::read(socket_, asio::buffer(message));
        message.resize(PacketReader(message).u32());
        asio::read(socket_, asio::buffer(message.data() + 4, message.size() - 4));
        return message;
    }

    asio::io_context context_;
    asio::ip::tcp::socket socket_;
    std::uint32_t sendId_ = 0;
};

class Radar : public ::testing::Test {
protected:
    void SetUp() override {
        output = folder.path() / "simulator.txt";
        const std::vector<std::string> words{
            (kst::test::buildFolder() / "standins/simulator-standin").string(),
            "--tcp",
            "0",
            "--user",
            "47.458,8.548,0",
            "--on-ground",
            "--airport",
            "47.458,8.548,1416",
            "--time",
            "1709287200",
            "--history",
            (folder.path() / "history.csv").string(),
            "--history-interval",
            "0.2"};
        simulator = std::make_unique<ChildProcess>(words, std::map<std::string, std::string>{}, folder.path(),
                                                   output);
        clientPort = number("tcp ([0-9]+)", "tcp ");
        pagePort = number("127.0.0.1:([0-9]+)", "radar ");
        ASSERT_NE(clientPort, 0);
        ASSERT_NE(pagePort, 0);
    }

    int number(const char* pattern, const char* lineMark) {
        const std::string line = kst::test::printedLine(output, lineMark);
        std::smatch match;
        return std::regex_search(line, match, std::regex(pattern)) ? std::stoi(match[1].str()) : 0;
    }

    json ask(const std::string& path) {
        httplib::Client http("127.0.0.1", pagePort);
        const auto answer = http.Get(path);
        return answer ? json::parse(answer->body) : json();
    }
    int control(const std::string& body, const char* type = "application/json") {
        httplib::Client http("127.0.0.1", pagePort);
        const auto answer = http.Post("/control", body, type);
        return answer ? answer->status : 0;
    }
    static json objectOf(const json& state, const std::string& tail) {
        for (const json& object : state.at("objects"))
            if (object.at("tail") == tail)
                return object;
        return {};
    }

    kst::test::TempFolder folder;
    std::filesystem::path output;
    std::unique_ptr<ChildProcess> simulator;
    int clientPort = 0;
    int pagePort = 0;
};

TEST_F(Radar, ShowsTheTrafficMoveInARealBrowser) {
    TrafficProgram program(static_cast<std::uint16_t>(clientPort));
    const std::uint32_t flying = program.create("Test A320", "FLYING1", 47.47, 8.52, 30000.0, false);
    const std::uint32_t parked = program.create("Test <b>737</b>", "PARKED1*", 47.4585, 8.549, 0.0, true);
    program.transmit(parked, FreezeLatitudeLongitudeSet, 1);
    program.transmit(flying, LandingLightsSet, 1);
    program.setSpeed(flying, 450.0);

    Browser browser(folder.path());
    browser.open("http://127.0.0.1:" + std::to_string(pagePort) + "/");
    ASSERT_TRUE(browser.waitFor("document.querySelectorAll('#rows tr').length === 2"));
    EXPECT_EQ(browser.text("#clients"), "Browser test");
    EXPECT_EQ(browser.text("#count-air"), "1");
    EXPECT_EQ(browser.text("#count-static"), "1");
    EXPECT_EQ(browser.text("#lamp"), "running");

    // The map itself changes from picture to picture: no light blinks here, so what changes is movement.
    const char* const rememberMap = "window.mapBefore = document.getElementById('map').toDataURL();";
    browser.run(rememberMap);
    EXPECT_TRUE(browser.waitFor("document.getElementById('map').toDataURL() !== window.mapBefore"));

    // A click on the aircraft shows it, and what it shows goes on changing.
    browser.click("#rows tr[data-id='" + std::to_string(flying) + "']");
    ASSERT_TRUE(browser.waitFor("!document.getElementById('details').hidden"));
    EXPECT_EQ(browser.text("#d-tail"), "FLYING1");
    EXPECT_EQ(browser.text("#d-title"), "Test A320");
    EXPECT_TRUE(browser.waitFor("[...document.querySelectorAll('#d-lights .on')].map(e => e.textContent)"
                                ".includes('landing')"));
    browser.run("window.valuesBefore = document.getElementById('d-values').textContent;");
    EXPECT_TRUE(browser.waitFor("document.getElementById('d-values').textContent !== window.valuesBefore"));
    EXPECT_TRUE(browser.waitFor("document.querySelector('#d-values div:nth-child(3) dd').textContent"
                                " === '450 kt'"))
        << "the speed that it was seen to make: " << browser.text("#d-values");

    // A title is text, whatever it holds.
    browser.click("#rows tr[data-id='" + std::to_string(parked) + "']");
    ASSERT_TRUE(browser.waitFor("document.getElementById('d-tail').textContent === 'PARKED1*'"));
    EXPECT_EQ(browser.text("#d-title"), "Test <b>737</b>");

    // Pausing from the page stops the world.
    browser.click("#controls summary");
    browser.click("button[data-action='pause']");
    ASSERT_TRUE(browser.waitFor("document.getElementById('lamp').textContent === 'paused'"));
    const json first = objectOf(ask("/state.json"), "FLYING1");
    program.transmit(flying, LandingLightsSet, 0);
    ASSERT_TRUE(browser.waitFor("state.objects[0].lights === 0")) << "frames go on";
    const json second = objectOf(ask("/state.json"), "FLYING1");
    EXPECT_EQ(first.at("lat"), second.at("lat"));
    EXPECT_EQ(first.at("alt"), second.at("alt"));
    browser.click("button[data-action='resume']");
    EXPECT_TRUE(browser.waitFor("document.getElementById('lamp').textContent === 'running'"));

    EXPECT_EQ(browser.consoleErrors(), std::vector<std::string>{});

    // Quitting from the page tells the client and ends the program.
    browser.click("button[data-action='quit']");
    program.await(RecvQuit);
    EXPECT_TRUE(program.closed());
    EXPECT_EQ(simulator->wait(std::chrono::seconds(60)), 0);
}

TEST_F(Radar, ControlsReachTheSimulator) {
    TrafficProgram program(static_cast<std::uint16_t>(clientPort));
    program.create("Test A320", "ONE", 47.47, 8.52, 9000.0, false);
    EXPECT_EQ(control(R"({"action": "teleport", "lat": 50.0, "lon": 8.6, "alt": 7000})"), 200);
    const json user = ask("/state.json").at("user");
    EXPECT_EQ(user.at("lat"), 50.0);
    EXPECT_EQ(user.at("alt"), 7000.0);
    EXPECT_FALSE(user.at("ground").get<bool>());

    struct Case {
        const char* body;
        const char* type;
    };
    const Case wrong[] = {{"", "application/json"},
                          {"{", "application/json"},
                          {"[]", "application/json"},
                          {R"({"action": "explode"})", "application/json"},
                          {R"({"action": 7})", "application/json"},
                          {R"({"action": "teleport", "lat": 95, "lon": 0})", "application/json"},
                          {R"({"action": "teleport", "lat": "x"})", "application/json"},
                          {R"({"action": "pause"})", "text/plain"}};
    for (const Case& each : wrong)
        EXPECT_EQ(control(each.body, each.type), 400) << each.body;
    EXPECT_FALSE(ask("/state.json").at("paused").get<bool>());
    EXPECT_EQ(ask("/history.json?id=nonsense"), json::array());

    EXPECT_EQ(control(R"({"action": "drop"})"), 200);
    EXPECT_TRUE(program.closed());
    EXPECT_TRUE(ask("/state.json").at("objects").empty()) << "its objects went with the client";
}

TEST_F(Radar, EndsCleanlyOnTheTerminationSignalAndLeavesTheHistory) {
    TrafficProgram program(static_cast<std::uint16_t>(clientPort));
    const std::uint32_t id = program.create("A \"quoted\", title", "HISTORY", 47.47, 8.52, 9000.0, false);
    while (ask("/history.json?id=" + std::to_string(id)).size() < 5) {
    }
    simulator->signal(SIGTERM);
    program.await(RecvQuit);
    EXPECT_EQ(simulator->wait(std::chrono::seconds(60)), 0);
    const std::string content = folder.read("history.csv").value_or("");
    EXPECT_EQ(content.rfind("time,seconds,id,tail_number,title,lat,lon,alt_ft,", 0), 0U);
    const std::regex row("[0-9.]+,[0-9.]+," + std::to_string(id) +
                         R"re(,"HISTORY","A ""quoted"", title",47\.[0-9]+,8\.[0-9]+,[0-9.]+,.*,0\n)re");
    const std::ptrdiff_t rows =
        std::distance(std::sregex_iterator(content.begin(), content.end(), row), std::sregex_iterator());
    EXPECT_GE(rows, 5);
}

} // namespace

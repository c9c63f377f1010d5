// The stand-in simulator as a user watches it: the real program, a client over TCP, a real browser.

#include "model/simconnect.h"
#include "simlink/simconnect.h"
#include "support/places.h"
#include "support/tempfolder.h"
#include "tests/browser/linux/browser.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <map>
#include <memory>
#include <regex>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace kst;
using namespace kst::simconnect;
using kst::test::Browser;
using kst::test::ChildProcess;
using nlohmann::json;

/// A traffic program that puts aircraft into the simulator.
class TrafficProgram {
public:
    TrafficProgram(const test::TempFolder& folder, int port) {
        folder.write("SimConnect.cfg",
                     fmt::format("[SimConnect]\nProtocol=IPv4\nAddress=127.0.0.1\nPort={}\n", port));
        if (SimConnect_Open(handle_, "Browser test", nullptr, 0, nullptr, 0) != simOk)
            throw std::runtime_error("no connection to the simulator");
        SimConnect_AddToDataDefinition(handle_, 1, "Airspeed True", "knots", TypeFloat64, 0.0F, unused);
        for (const auto& [event, name] :
             {std::pair(LandingLightsSet, "LANDING_LIGHTS_SET"),
              std::pair(FreezeLatitudeLongitudeSet, "FREEZE_LATITUDE_LONGITUDE_SET")}) {
            SimConnect_MapClientEventToSimEvent(handle_, event, name);
            SimConnect_AddClientEventToNotificationGroup(handle_, notificationGroup, event, true);
        }
    }
    ~TrafficProgram() { SimConnect_Close(handle_); }
    TrafficProgram(const TrafficProgram&) = delete;
    TrafficProgram& operator=(const TrafficProgram&) = delete;

    std::uint32_t create(std::string_view title, std::string_view tailNumber, const InitPosition& place) {
        SimConnect_AICreateNonATCAircraft(handle_, title, tailNumber, place, RequestCreate);
        heard_.erase(RecvAssignedObjectId);
        dispatchUntil(RecvAssignedObjectId);
        return heard_[RecvAssignedObjectId];
    }
    void setSpeed(std::uint32_t object, double knots) {
        SimConnect_SetDataOnSimObject(handle_, 1, object, 0, 0, sizeof knots, &knots);
    }
    void transmit(std::uint32_t object, std::uint32_t event, std::uint32_t value) {
        SimConnect_TransmitClientEvent(handle_, object, event, value, notificationGroup, 0);
    }
    /// Dispatches until the simulator closes the connection. Whether it said that it quits before.
    bool hearsQuitUntilTheEnd() {
        dispatchUntil(unused);
        return heard_.contains(RecvQuit);
    }

private:
    void dispatchUntil(std::uint32_t id) {
        while (SimConnect_CallDispatch(handle_, hear, &heard_) == simOk && !heard_.contains(id))
            std::this_thread::yield();
    }
    /// Keeps of each kind of message its second field.
    static void hear(const void* message, std::uint32_t size, void* heard) {
        std::uint32_t words[5] = {};
        std::memcpy(words, message, std::min<std::size_t>(size, sizeof words));
        (*static_cast<std::map<std::uint32_t, std::uint32_t>*>(heard))[words[2]] = words[4];
    }

    SimHandle handle_ = noSimHandle;
    std::map<std::uint32_t, std::uint32_t> heard_;
};

class Radar : public ::testing::Test {
protected:
    void SetUp() override {
        output = folder.path() / "simulator.txt";
        const std::vector<std::string> words = {(test::buildFolder() / "standins/simulator-standin").string(),
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
        const std::string line = test::printedLine(output, lineMark);
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

    test::TempFolder folder;
    std::filesystem::path output;
    std::unique_ptr<ChildProcess> simulator;
    int clientPort = 0;
    int pagePort = 0;
};

TEST_F(Radar, ShowsTheTrafficMoveInARealBrowser) {
    TrafficProgram program(folder, clientPort);
    const std::uint32_t flying = program.create("Test A320", "FLYING1", {47.47, 8.52, 30000.0, 0, 0, 45});
    const std::uint32_t parked =
        program.create("Test <b>737</b>", "PARKED1*", {47.4585, 8.549, 0, 0, 0, 45, 1});
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
    EXPECT_TRUE(program.hearsQuitUntilTheEnd());
    EXPECT_EQ(simulator->wait(std::chrono::seconds(60)), 0);
}

TEST_F(Radar, ControlsReachTheSimulator) {
    TrafficProgram program(folder, clientPort);
    program.create("Test A320", "ONE", {47.47, 8.52, 9000.0});
    EXPECT_EQ(control(R"({"action": "teleport", "lat": 50.0, "lon": 8.6, "alt": 7000})"), 200);
    const json user = ask("/state.json").at("user");
    EXPECT_EQ(user.at("lat"), 50.0);
    EXPECT_EQ(user.at("alt"), 7000.0);
    EXPECT_FALSE(user.at("ground").get<bool>());

    for (const char* wrong :
         {"", "{", "[]", R"({"action": "explode"})", R"({"action": 7})",
          R"({"action": "teleport", "lat": 95, "lon": 0})", R"({"action": "teleport", "lat": "x"})"})
        EXPECT_EQ(control(wrong), 400) << wrong;
    EXPECT_EQ(control(R"({"action": "pause"})", "text/plain"), 400);
    EXPECT_FALSE(ask("/state.json").at("paused").get<bool>());
    EXPECT_EQ(ask("/history.json?id=nonsense"), json::array());

    EXPECT_EQ(control(R"({"action": "drop"})"), 200);
    EXPECT_FALSE(program.hearsQuitUntilTheEnd());
    EXPECT_TRUE(ask("/state.json").at("objects").empty()) << "its objects went with the client";
}

TEST_F(Radar, EndsCleanlyOnTheTerminationSignalAndLeavesTheHistory) {
    TrafficProgram program(folder, clientPort);
    const std::uint32_t id = program.create("A \"quoted\", title", "HISTORY", {47.47, 8.52, 9000.0});
    while (ask("/history.json?id=" + std::to_string(id)).size() < 5) {
    }
    simulator->signal(SIGTERM);
    EXPECT_TRUE(program.hearsQuitUntilTheEnd());
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

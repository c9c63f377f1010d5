// What the switches of the window do to the traffic: one session of the real program, all situations side by
// side. Each is first seen with its switch off, then a person at the window turns it on.

#include "core/geodesy.h"
#include "support/places.h"
#include "system/linux/host.h"
#include "system/linux/madetracks.h"
#include "system/linux/session.h"

#include <fstream>
#include <iostream>
#include <map>
#include <memory>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using nlohmann::json;
using test::MadeTracks;
using test::Move;
using test::Offset;
using test::Session;
using test::waitFor;

constexpr LatLon zurich{47.458056, 8.548056};    ///< the airport, and the user's place
constexpr double userFt = 4000.0;                ///< in the air
constexpr const char* matchLogged = "= Second "; ///< the end of the line that LOG adds for each livery found
constexpr const char* rolling = ",94.0,";        ///< the speed in a report from the take-off roll
constexpr double taxiKt = 6.0;
constexpr double creepKt = 2.0;

/// Who changes what he does while the session runs, first with the switch off, then with it on.
struct Actor {
    int address;
    const char* callsign;
    const char* registration;
    Offset place;
};
constexpr Actor pushed[] = {{0x400101, "PUSH1", "", {2000.0, 0.0}}, {0x400102, "PUSH2", "", {2000.0, 300.0}}};
constexpr Actor departing[] = {{0x400201, "DEPART1", "HB-XDA", {-2000.0, 0.0}},
                               {0x400202, "DEPART2", "HB-XDB", {-3000.0, 0.0}}};
constexpr Offset parkedStand{3000.0, 0.0};
constexpr Offset emptyRamp{-4000.0, 0.0};

// --- the world ---

std::string standElement(const char* id, Offset offset, int radiusM, const std::string& observations = {}) {
    const LatLon place = test::placeAt(zurich, offset);
    return fmt::format("<parkpos id=\"{}\" latitude=\"{:.6f}\" longitude=\"{:.6f}\" heading=\"360.0\" "
                       "radius=\"{}.0\" cargo=\"false\" ramp=\"true\">{}</parkpos>\n",
                       id, place.lat, place.lon, radiusM, observations);
}

/// A small airport of which little is known, so that guesses may be learned; one aircraft stands there
/// always.
void writeAirport(const fs::path& file) {
    std::string halfHours = "0";
    for (int hh = 1; hh < 48; ++hh) {
        halfHours += fmt::format(",{}", hh);
    }
    std::string always;
    for (int day = 1; day <= 7; ++day) {
        always += fmt::format(R"(<opt reg="HB-XPK" airl="PVT" type="A320" day="{}" hh="{}" cs="PARKED" />)",
                              day, halfHours);
    }
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "<?xml version=\"1.0\"?>\n<meta></meta>\n<parameters>\n"
                        << R"(<parameter name="airport_name" value="Small" />)"
                        << R"(<parameter name="publisher" value="stock" />)"
                        << R"(<parameter name="altitude" value="1417" />)"
                        << "\n</parameters>\n<parkpositions>\n"
                        << standElement("P1", pushed[0].place, 12) << standElement("P2", pushed[1].place, 12)
                        << standElement("S3", parkedStand, 20, always) << standElement("E4", emptyRamp, 20)
                        << "</parkpositions>\n";
}

/// A folder of aircraft in no airline's paint.
void writeAircraft(const fs::path& folder, const std::string& type, const std::vector<std::string>& titles) {
    fs::create_directories(folder / type / "model");
    fs::create_directories(folder / type / "texture");
    std::ofstream(folder / type / ".AIR").flush();
    std::ofstream cfg(folder / type / "aircraft.cfg");
    cfg << fmt::format("[General]\natc_model={}\n", type);
    for (std::size_t i = 0; i < titles.size(); ++i) {
        cfg << fmt::format("[fltsim.{}]\ntitle={}\natc_parking_codes=ZZZ\n", i, titles[i]);
    }
}

void writeLiveries(const fs::path& folder) {
    writeAircraft(folder / "first", "A320", {"First A320", "First A320_STUB"});
    for (const char* type : {"A320", "B738", "C172", "C56X", "EC45", "F16"}) {
        writeAircraft(folder / "second", type, {fmt::format("Second {}", type)});
    }
}

Move taxiOut(const Actor& actor) {
    return {0, 32, actor.place, 0.0, 10.0};
}

/// What is heard from the beginning. All of it is shown half a minute later.
void writeMainTracks(const fs::path& file) {
    constexpr int end = 180;
    MadeTracks tracks(zurich);
    int address = 0x400000;
    // North of the user, out of his way.
    double north = 16000.0;
    const auto cruises = [&](const char* callsign, const char* type, const char* registration = "") {
        tracks.add(tracks.target(++address, callsign, type, registration),
                   {0, end, {-6000.0, north += 1500.0}, 90.0, 120.0, 6000.0});
    };
    cruises("ALWAYS", "A320");
    cruises("LIGHT", "C172");
    cruises("ROTOR", "EC45");
    cruises("FIGHTER", "F16");
    cruises("DEEP", "A320", "4K-AI07"); // of an airline that has no livery here

    Offset place{-6000.0, north + 1500.0};
    ++address;
    for (const auto& [callsign, from, to] :
         {std::tuple{"NAMEA", 0, 40}, {"NAMEB", 40, 84}, {"NAMEC", 84, end}}) {
        place = tracks.add(tracks.target(address, callsign, "B738"), {from, to, place, 90.0, 120.0, 7000.0});
    }
    tracks.add(tracks.target(++address, "HEADON", "B738"), {0, end, {-6500.0, 0.0}, 90.0, 130.0, userFt});

    // Past the user on the ground, and past the parked aircraft.
    for (const auto& [callsign, from] :
         {std::pair{"ATUSER", Offset{-45.0, 10.0}}, {"ATSTAND", Offset{parkedStand.east - 45.0, 22.0}}}) {
        const int number = tracks.target(++address, callsign, "A320");
        tracks.add(number, {12, end, tracks.add(number, {0, 12, from, 90.0, taxiKt}), 90.0, creepKt});
    }
    for (const Actor& actor : pushed) {
        tracks.add(tracks.target(actor.address, actor.callsign, "C56X"), {0, 36, actor.place, 0.0, 0.0});
    }
    for (const Actor& actor : departing) {
        const int number = tracks.target(actor.address, actor.callsign, "B738", actor.registration);
        tracks.add(number, {32, 40, tracks.add(number, taxiOut(actor)), 0.0, 0.0});
    }
    tracks.write(file);
}

/// From its stand backwards, with the nose turning to the east.
void writePushTracks(const fs::path& file, const Actor& actor) {
    MadeTracks tracks(zurich);
    tracks.add(tracks.target(actor.address, actor.callsign, "C56X"),
               {0, 24, actor.place, 180.0, 5.0, std::nullopt, 90.0});
    tracks.write(file);
}

/// From where it holds into the air.
void writeDepartureTracks(const fs::path& file, const Actor& actor) {
    MadeTracks tracks(zurich);
    const int number = tracks.target(actor.address, actor.callsign, "B738", actor.registration);
    Offset place = test::endOf(taxiOut(actor));
    for (int second = 0; second < 16; second += 2) {
        place = tracks.add(number, {second, second + 2, place, 0.0, 30.0 + 8.0 * second});
    }
    tracks.add(number, {16, 60, place, 0.0, 160.0, 2500.0});
    tracks.write(file);
}

/// The session, with as many feeds as the story has.
class Story : public Session {
public:
    void start();
    /// A further feed begins.
    void hear(const std::string& name);
    fs::path tracksOf(const std::string& name) const { return world.folder() / (name + ".csv"); }
    fs::path sentBy(const std::string& name) const { return world.folder() / (name + ".sent"); }
    bool wasSent(const std::string& name, const std::string& text) const {
        return test::contentOf(sentBy(name)).find(text) != std::string::npos;
    }
    /// The object of that tail number; null when the simulator has none.
    json shown(const std::string& tail) const;
    bool shows(const std::string& tail) const { return !shown(tail).is_null(); }
    bool appears(const std::string& tail, std::chrono::seconds limit = 50s) const {
        return waitFor([&] { return shows(tail); }, limit);
    }
    bool vanishes(const std::string& tail, std::chrono::seconds limit = 5s) const {
        return waitFor([&] { return !shows(tail); }, limit);
    }
    void turnOn(int controlId, const std::string& parameter);

private:
    std::map<std::string, std::unique_ptr<test::ChildProcess>> feeds_;
};

void Story::start() {
    const fs::path folder = world.folder();
    writeAirport(folder / "downloads" / "P3D" / "archive" / "stock" / "LSZH.xml");
    writeLiveries(folder / "liveries");
    writeMainTracks(tracksOf("main"));
    for (int i = 0; i < 2; ++i) {
        writePushTracks(tracksOf(pushed[i].callsign), pushed[i]);
        writeDepartureTracks(tracksOf(departing[i].callsign), departing[i]);
    }
    std::map<std::string, std::string> parameters = {
        {"SCAN_LIVERIES", "1"},
        {"LIG_AUTOMATIC", "0"},
        {"lfolder0", test::host::pathText(folder / "liveries" / "first")},
        {"lfolder1", test::host::pathText(folder / "liveries" / "second")},
        {"SUPPRESS_STUB", "1"},
        {"MATCHING_DEPTH", "2"},
        {"CUSTOM_PARKING_PERCENTAGE", "100"},
        {"AIRPORT_HEIGHT", "20000"},
    };
    for (const char* const name : {"LIG_PRIORITIZE", "LOG", "ALWAYS_ON_TOP", "LIGHT_AIRCRAFT", "HELICOPTERS",
                                   "HIGH_PERF_AIRCRAFT", "GUID_CHANGES", "LEARN_SOFT", "COLLISION_USER_GND",
                                   "COLLISION_USER_AIR", "COLLISION_LIVE_PARKED_GND", "STRAIGHT_PBS_ONLY"}) {
        parameters[name] = "0";
    }
    world.writeParameters(parameters);
    std::vector<std::string> arguments = test::host::simulatorArguments(folder);
    const std::string place = fmt::format("{},{},1417", zurich.lat, zurich.lon);
    for (const std::string& word : {std::string("--user"), place, std::string("--on-ground")}) {
        arguments.push_back(word);
    }
    world.startSimulator(arguments);
    world.startRealTraffic({"--tracks", tracksOf("main").string(), "--sent", sentBy("main").string()});
    world.startProgram();
    ASSERT_TRUE(world.logSays("RealTraffic connected")) << "the link was never made";
}

void Story::hear(const std::string& name) {
    const std::string program = (test::buildFolder() / "standins/realtraffic-standin").string();
    feeds_[name] = std::make_unique<test::ChildProcess>(
        std::vector<std::string>{program, "--tcp", "none", "--tracks", tracksOf(name).string(), "--sent",
                                 sentBy(name).string()},
        world.environment(), world.folder(), world.folder() / (name + ".txt"));
}

json Story::shown(const std::string& tail) const {
    const json state = json::parse(world.simulatorState(), nullptr, false);
    if (state.is_object()) {
        for (const json& object : state.at("objects")) {
            if (object.at("tail") == tail) {
                return object;
            }
        }
    }
    return nullptr;
}

void Story::turnOn(int controlId, const std::string& parameter) {
    hand.click(controlId);
    EXPECT_TRUE(holds(parameter, "1")) << parameter;
}

double turnedDeg(const json& object) {
    return object.is_null() ? 0.0 : std::abs(std::remainder(object.at("heading").get<double>(), 360.0));
}

double metresFrom(LatLon place, const json& object) {
    return object.is_null() ? 1e9 : gf_distanceNm(place, {object.at("lat"), object.at("lon")}) * metresPerNm;
}

/// The push back is over: its engines run.
bool hasStopped(const json& object) {
    return !object.is_null() && object.at("engine").get<bool>();
}

// --- the parts of the story, in their order ---

void everybodyIsThere(Story& story) {
    for (const char* const tail : {"ALWAYS", "NAMEA", "HEADON", "ATUSER", "ATSTAND", "PUSH1", "PUSH2",
                                   "DEPART1", "DEPART2", "PARKED*"}) {
        EXPECT_TRUE(story.appears(tail)) << tail;
    }
    story.hear("PUSH1");
    story.hear("DEPART1");
    for (const char* const tail : {"LIGHT", "ROTOR", "FIGHTER", "DEEP"}) {
        EXPECT_TRUE(story.wasSent("main", tail));
        EXPECT_FALSE(story.shows(tail)) << tail << " is let in";
    }
    EXPECT_EQ(story.world.log().find(matchLogged), std::string::npos);
}

void keepsClearOnTheGround(Story& story) {
    const LatLon stand = test::placeAt(zurich, parkedStand);
    EXPECT_TRUE(waitFor([&] { return metresFrom(zurich, story.shown("ATUSER")) < 22.0; }, 30s));
    EXPECT_TRUE(waitFor([&] { return metresFrom(stand, story.shown("ATSTAND")) < 33.0; }, 30s));
    EXPECT_FALSE(story.vanishes("ATUSER", 3s));
    EXPECT_TRUE(story.shows("PARKED*"));
    story.turnOn(control::CollisionUserGnd, "COLLISION_USER_GND");
    EXPECT_TRUE(story.vanishes("ATUSER")) << "in the user's wings";
    story.turnOn(control::CollisionLiveParkedGnd, "COLLISION_LIVE_PARKED_GND");
    EXPECT_TRUE(story.vanishes("PARKED*")) << "in the wings of a live one";
    EXPECT_TRUE(story.shows("ATSTAND"));
}

void keepsClearInTheAir(Story& story) {
    ASSERT_TRUE(
        story.world.control(fmt::format(R"({{"action":"teleport","lat":{},"lon":{},"alt":{},"silent":true}})",
                                        zurich.lat, zurich.lon, userFt)));
    EXPECT_FALSE(story.vanishes("HEADON", 4s)) << "nobody asked for it";
    story.turnOn(control::CollisionUserAir, "COLLISION_USER_AIR");
    EXPECT_TRUE(story.vanishes("HEADON")) << "it flies at the user";
    EXPECT_TRUE(story.shows("ALWAYS"));
}

void letsOthersIn(Story& story) {
    EXPECT_TRUE(waitFor([&] { return story.wasSent("main", "NAMEB"); }, 60s));
    EXPECT_FALSE(story.vanishes("NAMEA", 5s)) << "it has a new object";
    EXPECT_TRUE(waitFor([&] { return story.wasSent(departing[0].callsign, rolling); }, 20s));
    for (const auto& [id, parameter] : {std::pair{control::Log, "LOG"},
                                        {control::LightAircraft, "LIGHT_AIRCRAFT"},
                                        {control::Helicopters, "HELICOPTERS"},
                                        {control::HighPerfAircraft, "HIGH_PERF_AIRCRAFT"},
                                        {control::GuidChanges, "GUID_CHANGES"},
                                        {control::LearnSoft, "LEARN_SOFT"}}) {
        story.turnOn(id, parameter);
    }
    story.hand.enter(control::MatchingDepth, "4");
    story.expectBox(control::MatchingDepth, "MATCHING_DEPTH", "4", "4");
    ASSERT_FALSE(story.wasSent("main", "NAMEC")) << "this machine is too slow for the story";
    story.hear(departing[1].callsign);
}

/// Only where the system tells: a display without a window manager keeps no order that a person asked for.
void staysOnTop(Story& story) {
    const auto topMost = [&](bool otherwise) {
        const auto state = test::host::windowState(story.world.folder());
        return state ? state->topMost : otherwise;
    };
    EXPECT_FALSE(topMost(false));
    story.turnOn(control::AlwaysOnTop, "ALWAYS_ON_TOP");
    EXPECT_TRUE(waitFor([&] { return topMost(true); }, 5s));
}

void isPushedBack(Story& story) {
    json first;
    EXPECT_TRUE(waitFor([&] { return hasStopped(first = story.shown(pushed[0].callsign)); }, 60s));
    EXPECT_GT(turnedDeg(first), 45.0) << first;
    story.turnOn(control::StraightPbsOnly, "STRAIGHT_PBS_ONLY");
    story.hear(pushed[1].callsign);
    json second;
    EXPECT_TRUE(waitFor([&] { return hasStopped(second = story.shown(pushed[1].callsign)); }, 60s));
    EXPECT_GT(metresFrom(test::placeAt(zurich, pushed[1].place), second), 20.0) << second;
    EXPECT_LT(turnedDeg(second), 5.0) << second;
}

void hasLetThemIn(Story& story) {
    for (const char* const tail : {"LIGHT", "ROTOR", "FIGHTER", "DEEP", "NAMEC"}) {
        EXPECT_TRUE(story.appears(tail)) << tail;
    }
    EXPECT_TRUE(story.vanishes("NAMEA")) << "two objects for one aircraft";
    EXPECT_NE(story.world.log().find(matchLogged), std::string::npos);
}

/// What counts at the next start, which a new install path brings; and what was learned until then.
void startsAgain(Story& story) {
    const fs::path folder = story.world.folder();
    const auto scanned = [&](const char* title) {
        return test::contentOf(folder / "output" / "LiveriesScanned.xml").find(title) != std::string::npos;
    };
    EXPECT_TRUE(scanned("Second A320"));
    EXPECT_FALSE(scanned("First A320_STUB"));
    story.turnOn(control::LigPrioritize, "LIG_PRIORITIZE");
    story.hand.click(control::SuppressStub);
    story.turnOn(control::ScanLiveries, "SCAN_LIVERIES");
    const fs::path other = folder / "other simulator";
    fs::create_directories(other);
    story.expectLogged(
        "liveries scan ends", [&] { story.hand.enter(control::AllInstallPath, test::host::pathText(other)); },
        60s);
    EXPECT_FALSE(scanned("Second A320")) << "the first folder has one";
    EXPECT_TRUE(scanned("Second B738"));
    EXPECT_TRUE(scanned("First A320_STUB"));
    const std::string learned = test::contentOf(folder / "airports" / "learned" / "stock" / "LSZH.xml");
    EXPECT_EQ(learned.find(departing[0].registration), std::string::npos) << learned;
    EXPECT_NE(learned.find(departing[1].registration), std::string::npos) << learned;
}

TEST(WindowEffects, EachSwitchChangesTheTraffic) {
    Story story;
    ASSERT_NO_FATAL_FAILURE(story.start());
    const auto began = std::chrono::steady_clock::now();
    const auto part = [&](const char* name, void (*run)(Story&)) {
        SCOPED_TRACE(name);
        run(story);
        const std::chrono::duration<double> sofar = std::chrono::steady_clock::now() - began;
        std::cout << fmt::format("{:5.1f} s {}\n", sofar.count(), name);
    };
    part("everybody is there", everybodyIsThere);
    part("clear on the ground", keepsClearOnTheGround);
    part("clear in the air", keepsClearInTheAir);
    part("others let in", letsOthersIn);
    part("on top", staysOnTop);
    part("push back", isPushedBack);
    part("others are in", hasLetThemIn);
    part("start again", startsAgain);
    test::host::askToClose(story.world.program());
    EXPECT_EQ(story.world.program().wait(20s), 0);
}

} // namespace
} // namespace kst

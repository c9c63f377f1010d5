// Every control of the window used once by mouse and keyboard, in one session of the real program. Its effect
// is looked for in parameters.xml, in the window, and in the log or in what the stand-in simulator shows.

#include "core/geodesy.h"
#include "support/places.h"
#include "system/linux/host.h"
#include "system/linux/session.h"

#include <algorithm>
#include <fstream>
#include <map>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace kst {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using nlohmann::json;
using platform::Rect;
using test::areaOf;
using test::Picture;
using test::Session;
using test::SystemWorld;
using test::waitFor;

/// What a click does to the message line.
enum class Line { AsItWas, Message, Empty };

struct CheckBox {
    int id;
    const char* parameter;
    Line on = Line::AsItWas; ///< when it takes this state
    Line off = Line::AsItWas;
};

constexpr CheckBox checkBoxes[] = {
    {control::LigAutomatic, "LIG_AUTOMATIC", Line::Empty, Line::Message},
    {control::LigPrioritize, "LIG_PRIORITIZE", Line::Message, Line::Empty},
    {control::SuppressStub, "SUPPRESS_STUB", Line::Message, Line::Empty},
    {control::Log, "LOG"},
    {control::AlwaysOnTop, "ALWAYS_ON_TOP", Line::Message, Line::Empty},
    {control::AfgAutomatic, "AFG_AUTOMATIC", Line::Empty, Line::Message},
    {control::NavLightsWhileParked, "NAV_LIGHTS_WHILE_PARKED"},
    {control::LightAircraft, "LIGHT_AIRCRAFT"},
    {control::Helicopters, "HELICOPTERS"},
    {control::HighPerfAircraft, "HIGH_PERF_AIRCRAFT"},
    {control::Aerowinx, "AEROWINX", Line::Message, Line::Empty},
    {control::GuidChanges, "GUID_CHANGES", Line::Empty, Line::Message},
    {control::AutoRange, "AUTO_RANGE"},
    {control::CollisionUserGnd, "COLLISION_USER_GND", Line::Empty, Line::Message},
    {control::CollisionUserAir, "COLLISION_USER_AIR", Line::Empty, Line::Message},
    {control::CollisionLiveParkedGnd, "COLLISION_LIVE_PARKED_GND", Line::Empty, Line::Message},
    {control::StraightPbsOnly, "STRAIGHT_PBS_ONLY"},
    {control::ScanLiveries, "SCAN_LIVERIES", Line::Message, Line::Empty},
    {control::ScanAirports, "SCAN_AIRPORTS", Line::Message, Line::Empty},
};

/// Where the user hovers: between the limits of range and height of the park airport, so that each of both
/// can take it out of sight.
constexpr const char* overZurich = "47.6,8.55,19900,90,0";
constexpr double userLat = 47.6;
constexpr double userLon = 8.55;
constexpr const char* wednesdayNoon = "1700049600";

void start(Session& session) {
    SystemWorld& world = session.world;
    const fs::path made = test::buildFolder() / "made" / "downloads" / "P3D";
    fs::copy(made, world.folder() / "downloads" / "P3D", fs::copy_options::recursive);
    std::ofstream(world.folder() / "airports" / "my_park_airports.txt") << "LSZH\n";
    const fs::path liveries = world.folder() / "liveries" / "A320";
    fs::create_directories(liveries / "model");
    fs::create_directories(liveries / "texture");
    std::ofstream(liveries / ".AIR").flush();
    std::ofstream(liveries / "aircraft.cfg")
        << "[General]\natc_model=A320\n[fltsim.0]\ntitle=Scanned\natc_parking_codes=SWR\n"
           "[fltsim.1]\ntitle=Scanned_STUB\natc_parking_codes=SWR\n";
    world.makeScenery(world.folder() / "scenery");
    world.writeParameters({{"AIRPORT_HEIGHT", "20000"},
                           {"AIRPORT_RANGE", "8"},
                           {"lfolder0", test::host::pathText(world.folder() / "liveries")},
                           {"afolder0", test::host::pathText(world.folder() / "scenery")}});
    std::vector<std::string> arguments = test::host::simulatorArguments(world.folder());
    for (const char* word : {"--user", overZurich, "--time", wednesdayNoon}) {
        arguments.emplace_back(word);
    }
    world.startSimulator(arguments);
    world.startRealTraffic();
    world.startProgram();
    ASSERT_TRUE(world.logSays("RealTraffic connected")) << "the link was never made";
}

/// The mark, the label's colour and the message line, as a picture shows them.
std::string differences(const Picture& picture, const CheckBox& box, bool on, bool hadMessage) {
    std::string found;
    constexpr int frame = 3; // with the ring of the focus
    const Rect area = areaOf(box.id);
    const Rect inner{area.left + frame, area.top + frame, area.right - frame, area.bottom - frame};
    if ((picture.count(inner, layout::black) > 0) != on) {
        found += " mark";
    }
    for (const layout::Label& label : layout::labels) {
        if (label.controlId != box.id) {
            continue;
        }
        const Rect room{label.x, label.row, layout::labelRight(label), label.row + platform::textLineHeight};
        if (label.rule == layout::LabelRule::YellowWhileOn ||
            label.rule == layout::LabelRule::YellowWhileOff) {
            const bool yellow = on == (label.rule == layout::LabelRule::YellowWhileOn);
            if ((picture.count(room, layout::yellow) > 0) != yellow) {
                found += " colour of the label";
            }
        } else if (label.rule == layout::LabelRule::GreyWhileOff &&
                   (picture.count(room, layout::black) > 0) != on) {
            found += " colour of the label";
        }
    }
    const Line line = on ? box.on : box.off;
    const bool message = line == Line::AsItWas ? hadMessage : line == Line::Message;
    const bool shown = picture.count(layout::bandArea(Band::Message), layout::yellow) > 0;
    if (line != Line::AsItWas && shown != message) {
        found += " message line";
    }
    return found;
}

void useCheckBox(Session& session, const CheckBox& box, const std::function<void()>& use) {
    const bool on = session.stored(box.parameter) != "1";
    use();
    EXPECT_TRUE(session.holds(box.parameter, on ? "1" : "0"));
    std::string wrong;
    EXPECT_TRUE(waitFor(
        [&] {
            wrong = differences(session.hand.look(), box, on, false);
            return wrong.empty();
        },
        5s))
        << "not as it should be in the window:" << wrong;
}

// --- the parts of the session, in their order ---

void useCheckBoxes(Session& session) {
    for (const CheckBox& box : checkBoxes) {
        SCOPED_TRACE(box.parameter);
        useCheckBox(session, box, [&] { session.hand.click(box.id); });
        useCheckBox(session, box, [&] { session.hand.press({"space"}); });
    }
}

/// Text that no number box and no text box takes, by typing or from the clipboard.
void enterRubbish(Session& session) {
    struct Rubbish {
        const char* what;
        std::string text;
    };
    const Rubbish rubbish[] = {
        {"letters", "abc"},
        {"a number that is too large", "99999999999999999999"},
        {"ten thousand characters", std::string(10'000, 'W')},
        {"emoji", "\U0001F6EC\U0001F6EB\U0001F6EC"},
        {"control characters", "\x01\x1b\x7f\x08"},
    };
    for (const auto& [what, text] : rubbish) {
        SCOPED_TRACE(what);
        EXPECT_TRUE(test::host::setClipboard(session.world.folder(), text));
        session.hand.paste(control::LateralRange);
        session.expectBox(control::LateralRange, "LATERAL_RANGE", "100", "100");
    }
    EXPECT_TRUE(test::host::setClipboard(session.world.folder(), std::string(10'000, 'W')));
    session.expectLogged("callsign \"WWW", [&] { session.hand.paste(control::BlockCallsign); });
    session.expectBox(control::BlockCallsign, "BLOCK_CALLSIGN", "", "");
    const std::string path = session.stored("SIM_INSTALL_PATH");
    session.expectLogged("This install path does not exist: WWW",
                         [&] { session.hand.paste(control::AllInstallPath); });
    EXPECT_EQ(session.stored("SIM_INSTALL_PATH"), path);
}

void useNumberBoxes(Session& session) {
    struct NumberBox {
        int id;
        const char* parameter;
        const char* typed;
        const char* stored;
    };
    const NumberBox boxes[] = {
        {control::MatchingDepth, "MATCHING_DEPTH", "2", "2"},
        {control::MatchingDepth, "MATCHING_DEPTH", "9", "4"},
        {control::AirportHeight, "AIRPORT_HEIGHT", "50000", "45000"},
        {control::AirportHeight, "AIRPORT_HEIGHT", "20000", "20000"},
        {control::MaxLive, "MAX_LIVE", "12x", "12"},
        {control::MaxLive, "MAX_LIVE", "", "-1"},
        {control::CustomMaxPark, "CUSTOM_MAX_PARK", "900", "500"},
        {control::CustomMaxPark, "CUSTOM_MAX_PARK", "12", "12"},
        {control::LateralRange, "LATERAL_RANGE", "1", "2"},
        {control::LateralRange, "LATERAL_RANGE", "150", "100"},
    };
    for (const auto& [id, parameter, typed, stored] : boxes) {
        SCOPED_TRACE(fmt::format("{} {}", parameter, typed));
        session.hand.enter(id, typed);
        session.expectBox(id, parameter, stored, stored);
        EXPECT_TRUE(session.messageShown(session.hand.look())) << "nobody told the operator";
    }
}

void blockACallsign(Session& session) {
    std::vector<json> flying;
    ASSERT_TRUE(waitFor([&] { return (flying = session.objects(false)).size() >= 4; }, 90s))
        << "nothing flies";
    const std::string callsign = flying.front().at("tail");
    const auto flies = [&] {
        const auto now = session.objects(false);
        return std::any_of(now.begin(), now.end(),
                           [&](const json& each) { return each.at("tail") == callsign; });
    };
    session.expectEnabled(control::Unblock, false);
    session.hand.enter(control::BlockCallsign, "ab1");
    session.expectBox(control::BlockCallsign, "BLOCK_CALLSIGN", "", "");
    session.hand.enter(control::BlockCallsign, callsign);
    session.expectBox(control::BlockCallsign, "BLOCK_CALLSIGN", callsign, callsign);
    EXPECT_TRUE(waitFor([&] { return !flies(); }, 20s)) << callsign << " still flies";
    session.expectEnabled(control::Unblock, true);
    session.expectLogged(fmt::format("no more blocking of live aircraft \"{}\"", callsign),
                         [&] { session.hand.click(control::Unblock); });
    session.expectBox(control::BlockCallsign, "BLOCK_CALLSIGN", "", "");
    session.expectEnabled(control::Unblock, false);
}

/// What is disabled takes no click, but says what it is for.
void tryADisabledControl(Session& session) {
    session.hand.click(control::LearnSoft);
    EXPECT_EQ(session.stored("LEARN_SOFT"), "1");
    session.hand.pointAt(control::LearnSoft);
    EXPECT_TRUE(waitFor(
        [&] {
            const auto state = test::host::windowState(session.world.folder());
            return !state || state->toolTip.find("LEARN_SOFT") != std::string::npos;
        },
        10s))
        << "no tool tip";
}

void letTheRangeBeWorkedOut(Session& session) {
    session.hand.click(control::AutoRange);
    session.expectEnabled(control::LateralRange, false);
    session.expectBox(control::LateralRange, "LATERAL_RANGE", "100", "12");
    session.hand.enter(control::AutoRangeAboveHeight, "1");
    session.expectBox(control::AutoRangeAboveHeight, "AUTO_RANGE_ABOVE_HEIGHT", "18000", "18000");
}

void bringAnAirportInSight(Session& session) {
    session.expectLogged("LSZH in sight at", [&] { session.hand.enter(control::AirportRange, ""); });
    session.expectBox(control::AirportRange, "AIRPORT_RANGE", "20", "20");
}

void seeItsAircraft(Session& session) {
    EXPECT_TRUE(waitFor([&] { return session.objects(true).size() > 7; }, 60s)) << "nobody parks";
    session.expectEnabled(control::ParkFake, true, 120s);
    session.expectBox(control::LateralRange, "LATERAL_RANGE", "100", "100", 30s);
    session.hand.click(control::AutoRange);
    session.expectEnabled(control::AutoRangeAboveHeight, false);
    session.hand.enter(control::LateralRange, "20");
    session.expectBox(control::LateralRange, "LATERAL_RANGE", "20", "20");
}

void switchTheLights(Session& session) {
    std::map<int, int> before;
    for (const json& each : session.objects(true)) {
        before[each.at("id")] = each.at("lights");
    }
    session.hand.click(control::NavLightsWhileParked);
    EXPECT_TRUE(waitFor(
        [&] {
            const auto now = session.objects(true);
            return std::all_of(now.begin(), now.end(), [&](const json& each) {
                return !before.contains(each.at("id")) || before.at(each.at("id")) != each.at("lights");
            });
        },
        10s))
        << "the lights of the parked aircraft are as they were";
}

void clickAThousandTimes(Session& session) {
    const std::string before = session.stored("STRAIGHT_PBS_ONLY");
    session.hand.clickOften(control::StraightPbsOnly, 1000);
    session.hand.click(control::Helicopters);
    EXPECT_TRUE(waitFor([&] { return session.stored("HELICOPTERS") == "0"; }, 120s))
        << "the clicks end nowhere";
    EXPECT_EQ(session.stored("STRAIGHT_PBS_ONLY"), before);
}

void changeTheParking(Session& session) {
    // Nothing responds until the renewal is switched on again.
    const auto use = [&](const CheckBox& box) {
        SCOPED_TRACE(box.parameter);
        useCheckBox(session, box, [&] { session.hand.click(box.id); });
    };
    use({control::InitialLoadOnly, "INITIAL_LOAD_ONLY", Line::Message, Line::Empty});
    use({control::ParkFake, "PARK_FAKE", Line::Empty, Line::Empty});
    use({control::ParkSoft, "PARK_SOFT", Line::Empty, Line::Empty});
    const std::string inFile = session.stored("parking_percentage");
    session.hand.enter(control::ParkingPercentage, "80");
    session.expectBox(control::ParkingPercentage, "parking_percentage", inFile, "80");
    session.hand.enter(control::MaxFitFl, "3.2");
    session.expectBox(control::MaxFitFl, "MAX_FIT", "5", "3");
    session.hand.enter(control::CustomMaxPark, "7");
    session.expectBox(control::CustomMaxPark, "CUSTOM_MAX_PARK", "7", "7");
    use({control::InitialLoadOnly, "INITIAL_LOAD_ONLY", Line::Message, Line::Empty});
    session.expectLogged(
        "Parking adjustments:",
        [&] {
            use({control::Week, "WEEK", Line::Message, Line::Message});
        },
        45s);
    EXPECT_TRUE(session.world.logSays("Max fit=3 hours", 1s));
    clickAThousandTimes(session);
    EXPECT_TRUE(waitFor([&] { return session.objects(true).size() <= 7; }, 30s))
        << session.objects(true).size() << " are parked";
}

void flushAndReRead(Session& session) {
    session.expectEnabled(control::ParkFake, true, 60s);
    session.hand.click(control::FlushStatic);
    session.expectEnabled(control::FlushStatic, false);
    EXPECT_TRUE(waitFor([&] { return session.objects(true).empty(); }, 20s)) << "parked aircraft are left";
    session.expectLogged("1 park airport read from", [&] { session.hand.click(control::ReRead); });
    session.expectEnabled(control::ReRead, true);
    session.expectLogged("New destination: EDDF", [&] { session.hand.enter(control::Destination, "eddf"); });
    session.expectBox(control::Destination, "DESTINATION", "EDDF", "EDDF");
    session.expectEnabled(control::ReRead, false);
    session.expectLogged("destination set to empty", [&] { session.hand.enter(control::Destination, ""); });
    session.expectEnabled(control::ReRead, true);
}

double milesAway(const json& object) {
    return gf_distanceNm({userLat, userLon}, {object.at("lat"), object.at("lon")});
}

void limitTheTraffic(Session& session) {
    // Those that the program has taken over; what is being created the simulator still flies by itself.
    const auto flying = [&](double fartherThanNm) {
        const auto now = session.objects(false);
        return std::count_if(now.begin(), now.end(), [&](const json& each) {
            return milesAway(each) > fartherThanNm && !each.at("ground").get<bool>() &&
                   each.at("frozen").get<bool>();
        });
    };
    EXPECT_TRUE(waitFor([&] { return flying(25.0) == 0; }, 60s)) << flying(25.0) << " are beyond the range";
    EXPECT_GT(flying(0.0), 1);
    session.hand.enter(control::MaxLive, "1");
    session.expectBox(control::MaxLive, "MAX_LIVE", "1", "1");
    EXPECT_TRUE(waitFor([&] { return flying(0.0) <= 1; }, 20s)) << flying(0.0) << " fly";
    session.expectLogged("LSZH is out of sight",
                         [&] { session.hand.enter(control::AirportHeight, "18000"); });
}

/// What counts at the next start, which a new install path brings.
void restart(Session& session) {
    const fs::path folder = session.world.folder();
    for (const int id : {control::ScanLiveries, control::LigAutomatic, control::LigPrioritize,
                         control::ScanAirports, control::AfgAutomatic, control::Aerowinx}) {
        session.hand.click(id);
    }
    session.expectEnabled(control::ParkFake, true, 60s);
    fs::create_directories(folder / "other simulator");
    const std::string path = test::host::pathText(folder / "other simulator");
    const std::size_t before = session.world.log().size();
    session.hand.enter(control::AllInstallPath, path);
    EXPECT_TRUE(session.holds("SIM_INSTALL_PATH", path));
    const auto said = [&](const std::string& text) {
        return waitFor([&] { return session.world.log().find(text, before) != std::string::npos; }, 40s);
    };
    for (const char* const text :
         {"Install path exists, Kestrane_P3D will restart", "liveries scan manual starts",
          "1 liverie found in", "airports scan manual", "Airports scan successful"}) {
        EXPECT_TRUE(said(text)) << text;
    }
    EXPECT_TRUE(session.holds("SCAN_LIVERIES", "0"));
    EXPECT_TRUE(session.holds("SCAN_AIRPORTS", "0"));
    EXPECT_EQ(session.world.log().find("Waiting for RealTraffic", before), std::string::npos)
        << "nobody waits for it in this mode";
}

TEST(WindowControls, EachIsUsedOnceAndHasItsEffect) {
    Session session;
    ASSERT_NO_FATAL_FAILURE(start(session));
    const auto began = std::chrono::steady_clock::now();
    const auto part = [&](const char* name, void (*run)(Session&)) {
        SCOPED_TRACE(name);
        run(session);
        const std::chrono::duration<double> sofar = std::chrono::steady_clock::now() - began;
        std::cout << fmt::format("{:5.1f} s {}\n", sofar.count(), name);
    };
    part("check boxes", useCheckBoxes);
    part("number boxes", useNumberBoxes);
    part("rubbish", enterRubbish);
    part("disabled control", tryADisabledControl);
    part("automatic range", letTheRangeBeWorkedOut);
    part("park airport", bringAnAirportInSight);
    part("callsign", blockACallsign); // while the parked aircraft come
    part("parked aircraft", seeItsAircraft);
    part("lights", switchTheLights);
    part("parking", changeTheParking);
    part("flush and re-read", flushAndReRead);
    part("limits", limitTheTraffic);
    part("restart", restart);
    test::host::askToClose(session.world.program());
    EXPECT_EQ(session.world.program().wait(20s), 0);
}

} // namespace
} // namespace kst

// The measuring tool on drawn flights whose errors are known.

#include "tools/measureflights/measure.h"
#include "tools/measureflights/page.h"

#include <cmath>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sstream>

namespace kst::tool {
namespace {

constexpr double metresPerDegree = 60.0 * metresPerNm;
constexpr double start = 1700000000.0;
constexpr double gsKt = 360.0;
constexpr double mPerSecond = gsKt * metresPerNm / 3600.0;

const std::string sentHeader =
    "time,hexid,callsign,registration,type,lat,lon,alt_ft,gs_kt,track_deg,on_ground\n";
const std::string historyHeader = "seconds,time,id,tail_number,title,lat,lon,alt_ft,on_ground\n";

/// A target that flies north along the meridian from the equator, a line every 5 s, for `seconds`.
std::string flightNorth(double seconds, bool onGround = false) {
    std::string text;
    for (double t = 0.0; t <= seconds; t += 5.0) {
        text += fmt::format("{:.3f},20000,SWR12,HB-JHA,A320,{:.9f},0.000000,{},{},0.0,{}\n", start + t,
                            t * mPerSecond / metresPerDegree, onGround ? 0 : 10000, gsKt, onGround ? 1 : 0);
    }
    return text;
}

struct Flown {
    double besideM = 0.0; ///< to the east of the line
    double lateS = 0.0;   ///< beyond the 30 seconds
    double altFt = 10000.0;
    double jumpAtS = -1.0; ///< at this moment the object is `jumpM` farther, and stays there
    double jumpM = 0.0;
    bool onGround = false;
    std::string tailNumber = "SWR12";
};

/// What the simulator shows of it, ten frames a second, from 30 s to 30 s + `seconds`.
std::string shown(const Flown& flown, double seconds) {
    std::string text;
    for (int frame = 0; frame <= static_cast<int>(seconds * 10.0); ++frame) {
        const double t = frame / 10.0;
        double metres = (t - flown.lateS) * mPerSecond;
        metres += flown.jumpAtS >= 0.0 && t >= flown.jumpAtS ? flown.jumpM : 0.0;
        text += fmt::format("{:.1f},{:.3f},7,\"{}\",\"Demo \"\"A320\"\", SWR\",{:.9f},{:.9f},{},{}\n", t,
                            start + 30.0 + t, flown.tailNumber, metres / metresPerDegree,
                            flown.besideM / metresPerDegree, flown.altFt, flown.onGround ? 1 : 0);
    }
    return text;
}

/// The figures together with the flights that they point into.
struct Result {
    Result(const std::string& sent, const std::string& history) {
        std::istringstream sentIn(sentHeader + sent);
        readSent(sentIn, flights);
        std::istringstream historyIn(historyHeader + history);
        readHistory(historyIn, flights);
        measured = measure(flights);
    }
    Flights flights;
    Measured measured;
};

TEST(MeasureFlights, KnownOffsetLagAndAltitudeAreFound) {
    struct Case {
        Flown flown;
        double distanceM;
        double lagS;
        double altitudeFt;
    };
    const std::vector<Case> cases = {
        {{}, 0.0, 0.0, 0.0},
        {{.besideM = 25.0}, 25.0, 0.0, 0.0},
        {{.lateS = 1.5}, 0.0, 1.5, 0.0},
        {{.lateS = -2.0, .altFt = 10150.0}, 0.0, -2.0, 150.0},
        {{.besideM = 40.0, .lateS = 3.0, .altFt = 9900.0}, 40.0, 3.0, 100.0},
    };
    for (const Case& one : cases) {
        const Result result(flightNorth(200.0), shown(one.flown, 150.0));
        const PathFigures& air = result.measured.air;
        const Spread fromLine = spreadOf(air.fromLineM);
        SCOPED_TRACE(fmt::format("beside {} late {}", one.flown.besideM, one.flown.lateS));
        EXPECT_EQ(air.objects, 1U);
        EXPECT_EQ(fromLine.count, 1501U);
        EXPECT_NEAR(fromLine.median, one.distanceM, 0.1);
        EXPECT_NEAR(fromLine.p95, one.distanceM, 0.1);
        EXPECT_NEAR(spreadOf(air.lagS).median, one.lagS, 0.01);
        EXPECT_NEAR(spreadOf(air.timeOffS).median, std::abs(one.lagS), 0.01);
        EXPECT_NEAR(spreadOf(air.altitudeOffFt).median, one.altitudeFt, 0.1);
        EXPECT_LT(air.worstStep.overM, 0.01);
        EXPECT_EQ(result.measured.ground.objects, 0U);
    }
}

TEST(MeasureFlights, JumpsAndGroundHaveRowsOfTheirOwn) {
    const Result result(flightNorth(200.0), shown({.jumpAtS = 60.0, .jumpM = 100.0}, 150.0));
    const Step& step = result.measured.air.worstStep;
    EXPECT_NEAR(step.overM, 100.0, 0.1);
    EXPECT_NEAR(step.explainedM, mPerSecond / 10.0, 0.1);
    EXPECT_NEAR(step.time, start + 90.0, 0.01);
    EXPECT_EQ(step.tailNumber, "SWR12");

    const Result early(flightNorth(200.0), shown({.jumpAtS = 2.0, .jumpM = 20.0}, 150.0));
    EXPECT_NEAR(early.measured.appearing.overM, 20.0, 0.1) << "the first seconds of an object are told apart";
    EXPECT_LT(early.measured.air.worstStep.overM, 0.01);

    const Result ground(flightNorth(100.0, true), shown({.besideM = 3.0, .onGround = true}, 50.0));
    EXPECT_TRUE(ground.measured.air.fromLineM.empty());
    EXPECT_EQ(ground.measured.ground.objects, 1U);
    EXPECT_NEAR(spreadOf(ground.measured.ground.fromLineM).median, 3.0, 0.1);
}

TEST(MeasureFlights, AHoldingAircraftIsNotHeldAgainstAnEarlierRound) {
    // Two legs over the same line, four minutes apart: north, away, north again.
    std::string sent = flightNorth(100.0);
    std::istringstream again(flightNorth(100.0));
    for (std::string line; std::getline(again, line);) {
        const double time = std::stod(line.substr(0, line.find(',')));
        sent += fmt::format("{:.3f}{}\n", time + 240.0, line.substr(line.find(',')));
    }
    const Result result(sent, shown({.lateS = 1.0}, 60.0));
    EXPECT_NEAR(spreadOf(result.measured.air.timeOffS).max, 1.0, 0.01);
}

TEST(MeasureFlights, SamplesBehindTheTracksEndAreLeftOut) {
    const Result result(flightNorth(100.0), shown({}, 150.0));
    EXPECT_EQ(result.measured.air.fromLineM.size(), 1001U);
    EXPECT_EQ(result.measured.withoutTrack, 500U);
    EXPECT_LT(spreadOf(result.measured.air.timeOffS).max, 0.01);
}

TEST(MeasureFlights, ObjectsAreSortedByTheirTailNumber) {
    const struct {
        std::string tailNumber;
        std::size_t matched;
        std::size_t unmatched;
        std::size_t parked;
    } cases[] = {
        {"SWR12", 1, 0, 0}, {"HB-JHA", 1, 0, 0}, {"DLH9", 0, 1, 0}, {"SWR12*", 0, 0, 1}, {"", 0, 1, 0}};
    for (const auto& one : cases) {
        const Result result(flightNorth(100.0), shown({.tailNumber = one.tailNumber}, 20.0));
        EXPECT_EQ(result.measured.byObject.size(), one.matched) << one.tailNumber;
        EXPECT_EQ(result.measured.unmatched, one.unmatched) << one.tailNumber;
        EXPECT_EQ(result.measured.parked, one.parked) << one.tailNumber;
    }
}

TEST(MeasureFlights, HostileRowsAreCountedAndHarmNothing) {
    const std::string bad = "x,y\n,,,,,,,,,,\n-1,nan,inf,,,,,,\n1e9,99999999999,A,B,C,1,1,1,1,1,1\n"
                            "5,1,A,B,C,91,0,0,0,0,0\n5,1,A,B,C,0,181,0,0,0,0\n\"\"\"\"\"\n\n";
    const Result result(flightNorth(100.0) + bad, shown({}, 20.0) + bad);
    EXPECT_GE(result.flights.unreadableRows, 12U);
    EXPECT_EQ(result.measured.air.objects, 1U);
    EXPECT_EQ(result.measured.targets, 1U);

    Flights flights;
    std::istringstream otherFile("a,b,c\n1,2,3\n");
    EXPECT_THROW(readHistory(otherFile, flights), std::runtime_error);
    std::istringstream empty("");
    EXPECT_THROW(readSent(empty, flights), std::runtime_error);
}

TEST(MeasureFlights, ReportsHoldTheFiguresAndEscapeForeignText) {
    const Result result(flightNorth(100.0) + "1,30000,<b>,,,0,0,0,0,0,0\n2,30000,<b>,,,0,0,0,0,0,0\n",
                        shown({.besideM = 25.0}, 50.0) + "0,32,8,<b>,<script>,0,0,0,0\n");
    EXPECT_NE(tableOf(result.measured).find("25.0"), std::string::npos);
    const std::string page = pageOf(result.measured, "flights", tableOf(result.measured));
    EXPECT_EQ(page.find("<script>"), std::string::npos);
    EXPECT_NE(page.find("&lt;script&gt;"), std::string::npos);
    EXPECT_NE(page.find("Demo &quot;A320&quot;, SWR"), std::string::npos);
    EXPECT_EQ(page.find("http"), std::string::npos) << "the page needs nothing from elsewhere";
}

} // namespace
} // namespace kst::tool

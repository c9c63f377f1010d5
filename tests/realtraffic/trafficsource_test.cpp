// The recorded and the generated traffic of the stand-in: the right report at the right time, the same each
// time, and nothing from hostile rows.

#include "standins/realtraffic/geometry.h"
#include "standins/realtraffic/trackfile.h"
#include "standins/realtraffic/trafficsource.h"
#include "support/tempfolder.h"

#include "support/places.h"
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>

namespace kst::standin {
namespace {

std::filesystem::path track(const std::string& name) {
    return kst::test::sourceFolder() / "data" / "tracks" / (name + ".csv");
}

class TrackFile : public testing::Test {
protected:
    kst::test::TempFolder folder_;
    const std::filesystem::path path_ = folder_.write("tracks.csv",
                                                      "start,1000\n"
                                                      "aircraft,1,4b1803,SWR12,HB-JHA,A333\n"
                                                      "aircraft,2,400938,,,\n"
                                                      "aircraft,3,2710,,,\n" // no live target: 10000
                                                      "10,1,47.0,8.0,10000,0,90,300,0\n"
                                                      "12.5,2,47.1,8.1,,,,,1\n"
                                                      "13,3,47.1,8.1,,,,,1\n"
                                                      "40,1,47.0,8.05,10000,0,90,300,0\n");
};

std::vector<TrafficReport> take(TrafficSource& source, double seconds) {
    std::vector<TrafficReport> reports;
    source.takeDue(seconds, reports);
    return reports;
}

TEST_F(TrackFile, GivesEachReportOnceWhenItsTimeHasCome) {
    const auto source = recordedTraffic({.files = {{path_}}});
    const auto first = take(*source, 0.0);
    ASSERT_EQ(first.size(), 1U);
    EXPECT_EQ(first[0].hexid, 0x4b1803U);
    EXPECT_EQ(first[0].at, 0.0);
    EXPECT_TRUE(take(*source, 2.4).empty());
    const auto second = take(*source, 29.9);
    ASSERT_EQ(second.size(), 1U);
    EXPECT_TRUE(second[0].onGround);
    EXPECT_EQ(second[0].altFt, 0.0);
    EXPECT_TRUE(source->hasMore());
    EXPECT_EQ(take(*source, 30.0).size(), 1U);
    EXPECT_FALSE(source->hasMore());
}

TEST_F(TrackFile, StartLoopSpeedAndGapsMoveTheTimes) {
    struct Case {
        RecordedOptions options;
        std::vector<double> times;
    };
    const std::vector<Case> cases = {
        {{.files = {{path_, 12.0}}}, {0.0, 27.5}},
        {{.files = {{path_}}, .speed = 10.0}, {0.0, 0.25, 3.0}},
        {{.files = {{path_}}, .longestGapSeconds = 5.0}, {0.0, 2.5, 7.5}},
        {{.files = {{path_}}, .loop = true, .loopPauseSeconds = 100.0},
         {0.0, 2.5, 30.0, 130.0, 132.5, 160.0}},
        {{.files = {{path_}, {path_, 12.0}}}, {0.0, 0.0, 2.5, 27.5, 30.0}},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const auto source = recordedTraffic(cases[i].options);
        std::vector<double> times;
        for (const TrafficReport& report : take(*source, 200.0)) {
            times.push_back(report.at);
        }
        EXPECT_EQ(times, cases[i].times) << "case " << i;
    }
    EXPECT_THROW(recordedTraffic({.files = {{path_, 1000.0}}}), std::runtime_error);
    EXPECT_THROW(recordedTraffic({.files = {{"no such file"}}}), std::runtime_error);
}

TEST(TrackRows, HostileRowsAreSkippedAndCounted) {
    const std::vector<std::string> hostile = {
        "start,abc",
        "aircraft,1",
        "aircraft,x,4b1803,A,B,C",
        "aircraft,3,zz,A,B,C",
        "aircraft,3,1ffffffff,A,B,C",
        "0,9,47,8,1000",
        "0,1,47",
        "0,1,nan,8,1000",
        "0,1,47,inf,1000",
        "0,1,91,8,1000",
        "0,1,47,181,1000",
        "1e999,1,47,8,1000",
        "-,1,47,8,1000",
        "0,1,47,8,1000,0,0,0,0,0,0,0",
        std::string("\0\xff,,,", 5),
        ",,,,,,,,,",
    };
    std::string text = "start,0\naircraft,1,4b1803,SWR12,HB-JHA,A333\n";
    for (const std::string& row : hostile) {
        text += row + "\n";
    }
    std::istringstream in(text + "5,1,47,8,1000\r\n");
    const RecordedTracks tracks = readTracks(in);
    EXPECT_EQ(tracks.unreadableLines, hostile.size());
    ASSERT_EQ(tracks.points.size(), 1U);
    EXPECT_EQ(tracks.points[0].altFt, 1000.0);
}

TEST(TrackRows, MissingSpeedTrackAndClimbComeFromTheNeighbours) {
    std::istringstream in("start,0\naircraft,1,3b7777,FAF1,739,K35R\n"
                          "0,1,45,2,20000\n10,1,45.0166667,2,20200\n20,1,45.0333333,2,20400\n");
    RecordedTracks tracks = readTracks(in);
    completeTracks(tracks);
    ASSERT_EQ(tracks.points.size(), 3U);
    for (const RecordedPoint& point : tracks.points) {
        EXPECT_NEAR(point.gsKt.value(), 360.3, 1.0); // a minute of arc in 10 s
        EXPECT_NEAR(turnDeg(0.0, point.trackDeg.value()), 0.0, 0.1);
        EXPECT_NEAR(point.vsFpm.value(), 1200.0, 1.0);
    }
}

TEST(RecordedTraffic, EveryShippedFileReadsWithoutALostLine) {
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(track("x").parent_path())) {
        const RecordedTracks tracks = readTrackFile(entry.path());
        EXPECT_EQ(tracks.unreadableLines, 0U) << entry.path();
        EXPECT_GT(tracks.points.size(), 900U) << entry.path();
        EXPECT_EQ(tracks.points.front().at, 0.0) << entry.path();
        ++files;
    }
    EXPECT_EQ(files, 15);
}

TEST(GeneratedTraffic, SameSeedSameReports) {
    const GeneratorOptions options{.aircraft = 200, .centre = {47.46, 8.55}, .seed = 7};
    const auto whole = generatedTraffic(options);
    const auto pieces = generatedTraffic(options);
    std::vector<TrafficReport> inPieces;
    for (int i = 0; i <= 1200; ++i) {
        pieces->takeDue(i * 0.1, inPieces);
    }
    const std::vector<TrafficReport> atOnce = take(*whole, 120.0);
    ASSERT_EQ(atOnce.size(), inPieces.size());
    for (std::size_t i = 0; i < atOnce.size(); ++i) {
        ASSERT_EQ(trafficLine(atOnce[i], 0.0), trafficLine(inPieces[i], 0.0)) << i;
    }
    const auto other = generatedTraffic({.aircraft = 200, .centre = {47.46, 8.55}, .seed = 8});
    EXPECT_NE(trafficLine(take(*other, 1.0).at(0), 0.0), trafficLine(atOnce.at(0), 0.0));
}

TEST(GeneratedTraffic, FliesWithoutJumpsTurnsOrClimbsThatNoAirlinerDoes) {
    const LatLon centre{47.46, 8.55};
    const auto source = generatedTraffic({.aircraft = 100, .centre = centre, .seed = 3});
    std::map<std::uint32_t, TrafficReport> last;
    std::set<std::uint32_t> seen;
    double previousAt = 0.0;
    for (const TrafficReport& report : take(*source, 3600.0)) {
        ASSERT_GE(report.at, previousAt);
        previousAt = report.at;
        seen.insert(report.hexid);
        ASSERT_GT(report.altFt, 1000.0);
        ASSERT_LT(report.altFt, 43000.0);
        ASSERT_LT(distanceNm(centre, report.position), 100.0);
        const auto before = last.find(report.hexid);
        if (before != last.end()) {
            const double seconds = report.at - before->second.at;
            const double wayNm = distanceNm(before->second.position, report.position);
            ASSERT_NEAR(wayNm * 3600.0 / seconds, report.gsKt, 15.0) << report.callsign;
            const double turn = std::abs(turnDeg(*before->second.trackDeg, *report.trackDeg));
            ASSERT_LT(turn, 4.5 * seconds) << report.callsign;
            ASSERT_LT(std::abs(report.altFt - before->second.altFt), 40.0 * seconds) << report.callsign;
        }
        last[report.hexid] = report;
    }
    EXPECT_GT(seen.size(), 150U) << "flights that end are followed by new ones";
}

} // namespace
} // namespace kst::standin

// The datagrams and the link of the stand-in, read here field by field as the traffic program reads them.

#include "standins/realtraffic/trafficsource.h"
#include "standins/realtraffic/userlink.h"

#include <gtest/gtest.h>
#include <sstream>

namespace kst::standin {
namespace {

std::vector<std::string> cut(const std::string& line) {
    std::istringstream rest(line);
    std::vector<std::string> fields;
    for (std::string field; std::getline(rest, field, ',');) {
        fields.push_back(field);
    }
    return fields;
}

TEST(TrafficLine, EveryFieldThatIsReadStandsAtItsIndex) {
    TrafficReport airliner;
    airliner.hexid = 0x4b1803;
    airliner.callsign = "SWR12";
    airliner.registration = "HB-JHA";
    airliner.type = "A333";
    airliner.origin = "LSZH";
    airliner.category = "A5";
    airliner.position = {47.123456, -8.5};
    airliner.altFt = 36012.4;
    airliner.vsFpm = -640.0;
    airliner.gsKt = 451.25;
    airliner.trackDeg = 181.3;
    airliner.headingDeg = 180.0;
    airliner.rollDeg = 12.5;
    airliner.tasKt = 450.0;
    TrafficReport unknown;
    unknown.hexid = 10001;
    unknown.onGround = true;
    struct Case {
        std::size_t field;
        std::string airliner;
        std::string unknown;
    };
    const Case cases[] = {{1, "4921347", "10001"},
                          {2, "47.123456", "0.000000"},
                          {3, "-8.500000", "0.000000"},
                          {4, "36012", "0"},
                          {5, "-640", "0"},
                          {6, "0", "1"},
                          {7, "181.3", ""},
                          {8, "451.2", "0.0"},
                          {9, "SWR12", "null"},
                          {10, "A333", "null"},
                          {11, "HB-JHA", "null"},
                          {12, "LSZH", "null"},
                          {13, "null", "null"},
                          {14, "1700000000.50", "1700000000.50"},
                          {15, "R", "R"},
                          {17, "adsb_icao", "adsb_icao"},
                          {20, "450.0", "-1.0"},
                          {23, "12.50", "-1.00"},
                          {25, "180.00", "-1.00"},
                          {28, "A5", unknown.category}};
    const auto fields = cut(trafficLine(airliner, 1700000000.5));
    const auto unknownFields = cut(trafficLine(unknown, 1700000000.5));
    for (const Case& c : cases) {
        EXPECT_EQ(fields.at(c.field), c.airliner) << "field " << c.field;
        EXPECT_EQ(unknownFields.at(c.field), c.unknown) << "field " << c.field;
    }
}

TEST(UserLink, CutsTheStreamIntoCommandsHoweverItArrives) {
    const std::string stream =
        "Qs999=version\r\nQs121=-1200;3400;1.570796;12500000;250500;0.828318;0.149226\r\n"
        "Qs123=1700000000123\r\nexit\r\n";
    for (std::size_t piece = 1; piece <= stream.size(); ++piece) {
        LinkCommandReader reader;
        std::vector<LinkCommand> commands;
        for (std::size_t from = 0; from < stream.size(); from += piece) {
            for (LinkCommand& command : reader.take(std::string_view(stream).substr(from, piece))) {
                commands.push_back(std::move(command));
            }
        }
        ASSERT_EQ(commands.size(), 4U) << "pieces of " << piece;
        EXPECT_EQ(commands[0].kind, LinkCommand::Kind::AskVersion);
        ASSERT_EQ(commands[1].kind, LinkCommand::Kind::UserPosition);
        EXPECT_NEAR(commands[1].position.lat, 47.459126, 1e-5);
        EXPECT_NEAR(commands[1].position.lon, 8.550020, 1e-5);
        EXPECT_EQ(commands[1].altFt, 12500.0);
        EXPECT_EQ(commands[1].gsKt, 250.5);
        EXPECT_NEAR(commands[1].headingDeg, 90.0, 1e-4);
        ASSERT_EQ(commands[2].kind, LinkCommand::Kind::SimulatorTime);
        EXPECT_EQ(commands[2].milliseconds, 1700000000123);
        EXPECT_EQ(commands[3].kind, LinkCommand::Kind::Exit);
    }
}

TEST(UserLink, WhatIsNoCommandIsReportedAsUnreadable) {
    for (const std::string text : {"Qs121=1;2;3", "Qs121=1;2;3;4;5;6;7;8", "Qs121=1;2;3;4;x;6;7",
                                   "Qs121=", "Qs123=", "Qs123=12a", "hello", ""}) {
        LinkCommandReader reader;
        const auto commands = reader.take(text + "\r\n");
        ASSERT_EQ(commands.size(), 1U) << text;
        EXPECT_EQ(commands[0].kind, LinkCommand::Kind::Unreadable) << text;
    }
    LinkCommandReader reader;
    EXPECT_EQ(reader.take(std::string(5000, 'x')).size(), 1U);
    EXPECT_TRUE(reader.take("x").empty()) << "an endless line must not be kept";
}

} // namespace
} // namespace kst::standin

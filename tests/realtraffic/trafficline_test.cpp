// The datagrams and the link of the stand-in, read here field by field as the traffic program reads them.

#include "standins/realtraffic/trafficsource.h"
#include "standins/realtraffic/userlink.h"

#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>

namespace kst::standin {
namespace {

std::vector<std::string> cut(const std::string& line) {
    std::vector<std::string> fields(1);
    for (const char letter : line) {
        if (letter == ',') {
            fields.emplace_back();
        } else {
            fields.back() += letter;
        }
    }
    return fields;
}

TrafficReport airliner() {
    TrafficReport report;
    report.hexid = 0x4b1803;
    report.callsign = "SWR12";
    report.registration = "HB-JHA";
    report.type = "A333";
    report.origin = "LSZH";
    report.category = "A5";
    report.position = {47.123456, -8.5};
    report.altFt = 36012.4;
    report.vsFpm = -640.0;
    report.gsKt = 451.25;
    report.trackDeg = 181.3;
    report.headingDeg = 180.0;
    report.rollDeg = 12.5;
    report.tasKt = 450.0;
    return report;
}

TEST(TrafficLine, EveryFieldThatIsReadStandsAtItsIndex) {
    const auto fields = cut(trafficLine(airliner(), 1700000000.5));
    const std::map<std::size_t, std::string> expected = {
        {1, "4921347"},        {2, "47.123456"},  {3, "-8.500000"}, {4, "36012"},
        {5, "-640"},           {7, "181.3"},      {8, "451.2"},     {9, "SWR12"},
        {10, "A333"},          {11, "HB-JHA"},    {12, "LSZH"},     {13, "null"},
        {14, "1700000000.50"}, {17, "adsb_icao"}, {20, "450.0"},    {23, "12.50"},
        {25, "180.00"},        {28, "A5"}};
    ASSERT_GE(fields.size(), 29U);
    for (const auto& [index, text] : expected) {
        EXPECT_EQ(fields[index], text) << "field " << index;
    }
    EXPECT_NE(fields[15], "F");
}

TEST(TrafficLine, UnknownIsToldInTheFormOfEachField) {
    TrafficReport report;
    report.hexid = 10001;
    report.onGround = true;
    const auto fields = cut(trafficLine(report, 0.0));
    ASSERT_GE(fields.size(), 29U);
    EXPECT_EQ(fields[4], "0");
    EXPECT_EQ(fields[7], "");
    for (const std::size_t text : {9U, 10U, 11U, 12U, 13U}) {
        EXPECT_EQ(fields[text], "null") << "field " << text;
    }
    for (const std::size_t number : {20U, 23U, 25U}) {
        EXPECT_EQ(std::stod(fields[number]), -1.0) << "field " << number;
    }
    EXPECT_FALSE(fields[28].empty());
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

TEST(UserLink, VersionReplyIsOneObject) {
    const auto reply = nlohmann::json::parse(versionReply("10.1", 2));
    EXPECT_EQ(reply.at("version"), "10.1");
    EXPECT_EQ(reply.at("level"), 2);
}

} // namespace
} // namespace kst::standin

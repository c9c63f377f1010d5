#include "catalogue/scramble.h"

#include <gtest/gtest.h>

#include <random>

namespace kst {
namespace {

/// A code of the characters that may stand in one, without lower-case letters.
std::string randomCode(std::mt19937& random, std::size_t length) {
    constexpr std::string_view characters = "-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::string code;
    for (std::size_t i = 0; i < length; ++i) {
        code += characters[random() % characters.size()];
    }
    return code;
}

TEST(Scramble, EveryCodeComesBackAndLooksDifferent) {
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round) {
        const std::string regcode = randomCode(random, random() % 25);
        EXPECT_EQ(gf_decodeRegcode(gf_encodeRegcode(regcode)), regcode);
        const std::string model = randomCode(random, 2 + random() % 3);
        EXPECT_EQ(gf_decodeModel(gf_encodeModel(model)), model);
        const std::string airline = randomCode(random, 3);
        EXPECT_EQ(gf_decodeAirline(gf_encodeAirline(airline)), airline);
        EXPECT_EQ(gf_encodeAirline(airline).size(), 6U);
    }
    EXPECT_NE(gf_encodeRegcode("HB-JCA"), "HB-JCA");
    EXPECT_NE(gf_encodeModel("A320"), "A320");
}

TEST(Scramble, EmptyStaysEmptyAndPlusStaysPlus) {
    EXPECT_EQ(gf_decodeRegcode(""), "");
    EXPECT_EQ(gf_decodeModel(""), "");
    EXPECT_EQ(gf_decodeAirline(gf_encodeAirline("")), "");
    EXPECT_EQ(gf_encodeRegcode("12+34")[2], '+');
}

TEST(Scramble, IllegalLengthsAndLowerCaseAreRefused) {
    EXPECT_EQ(gf_decodeAirline("SWR"), "SWR");
    for (const char* text : {"S", "SW", "SWRX", "SWRXY", "SWRXYZ1"}) {
        EXPECT_THROW(gf_decodeAirline(text), std::runtime_error) << text;
    }
    EXPECT_THROW(gf_decodeModel("A"), std::runtime_error);
    EXPECT_THROW(gf_decodeModel("A320N"), std::runtime_error);
    EXPECT_THROW(gf_decodeRegcode(std::string(25, 'A')), std::runtime_error);
    EXPECT_THROW(gf_encodeRegcode("hb-jca"), std::runtime_error);
}

TEST(Scramble, ForeignBytesNeverLeaveTheText) {
    std::string all;
    for (int byte = 1; byte < 256; byte += 11) {
        all += static_cast<char>(byte);
    }
    EXPECT_EQ(gf_decodeRegcode(all.substr(0, 24)).size(), 24U);
    EXPECT_EQ(gf_decodeModel("\xFF\x01z ").size(), 4U);
}

} // namespace
} // namespace kst

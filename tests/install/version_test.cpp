#include "core/parameters.h"
#include "install/services.h"
#include "install/version.h"
#include "support/tempfolder.h"

#include <gtest/gtest.h>

namespace kst {
namespace {

TEST(Version, PlainAndJsonFormsAreRead) {
    EXPECT_EQ(parseVersion("1.2.3"), (ProgramVersion{1, 2, 3}));
    EXPECT_EQ(parseVersion(R"({"major":10,"minor":11,"patch":0})"), (ProgramVersion{10, 11, 0}));
    EXPECT_EQ(parseVersion(""), ProgramVersion{});
    EXPECT_FALSE(parseVersion("0.0.0").known());
    for (const char* text :
         {"abc", "<html>", R"({"major":1})", "[1,2,3]", R"({"major":"x","minor":1,"patch":1})"}) {
        EXPECT_ANY_THROW(parseVersion(text)) << text;
    }
    EXPECT_ANY_THROW(parseVersion(std::string(100'000, '1')));
}

TEST(Version, ComparedByNumberNotByText) {
    EXPECT_GT(parseVersion("10.10.0"), parseVersion("10.9.8"));
    EXPECT_LT(parseVersion("9.99.0"), parseVersion("10.9.8"));
}

TEST(Migration, OnlyAStepUpAsksForScans) {
    const std::pair<const char*, bool> cases[] = {
        {"", false}, {"10.9.7", true}, {"10.9.8", false}, {"10.10.0", false}, {"garbage", true}};
    for (const auto& [stored, scans] : cases) {
        const test::TempFolder folder;
        PROGRAM_VERSION.set(stored);
        SCAN_LIVERIES.set(false);
        SCAN_AIRPORTS.set(false);
        lf_migrateVersion();
        EXPECT_EQ(PROGRAM_VERSION.get(), thisProgramVersion().text()) << stored;
        EXPECT_EQ(SCAN_LIVERIES.get(), scans) << stored;
        EXPECT_EQ(SCAN_AIRPORTS.get(), scans) << stored;
    }
    for (Parameter* parameter : allParameters()) {
        parameter->setDefault();
    }
}

} // namespace
} // namespace kst

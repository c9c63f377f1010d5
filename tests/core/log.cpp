#include "core/log.h"

#include "core/exceptions.h"
#include "core/linelimiter.h"
#include "support/tempfolder.h"
#include "support/thrown.h"
#include "support/virtualtime.h"

#include <algorithm>
#include <regex>
#include <sstream>
#include <thread>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

class LogTest : public testing::Test {
protected:
    ~LogTest() override { closeLog(); }

    std::vector<std::string> linesOf(const std::string& name) const {
        std::istringstream content(folder.read(name).value_or("<no file>"));
        std::vector<std::string> lines;
        for (std::string line; std::getline(content, line);) {
            lines.push_back(line);
        }
        return lines;
    }
    /// The log without its first line.
    std::vector<std::string> logged() const {
        std::vector<std::string> lines = linesOf("Log.txt");
        lines.erase(lines.begin());
        return lines;
    }

    test::TempFolder folder;
    test::VirtualTime time;
};

TEST_F(LogTest, ThreeRunsLeaveTheTwoLogsBeforeThePresentOne) {
    for (const char* run : {"first", "second", "third", "fourth"}) {
        openLog();
        logLine(run);
        closeLog();
    }
    EXPECT_EQ(linesOf("Log.txt").at(1), "fourth");
    EXPECT_EQ(linesOf("Log0.txt").at(1), "third");
    EXPECT_EQ(linesOf("Log00.txt").at(1), "second");
    EXPECT_EQ(folder.read("Log000.txt"), std::nullopt);
    std::filesystem::remove("Log0.txt");
    openLog();
    EXPECT_EQ(linesOf("Log00.txt").at(1), "second") << "a missing middle one does not cost the oldest";
    EXPECT_EQ(linesOf("Log0.txt").at(1), "fourth");
}

TEST_F(LogTest, FirstLineTellsTimeAndVersion) {
    openLog();
    EXPECT_THAT(
        linesOf("Log.txt"),
        ElementsAre(fmt::format("Mon Mar  4 10:00:00 2024 (utc) Kestrane_P3D version {} for Prepar3D v5/v6",
                                programVersionText())));
    EXPECT_TRUE(std::regex_match(std::string(programVersionText()), std::regex(R"(\d+\.\d+\.\d+)")));
}

TEST_F(LogTest, ALogThatCannotBeCreatedEndsTheStart) {
    for (const char* name : {"Log.txt", "Log0.txt", "Log00.txt"}) {
        std::filesystem::create_directories(std::filesystem::path(name) / "in the way");
    }
    EXPECT_EQ(test::thrown<SysErrorException>(openLog),
              fmt::format("sys error 40: Failed to write file {}", (folder.path() / "Log.txt").string()));
    logLine("must be ignored while no log is open");
    EXPECT_TRUE(std::filesystem::is_directory("Log.txt"));
}

TEST_F(LogTest, EachLineIsInTheFileAtOnceWithItsPrefix) {
    openLog();
    logLine("plain");
    logAlert("alert");
    logIndented("indented");
    logLine("");
    EXPECT_THAT(logged(), ElementsAre("plain", "===> alert", "          indented", ""));
}

TEST_F(LogTest, AFloodOfOneKindIsCountedAndTheCountToldOnceASecond) {
    openLog();
    for (int i = 0; i < 1000; ++i) {
        logLine(fmt::format("bad line {} of the feed", i));
        if (i % 100 == 0) {
            logLine("something else");
        }
    }
    std::vector<std::string> lines = logged();
    EXPECT_EQ(lines.size(), 110U);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "something else"), 10);

    time.advance(1s);
    logLine("quiet again");
    lines = logged();
    ASSERT_EQ(lines.size(), 112U);
    EXPECT_EQ(lines[110], "... 900 more lines of the kind \"bad line \" left out");
    EXPECT_EQ(lines[111], "quiet again");
    logLine("bad line 1000 of the feed");
    EXPECT_EQ(logged().back(), "bad line 1000 of the feed") << "a new second begins afresh";
}

TEST_F(LogTest, AHundredASecondPassForEverAndTheLastCountIsNotLost) {
    openLog();
    for (int second = 0; second < 20; ++second) {
        for (int i = 0; i < 100; ++i) {
            logLine("again");
        }
        time.advance(second < 19 ? 1s : 0s);
    }
    EXPECT_EQ(logged().size(), 2000U);
    logLine("again");
    closeLog();
    EXPECT_EQ(logged().back(), "... 1 more line of the kind \"again\" left out");
}

TEST_F(LogTest, AnEndlessLineFromOutsideIsCut) {
    openLog();
    logLine(std::string(1'000'000, 'x'));
    EXPECT_LT(logged().at(0).size(), 70'000U);
    EXPECT_THAT(logged().at(0), HasSubstr(" ... (934464 more bytes)"));
}

TEST_F(LogTest, ThreadsNeverMixTheirLines) {
    constexpr int linesEach = 400;
    openLog();
    std::vector<std::thread> threads;
    for (const char name : {'A', 'B', 'C', 'D'}) {
        threads.emplace_back([name] {
            for (int i = 0; i < linesEach; ++i) {
                logAlert(std::string(static_cast<std::size_t>(50 + i % 7), name));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    closeLog();
    const std::regex whole(R"(===> (A+|B+|C+|D+)|\.\.\. (\d+) more lines? of the kind .*)");
    int total = 0;
    for (const std::string& line : logged()) {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(line, match, whole)) << line;
        total += match[2].matched ? std::stoi(match[2]) : 1;
    }
    EXPECT_EQ(total, 4 * linesEach);
}

TEST(LineLimiterTest, KindsWithoutNumberStayBounded) {
    LineLimiter limiter;
    std::string reports;
    std::size_t admitted = 0;
    constexpr std::size_t lines = 20'000;
    for (std::size_t i = 0; i < lines; ++i) {
        // A different text each time, without a digit.
        std::string text = "garbage ";
        for (std::size_t rest = i; rest > 0; rest /= 26) {
            text.push_back(static_cast<char>('a' + rest % 26));
        }
        admitted += limiter.admit(text, 5s, reports) ? 1 : 0;
    }
    EXPECT_EQ(admitted, LineLimiter::kindsKept + LineLimiter::linesPerSecond);
    EXPECT_EQ(reports, "");
    EXPECT_TRUE(limiter.admit("another", 6s, reports));
    EXPECT_THAT(reports, HasSubstr(fmt::format("... {} more lines", lines - admitted)));
}

TEST(LineLimiterTest, AClockThatRunsBackwardsSilencesNothing) {
    LineLimiter limiter;
    std::string reports;
    for (int i = 0; i < 150; ++i) {
        limiter.admit("line", 1000s, reports);
    }
    EXPECT_TRUE(limiter.admit("line", 1s, reports));
    EXPECT_EQ(reports, "... 50 more lines of the kind \"line\" left out\n");
}

TEST(BannerTest, TitleBetweenStarsOfEvenWidth) {
    struct Case {
        int width, extra;
        bool before, after;
        std::string title, expected;
    };
    const Case cases[] = {
        {20, 0, false, false, "title", "********* title *********"},
        {19, 0, false, false, "", "********************"},
        {10, 5, true, false, "", "\n****************"},
        {6, 0, false, true, "abc", "** abc **\n"},
        {6, 0, true, true, "abcd", "\nabcd\n"},
        {-4, 0, false, false, "", ""},
        {0, 0, false, false, "x", "x"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(bannerLine(c.width, c.extra, c.before, c.after, c.title), c.expected);
    }
}

TEST(TimeTextTest, FormsOfTimeAndHours) {
    test::VirtualTime time;
    EXPECT_EQ(nowText(), "Mon Mar  4 10:00:00 2024");
    time.advance(9 * 24h + 13h + 59min + 59s);
    EXPECT_EQ(nowText(), "Wed Mar 13 23:59:59 2024");
    EXPECT_EQ(timeOfDay(), "23:59:59");
    const std::pair<double, const char*> hours[] = {{24.0, "24"}, {0.5, "0.5"},  {0.0, "0"},
                                                    {-1.0, "-1"}, {1.25, "1.2"}, {0.96, "1.0"}};
    for (const auto& [value, text] : hours) {
        EXPECT_EQ(formatHours(value), text);
    }
}

TEST(ExceptionTextTest, CodeComesFirstExceptNinetyNine) {
    EXPECT_STREQ(UserErrorException(41, "no folder").what(), "41: no folder");
    EXPECT_STREQ(UserErrorException(99, "type a path").what(), "type a path");
    EXPECT_STREQ(SysErrorException(288, "gone").what(), "sys error 288: gone");
}

} // namespace
} // namespace kst

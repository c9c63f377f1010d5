#include "platform/paths.h"

#include "support/tempfolder.h"

#include <algorithm>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

using platform::pathFromUtf8;
using platform::replaceFileContent;
using platform::utf8FromPath;

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(utf8FromPath(entry.path().filename()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(ReplaceFileTest, TheNewContentStandsAloneInTheFolder) {
    const test::TempFolder folder;
    std::filesystem::create_directory("data");
    const std::string name = "Fl\xC3\xBCge \xE2\x9C\x88 \xF0\x9F\x9B\xA9.txt"; // reaches the disk and back
    const std::filesystem::path file = std::filesystem::path("data") / pathFromUtf8(name);
    for (const std::string& content : {std::string("first"), std::string(), std::string(3'000'000, 'x')}) {
        EXPECT_FALSE(replaceFileContent(file, content));
        EXPECT_TRUE(folder.read(file) == content);
    }
    EXPECT_THAT(namesIn("data"), testing::ElementsAre(name));
    EXPECT_FALSE(replaceFileContent("beside.xml", "in the working directory"));
    EXPECT_EQ(folder.read("beside.xml"), "in the working directory");
}

TEST(ReplaceFileTest, AFailureIsReportedAndLeavesNothingBehind) {
    const test::TempFolder folder;
    EXPECT_EQ(replaceFileContent("no such folder/a.xml", "x"), std::errc::no_such_file_or_directory);
    std::filesystem::create_directories("taken/by a folder");
    EXPECT_TRUE(replaceFileContent("taken", "x"));
    EXPECT_THAT(namesIn("."), testing::ElementsAre("docs", "taken", "user"));
}

TEST(ReplaceFileTest, WritersAtTheSameTimeDoNotMix) {
    const test::TempFolder folder;
    std::vector<std::thread> threads;
    for (const char letter : {'a', 'b', 'c'}) {
        threads.emplace_back([letter] {
            for (std::size_t i = 0; i < 20; ++i) {
                EXPECT_FALSE(replaceFileContent("shared.txt", std::string(10'000 + i, letter)));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::string content = folder.read("shared.txt").value_or("");
    EXPECT_GE(content.size(), 10'000U);
    EXPECT_EQ(content.find_first_not_of(content.front()), std::string::npos);
    EXPECT_THAT(namesIn("."), testing::ElementsAre("docs", "shared.txt", "user"));
}

} // namespace
} // namespace kst

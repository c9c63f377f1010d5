// What is on the disk when a save does not come to its end: the process is killed, or the disk is full.

#include "core/log.h"
#include "core/parameterfile.h"
#include "core/parameters.h"
#include "platform/paths.h"
#include "support/tempfolder.h"

#include <algorithm>
#include <csignal>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kst {
namespace {

constexpr std::size_t valueLength = 20'000;

/// A child process that runs `body` and ends with its result.
template <typename Body>
pid_t startChild(const Body& body) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(body());
    }
    return child;
}

int resultOf(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::size_t filesBesideStore() {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(parametersFolder()), {}));
}

/// Saves one value after the other, all of one letter each, and tells each save by a byte.
int saveForEver(int pipeEnd) {
    for (std::size_t i = 0;; ++i) {
        SIM_INSTALL_PATH.set(std::string(valueLength, static_cast<char>('a' + i % 26)));
        saveParameter(SIM_INSTALL_PATH);
        if (write(pipeEnd, "s", 1) != 1) {
            return 1;
        }
    }
}

TEST(KilledSaveTest, TheFileHoldsTheOldOrTheNewValues) {
    const test::TempFolder folder;
    MAX_LIVE.set(123);
    readParameters();
    MAX_LIVE.set(123);
    ASSERT_TRUE(saveParameter(MAX_LIVE));
    SIM_INSTALL_PATH.set(std::string(valueLength, 'z'));
    ASSERT_TRUE(saveParameter(SIM_INSTALL_PATH));

    std::minstd_rand random(7);
    std::size_t leftovers = 0;
    constexpr int kills = 300;
    for (int kill = 0; kill < kills; ++kill) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = startChild([&] { return saveForEver(ends[1]); });
        close(ends[1]);
        char byte = 0;
        for (auto saves = random() % 2 + 1; saves > 0; --saves) {
            ASSERT_EQ(read(ends[0], &byte, 1), 1);
        }
        // Some moment within the next save, which takes about this long.
        usleep(static_cast<useconds_t>(random() % 6000));
        ::kill(child, SIGKILL);
        resultOf(child);
        close(ends[0]);

        const std::string value = storedParameterText("SIM_INSTALL_PATH");
        ASSERT_EQ(value.size(), valueLength) << "kill " << kill;
        ASSERT_EQ(value.find_first_not_of(value.front()), std::string::npos);
        ASSERT_EQ(storedParameterText("MAX_LIVE"), "123");
        leftovers += filesBesideStore() - 1;
        readParameters();
        ASSERT_EQ(filesBesideStore(), 1U) << "a start clears up what a killed save left";
    }
    EXPECT_GT(leftovers, 0U) << "no kill met a save that was under way";
    for (Parameter* parameter : allParameters()) {
        parameter->setDefault();
    }
}

TEST(KilledSaveTest, ASaveOfARunningProcessIsNoLeftover) {
    const test::TempFolder folder;
    const char* const kept[] = {"a.xml.1-7.new", // process 1 always runs
                                "a.xml.-5-7.new",       "a.xml.new",     ".99999999-1.new",
                                "a.xml.99999999-x.new", "99999999-1.new"};
    for (const char* name : kept) {
        folder.write(name, "");
    }
    folder.write("a.xml.99999999-1.new", "beyond any process");
    platform::removeLeftovers(".");
    platform::removeLeftovers("no such folder");
    EXPECT_FALSE(std::filesystem::exists("a.xml.99999999-1.new"));
    for (const char* name : kept) {
        EXPECT_TRUE(std::filesystem::exists(name)) << name;
    }
}

TEST(FullDiskTest, AFailedSaveIsLoggedAndKeepsTheOldFileAndTheNewValue) {
    const test::TempFolder folder;
    readParameters();
    const std::string before = folder.read("user/roaming/Kestrane_P3D/parameters.xml").value_or("");
    struct Case {
        rlim_t limit;
        std::size_t length; ///< of the saved value
        std::string logEnd; ///< empty where the logged value alone fills the log
    };
    const Case cases[] = {{8192, valueLength, ""}, // less than the parameters need:
                          {1024, 3, "\nSIM_INSTALL_PATH=xxx\nsaving xml did not work?\nthe log goes on\n"}};
    for (const Case& c : cases) {
        const pid_t child = startChild([&] {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit full = {c.limit, c.limit};
            setrlimit(RLIMIT_FSIZE, &full);
            openLog();
            SIM_INSTALL_PATH.set(std::string(c.length, 'x'));
            const bool saved = saveParameter(SIM_INSTALL_PATH);
            logLine("the log goes on");
            return !saved && SIM_INSTALL_PATH.get().size() == c.length ? 42 : 1;
        });
        EXPECT_EQ(resultOf(child), 42) << c.limit;
        EXPECT_THAT(folder.read("Log.txt").value_or(""), testing::EndsWith(c.logEnd));
        EXPECT_EQ(folder.read("user/roaming/Kestrane_P3D/parameters.xml"), before) << c.limit;
        EXPECT_EQ(filesBesideStore(), 1U) << c.limit;
    }
}

TEST(ReplacedFileTest, ModeAndLinkOfTheOldFileStay) {
    const test::TempFolder folder;
    using std::filesystem::perms;
    folder.write("kept elsewhere/real.xml", "old");
    std::filesystem::permissions("kept elsewhere/real.xml", perms::owner_read | perms::owner_write);
    std::filesystem::create_symlink("kept elsewhere/real.xml", "link.xml");
    EXPECT_FALSE(platform::replaceFileContent("link.xml", "new"));
    EXPECT_TRUE(std::filesystem::is_symlink("link.xml"));
    EXPECT_EQ(folder.read("kept elsewhere/real.xml"), "new");
    EXPECT_EQ(std::filesystem::status("kept elsewhere/real.xml").permissions(),
              perms::owner_read | perms::owner_write);
}

} // namespace
} // namespace kst

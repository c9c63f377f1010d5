// Known folders, the registry's file, the mark of the one instance.

#include "platform/knownfolders.h"
#include "platform/linux/runtimefolder.h"
#include "platform/registry.h"
#include "platform/singleinstance.h"
#include "platform/timerresolution.h"
#include "support/environment.h"
#include "support/tempfolder.h"

#include <csignal>
#include <optional>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kst {
namespace {

using platform::RegistryHive;
using platform::registryKeyExists;
using platform::registryText;
using platform::SingleInstance;
using namespace std::string_literals;

TEST(KnownFoldersTest, VariablesFirstThenTheHomeFolder) {
    const test::TempFolder folder;
    struct Case {
        std::filesystem::path (*query)();
        const char* variable;
        std::filesystem::path set;
        const char* belowHome;
    };
    const Case cases[] = {
        {platform::roamingAppData, "XDG_CONFIG_HOME", folder.roaming(), ".config"},
        {platform::programData, "XDG_DATA_HOME", folder.programData(), ".local/share"},
        {platform::userDocuments, "XDG_DOCUMENTS_DIR", folder.documents(), "Documents"},
        {platform::publicDocuments, "XDG_PUBLICSHARE_DIR", folder.publicDocuments(), "Public"},
    };
    const char* const home = std::getenv("HOME");
    const auto homeBefore = home != nullptr ? std::optional<std::string>(home) : std::nullopt;
    test::setEnvironment("HOME", "/home/pilot");
    for (const Case& c : cases) {
        EXPECT_EQ(c.query(), c.set);
        for (const auto& useless :
             std::vector<std::optional<std::string>>{std::nullopt, "", "not/absolute"}) {
            test::setEnvironment(c.variable, useless);
            EXPECT_EQ(c.query(), std::filesystem::path("/home/pilot") / c.belowHome);
        }
        test::setEnvironment(c.variable, c.set.string());
    }
    test::setEnvironment("HOME", std::nullopt);
    test::setEnvironment("XDG_CONFIG_HOME", std::nullopt);
    EXPECT_TRUE(platform::roamingAppData().is_absolute()) << "the account's own home folder";
    test::setEnvironment("XDG_CONFIG_HOME", folder.roaming().string());
    test::setEnvironment("HOME", homeBefore);
}

constexpr std::string_view simulatorKey = "SOFTWARE\\Lockheed Martin\\Prepar3D v5";

TEST(RegistryTest, KeysAndTextsAreFoundAsTheRegistryFindsThem) {
    const test::TempFolder folder;
    folder.write("user/roaming/registry.ini",
                 "\xEF\xBB\xBF; the simulator\r\n"
                 "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\r\n"
                 "SetupPath=D:\\Prepar3D v5\\\r\n"
                 "  AppPath =  E:\\Fl\xC3\xBCge=x  \r\n"
                 "Empty=\r\n"
                 "Bad=\xFF\xFE\r\n"
                 "[HKEY_CURRENT_USER\\SOFTWARE\\A\\B\\]\n"
                 "SetupPath=user\n"
                 "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\n"
                 "SetupPath=second\n"
                 "Late=found");
    const RegistryHive machine = RegistryHive::LocalMachine;
    const RegistryHive user = RegistryHive::CurrentUser;
    struct Text {
        RegistryHive hive;
        std::string_view key;
        std::string_view name;
        std::optional<std::string> text;
    };
    const Text texts[] = {
        {machine, simulatorKey, "SetupPath", "D:\\Prepar3D v5\\"},
        {machine, "software\\LOCKHEED martin\\prepar3d V5", "setuppath", "D:\\Prepar3D v5\\"},
        {machine, simulatorKey, "AppPath", "E:\\Fl\xC3\xBCge=x"},
        {machine, simulatorKey, "Empty", ""},
        {machine, simulatorKey, "Late", "found"},
        {user, "SOFTWARE\\A\\B", "SetupPath", "user"},
        {machine, simulatorKey, "Bad", std::nullopt}, // no text
        {machine, simulatorKey, "Missing", std::nullopt},
        {user, simulatorKey, "SetupPath", std::nullopt}, // the other hive
        {machine, "SOFTWARE\\Lockheed Martin", "SetupPath", std::nullopt},
    };
    for (const Text& c : texts) {
        EXPECT_EQ(registryText(c.hive, c.key, c.name), c.text) << c.key << " " << c.name;
    }
    EXPECT_TRUE(registryKeyExists(machine, simulatorKey));
    EXPECT_TRUE(registryKeyExists(machine, "SOFTWARE\\Lockheed Martin")) << "a key above one that exists";
    EXPECT_TRUE(registryKeyExists(user, "software\\a\\"));
    EXPECT_FALSE(registryKeyExists(machine, "SOFTWARE\\Lockheed Martin\\Prepar3D v"));
    EXPECT_FALSE(registryKeyExists(user, "SOFTWARE\\Lockheed Martin"));
}

TEST(RegistryTest, NoFileAndAnyFileAreHarmless) {
    const test::TempFolder folder;
    const auto nothingThere = [] {
        return !registryKeyExists(RegistryHive::LocalMachine, simulatorKey) &&
               !registryText(RegistryHive::LocalMachine, simulatorKey, "SetupPath");
    };
    EXPECT_TRUE(nothingThere());
    const std::string key = "[HKEY_LOCAL_MACHINE\\" + std::string(simulatorKey) + "]\nSetupPath=x\n";
    for (const std::string& content :
         {""s, "\xEF\xBB\xBF"s, "[\n]\n[]\n=\n[=]=\n"s, "\0\0\0[HKEY\n"s, "SetupPath=without a key\n"s,
          "[HKEY_LOCAL_MACHINE\\" + std::string(simulatorKey) + "\nSetupPath=x\n",
          key + std::string(2 * 1024 * 1024, '\n')}) {
        folder.write("user/roaming/registry.ini", content);
        EXPECT_TRUE(nothingThere()) << content.substr(0, 60);
    }
    std::filesystem::remove("user/roaming/registry.ini");
    std::filesystem::create_directory("user/roaming/registry.ini");
    EXPECT_TRUE(nothingThere());
}

/// Whether another process gets the mark. It is killed while it has it.
bool otherProcessGets(const std::string& name) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        const SingleInstance held(name);
        static_cast<void>(!write(ends[1], held.acquired() ? "y" : "n", 1));
        pause();
        _exit(0);
    }
    char answer = 0;
    EXPECT_EQ(read(ends[0], &answer, 1), 1);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(ends[0]);
    close(ends[1]);
    return answer == 'y';
}

TEST(SingleInstanceTest, OneAtATimeAndFreeAfterItsEnd) {
    const test::TempFolder folder;
    const std::string name = "Local\\$Kestrane_P3D$";
    EXPECT_TRUE(otherProcessGets(name));
    {
        const SingleInstance first(name);
        EXPECT_TRUE(first.acquired()) << "a killed process leaves the mark free";
        EXPECT_TRUE(std::filesystem::exists(folder.runtime() / "$Kestrane_P3D$.lock"));
        EXPECT_FALSE(SingleInstance(name).acquired());
        EXPECT_FALSE(otherProcessGets(name));
        EXPECT_TRUE(otherProcessGets("Local\\another"));
        EXPECT_FALSE(SingleInstance(name).acquired()) << "a refused attempt must not release the mark";
    }
    EXPECT_TRUE(SingleInstance(name).acquired());
}

TEST(SingleInstanceTest, WithoutARuntimeFolderTheLockIsInTheUsersOwn) {
    const test::TempFolder folder;
    test::setEnvironment("XDG_RUNTIME_DIR", std::nullopt);
    const std::string name = fmt::format("test-{}/../../up", getpid());
    const SingleInstance first(name);
    EXPECT_TRUE(first.acquired());
    EXPECT_FALSE(otherProcessGets(name));
    const std::filesystem::path lock =
        platform::fallbackRuntimeFolder() / fmt::format("test-{}_.._.._up.lock", getpid());
    EXPECT_TRUE(std::filesystem::remove(lock)) << lock;
    test::setEnvironment("XDG_RUNTIME_DIR", folder.runtime().string());
}

TEST(TimerResolutionTest, ALaxSessionGetsSharpTimersForAsLongAsAsked) {
    const int before = prctl(PR_GET_TIMERSLACK);
    prctl(PR_SET_TIMERSLACK, 20'000'000UL);
    {
        const platform::TimerResolution sharp;
        EXPECT_LE(prctl(PR_GET_TIMERSLACK), 1'000'000);
    }
    EXPECT_EQ(prctl(PR_GET_TIMERSLACK), 20'000'000);
    prctl(PR_SET_TIMERSLACK, static_cast<unsigned long>(before));
}

} // namespace
} // namespace kst

// What a user of Windows meets: the registry, the folders of a user whose name is not ASCII, the named pipe.

#include "support/linux/childprocess.h"
#include "support/tempfolder.h"
#include "system/linux/host.h"
#include "system/linux/systemworld.h"
#include "system_windows/linux/wine.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

namespace kst {
namespace {

using namespace std::chrono_literals;
using test::SystemWorld;
using test::waitFor;

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// The import table, as the tool of the compiler shows it.
std::set<std::string> importedLibraries(const std::filesystem::path& program) {
    const test::TempFolder folder;
    test::ChildProcess tool({"/usr/bin/x86_64-w64-mingw32-objdump", "-p", program.string()}, {},
                            folder.path(), folder.path() / "table.txt");
    EXPECT_EQ(tool.wait(60s), 0);
    std::istringstream lines(folder.read("table.txt").value_or(""));
    std::set<std::string> names;
    constexpr std::string_view mark = "DLL Name: ";
    for (std::string line; std::getline(lines, line);) {
        if (const std::size_t at = line.find(mark); at != std::string::npos) {
            names.insert(line.substr(at + mark.size()));
        }
    }
    return names;
}

TEST(WindowsSystem, TheProgramIsOneSmallFileThatNeedsTheSystemAlone) {
    const std::filesystem::path program = test::wine::buildFolder() / "Kestrane_P3D.exe";
    const auto size = std::filesystem::file_size(program);
    std::cout << "Kestrane_P3D.exe: " << size << " bytes\n";
    EXPECT_LT(size, 10'000'000U);

    const std::set<std::string> systemLibraries = {
        "ADVAPI32.dll", "bcrypt.dll",  "COMCTL32.dll", "CRYPT32.dll", "GDI32.dll",  "IMM32.dll",
        "KERNEL32.dll", "MSWSOCK.dll", "msvcrt.dll",   "ole32.dll",   "OLEACC.dll", "OLEAUT32.dll",
        "SHELL32.dll",  "USER32.dll",  "UxTheme.dll",  "dwmapi.dll",  "WINMM.dll",  "WS2_32.dll"};
    std::set<std::string> known;
    for (const std::string& name : systemLibraries) {
        known.insert(lowerCase(name));
    }
    const std::set<std::string> needed = importedLibraries(program);
    EXPECT_GE(needed.size(), 5U) << "the import table was not read";
    for (const std::string& name : needed) {
        EXPECT_TRUE(known.contains(lowerCase(name))) << name << " would have to lie beside the program";
    }
}

TEST(WindowsSystem, InstallPathAndPortComeFromTheRegistryAndTheFoldersNeedNotBeAscii) {
    SystemWorld world;
    world.startSimulator();
    world.startProgram();
    ASSERT_TRUE(world.logSays("Waiting for RealTraffic to connect to Kestrane_P3D ..."));
    EXPECT_TRUE(world.logSays("P3Dv5detected", 1s));
    const std::string path = test::wine::pathText(world.folder() / "Pr\u00e4par3D v5");
    EXPECT_NE(test::contentOf(world.parametersFile()).find(path), std::string::npos)
        << world.parametersFile() << " does not hold " << path;
    EXPECT_TRUE(world.logSays(test::wine::pathText(world.parametersFile()), 1s));
    test::host::askToClose(world.program());
    EXPECT_EQ(world.program().wait(20s), 0);
}

TEST(WindowsSystem, TheWindowsProgramStartsQuickly) {
    SystemWorld world;
    const auto began = std::chrono::steady_clock::now();
    world.startProgram();
    ASSERT_TRUE(world.logSays("Waiting for Prepar3Dv5 ..."));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
    // A figure for the reader: how long it takes depends on the machine.
    std::cout << "from start to waiting for the simulator: " << took.count() << " s\n";
    RecordProperty("seconds", std::to_string(took.count()));
    test::host::askToClose(world.program());
    EXPECT_EQ(world.program().wait(20s), 0);
}

TEST(WindowsSystem, TrafficFliesOverANamedPipe) {
    SystemWorld world;
    world.startSimulator({"--pipe", R"(\\.\pipe\Lockheed Martin Prepar3D v5\SimConnect)"},
                         test::wine::program("standins/simulator-standin.exe"));
    world.startRealTraffic();
    world.startProgram();
    ASSERT_TRUE(world.logSays("RealTraffic connected")) << "no simulator over the pipe";
    EXPECT_TRUE(waitFor([&] { return world.objectCount() >= 5; }, 90s)) << "nothing flies";
    test::host::askToClose(world.program());
    EXPECT_EQ(world.program().wait(20s), 0);
    EXPECT_TRUE(waitFor([&] { return world.objectCount() == 0; }, 5s))
        << world.objectCount() << " objects left";
}

} // namespace
} // namespace kst

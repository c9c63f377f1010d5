#include "system/linux/host.h"
#include "system/linux/systemworld.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

#include <fmt/format.h>

namespace kst {
namespace {

using namespace std::chrono_literals;
using test::SystemWorld;
using test::waitFor;

/// Simulator, RealTraffic and program have found each other.
void startConnected(SystemWorld& world) {
    world.startSimulator();
    world.startRealTraffic();
    world.startProgram();
    ASSERT_TRUE(world.logSays("RealTraffic connected")) << "the link was never made";
}

/// And aircraft fly.
void startAndFly(SystemWorld& world) {
    ASSERT_NO_FATAL_FAILURE(startConnected(world));
    ASSERT_TRUE(waitFor([&] { return world.objectCount() >= 12; }, 90s)) << "nothing flies";
}

/// The close button's way out.
void closeAndExpectCleanEnd(SystemWorld& world) {
    test::host::askToClose(world.program());
    EXPECT_EQ(world.program().wait(20s), 0);
    EXPECT_TRUE(world.logSays("Exiting: USER CLOSED SIM", 1s));
    EXPECT_TRUE(world.logSays("User closed Kestrane_P3D", 1s));
}

TEST(System, TrafficFliesThroughAPauseAndACloseLeavesTheSimulatorClean) {
    SystemWorld world;
    ASSERT_NO_FATAL_FAILURE(startAndFly(world));
    closeAndExpectCleanEnd(world);
    EXPECT_TRUE(waitFor([&] { return world.objectCount() == 0; }, 5s))
        << world.objectCount() << " objects left";
    EXPECT_TRUE(world.logSays("traffic: lines=", 1s));
    EXPECT_NE(test::contentOf(world.parametersFile()).find("MAIN_WINDOW_X"), std::string::npos);
    EXPECT_EQ(world.log().find("sys error"), std::string::npos);
}

TEST(System, SecondStartEndsAtOnceAndLeavesTheFirstAlone) {
    SystemWorld world;
    world.startProgram();
    ASSERT_TRUE(world.logSays("Waiting for Prepar3Dv5 ..."));
    const std::string before = world.log();
    test::ChildProcess second(test::host::program(), world.environment(), world.folder(),
                              world.folder() / "second.txt");
    EXPECT_EQ(second.wait(10s), 255);
    EXPECT_EQ(world.log().substr(0, before.size()), before);
    closeAndExpectCleanEnd(world);
}

TEST(System, SimulatorThatClosesEndsTheProgram) {
    SystemWorld world;
    ASSERT_NO_FATAL_FAILURE(startConnected(world));
    ASSERT_TRUE(world.control(R"({"action":"quit"})"));
    EXPECT_EQ(world.program().wait(20s), 0);
    EXPECT_TRUE(world.logSays("Exiting: SIM WAS CLOSED", 1s));
}

TEST(System, BrokenConnectionEndsTheProgramLikeAQuit) {
    SystemWorld world;
    ASSERT_NO_FATAL_FAILURE(startConnected(world));
    ASSERT_TRUE(world.control(R"({"action":"drop"})"));
    EXPECT_EQ(world.program().wait(20s), 0);
    EXPECT_TRUE(world.logSays("Exiting: SIM WAS CLOSED", 1s));
}

TEST(System, LostFeedLinkRemovesTheTrafficAndItComesBackAndACloseInAPauseLeavesNothing) {
    SystemWorld world;
    ASSERT_NO_FATAL_FAILURE(startAndFly(world));
    world.stopRealTraffic();
    EXPECT_TRUE(world.logSays("RealTraffic gone? Wait for RealTraffic to re-connect ..."));
    // What is being created at this moment can go only when the worker runs again.
    constexpr int inCreation = 6;
    EXPECT_TRUE(waitFor([&] { return world.objectCount() <= inCreation; }, 10s))
        << world.objectCount() << " objects left";
    world.startRealTraffic();
    EXPECT_TRUE(world.logSays("RealTraffic re-connected"));
    EXPECT_TRUE(waitFor([&] { return world.objectCount() > inCreation + 2; }, 90s))
        << "no aircraft after the return";
    ASSERT_TRUE(world.control(R"({"action":"pause"})"));
    EXPECT_TRUE(world.logSays("Flight not running"));
    closeAndExpectCleanEnd(world);
    EXPECT_TRUE(waitFor([&] { return world.objectCount() == 0; }, 5s))
        << world.objectCount() << " objects left";
}

TEST(System, TeleportRestartsAndACloseEndsTheCountdown) {
    SystemWorld world;
    ASSERT_NO_FATAL_FAILURE(startConnected(world));
    ASSERT_TRUE(world.control(R"({"action":"teleport","lat":51.47,"lon":-0.45,"alt":9000})"));
    ASSERT_TRUE(world.logSays("Prepare for a restart ..."));
    ASSERT_TRUE(world.logSays("Restarting after 30 seconds"));
    closeAndExpectCleanEnd(world);
}

TEST(System, CloseEndsEveryWaitOfTheStart) {
    SystemWorld world;
    world.startProgram();
    ASSERT_TRUE(world.logSays("Waiting for Prepar3Dv5 ..."));
    closeAndExpectCleanEnd(world);
    world.startSimulator();
    world.startProgram();
    ASSERT_TRUE(world.logSays("Waiting for RealTraffic to connect to Kestrane_P3D ..."));
    closeAndExpectCleanEnd(world);
}

TEST(System, GarbageDatagramsNeitherStopTheTrafficNorFillTheLog) {
    SystemWorld world;
    world.startSimulator();
    world.startRealTraffic({"--generator", "50", "--seed", "3", "--garbage", "10000,5"});
    world.startProgram();
    EXPECT_TRUE(world.logSays("exception in processLine")) << "no garbage came";
    ASSERT_TRUE(waitFor([&] { return world.objectCount() >= 2; }, 90s)) << "nothing flies";
    closeAndExpectCleanEnd(world);
    EXPECT_LT(world.log().size(), 1'000'000U);
}

TEST(System, TcpFromTheConfigurationFile) {
    SystemWorld world;
    const int port = test::freeTcpPort();
    std::ofstream(world.folder() / "documents/SimConnect.cfg")
        << fmt::format("[SimConnect]\nProtocol=IPv4\nAddress=127.0.0.1\nPort={}\nMaxReceiveSize=65536\n"
                       "DisableNagle=1\n",
                       port);
    world.startSimulator({"--tcp", std::to_string(port)});
    world.startRealTraffic();
    world.startProgram();
    EXPECT_TRUE(world.logSays("RealTraffic connected")) << "no flight over TCP";
    closeAndExpectCleanEnd(world);
}

TEST(System, WrongFolderIsToldAndTheWindowStays) {
    SystemWorld world;
    std::filesystem::remove_all(world.folder() / "docs");
    world.startProgram();
    EXPECT_TRUE(world.logSays("Error Kestrane_P3D must be run from the Kestrane_P3D folder!"));
    EXPECT_TRUE(world.program().running());
    closeAndExpectCleanEnd(world);
}

TEST(System, UnreachableServerIsToldAndTheProgramEndsByItself) {
    SystemWorld world;
    world.environment()["KESTRANE_DOWNLOAD_ROOT"] = "http://127.0.0.1:1/downloads/";
    world.startProgram();
    EXPECT_TRUE(
        world.logSays("Error lf_startUpKestrane: sys error 23: data base could not be read from on-line?"));
    EXPECT_EQ(world.program().wait(20s), 0);
    EXPECT_TRUE(world.logSays("Exiting: SYSTEM ERROR", 1s));
}

TEST(System, BrokenParametersFileDoesNotBlockTheStart) {
    SystemWorld world;
    std::ofstream(world.parametersFile()) << "<parameters><parameter name=\"LOG\" va";
    world.startProgram();
    EXPECT_TRUE(world.logSays("not found, default values taken:"));
    closeAndExpectCleanEnd(world);
}

TEST(System, KilledProcessStartsAgain) {
    SystemWorld world;
    world.startProgram();
    ASSERT_TRUE(world.logSays("Waiting for Prepar3Dv5 ..."));
    world.program().signal(SIGKILL);
    world.program().wait(5s);
    world.startProgram();
    ASSERT_TRUE(waitFor([&] { return std::filesystem::exists(world.folder() / "Log0.txt"); }, 10s));
    EXPECT_TRUE(world.logSays("Waiting for Prepar3Dv5 ..."));
    closeAndExpectCleanEnd(world);
}

} // namespace
} // namespace kst

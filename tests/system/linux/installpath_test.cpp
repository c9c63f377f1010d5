// A first start on a machine where no simulator is found: the program asks for its path.

#include "core/controlids.h"
#include "system/linux/display.h"
#include "system/linux/host.h"
#include "system/linux/systemworld.h"

#include <filesystem>

#include <gtest/gtest.h>

namespace kst {
namespace {

TEST(InstallPath, CanBeTypedWhereItIsAskedFor) {
    test::SystemWorld world;
    world.writeParameters({{"SIM_INSTALL_PATH", ""}});
    world.startProgram();
    ASSERT_TRUE(world.logSays("No P3D install path detected, type full Install Path above"));
    test::Hand hand(world);
    const std::filesystem::path simulator = world.folder() / "Prepar3D v5";
    std::filesystem::create_directories(simulator);
    hand.enter(control::AllInstallPath, test::host::pathText(simulator));
    EXPECT_TRUE(world.logSays("Install path exists, Kestrane_P3D will restart"));
    EXPECT_TRUE(world.logSays("Waiting for Prepar3Dv5 ..."));
}

} // namespace
} // namespace kst

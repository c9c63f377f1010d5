// The disk is full while an airport file is saved.

#include "core/parkairport.h"
#include "parking/airportfile.h"
#include "parking/learning.h"
#include "parking/parkingworld.h"

#include <csignal>

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace kst::test {
namespace {

/// No file of this process may grow beyond the limit, as on a disk with so much room left.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : handlerBefore_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handlerBefore_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
    void (*handlerBefore_)(int);
};

TEST(FullDisk, AnAirportFileStaysAsItWas) {
    const ParkingWorld world;
    const std::filesystem::path path = "airports/my_thirdparty/TEST.xml";
    ASSERT_TRUE(gf_saveApf(drawnAirport(1), path, ApfMode::Archive));
    const auto before = world.folder.read(path);
    {
        constexpr rlim_t fewBytes = 300;
        const FullDisk full(fewBytes);
        EXPECT_FALSE(gf_saveApf(drawnAirport(2), path, ApfMode::Archive));
    }
    EXPECT_EQ(world.folder.read(path), before);
    EXPECT_TRUE(gf_saveApf(drawnAirport(2), path, ApfMode::Archive));
    EXPECT_NE(world.folder.read(path), before);
}

} // namespace
} // namespace kst::test

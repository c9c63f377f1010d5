// Who is to stand parked, without a simulator: rules that a whole airport does not show one by one.

#include "parking/population.h"

#include "catalogue/reference.h"
#include "core/clock.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/parkinglink.h"
#include "engine/tables.h"
#include "parking/parkingworld.h"
#include "parking/renewal.h"
#include "parking/stands.h"
#include "parking/staticparking.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

using testing::HasSubstr;

/// An observation: on Tuesday, of a flight without a second callsign, unless told otherwise.
struct Seen {
    std::string stand, cs, reg;
    int from, to, day = 2;
    std::string cs2{};
};

class Population : public testing::Test, protected ParkingWorld {
protected:
    Population() {
        setReferenceForTest({{"A320", Category::Large, 35.8}});
        CUSTOM_PARKING_PERCENTAGE.set(100);
        at(2, 20);
    }
    ~Population() override {
        clearPopulation();
        resetEngine(false);
        setReferenceForTest({});
    }

    static void at(int day, int halfHour) { nowStamp = DayHH{day, halfHour}.packed(); }
    /// An airport of five stands far from each other.
    static void open(const std::vector<Seen>& seen) {
        resetEngine(false);
        clearPopulation();
        auto& stands = parkPositions();
        stands.clear();
        for (int i = 0; i < 5; ++i) {
            ParkPos& stand = stands.emplace_back();
            stand.id = fmt::format("S{}", i);
            stand.latitude = 47.0 + 0.01 * i;
            stand.longitude = 8.0;
            stand.radius = 0.01;
            for (const Seen& each : seen) {
                if (each.stand == stand.id) {
                    ParkOption& option = stand.options.emplace_back();
                    option.airl = "SWR";
                    option.type = "A320";
                    option.cs = each.cs;
                    option.cs2 = each.cs2;
                    option.reg = each.reg;
                    option.day = each.day;
                    option.seq = static_cast<std::uint32_t>(stand.options.size());
                    for (int h = each.from; h <= each.to; ++h) {
                        option.hours.set(static_cast<std::size_t>(h));
                    }
                }
            }
        }
        numberStands(stands);
    }
    /// What is to come, in table order.
    static std::string queue() {
        std::ranges::stable_sort(parkQueue, {}, &ParkRequest::sid);
        std::vector<std::string> texts;
        for (const ParkRequest& request : parkQueue) {
            texts.push_back(fmt::format("{}:{}-{}", standName(request.sid), request.cs, request.offset));
        }
        return fmt::format("{}", fmt::join(texts, " "));
    }
    /// It stands there then.
    static void standAll() {
        for (const ParkRequest& request : parkQueue) {
            StaticAc& ac = staticAcs.emplace_back();
            ac.airline = request.airl;
            ac.acType = request.type;
            ac.regcode = request.reg;
            ac.primaryCallsign = request.cs;
            ac.coupledCallsign = request.cs2;
            ac.callsign = request.cs.empty() ? fmt::format("SWR{}*", request.sid)
                                             : (request.inbound ? request.cs : request.cs2) + "*";
            ac.sid = request.sid;
            ac.standLat = standBySid(request.sid)->latitude;
            ac.standLon = standBySid(request.sid)->longitude;
            ac.state = AcState::Live;
            ac.objectId = 100 + request.sid;
            ac.parkStamp = nowDayHH().back(static_cast<int>(request.offset));
        }
        parkQueue.clear();
    }
};

TEST_F(Population, WhoIsWanted) {
    const struct {
        const char* name;
        std::vector<Seen> seen;
        const char* queue;
        int fit = 0;
        bool week = false;
    } cases[] = {
        {"in this half hour only", {{"S1", "A", "1", 20, 20}, {"S2", "B", "2", 19, 19}}, "S1:A-0"},
        {"and before", {{"S1", "A", "1", 20, 20}, {"S2", "B", "2", 19, 19}}, "S1:A-0 S2:B-1", 1},
        {"of this day", {{"S1", "A", "1", 20, 20, 3}}, ""},
        {"of any day", {{"S1", "A", "1", 20, 20, 3}}, "S1:A-0", 0, true},
        {"of no day", {{"S1", "A", "1", 20, 20, 0}}, "S1:A-0"},
        {"the day before", {{"S1", "A", "1", 47, 47, 1}}, "S1:A-21", 21},
        {"not so far", {{"S1", "A", "1", 47, 47, 1}}, "", 20},
        {"a flight once", {{"S1", "A", "1", 20, 20}, {"S2", "A", "2", 20, 20}}, "S1:A-0"},
        {"not under its second callsign",
         {{"S1", "A", "1", 20, 20}, {"S2", "B", "2", 20, 20, 2, "A"}},
         "S1:A-0"},
        {"an airframe once", {{"S1", "A", "1", 20, 20}, {"S2", "B", "1", 19, 20}}, "S1:A-0", 1},
        {"some without callsign", {{"S1", "", "1", 20, 20}, {"S2", "", "2", 20, 20}}, "S1:-0 S2:-0"},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        MAX_FIT.set(entry.fit);
        WEEK.set(entry.week);
        open(entry.seen);
        lf_initialParking();
        EXPECT_EQ(queue(), entry.queue);
    }
    EXPECT_THAT(log(),
                HasSubstr("1 real position found, Max fit=24 hours, week fit: 0.5 hour, hh:20 or 10.5"));
}

TEST_F(Population, WhoStaysAtARenewal) {
    const struct {
        const char* name;
        std::vector<Seen> seen;
        int halfHour; ///< of the renewal
        const char* queue;
        std::size_t removed;
    } cases[] = {
        {"still observed", {{"S1", "A", "1", 20, 21}}, 21, "", 0},
        {"no more observed", {{"S1", "A", "1", 20, 20}}, 22, "", 1},
        {"the next one", {{"S1", "A", "1", 20, 20}, {"S1", "B", "2", 21, 21}}, 21, "S1:B-0", 1},
        {"leaves under its other callsign", {{"S1", "A", "1", 20, 21, 2, "X"}}, 21, "S1:A-1", 1},
        {"which may be the same", {{"S1", "A", "1", 20, 21, 2, "A"}}, 21, "", 0},
        {"without callsigns",
         {{"S1", "", "1", 20, 21}, {"S2", "", "", 20, 21}, {"S3", "", "", 20, 21}},
         21,
         "",
         0},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        MAX_FIT.set(1);
        at(2, 20);
        open(entry.seen);
        lf_initialParking();
        standAll();
        at(2, entry.halfHour);
        lf_parkingAdjustments();
        EXPECT_EQ(queue(), entry.queue);
        EXPECT_EQ(staticRemovals.size(), entry.removed);
    }
}

TEST_F(Population, LiveAircraftStayForAWhile) {
    constexpr std::int64_t ticksPerMinute = 600'000'000;
    const struct {
        Category category;
        int minutes;
        bool feed, initialLoadOnly, stays;
    } cases[] = {
        {Category::Large, 90, false, false, true},  {Category::Large, 91, false, false, false},
        {Category::Heavy, 180, false, false, true}, {Category::Heavy, 181, false, false, false},
        {Category::Large, 500, true, false, true},  {Category::Large, 500, false, true, true},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(fmt::format("{} minutes, feed {}", entry.minutes, entry.feed));
        INITIAL_LOAD_ONLY.set(entry.initialLoadOnly);
        open({{"S1", "A", "1", 20, 20}, {"S2", "B", "2", 20, 20}});
        LiveAc& ac = liveAcs.emplace_back();
        ac.callsign = "B"; // stands on another stand than it was seen on
        ac.sid = 2;
        ac.objectId = 7;
        ac.state = AcState::Live;
        ac.phase = AcPhase::Parked;
        ac.category = entry.category;
        ac.feedWhileParked = entry.feed;
        ac.parkedSince = wallTicks100ns() - entry.minutes * ticksPerMinute;
        lf_parkingAdjustments();
        EXPECT_EQ(ac.state == AcState::Live, entry.stays);
        EXPECT_EQ(queue(), entry.stays ? "" : "S1:A-0 S2:B-0");
    }
}

TEST_F(Population, AShareOfTheStandsIsWanted) {
    const struct {
        std::size_t stands;
        int share, most, wanted;
    } cases[] = {{1, 100, -1, 1}, {2, 30, -1, 1},    {2, 50, -1, 1},    {3, 50, -1, 2},
                 {4, 10, -1, 0},  {200, 30, -1, 60}, {200, 30, 40, 40}, {200, 30, 90, 60}};
    for (const auto& entry : cases) {
        parkPositions().assign(entry.stands, {});
        CUSTOM_PARKING_PERCENTAGE.set(entry.share);
        CUSTOM_MAX_PARK.set(entry.most);
        EXPECT_EQ(lf_wantedParkCount(), entry.wanted) << entry.stands << " " << entry.share;
    }
}

} // namespace
} // namespace kst::test

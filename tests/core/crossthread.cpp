// What threads tell each other: the worker's inbox, the park airport, the exit request, sleeps that end
// early, the counts of reasons, and the state that the next run starts with.

#include "core/clock.h"
#include "core/corescene.h"
#include "core/exit.h"
#include "core/parkairport.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "core/workerinbox.h"
#include "support/virtualtime.h"

#include <set>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

using namespace std::chrono_literals;

TEST(WorkerInboxTest, ANewerRequestTakesThePlaceOfOneThatWaits) {
    std::vector<WorkerRequest> requests;
    takeWorkerRequests(requests);
    askWorker({WorkerRequest::Kind::UserMoved, {1, 1}});
    askWorker({WorkerRequest::Kind::SetDestination, {}, "LSZH"});
    for (int i = 0; i < 1000; ++i) {
        askWorker({WorkerRequest::Kind::UserMoved, {47, static_cast<double>(i)}});
    }
    takeWorkerRequests(requests);
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].kind, WorkerRequest::Kind::UserMoved);
    EXPECT_EQ(requests[0].position, (LatLon{47, 999}));
    EXPECT_EQ(requests[1].code, "LSZH");
    takeWorkerRequests(requests);
    EXPECT_TRUE(requests.empty()) << "each request is served once";
}

TEST(ParkAirportTest, OthersSeeItWholeOrNotAtAll) {
    const ParkAirportFacts facts[] = {{"LSZH", "Zurich", {47.458, 8.548}, 1416.0},
                                      {"KJFK", "John F Kennedy", {40.64, -73.78}, 13.0}};
    setParkAirport(std::nullopt);
    EXPECT_FALSE(parkAirport() || parkAirportPlace());
    std::thread worker([&] {
        for (int i = 0; i < 2000; ++i) {
            setParkAirport(facts[i % 2]);
        }
    });
    for (int i = 0; i < 2000; ++i) {
        const auto seen = parkAirport();
        ASSERT_TRUE(!seen || seen->name == facts[seen->code == "LSZH" ? 0 : 1].name);
        const auto place = parkAirportPlace();
        ASSERT_TRUE(!place || place->elevationFt == (place->position.lat > 45 ? 1416.0 : 13.0));
    }
    worker.join();
    setParkAirport(std::nullopt);
}

TEST(ExitTest, OnlyTheFirstOfManyRequestsIsCarriedOut) {
    exitRequested = false;
    std::atomic<int> calls{0};
    std::atomic<int> secondsAsked{-1};
    setExitHandler([&](int seconds) {
        ++calls;
        secondsAsked = seconds;
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] { gf_requestExit(ExitReason::Restart, 10); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    gf_requestExit(ExitReason::SystemError, 0);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(secondsAsked, 10);
    EXPECT_EQ(exitReason.load(), ExitReason::Restart);
    EXPECT_TRUE(exitRequested);

    exitRequested = false;
    exitReason = ExitReason::NotYetSet;
    setExitHandler(nullptr);
}

TEST(ClockTest, ASleepEndsEarlyOnlyWhenAskedToStop) {
    test::VirtualTime time;
    resetRunState();
    exitRequested = false;
    EXPECT_TRUE(sleepUnlessStopped(2500ms));
    EXPECT_EQ(monotonicNow(), 2500ms);
    userClosed = true;
    EXPECT_FALSE(sleepUnlessStopped(1000h));
    EXPECT_EQ(monotonicNow(), 2500ms);
    EXPECT_EQ(wallTicks100ns(), 1709546400LL * 10'000'000 + 25'000'000);
    resetRunState();
}

TEST(ClockTest, AStopFromAnotherThreadEndsALongSleep) {
    resetRunState();
    std::thread operatorThread([] { userClosed = true; });
    EXPECT_FALSE(sleepUnlessStopped(1000h));
    operatorThread.join();
    resetRunState();
}

TEST(RunStateTest, NothingOfARunReachesTheNext) {
    std::atomic<bool>* const flags[] = {
        &simRunning,      &tickDue,          &userClosed,           &readerError,
        &latchedSimError, &closeAirportMode, &userGroundKnown,      &userOnGround,
        &timeFollowing,   &parkingRunning,   &waitingForRealTraffic};
    const auto values = [&] {
        std::vector<double> all = {static_cast<double>(tickCount),
                                   workingRangeNm,
                                   requestRangeM,
                                   static_cast<double>(nowStamp),
                                   lastTimestamp,
                                   static_cast<double>(qnh),
                                   userData.latitude};
        for (const std::atomic<bool>* flag : flags) {
            all.push_back(*flag ? 1.0 : 0.0);
        }
        return all;
    };
    resetRunState();
    const std::vector<double> fresh = values();
    for (std::atomic<bool>* flag : flags) {
        *flag = !*flag;
    }
    tickCount = 7;
    workingRangeNm = requestRangeM = 3.0;
    userData.latitude = 12.0;
    nowStamp = DayHH{3, 3}.packed();
    lastTimestamp = 1.0;
    qnh = 990;
    updateCount = 4711;
    resetRunState();
    EXPECT_EQ(values(), fresh);
    EXPECT_EQ(requestRangeM, 74080.0);
    EXPECT_EQ(updateCount, 4711) << "the engine's time base is never reset";
    updateCount = 0;
}

TEST(RunStateTest, TheBoxOfTheUnknownPosition) {
    for (const LatLon unknown : {LatLon{0, 0}, LatLon{0.0009, 0.05}, LatLon{0, 0.05}}) {
        EXPECT_FALSE(positionKnown(unknown));
    }
    for (const LatLon known :
         {LatLon{-0.0001, 0}, LatLon{0.00091, 0}, LatLon{0, 0.0501}, LatLon{0, -0.001}}) {
        EXPECT_TRUE(positionKnown(known));
    }
}

TEST(ReasonTextTest, EveryReasonHasItsOwnWords) {
    std::set<std::string_view> texts;
    for (std::size_t i = 0; i < reasonCount; ++i) {
        const std::string_view text = reasonText(static_cast<Reason>(i));
        EXPECT_FALSE(text.empty()) << i;
        EXPECT_LE(text.size(), 40U) << text;
        EXPECT_TRUE(texts.insert(text).second) << text;
    }
}

class ReasonCountsTest : public test::CoreScene {};

TEST_F(ReasonCountsTest, CountsOfAllThreadsReachTheLog) {
    resetCounts();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int n = 0; n < 500; ++n) {
                countReason(Reason::OutOfRange);
                countHappening(Happening::LinesHeard, 2);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::uint64_t microseconds : {9000U, 10000U, 10001U, 25000U, 3U}) {
        countPass(microseconds);
    }
    logCounts();
    EXPECT_THAT(log(), testing::HasSubstr("traffic: lines=4000 accepted=0 targets=0 buffered=0 created=0 "
                                          "positions=0 removed=0 passes=5 overruns=2 longest_us=25000\n"));
    EXPECT_THAT(log(), testing::EndsWith("\nreason out of range: 2000\n"));
    resetCounts();
    EXPECT_EQ(reasonTotal(Reason::OutOfRange), 0U);
    EXPECT_EQ(passLongestMicroseconds(), 0U);
}

} // namespace
} // namespace kst

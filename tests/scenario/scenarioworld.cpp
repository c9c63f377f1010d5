#include "scenario/scenarioworld.h"

#include "catalogue/matching.h"
#include "catalogue/reference.h"
#include "core/exit.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/random.h"
#include "core/run/mainloop.h"
#include "core/run/reset.h"
#include "core/runstate.h"
#include "engine/tables.h"
#include "feed/readers.h"
#include "feed/trafficreader.h"
#include "parking/stands.h"
#include "simlink/session.h"
#include "support/places.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kst::test {

namespace {

constexpr double passSeconds = 0.01;
constexpr int passesPerFrame = 2;
constexpr int passesPerSecond = 100;
/// The feed's clock when a scenario begins.
constexpr double feedEpoch = 1709546400.0;

Category categoryOf(const std::string& name) {
    for (int i = 0; i < categoryCount; ++i) {
        if (categoryName(static_cast<Category>(i)) == name) {
            return static_cast<Category>(i);
        }
    }
    return Category::Light;
}

/// The lines of a table without its heading.
std::vector<std::vector<std::string>> tableOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    std::vector<std::vector<std::string>> table;
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
        std::vector<std::string>& fields = table.emplace_back();
        for (std::size_t begin = 0; begin <= line.size();) {
            const std::size_t comma = std::min(line.find(',', begin), line.size());
            fields.push_back(line.substr(begin, comma - begin));
            begin = comma + 1;
        }
    }
    return table;
}

/// Every type of the project's own list, with a title each.
void fillCatalogue() {
    std::vector<ReferenceModel> models;
    resetMatching();
    for (const std::vector<std::string>& fields : tableOf(sourceFolder() / "data/types.csv")) {
        models.push_back({fields[0], categoryOf(fields[1]), fields[2].empty() ? 0.0 : std::stod(fields[2])});
        addLiveryTitle("ZZZ", fields[0], "Test " + fields[0]);
    }
    setReferenceForTest(models);
}

void resetProgram() {
    for (Parameter* parameter : allParameters()) {
        parameter->setDefault();
    }
    resetForNextRun(false);
    clearLoadedAirport();
    setParkAirport(std::nullopt);
    exitRequested = false;
    exitReason = ExitReason::NotYetSet;
}

standin::WorldSettings worldSettings(bool keepHistory) {
    standin::WorldSettings settings;
    settings.historyIntervalSeconds = 0.0;
    settings.historyLimit = keepHistory ? 500'000 : 1;
    return settings;
}

} // namespace

ScenarioWorld::ScenarioWorld(const ScenarioOptions& options)
    : world_(worldSettings(options.keepHistory)), connection_([this](std::span<const std::byte> packet) {
          fromProgram_.insert(fromProgram_.end(), packet.begin(), packet.end());
      }) {
    seedRandom(options.seed);
    resetProgram();
    openLog();
    fillCatalogue();
    setExitHandler([this](int) { exit_ = exitReason.load(); });
    SIM_INSTALL_PATH.set("/opt/Prepar3D v5");
    AUTO_RANGE.set(false);
    realTrafficHere = false;
    updateCount = 0;
    workingRangeNm = options.rangeNm;
    requestRangeM = options.rangeNm * metresPerNm;
    setReferencePosition(options.user);

    world_.placeUser(options.user.lat, options.user.lon, options.userAltFt, options.userOnGround);
    reserveTables();
    lf_resetSimTables(5);
    EXPECT_TRUE(lf_openSimSession());
    session_ = std::make_unique<standin::Session>(world_);
    exchange();
    lf_requestUserOnGround();
    lf_requestUserInfo();
    for (int round = 0; round < 3; ++round) {
        lf_requestUserPosition(userData);
        exchange();
        world_.second();
        exchange();
    }
    lf_requestUserPosition(userData);
    EXPECT_TRUE(userGroundStateKnown());
    EXPECT_TRUE(simRunning);
    beginMainLoop();
}

ScenarioWorld::~ScenarioWorld() {
    exitRequested = true;
    lf_closeSimSession();
    session_.reset();
    setExitHandler({});
    resetProgram();
    closeLog();
}

void ScenarioWorld::openAirport(const std::string& code, LatLon position, double elevationFt) {
    world_.terrain().addAirport(position.lat, position.lon, elevationFt);
    // In sight of a spectator high above as well.
    AIRPORT_HEIGHT.set(AIRPORT_HEIGHT.maximum());
    AIRPORT_RANGE.set(AIRPORT_RANGE.maximum());
    setParkAirport(ParkAirportFacts{code, code, position, elevationFt});
    setFieldElevation(elevationFt);
}

void ScenarioWorld::loadStands(const std::string& code, const std::filesystem::path& folder) {
    std::vector<ParkPos> stands;
    const std::filesystem::path from = folder.empty() ? sourceFolder() / "data/stands" : folder;
    for (const std::vector<std::string>& fields : tableOf(from / (code + ".csv"))) {
        ParkPos& stand = stands.emplace_back();
        stand.id = fields[0];
        stand.latitude = std::stod(fields[1]);
        stand.longitude = std::stod(fields[2]);
        stand.heading = std::stod(fields[3]) * radPerDeg;
        stand.radius = std::stod(fields[4]) * nmPerMetre;
        stand.ramp = fields[5] == "ramp";
        stand.heli = fields[5] == "heli";
    }
    numberStands(stands);
    parkPositions() = std::move(stands);
}

void ScenarioWorld::feed(std::unique_ptr<standin::TrafficSource> source) {
    source_ = std::move(source);
    sourceBegan_ = seconds();
}

void ScenarioWorld::deliverFeed() {
    if (!source_) {
        return;
    }
    due_.clear();
    source_->takeDue(seconds() - sourceBegan_, due_);
    for (const standin::TrafficReport& report : due_) {
        if (wanted_ && !wanted_(report)) {
            continue;
        }
        sent_.push_back(report);
        sent_.back().at += sourceBegan_;
        const std::string line = standin::trafficLine(report, feedEpoch + sourceBegan_ + report.at);
        ASSERT_LT(line.size(), trafficReader.buffer.size());
        std::copy(line.begin(), line.end(), trafficReader.buffer.begin());
        trafficReader.handleDatagram(line.size());
    }
}

void ScenarioWorld::exchange() {
    // A few rounds: an answer can lead to a further packet.
    for (int round = 0; round < 4; ++round) {
        if (!fromProgram_.empty()) {
            const std::vector<std::byte> bytes = std::move(fromProgram_);
            fromProgram_.clear();
            session_->receive({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
        }
        for (standin::Bytes packet; session_->take(packet);) {
            connection_.transport()->toProgram(std::as_bytes(std::span(packet)));
        }
        lf_pumpSimMessages();
    }
}

void ScenarioWorld::play(double seconds, const std::function<void()>& eachTick) {
    const auto passes = static_cast<std::int64_t>(seconds / passSeconds + 0.5);
    for (std::int64_t i = 0; i < passes && !exit_; ++i) {
        ++ticks_;
        time_.advance(std::chrono::milliseconds{10});
        deliverFeed();
        if (ticks_ % passesPerFrame == 0) {
            world_.frame(passSeconds * passesPerFrame);
        }
        if (ticks_ % passesPerSecond == 0) {
            world_.second();
        }
        exchange();
        lf_workKestrane();
        if (eachTick) {
            eachTick();
        }
    }
}

void ScenarioWorld::idle(int seconds) {
    for (int i = 0; i < seconds && !exit_; ++i) {
        ticks_ += passesPerSecond;
        time_.advance(std::chrono::seconds{1});
        world_.frame(1.0);
        world_.second();
        exchange();
        const std::int32_t count = updateCount;
        updateCount = count + passesPerSecond - count % passesPerSecond;
        lf_workKestrane();
    }
}

void ScenarioWorld::skip(int minutes) {
    constexpr int secondsPerMinute = 60;
    constexpr int secondsPerDay = 86400;
    const int seconds = minutes * secondsPerMinute;
    ticks_ += static_cast<std::int64_t>(seconds) * passesPerSecond;
    time_.advance(std::chrono::seconds{seconds});
    ASSERT_LT(tickCount + static_cast<std::uint32_t>(seconds), secondsPerDay) << "the day's end is due";
    tickCount += static_cast<std::uint32_t>(seconds);
}

std::unique_ptr<standin::TrafficSource> recorded(const std::string& name, double startSeconds) {
    return standin::recordedTraffic(
        {.files = {{sourceFolder() / "data/tracks" / name, startSeconds}}, .longestGapSeconds = 60.0});
}

void DrawnTraffic::takeDue(double seconds, std::vector<standin::TrafficReport>& reports) {
    while (next_ < reports_.size() && reports_[next_].at <= seconds) {
        reports.push_back(reports_[next_++]);
    }
}

} // namespace kst::test

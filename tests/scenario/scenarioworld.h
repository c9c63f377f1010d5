#pragma once

// A whole flight in virtual time: the real feed filter, worker pass, SimConnect client and session, with the
// stand-in simulator's world on the other end of an in-memory connection, all in one thread. The same calls
// give the same flight each time.

#include "model/exitreason.h"
#include "model/reasons.h"
#include "standins/realtraffic/trafficsource.h"
#include "standins/simulator/session.h"
#include "standins/simulator/world.h"
#include "support/memorytransport.h"
#include "support/tempfolder.h"
#include "support/virtualtime.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kst::test {

struct ScenarioOptions {
    LatLon user{47.4647, 8.5492};
    double userAltFt = 12000.0;
    bool userOnGround = false;
    double rangeNm = 100.0;
    std::uint32_t seed = 1;
    bool keepHistory = true; ///< of the simulator's objects, every frame
};

class ScenarioWorld {
public:
    explicit ScenarioWorld(const ScenarioOptions& options = {});
    ~ScenarioWorld();
    ScenarioWorld(const ScenarioWorld&) = delete;
    ScenarioWorld& operator=(const ScenarioWorld&) = delete;

    /// Makes the airport the park airport and lays its flat ground.
    void openAirport(const std::string& code, LatLon position, double elevationFt);
    /// Gives the park airport the stands of <code>.csv in this folder; without one of the project's own.
    void loadStands(const std::string& code, const std::filesystem::path& folder = {});
    /// Traffic from now on comes from this source, beginning now.
    void feed(std::unique_ptr<standin::TrafficSource> source);
    /// Reports that a filter refuses are not sent. Empty: all are.
    void filterFeed(std::function<bool(const standin::TrafficReport&)> wanted) {
        wanted_ = std::move(wanted);
    }
    /// Sets the system's clock forward; the passes do not notice.
    void advanceClock(std::chrono::minutes by) { time_.advance(by); }
    /// Plays so many seconds, a pass every 10 ms, `eachTick` after each pass.
    void play(double seconds, const std::function<void()>& eachTick = {});

    /// Lets whole seconds pass in which nothing moves: of the passes of each second only the one that does
    /// the second's work is made. The feed is silent.
    void idle(int seconds);
    /// Lets whole minutes pass in which nothing at all is due, in one step.
    void skip(int minutes);

    standin::World& simulator() { return world_; }
    standin::Session& session() { return *session_; }
    /// Seconds since the scenario began.
    double seconds() const { return static_cast<double>(ticks_) / 100.0; }
    /// Why the run asked to end, if it did.
    std::optional<ExitReason> exit() const { return exit_; }
    const std::vector<standin::TrafficReport>& sent() const { return sent_; }

private:
    void deliverFeed();
    void exchange();

    VirtualTime time_;
    TempFolder folder_;
    standin::World world_;
    std::unique_ptr<standin::Session> session_;
    std::vector<std::byte> fromProgram_;
    MemoryConnection connection_;
    std::unique_ptr<standin::TrafficSource> source_;
    std::function<bool(const standin::TrafficReport&)> wanted_;
    std::vector<standin::TrafficReport> due_;
    std::vector<standin::TrafficReport> sent_;
    double sourceBegan_ = 0.0;
    std::int64_t ticks_ = 0;
    std::optional<ExitReason> exit_;
};

/// A file of the shipped recordings, from so many seconds into it.
std::unique_ptr<standin::TrafficSource> recorded(const std::string& name, double startSeconds = 0.0);

/// Reports for one target along a drawn way, one every `interval` seconds.
class DrawnTraffic : public standin::TrafficSource {
public:
    explicit DrawnTraffic(std::vector<standin::TrafficReport> reports) : reports_(std::move(reports)) {}
    void takeDue(double seconds, std::vector<standin::TrafficReport>& reports) override;
    bool hasMore() const override { return next_ < reports_.size(); }

private:
    std::vector<standin::TrafficReport> reports_;
    std::size_t next_ = 0;
};

} // namespace kst::test

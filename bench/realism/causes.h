#pragma once

// Why flights are early, late or make steps: how much of it an ideal aircraft under the same timing of legs
// has as well, and what happened when it did not fly as told.

#include "bench/realism/figures.h"

#include <array>
#include <map>
#include <string>

namespace kst::bench {

class Causes {
public:
    /// `own` holds the figures of this flight alone.
    void add(const RecordedFlight& flight, const PlayedFlight& played, const Figures& own);
    std::string text() const;

private:
    /// One cause of one kind of fault, over all flights.
    struct Cause {
        double amount = 0.0; ///< seconds or events
        double timedToo = 0.0;
        std::map<std::string, double> flights; ///< with the worst of each
    };
    using ByCause = std::map<std::string_view, Cause>;

    /// Time off the 30 s by more than what is asked, seconds.
    struct Off {
        double judged = 0.0;
        double off = 0.0;
        double timedToo = 0.0;
    };

    void addSteps(const RecordedFlight& flight, const PlayedFlight& played);
    void addTimes(const RecordedFlight& flight, const PlayedFlight& played);

    void addTurns(const RecordedFlight& flight, const PlayedFlight& played);
    void addReversals(const RecordedFlight& flight, const PlayedFlight& played, const Figures& own);

    ByCause steps_;
    ByCause turns_;
    ByCause reversals_;
    ByCause beyond_;
    std::array<Off, stageCount> off_;
};

} // namespace kst::bench

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
    void add(const std::string& flight, const PlayedAircraft& played, const Figures& own);
    std::string text() const;

private:
    /// One cause of one kind of fault, over all flights.
    struct Cause {
        double amount = 0.0; ///< seconds or events
        double idealToo = 0.0;
        std::map<std::string, double> flights; ///< with the worst of each

        void note(const std::string& flight, double value);
    };
    using ByCause = std::map<std::string_view, Cause>;

    /// Time off the 30 s by more than what is asked, seconds.
    struct Off {
        double judged = 0.0;
        double off = 0.0;
        double idealToo = 0.0;
    };

    using Judge = double (*)(const PlayedAircraft&, const Sample&, const Sample&);
    /// `valueOf` judges two frames, `causeOf` the first of an event beyond the limit.
    static void addEvents(ByCause& causes, const std::string& flight, const PlayedAircraft& played,
                          double limit, Judge valueOf, std::string_view (*causeOf)(const Sample&));
    void addTimes(const std::string& flight, const PlayedAircraft& played);
    void addReversals(const std::string& flight, const PlayedAircraft& played, const Figures& own);

    ByCause steps_;
    ByCause turns_;
    ByCause reversals_;
    ByCause beyond_;
    std::array<Off, stageCount> off_;
};

} // namespace kst::bench

#pragma once

// What the benchmarks share: work timed beside a floor, in turn, in the same run.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <string>

namespace kst {

template <typename Work>
double wallSeconds(Work&& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// Processor time of this process, so that what else runs on the machine does not count.
template <typename Work>
double processorSeconds(Work&& work) {
    const std::clock_t begin = std::clock();
    work();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

/// The sums of one benchmark that takes its own times (UseManualTime).
class BesideFloor {
public:
    explicit BesideFloor(benchmark::State& state) : state_(state) {}

    /// What one iteration took.
    void add(double workSeconds, double floorSeconds) {
        work_ += workSeconds;
        floor_ += floorSeconds;
        worst_ = std::max(worst_, workSeconds);
        state_.SetIterationTime(workSeconds);
    }
    /// Counters in a unit of which a second has so many: the work and the floor of one of the `items` of an
    /// iteration, and their ratio.
    void report(const std::string& unit, double perSecond, double items = 1.0) const {
        const double rounds = static_cast<double>(state_.iterations()) * items;
        state_.counters[unit] = work_ * perSecond / rounds;
        state_.counters["floor " + unit] = floor_ * perSecond / rounds;
        state_.counters["of floor"] = work_ / floor_;
    }
    /// Seconds of the whole work, and of its longest iteration.
    double work() const { return work_; }
    double worst() const { return worst_; }

private:
    benchmark::State& state_;
    double work_ = 0.0;
    double floor_ = 0.0;
    double worst_ = 0.0;
};

/// A folder for the files of one benchmark, the working directory until it goes.
class WorkFolder {
public:
    explicit WorkFolder(const std::string& name)
        : path_(std::filesystem::temp_directory_path() / ("kestrane-bench-" + name)),
          before_(std::filesystem::current_path()) {
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
        std::filesystem::current_path(path_);
    }
    ~WorkFolder() {
        std::error_code ignored;
        std::filesystem::current_path(before_, ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
    std::filesystem::path before_;
};

} // namespace kst

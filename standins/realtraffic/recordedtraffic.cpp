#include "trafficsource.h"

#include "trackfile.h"

#include <algorithm>
#include <stdexcept>

namespace kst::standin {

namespace {

/// A transponder address at or below this is no live target.
constexpr std::uint32_t lastReservedHexid = 10000;

TrafficReport reportOf(const RecordedTracks& tracks, const RecordedPoint& point) {
    const RecordedAircraft& aircraft = tracks.aircraft[point.aircraft];
    TrafficReport report;
    report.at = point.at;
    report.hexid = aircraft.hexid;
    report.callsign = aircraft.callsign;
    report.registration = aircraft.registration;
    report.type = aircraft.type;
    report.position = point.position;
    report.onGround = point.onGround.value_or(false) || !point.altFt;
    report.altFt = report.onGround ? 0.0 : *point.altFt;
    report.vsFpm = report.onGround ? 0.0 : point.vsFpm.value_or(0.0);
    report.gsKt = point.gsKt.value_or(0.0);
    report.trackDeg = point.trackDeg;
    report.headingDeg = point.headingDeg;
    return report;
}

class RecordedTraffic : public TrafficSource {
public:
    explicit RecordedTraffic(const RecordedOptions& options) : options_(options) {
        if (options.speed <= 0.0) {
            throw std::runtime_error("the speed of the recording must be above 0");
        }
        for (const RecordedFile& file : options.files) {
            append(file);
        }
        if (reports_.empty()) {
            throw std::runtime_error("the recording ends before its start");
        }
        std::stable_sort(reports_.begin(), reports_.end(),
                         [](const TrafficReport& a, const TrafficReport& b) { return a.at < b.at; });
        shortenGaps();
        for (TrafficReport& report : reports_) {
            report.at /= options.speed;
        }
    }

    void takeDue(double seconds, std::vector<TrafficReport>& reports) override {
        while (hasMore() && reports_[next_].at + roundBegin_ <= seconds) {
            reports.push_back(reports_[next_]);
            reports.back().at += roundBegin_;
            ++next_;
            if (next_ == reports_.size() && options_.loop) {
                next_ = 0;
                roundBegin_ += reports_.back().at + options_.loopPauseSeconds;
            }
        }
    }

    bool hasMore() const override { return next_ < reports_.size(); }

private:
    void append(const RecordedFile& file) {
        RecordedTracks tracks = readTrackFile(file.path);
        completeTracks(tracks);
        std::optional<double> first;
        for (const RecordedPoint& point : tracks.points) {
            if (point.at < file.startSeconds || tracks.aircraft[point.aircraft].hexid <= lastReservedHexid) {
                continue;
            }
            if (!first) {
                first = point.at;
            }
            reports_.push_back(reportOf(tracks, point));
            reports_.back().at = point.at - *first;
        }
    }

    void shortenGaps() {
        if (options_.longestGapSeconds <= 0.0) {
            return;
        }
        double cutOut = 0.0;
        double last = 0.0;
        for (TrafficReport& report : reports_) {
            cutOut += std::max(0.0, report.at - last - options_.longestGapSeconds);
            last = report.at;
            report.at -= cutOut;
        }
    }

    RecordedOptions options_;
    std::vector<TrafficReport> reports_;
    std::size_t next_ = 0;
    double roundBegin_ = 0.0;
};

} // namespace

std::unique_ptr<TrafficSource> recordedTraffic(const RecordedOptions& options) {
    return std::make_unique<RecordedTraffic>(options);
}

} // namespace kst::standin

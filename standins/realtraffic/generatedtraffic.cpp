#include "trafficsource.h"

#include "geometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <fmt/format.h>
#include <random>

namespace kst::standin {

namespace {

struct Airline {
    std::string_view code;
    std::string_view registrationPrefix;
    std::array<std::string_view, 3> types;
};

constexpr std::array<Airline, 8> airlines = {{
    {"SWR", "HB-J", {"A320", "BCS3", "A333"}},
    {"DLH", "D-A", {"A320", "A321", "A346"}},
    {"BAW", "G-E", {"A319", "A320", "B772"}},
    {"AFR", "F-G", {"A318", "A320", "B77W"}},
    {"KLM", "PH-B", {"B738", "E190", "B789"}},
    {"EZY", "G-U", {"A319", "A320", "A20N"}},
    {"RYR", "EI-D", {"B738", "B738", "B38M"}},
    {"UAE", "A6-E", {"A388", "B77W", "B77W"}},
}};

// How the generated aircraft fly: what airliners do on an ordinary day.
constexpr double bankLimitDeg = 25.0;
constexpr double rollRateDegS = 4.0;
constexpr double bankPerCourseError = 1.0;
constexpr double accelerationKtS = 1.0;
constexpr double climbFpm = 2000.0;
constexpr double climbChangeFpmS = 150.0;
constexpr double climbPerFoot = 2.0; // fpm of climb for each foot that is missing
constexpr double turnDegSPerTanBank = 1091.0;

constexpr double cruiseFt = 36000.0;
constexpr double patternFt = 3000.0;
constexpr double departureFt = 2500.0;
constexpr double cruiseKt = 450.0;
constexpr double slowKt = 190.0;
constexpr double reachedNm = 2.0;
constexpr double abeamNm = 8.0;
constexpr double finalNm = 6.0;
constexpr double runwayHeadingDeg = 280.0;
constexpr double longestReportSeconds = 5.0;
/// No flight lasts longer; one that circles a point it cannot reach leaves.
constexpr int longestFlightSeconds = 3 * 3600;
constexpr std::uint32_t firstHexid = 0x4B8000;
constexpr std::uint32_t registrationLetters = 26U * 26U * 26U;

struct RoutePoint {
    LatLon position;
    double altFt;
    double gsKt;
};

struct Flight {
    TrafficReport report; ///< its state at the whole second
    std::deque<RoutePoint> route;
    double bankDeg = 0.0;
    int reportEverySeconds = 1;
    double reportOffset = 0.0; ///< seconds after the whole second, below 1
    int age = 0;
};

class GeneratedTraffic : public TrafficSource {
public:
    explicit GeneratedTraffic(const GeneratorOptions& options) : options_(options), random_(options.seed) {
        flights_.resize(static_cast<std::size_t>(std::max(options.aircraft, 0)));
        for (Flight& flight : flights_) {
            begin(flight);
            // Everybody is somewhere on the way when the observer begins to look.
            for (int seconds = static_cast<int>(below(1500)); seconds > 0; --seconds) {
                step(flight);
            }
        }
        reportSecond();
    }

    void takeDue(double seconds, std::vector<TrafficReport>& reports) override {
        for (;;) {
            while (!pending_.empty() && pending_.front().at <= seconds) {
                reports.push_back(std::move(pending_.front()));
                pending_.pop_front();
            }
            if (!pending_.empty() || second_ + 1 > seconds) {
                return;
            }
            ++second_;
            for (Flight& flight : flights_) {
                step(flight);
            }
            reportSecond();
        }
    }

    bool hasMore() const override { return !flights_.empty(); }

private:
    std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(random_() % n); }
    double between(double low, double high) {
        return low + (high - low) * (static_cast<double>(random_()) / 4294967296.0);
    }

    void begin(Flight& flight) {
        flight = Flight();
        name(flight.report);
        flight.reportEverySeconds =
            1 + static_cast<int>(below(static_cast<std::uint32_t>(longestReportSeconds)));
        flight.reportOffset = between(0.0, 1.0);
        const double bearing = between(0.0, 360.0);
        switch (below(3)) {
        case 0:
            overflight(flight, bearing);
            break;
        case 1:
            arrival(flight, bearing);
            break;
        default:
            departure(flight, bearing);
            break;
        }
        const RoutePoint first = flight.route.front();
        flight.route.pop_front();
        TrafficReport& report = flight.report;
        report.position = first.position;
        report.altFt = first.altFt;
        report.gsKt = first.gsKt;
        report.trackDeg = courseDeg(first.position, flight.route.front().position);
    }

    void name(TrafficReport& report) {
        const std::uint32_t number = named_++;
        const Airline& airline = airlines[below(static_cast<std::uint32_t>(airlines.size()))];
        report.hexid = firstHexid + number;
        report.type = airline.types[below(static_cast<std::uint32_t>(airline.types.size()))];
        report.callsign = fmt::format("{}{}", airline.code, 1000 + number % 9000);
        const std::uint32_t letters = number % registrationLetters;
        report.registration =
            fmt::format("{}{}{}{}", airline.registrationPrefix, static_cast<char>('A' + letters / 676),
                        static_cast<char>('A' + letters / 26 % 26), static_cast<char>('A' + letters % 26));
        const bool heavy = report.type[0] == 'B' ? report.type[1] == '7' && report.type[2] > '6'
                                                 : report.type[1] == '3' && report.type[2] > '2';
        report.category = heavy ? "A5" : "A3";
    }

    LatLon at(double bearing, double nm) const { return moved(options_.centre, bearing, nm); }

    void overflight(Flight& flight, double bearing) {
        const double levelFt = cruiseFt + 1000.0 * (static_cast<double>(below(11)) - 5.0);
        const double speedKt = cruiseKt + between(-30.0, 40.0);
        const double out = bearing + 180.0 + between(-50.0, 50.0);
        flight.route = {{at(bearing, options_.radiusNm), levelFt, speedKt},
                        {at(bearing + between(-60.0, 60.0), between(10.0, 40.0)), levelFt, speedKt},
                        {at(out, options_.radiusNm), levelFt, speedKt}};
    }

    void arrival(Flight& flight, double bearing) {
        const double side = below(2) == 0 ? 90.0 : -90.0;
        const LatLon runwayEnd = at(runwayHeadingDeg + 180.0, finalNm / 2.0);
        const LatLon base =
            moved(at(runwayHeadingDeg + 180.0, 2.0 * finalNm), runwayHeadingDeg + side, finalNm);
        flight.route = {{at(bearing, options_.radiusNm), 24000.0, 400.0},
                        {at(bearing, options_.radiusNm / 2.0), 12000.0, 300.0},
                        {moved(options_.centre, runwayHeadingDeg + side, finalNm), 6000.0, 230.0},
                        {base, patternFt, slowKt},
                        {at(runwayHeadingDeg + 180.0, 2.0 * finalNm), patternFt, slowKt},
                        {runwayEnd, patternFt / 2.0, 140.0}};
    }

    void departure(Flight& flight, double bearing) {
        flight.route = {{at(runwayHeadingDeg, 2.0), departureFt, 170.0},
                        {at(runwayHeadingDeg, finalNm), 2.0 * departureFt, 230.0},
                        {at(bearing, options_.radiusNm / 2.0), 18000.0, 350.0},
                        {at(bearing, options_.radiusNm), 30000.0, cruiseKt - 20.0}};
    }

    /// Flies one second.
    void step(Flight& flight) {
        TrafficReport& report = flight.report;
        const RoutePoint& target = flight.route.front();
        const double course = courseDeg(report.position, target.position);
        const double error = turnDeg(*report.trackDeg, course);
        const double wantedBank = std::clamp(error * bankPerCourseError, -bankLimitDeg, bankLimitDeg);
        flight.bankDeg += std::clamp(wantedBank - flight.bankDeg, -rollRateDegS, rollRateDegS);
        const double turn =
            turnDegSPerTanBank * std::tan(flight.bankDeg * radPerDeg) / std::max(report.gsKt, 60.0);
        const double half = wrapped360(*report.trackDeg + turn / 2.0);
        report.position = moved(report.position, half, report.gsKt / 3600.0);
        report.trackDeg = wrapped360(*report.trackDeg + turn);

        report.gsKt += std::clamp(target.gsKt - report.gsKt, -accelerationKtS, accelerationKtS);
        const double wantedClimb =
            std::clamp((target.altFt - report.altFt) * climbPerFoot, -climbFpm, climbFpm);
        report.vsFpm += std::clamp(wantedClimb - report.vsFpm, -climbChangeFpmS, climbChangeFpmS);
        report.altFt += report.vsFpm / 60.0;

        const double left = distanceNm(report.position, target.position);
        if (left < reachedNm || (left < abeamNm && std::abs(error) > 90.0)) {
            flight.route.pop_front();
        }
        if (flight.route.empty() || ++flight.age > longestFlightSeconds) {
            begin(flight);
        }
    }

    void reportSecond() {
        for (std::size_t i = 0; i < flights_.size(); ++i) {
            const Flight& flight = flights_[i];
            if ((second_ + static_cast<int>(i)) % flight.reportEverySeconds != 0) {
                continue;
            }
            TrafficReport report = flight.report;
            report.at = second_ + flight.reportOffset;
            report.position =
                moved(report.position, *report.trackDeg, report.gsKt * flight.reportOffset / 3600.0);
            report.altFt += report.vsFpm * flight.reportOffset / 60.0;
            report.headingDeg = report.trackDeg;
            report.tasKt = report.gsKt;
            report.rollDeg = flight.bankDeg;
            pending_.push_back(std::move(report));
        }
        std::sort(pending_.begin(), pending_.end(),
                  [](const TrafficReport& a, const TrafficReport& b) { return a.at < b.at; });
    }

    GeneratorOptions options_;
    std::mt19937 random_;
    std::vector<Flight> flights_;
    std::deque<TrafficReport> pending_;
    std::uint32_t named_ = 0;
    int second_ = 0;
};

} // namespace

std::unique_ptr<TrafficSource> generatedTraffic(const GeneratorOptions& options) {
    return std::make_unique<GeneratedTraffic>(options);
}

} // namespace kst::standin

#include "madeuptraffic.h"

#include "core/numbertext.h"
#include "core/random.h"
#include "csvrows.h"
#include "model/units.h"

#include <algorithm>
#include <bitset>
#include <map>
#include <stdexcept>
#include <vector>

#include <fmt/format.h>

namespace kst::data {

namespace {

constexpr int halfHoursPerDay = 48;
constexpr int daysPerWeek = 7;
constexpr int halfHoursPerWeek = daysPerWeek * halfHoursPerDay;
/// A little wider than its stand an aircraft still fits.
constexpr double wingToleranceM = 1.8;
/// An airliner does not take a stand that is more than twice its size.
constexpr double leastFill = 0.5;
/// Ramps up to this radius are for general aviation, the others for airlines.
constexpr double smallRampM = 14.0;

enum class Use { Airliner, GeneralAviation, Helicopter };

struct Aircraft {
    std::string registration;
    std::string type;
    double halfSpanM = 0.0;
    Use use = Use::Airliner;
    std::bitset<halfHoursPerWeek> busy; ///< when it stands somewhere
};

struct Fleet {
    std::string airline;
    std::uint32_t share = 0; ///< of the airport's traffic, in parts of the sum of all
    std::vector<Aircraft> aircraft;
};

/// One visit as a day's plan has it, flown on most days of the week.
struct Visit {
    int begin = 0; ///< half hour of the day
    int length = 1;
    Fleet* fleet = nullptr;
    std::string cs, cs2;
};

int between(int least, int most) {
    return least + static_cast<int>(randomBelow(static_cast<std::uint32_t>(most - least + 1)));
}

struct TypeFacts {
    double halfSpanM = 0.0;
    Use use = Use::Airliner;
};

std::map<std::string, TypeFacts> readTypes(const std::string& folder) {
    enum Column { Designator, SizeClass, Wingspan };
    std::map<std::string, TypeFacts> types;
    for (const Row& row : readRows(folder + "/types.csv", true)) {
        const auto span = row.size() > Wingspan ? finiteNumberAtStart(row[Wingspan]) : std::nullopt;
        if (!span || row[SizeClass] == "HighPerf" || row[Designator] == "GLID") {
            continue;
        }
        const bool small = row[SizeClass] == "Light" || row[SizeClass] == "Buzjets";
        const bool heli = row[SizeClass] == "Rotorcraft";
        types[row[Designator]] = {*span / 2, heli    ? Use::Helicopter
                                             : small ? Use::GeneralAviation
                                                     : Use::Airliner};
    }
    return types;
}

std::vector<Fleet> readFleets(const std::string& icao, const std::string& folder) {
    enum Column { Airport, Airline, Share, Prefix };
    enum RegistrationColumn { Registration, Operator, Type };
    std::vector<Fleet> fleets;
    const auto types = readTypes(folder);
    const std::vector<Row> registrations = readRows(folder + "/registrations.csv", true);
    for (const Row& row : readRows(folder + "/stocktraffic.csv", true)) {
        if (row.size() <= Prefix || row[Airport] != icao) {
            continue;
        }
        Fleet& fleet = fleets.emplace_back();
        fleet.airline = row[Airline];
        fleet.share = digitsAtStart(row[Share]).value_or(0);
        for (const Row& known : registrations) {
            const auto type = types.find(known[Type]);
            if (known[Operator] == fleet.airline && known[Registration].starts_with(row[Prefix]) &&
                type != types.end()) {
                fleet.aircraft.push_back(
                    {known[Registration], known[Type], type->second.halfSpanM, type->second.use, {}});
            }
        }
    }
    if (fleets.empty()) {
        throw std::runtime_error("stocktraffic.csv: no traffic for " + icao);
    }
    return fleets;
}

/// The traffic of one stand.
class StandTraffic {
public:
    StandTraffic(ParkPos& stand, std::vector<Fleet>& fleets)
        : stand_(stand), radiusM_(stand.radius * metresPerNm), use_(useOf(stand)) {
        for (Fleet& fleet : fleets) {
            if (std::ranges::any_of(fleet.aircraft, [&](const Aircraft& ac) { return fits(ac); })) {
                fleets_.push_back(&fleet);
                shares_ += fleet.share;
            }
        }
    }

    void make() {
        if (shares_ == 0) {
            return;
        }
        for (const Visit& visit : use_ == Use::Airliner ? airlineDay() : homeDay()) {
            Aircraft* home = use_ == Use::Airliner ? nullptr : freeAircraft(visit, 0);
            for (int day = 0; day < daysPerWeek; ++day) {
                constexpr std::uint32_t flownPercent = 80;
                if (chance(flownPercent)) {
                    observe(visit, day, home != nullptr ? home : freeAircraft(visit, day));
                }
            }
        }
    }

private:
    static Use useOf(const ParkPos& stand) {
        if (stand.heli) {
            return Use::Helicopter;
        }
        return stand.ramp && stand.radius * metresPerNm <= smallRampM + 0.5 ? Use::GeneralAviation
                                                                            : Use::Airliner;
    }

    bool fits(const Aircraft& ac) const {
        return ac.use == use_ && ac.halfSpanM <= radiusM_ + wingToleranceM &&
               (use_ != Use::Airliner || ac.halfSpanM >= radiusM_ * leastFill);
    }

    Fleet& drawFleet() const {
        std::uint32_t part = randomBelow(shares_);
        for (Fleet* fleet : fleets_) {
            if (part < fleet->share) {
                return *fleet;
            }
            part -= fleet->share;
        }
        return *fleets_.back();
    }

    /// A stand for airliners: turns round the day, and one that comes in the evening and leaves next morning.
    std::vector<Visit> airlineDay() const {
        constexpr double wideBodyM = 24.0;
        const bool wide = radiusM_ >= wideBodyM;
        std::vector<Visit> day;
        for (int begin = between(10, 18); begin < 40;) {
            const int length = wide ? between(4, 8) : between(2, 4);
            day.push_back(flight(begin, length));
            begin += length + between(1, stand_.ramp ? 14 : 6);
        }
        day.push_back(flight(between(40, 45), between(14, 18)));
        return day;
    }

    /// A stand for small aircraft: the one that is at home here, away for some of the day.
    std::vector<Visit> homeDay() const {
        Visit visit = flight(between(20, 40), between(24, 44));
        visit.cs.clear();
        visit.cs2.clear();
        return {visit};
    }

    Visit flight(int begin, int length) const {
        Fleet& fleet = drawFleet();
        const int number = between(50, 999) * 2;
        return {begin, length, &fleet, fmt::format("{}{}", fleet.airline, number),
                fmt::format("{}{}", fleet.airline, number + 1)};
    }

    static std::bitset<halfHoursPerWeek> timesOf(const Visit& visit, int day) {
        std::bitset<halfHoursPerWeek> times;
        for (int i = 0; i < visit.length; ++i) {
            times.set(static_cast<std::size_t>((day * halfHoursPerDay + visit.begin + i) % halfHoursPerWeek));
        }
        return times;
    }

    /// An aircraft of the fleet that fits and stands nowhere else at the time; nullptr when none was found.
    Aircraft* freeAircraft(const Visit& visit, int day) const {
        constexpr int draws = 50;
        std::vector<Aircraft>& aircraft = visit.fleet->aircraft;
        const auto times = timesOf(visit, day);
        for (int i = 0; i < draws; ++i) {
            Aircraft& ac = aircraft[randomBelow(static_cast<std::uint32_t>(aircraft.size()))];
            if (fits(ac) && (ac.busy & times).none()) {
                return &ac;
            }
        }
        return nullptr;
    }

    /// Records the visit, in two observations where it goes over midnight.
    void observe(const Visit& visit, int day, Aircraft* ac) {
        const auto times = timesOf(visit, day);
        if (ac == nullptr || (ac->busy & times).any() || (taken_ & times).any()) {
            return;
        }
        ac->busy |= times;
        taken_ |= times;
        constexpr std::uint32_t softPercent = 10;
        ParkOption option{.airl = visit.fleet->airline,
                          .type = ac->type,
                          .reg = ac->registration,
                          .cs = visit.cs,
                          .cs2 = visit.cs2,
                          .hours = {},
                          .seq = 0,
                          .day = 0,
                          .fromArchive = true,
                          .real = !chance(softPercent)};
        for (int i = 0; i < visit.length; ++i) {
            const int at = (day * halfHoursPerDay + visit.begin + i) % halfHoursPerWeek;
            if (const int today = at / halfHoursPerDay + 1; today != option.day) {
                add(option);
                option.day = today;
                option.hours.reset();
            }
            option.hours.set(static_cast<std::size_t>(at % halfHoursPerDay));
        }
        add(option);
    }

    void add(ParkOption option) {
        if (option.day != 0) {
            option.seq = static_cast<std::uint32_t>(stand_.options.size()) + 1;
            stand_.options.push_back(std::move(option));
        }
    }

    ParkPos& stand_;
    double radiusM_;
    Use use_;
    std::vector<Fleet*> fleets_; ///< those with an aircraft for the stand
    std::uint32_t shares_ = 0;
    std::bitset<halfHoursPerWeek> taken_;
};

} // namespace

void addMadeUpTraffic(AirportFile& airport, const std::string& folder) {
    constexpr std::uint32_t seed = 20260101;
    seedRandom(seed);
    std::vector<Fleet> fleets = readFleets(airport.icao, folder);
    for (ParkPos& stand : airport.stands) {
        StandTraffic(stand, fleets).make();
    }
}

} // namespace kst::data

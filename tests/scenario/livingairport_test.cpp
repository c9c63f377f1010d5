// A user sits on a stand for 26 hours, over the end of a week: what stands on the other stands is what the
// airport's file says of that day and half hour. What it says is worked out here a second time, from the file
// alone.

#include "core/files.h"
#include "core/geodesy.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "parking/population.h"
#include "parking/staticparking.h"
#include "scanner/airportdirectory.h"
#include "scenario/scenarioworld.h"
#include "support/engineworld.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <random>
#include <set>
#include <tuple>

namespace kst {
namespace {

using namespace std::chrono_literals;
using test::offset;
using test::ScenarioWorld;

constexpr LatLon apron{47.0, 8.0};
constexpr double elevationFt = 1000.0;
constexpr int standCount = 200;
constexpr int usersStand = 7;
constexpr int halfHoursOfDay = 48;
/// How far back an observation counts, half hours.
constexpr int fit = 2;
/// The last stands are those of aircraft that change from one to the next.
constexpr int firstMoversStand = 191;
constexpr int movers = 4;
/// In each row one stand overlaps the one before it: 30 m apart, radius 20 m, for aircraft of 36 m.
constexpr int perRow = 20;
constexpr int pairedInRow = 10;
constexpr int firstDay = 7; ///< Sunday, at noon
constexpr int firstHalfHour = 24;

/// One visit: an aircraft on a stand from one half hour to another, counted from the first day's midnight.
struct Visit {
    int stand = 0;
    int from = 0;
    int to = 0; ///< the last one
    std::string reg, in, out;
};

bool isPaired(int stand) {
    return stand % perRow == pairedInRow;
}

LatLon placeOf(int stand) {
    const double along = stand % perRow * 60.0 - (isPaired(stand) ? 30.0 : 0.0);
    return offset(offset(apron, 0.0, static_cast<double>(stand / perRow) * 100.0), 90.0, along);
}

/// Three days of visits, two half hours to twelve long with pauses between. Each aircraft comes once, but for
/// the movers: four half hours on one stand, four on the other.
std::vector<Visit> drawVisits() {
    std::mt19937 random(8);
    const auto below = [&](std::uint32_t n) { return static_cast<int>(random() % n); };
    std::vector<Visit> visits;
    for (int stand = 0; stand < firstMoversStand; ++stand) {
        for (int at = below(20); at < 3 * halfHoursOfDay;) {
            const int number = static_cast<int>(visits.size());
            Visit visit{stand,
                        at,
                        at + 1 + below(11),
                        fmt::format("HB-{:04}", number),
                        fmt::format("SWR{:04}", number),
                        ""};
            if (below(2) == 0) {
                visit.out = fmt::format("SWR{:04}X", number);
            }
            at = visit.to + 1 + below(9);
            visits.push_back(visit);
        }
    }
    for (int mover = 0; mover < movers; ++mover) {
        for (int at = 0; at < 3 * halfHoursOfDay; at += 4) {
            visits.push_back({firstMoversStand + 2 * mover + at / 4 % 2, at, at + 3,
                              fmt::format("HB-M{}", mover), fmt::format("MOVE{}", mover), ""});
        }
    }
    return visits;
}

/// The airport file of these visits, an observation for each day of each.
std::string airportFile(const std::vector<Visit>& visits) {
    std::string text = fmt::format(R"(<parameters><parameter name="altitude" value="{}"/></parameters>)"
                                   "<parkpositions>",
                                   elevationFt);
    for (int stand = 0; stand < standCount; ++stand) {
        const LatLon place = placeOf(stand);
        text += fmt::format(R"(<parkpos id="S{}" latitude="{:.8f}" longitude="{:.8f}" heading="90" )"
                            R"(radius="20" cargo="false">)",
                            stand, place.lat, place.lon);
        for (const Visit& visit : visits) {
            for (int day = visit.from / halfHoursOfDay; day <= visit.to / halfHoursOfDay; ++day) {
                std::string hours;
                for (int at = visit.from; at <= visit.to; ++at) {
                    if (at / halfHoursOfDay == day) {
                        hours += fmt::format("{}{}", hours.empty() ? "" : ",", at % halfHoursOfDay);
                    }
                }
                if (visit.stand == stand) {
                    text +=
                        fmt::format(R"(<opt reg="{}" airl="SWR" type="A320" day="{}" hh="{}" cs="{}{}{}"/>)",
                                    visit.reg, (firstDay - 1 + day) % 7 + 1, hours, visit.in,
                                    visit.out.empty() ? "" : ":", visit.out);
                }
            }
        }
        text += "</parkpos>";
    }
    return text + "</parkpositions>";
}

/// What is to stand on each stand, by stand: the callsign.
using Picture = std::map<int, std::string>;

/// Says it half hour by half hour. Of two stands that overlap, one that was taken keeps the other free.
class Oracle {
public:
    explicit Oracle(const std::vector<Visit>& visits) : visits_(visits) {}

    const Picture& at(int now, const std::set<std::string>& inFeed) {
        std::map<int, const Visit*> wanted;
        for (const Visit& visit : visits_) {
            if (visit.from <= now && now - visit.to <= fit && visit.stand != usersStand &&
                visit.stand < firstMoversStand && !inFeed.contains(visit.in) && !inFeed.contains(visit.out)) {
                wanted[visit.stand] = &visit; // the latest one is the last in the list
            }
        }
        const auto rank = [&](int stand) {
            return std::tuple(!standing_.contains(stand), std::max(0, now - wanted.at(stand)->to), stand);
        };
        std::map<int, const Visit*> next;
        for (const auto& [stand, visit] : wanted) {
            const int other = isPaired(stand) ? stand - 1 : isPaired(stand + 1) ? stand + 1 : -1;
            const bool keptFree = standing_.contains(other) && !standing_.contains(stand);
            if (!keptFree && (!wanted.contains(other) || rank(stand) < rank(other))) {
                next[stand] = visit;
            }
        }
        standing_ = std::move(next);
        shown_.clear();
        for (const auto& [stand, visit] : standing_) {
            shown_[stand] = (visit->out.empty() || staysOn(*visit, now) ? visit->in : visit->out) + "*";
        }
        return shown_;
    }

    /// A flight whose stand overlaps none, and which goes on for some time.
    const Visit* someFlight(int now) const {
        for (const auto& [stand, visit] : standing_) {
            if (!visit->out.empty() && !isPaired(stand) && !isPaired(stand + 1) && visit->to > now + 1) {
                return visit;
            }
        }
        return nullptr;
    }

private:
    /// At midnight any visit of the next day counts: observations of two days are not tied together.
    bool staysOn(const Visit& visit, int now) const {
        if (visit.to < now) {
            return false;
        }
        return std::ranges::any_of(visits_, [&](const Visit& other) {
            const bool same = other.in == visit.in || (now + 1) % halfHoursOfDay == 0;
            return same && other.stand == visit.stand && other.from <= now + 1 && now + 1 <= other.to;
        });
    }

    const std::vector<Visit>& visits_;
    std::map<int, const Visit*> standing_;
    Picture shown_;
};

/// Never more than two creations in any second.
class CreationRate {
public:
    void look(std::uint64_t created, double seconds) {
        for (; seen_ < created; ++seen_) {
            at_.push_back(seconds);
        }
        std::erase_if(at_, [&](double at) { return at <= seconds - 0.995; });
        most_ = std::max(most_, at_.size());
    }
    std::size_t most() const { return most_; }

private:
    std::deque<double> at_;
    std::uint64_t seen_ = 0;
    std::size_t most_ = 0;
};

class LivingAirport : public testing::Test {
protected:
    LivingAirport()
        : world({.user = placeOf(usersStand),
                 .userAltFt = elevationFt,
                 .userOnGround = true,
                 .keepHistory = false}),
          visits(drawVisits()), oracle(visits) {
        lf_createFolders();
        writeTextFile(fmt::format(R"(<airports><airport code="TEST" alt="{}" lat="47" lon="8" iata=""/>)"
                                  "</airports>",
                                  elevationFt),
                      folders::airports / "airports_p3d.xml", true);
        lf_readAirports();
        writeTextFile(airportFile(visits), folders::myThirdparty / "TEST.xml", true);
        world.simulator().terrain().addAirport(apron.lat, apron.lon, elevationFt);
        world.advanceClock(6 * 24h + 2h);
        CUSTOM_PARKING_PERCENTAGE.set(100);
        MAX_FIT.set(fit);
    }

    ~LivingAirport() override { lf_closeAirport(); }

    void play(double seconds) {
        world.play(seconds, [this] { rate.look(world.simulator().created(), world.seconds()); });
    }
    /// Until all that is to stand stands.
    void settle() {
        constexpr double longest = 300.0;
        const double begun = world.seconds();
        do {
            play(5.0);
        } while (parkingRunning && !parkQueue.empty() && world.seconds() < begun + longest);
        play(5.0);
    }
    /// Nothing is due but in the last minutes before a renewal.
    void waitUntil(int second) {
        constexpr int last = 130;
        constexpr int secondsPerDay = 86400;
        const int minutes = (second - last - static_cast<int>(world.seconds())) / 60;
        if (second % secondsPerDay != 0) {
            world.skip(minutes);
        }
        world.idle(static_cast<int>(second - world.seconds()));
    }
    int halfHour() const { return firstHalfHour + static_cast<int>(world.seconds() / 1800.0); }
    /// The flight reports once, somewhere in the air.
    void hear(const std::string& callsign) {
        standin::TrafficReport report;
        report.at = 1.0;
        report.hexid = 30001;
        report.callsign = callsign;
        report.registration = "HB-XYZ";
        report.type = "A320";
        report.position = offset(apron, 0.0, 20000.0);
        report.altFt = 6000.0;
        report.gsKt = 250.0;
        report.trackDeg = 0.0;
        world.feed(std::make_unique<test::DrawnTraffic>(std::vector{report}));
    }
    /// What stands in the simulator. Movers, who may stand on one of two stands, are looked at and left out.
    Picture seen() {
        Picture picture;
        std::set<std::string> tails;
        for (const auto& [id, object] : world.simulator().objects()) {
            EXPECT_TRUE(tails.insert(object.tailNumber).second) << object.tailNumber << " stands twice";
            int stand = 0;
            while (stand < standCount &&
                   gf_distanceNm(placeOf(stand), {object.place.lat, object.place.lon}) * metresPerNm > 1.0) {
                ++stand;
            }
            if (stand >= firstMoversStand && stand < standCount) {
                moversStands.insert(stand);
            } else {
                EXPECT_TRUE(picture.emplace(stand, object.tailNumber).second) << "two on S" << stand;
            }
        }
        return picture;
    }

    ScenarioWorld world;
    std::vector<Visit> visits;
    Oracle oracle;
    CreationRate rate;
    std::set<int> moversStands;
};

/// How the pictures differ, for a reader.
std::string difference(const Picture& wanted, const Picture& seen) {
    std::string text;
    for (int stand = 0; stand <= standCount; ++stand) {
        const auto of = [stand](const Picture& picture) {
            const auto found = picture.find(stand);
            return found != picture.end() ? found->second : "-";
        };
        if (of(wanted) != of(seen)) {
            text += fmt::format("S{}: {} instead of {}\n", stand, of(seen), of(wanted));
        }
    }
    return text;
}

TEST_F(LivingAirport, StandsAreTakenAsObservedForTwentySixHours) {
    constexpr int renewalSeconds = 1200;
    constexpr int renewals = 26 * 3;
    play(40.0);
    settle();
    EXPECT_EQ(difference(oracle.at(halfHour(), {}), seen()), "");
    EXPECT_GT(seen().size(), 100U);

    std::size_t changes = 0;
    Picture before = seen();
    for (int renewal = 1; renewal <= renewals; ++renewal) {
        SCOPED_TRACE(fmt::format("{:.2f} hours later", world.seconds() / 3600.0));
        waitUntil(renewal * renewalSeconds);
        // While the callsigns are collected, one of those who stand here is in the air every two hours.
        std::set<std::string> inFeed;
        play(18.0);
        if (const Visit* flight = oracle.someFlight(halfHour()); renewal % 6 == 0 && flight != nullptr) {
            inFeed = {renewal % 12 == 0 ? flight->in : flight->out};
            hear(*inFeed.begin());
        }
        play(17.0);
        settle();
        const Picture now = seen();
        ASSERT_EQ(difference(oracle.at(halfHour(), inFeed), now), "");
        changes += now != before ? 1 : 0;
        before = now;
    }
    EXPECT_EQ(rate.most(), 2U);
    EXPECT_EQ(moversStands.size(), 2U * movers) << "aircraft that change their stand were seen on both";
    EXPECT_GT(changes, 50U);

    // A smaller share: so many of those that were observed, no other.
    constexpr int fewer = 20;
    CUSTOM_PARKING_PERCENTAGE.set(fewer);
    waitUntil((renewals + 1) * renewalSeconds);
    play(35.0);
    settle();
    EXPECT_EQ(world.simulator().objects().size(), standCount * fewer / 100);
    const Picture allowed = oracle.at(halfHour(), {});
    for (const auto& [stand, callsign] : seen()) {
        EXPECT_TRUE(allowed.contains(stand) && allowed.at(stand) == callsign) << "S" << stand;
    }
}

} // namespace
} // namespace kst

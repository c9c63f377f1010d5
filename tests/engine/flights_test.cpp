// Whole flights, flown tick by tick: each tick must make sense to somebody who watches.

#include "core/parameters.h"
#include "core/runstate.h"
#include "engine/categories.h"
#include "engine/flown.h"
#include "engine/prediction.h"
#include "model/simconnect.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace kst::test {
namespace {

using ::testing::ElementsAre;

constexpr std::int32_t now = 10000;
constexpr double runwayDeg = 90.0;
constexpr double cgFt = 11.0;
constexpr double restPitch = 0.5 * radPerDeg;

/// The real aircraft, as its transponder tells: where it is, every few seconds.
class RealAircraft {
public:
    RealAircraft(LatLon place, double headingDeg, double speedKt, double altFt)
        : place_(place), headingDeg_(headingDeg), speedKt_(speedKt), altFt_(altFt) {}

    /// Moves on for so many seconds at constant rates. Below the field's elevation it rolls.
    RealAircraft& go(double seconds, double ktPerSecond, double fpm, double degPerSecond) {
        constexpr double step = 0.1;
        for (int i = 0; i < static_cast<int>(seconds / step + 0.5); ++i) {
            speedKt_ = std::max(speedKt_ + ktPerSecond * step, 0.0);
            headingDeg_ += degPerSecond * step;
            altFt_ = std::max(altFt_ + fpm / 60.0 * step, airportElevationFt);
            place_ = offset(place_, headingDeg_, speedKt_ * metresPerNm / 3600.0 * step);
            time_ += step;
            if (time_ >= nextReport_) {
                nextReport_ += reportSeconds;
                report(fpm);
            }
        }
        return *this;
    }
    const std::vector<TrackPoint>& reports() const { return reports_; }
    double headingDeg() const { return headingDeg_; }
    LatLon place() const { return place_; }

    static constexpr double reportSeconds = 4.0;

private:
    void report(double fpm) {
        const bool airborne = altFt_ > airportElevationFt + 1.0;
        TrackPoint point =
            airborne ? airPoint(place_, altFt_, speedKt_, 0) : groundPoint(place_, speedKt_, 0);
        point.trackDeg = std::fmod(headingDeg_ + 360.0, 360.0);
        point.vsFpm = airborne ? fpm : 0.0;
        reports_.push_back(point);
    }

    LatLon place_;
    double headingDeg_;
    double speedKt_;
    double altFt_;
    double time_ = 0.0;
    double nextReport_ = 0.0;
    std::vector<TrackPoint> reports_;
};

class Flights : public ::testing::Test {
protected:
    Flights() {
        world.openAirport();
        world.placeUser(offset(airportPlace, 0.0, 3000.0), true);
        workingRangeNm = 40.0;
    }

    /// An aircraft that plays these reports 30 seconds late: those of the first 30 seconds are its track.
    Flown replay(const std::vector<TrackPoint>& reports, AcPhase phase, double headingDeg,
                 std::string_view type = "A320") {
        constexpr auto interval = static_cast<std::int32_t>(RealAircraft::reportSeconds * ticksPerSecond);
        constexpr std::size_t known = playDelayTicks / interval;
        std::vector<TrackPoint> track;
        for (std::size_t i = 0; i < known && i < reports.size(); ++i) {
            track.push_back(reports[i]);
            track.back().dueTick = now + interval * static_cast<std::int32_t>(i);
        }
        LiveAc& ac = world.addLive("SWR1", AcState::Live, phase, track, type);
        ac.cgHeightFt = cgFt;
        ac.staticPitch = restPitch;
        ac.simState.heading = headingDeg * radPerDeg;
        ac.heightAgl = ac.onGround ? cgFt : 2500.0;
        ac.simState.pitch = ac.onGround ? restPitch : climbLawPitch(ac.track.front().vsFpm);
        Flown flown(world, ac);
        for (std::size_t i = known; i < reports.size(); ++i) {
            flown.hear(now - playDelayTicks + interval * static_cast<std::int32_t>(i), reports[i]);
        }
        return flown;
    }

    /// Nothing jerks: what is true of every flight, each tick.
    static void expectSmooth(const Flown& flown, double fastestKt, const char* what) {
        const Motion& motion = flown.motion();
        EXPECT_LT(motion.metres, fastestKt * metresPerNm / ticksPerHour * 1.35) << what;
        EXPECT_LT(motion.pitchDeg, 0.1) << what;
        EXPECT_LT(motion.bankDeg, 0.1) << what;
        EXPECT_LT(motion.headingDeg, 0.6) << what;
    }

    EngineWorld world;
};

/// Eight miles out on a three degree glide path, to a stop beside the runway.
RealAircraft arrival() {
    const LatLon threshold = airportPlace;
    constexpr double milesOut = 8.0;
    const LatLon start = offset(threshold, runwayDeg + 180.0, milesOut * metresPerNm);
    RealAircraft real(start, runwayDeg, 160.0, airportElevationFt + milesOut * 318.0 + 50.0);
    real.go(60, -0.35, -800, 0); // slowing
    real.go(143, 0, -735, 0);    // 139 kt down to the runway
    real.go(8, -1.5, -330, 0);   // flare
    real.go(18, -4.5, 0, 0);     // brakes
    real.go(20, -1.6, 0, 0);     // rolls out
    real.go(15, 0, 0, 6.0);      // turns off
    real.go(30, 0, 0, 0);        // taxiway
    real.go(10, -2.0, 0, 0);     // stops
    real.go(30, 0, 0, 0);
    return real;
}

TEST_F(Flights, ArrivalLandsSoftlyOnTheRunwayRollsOutAndStops) {
    const RealAircraft real = arrival();
    Flown flown = replay(real.reports(), AcPhase::Air, runwayDeg);
    bool approached = false;
    LatLon touchdown;
    bool down = false;
    double contactFt = 0.0;
    double headingAtTouchdown = 0.0;
    double lastAltFt = 0.0;
    double gearDownAgl = 0.0;
    std::int32_t lastGear = -1;
    flown.flyTo(now + 40000, [&](const LiveAc& ac) {
        approached = approached || ac.landing;
        ASSERT_GT(ac.simState.altFt, airportElevationFt + cgFt - 1.0) << "sinks into the ground";
        if (const auto gear = sent(ac, simconnect::GearSet); !gear.empty()) {
            if (gear.back() == 1 && lastGear != 1) {
                gearDownAgl = ac.heightAgl;
            }
            lastGear = static_cast<std::int32_t>(gear.back());
        }
        if (ac.rollingOut && !down) {
            down = true;
            touchdown = ac.simState.position();
            contactFt = std::abs(lastAltFt - ac.simState.altFt);
            headingAtTouchdown = ac.simState.heading * degPerRad;
        }
        if (!ac.onGround) {
            lastAltFt = ac.simState.altFt;
        }
        forgetSent();
    });
    ASSERT_FALSE(flown.gone());
    EXPECT_TRUE(approached);
    EXPECT_GT(gearDownAgl, 1500.0);
    EXPECT_EQ(lastGear, 1);
    EXPECT_TRUE(down);
    EXPECT_LT(contactFt, 1.0) << "is set onto the ground";
    EXPECT_NEAR(headingAtTouchdown, runwayDeg, 1.0);
    const double beyond = gf_distanceNm(airportPlace, touchdown) * metresPerNm;
    EXPECT_LT(beyond, 1200.0) << "touches down along the runway";
    EXPECT_GT(touchdown.lon, airportPlace.lon - 0.004) << "not before it";
    EXPECT_NEAR(touchdown.lat, airportPlace.lat, 0.0002);
    const LiveAc& ac = flown.ac();
    EXPECT_TRUE(ac.landed);
    EXPECT_FALSE(ac.rollingOut);
    EXPECT_NEAR(ac.simState.altFt, airportElevationFt + cgFt, 0.01);
    EXPECT_NEAR(ac.simState.pitch, restPitch, 1e-9);
    EXPECT_EQ(ac.simState.airspeedKt, 0.0);
    EXPECT_LT(gf_distanceNm(ac.simState.position(), real.place()) * metresPerNm, 20.0);
    EXPECT_LT(flown.motion().feet, 1.0);
    expectSmooth(flown, 160.0, "arrival");
}

/// From the taxiway onto the runway, off the ground and up to four thousand feet.
RealAircraft departure() {
    RealAircraft real(offset(airportPlace, 270.0, 300.0), 0.0, 12.0, airportElevationFt);
    real.go(50, 0, 0, 0);
    real.go(15, 0, 0, 6.0); // lines up
    real.go(20, -0.6, 0, 0);
    real.go(40, 3.7, 0, 0); // rolls
    real.go(10, 0.5, 800, 0);
    real.go(90, 0.4, 2200, 0);
    real.go(60, 0, 1500, 1.0);
    return real;
}

TEST_F(Flights, DepartureRotatesClimbsAndNeverSinks) {
    for (const std::string_view type : {"A320", "B77W"}) {
        world.setTick(now);
        const RealAircraft real = departure();
        Flown flown = replay(real.reports(), AcPhase::Taxi, 0.0, type);
        bool rotated = false;
        std::int32_t liftOff = 0;
        std::int32_t gearUp = 0;
        double pitchAtLiftOff = 0.0;
        double lastAltFt = 0.0;
        double liftOffKt = 0.0;
        flown.flyTo(now + 28000, [&](const LiveAc& ac) {
            const double altFt = ac.simState.altFt;
            if (ac.phase == AcPhase::TakeOff && !rotated) {
                rotated = true;
                liftOffKt = ac.track.front().gsKt;
                EXPECT_NEAR(ac.simState.heading * degPerRad, runwayDeg, 3.0);
            }
            if (rotated) {
                ASSERT_GE(altFt, lastAltFt - 1e-9) << "sinks after lift-off, tick " << updateCount;
                if (liftOff == 0 && altFt > airportElevationFt + cgFt + 0.1) {
                    liftOff = updateCount;
                    pitchAtLiftOff = ac.simState.pitch * degPerRad;
                }
            }
            if (rotated && gearUp == 0) {
                const auto gear = sent(ac, simconnect::GearSet);
                if (!gear.empty() && gear.back() == 0) {
                    gearUp = updateCount;
                }
            }
            lastAltFt = altFt;
            forgetSent();
        });
        ASSERT_FALSE(flown.gone()) << type;
        EXPECT_GT(liftOffKt, 80.0) << type;
        EXPECT_LT(pitchAtLiftOff, -4.0) << "lifts off with its nose up";
        EXPECT_GE(gearUp - liftOff, 250) << type;
        EXPECT_LE(gearUp - liftOff, 320) << type;
        const LiveAc& ac = flown.ac();
        EXPECT_EQ(ac.phase, AcPhase::Air) << type;
        EXPECT_FALSE(ac.departing) << type;
        EXPECT_GT(ac.simState.altFt, airportElevationFt + 3000.0) << type;
        EXPECT_LT(flown.motion().feet, 0.8) << type;
        expectSmooth(flown, 230.0, type.data());
    }
}

TEST_F(Flights, HelicopterComesToAHoverAndFliesOnWithoutAJerk) {
    RealAircraft real(offset(airportPlace, 270.0, 3000.0), runwayDeg, 80.0, airportElevationFt + 600.0);
    real.go(40, 0, 0, 0);
    real.go(20, -4.0, 0, 0);
    real.go(40, 0, 0, 0); // hovers
    real.go(20, 4.0, 0, 0);
    real.go(40, 0, 300, 1.0);
    HELICOPTERS.set(true);
    Flown flown = replay(real.reports(), AcPhase::Air, runwayDeg, "EC35");
    std::int32_t hovered = 0;
    flown.flyTo(now + 15000, [&](const LiveAc& ac) {
        hovered += ac.track.front().stationary ? 1 : 0;
        ASSERT_LT(std::abs(gf_angleDiff(ac.simState.heading, runwayDeg * radPerDeg)) * degPerRad, 60.0);
    });
    ASSERT_FALSE(flown.gone());
    EXPECT_GT(hovered, 2000);
    expectSmooth(flown, 90.0, "helicopter");
}

TEST_F(Flights, ShakyFeedStillFliesSmoothly) {
    // A dozen metres of error in each position, some heard late and some never.
    std::mt19937 random(5);
    std::uniform_real_distribution<double> error(-12.0, 12.0);
    std::vector<TrackPoint> reports = arrival().reports();
    for (TrackPoint& point : reports) {
        const LatLon heard = offset(offset(point.position(), 0.0, error(random)), 90.0, error(random));
        point.lat = heard.lat;
        point.lon = heard.lon;
        point.altFt = point.airborne ? point.altFt + error(random) : 0.0;
        point.gsKt = std::max(point.gsKt + error(random) / 6.0, 0.0);
    }
    Flown flown = replay(reports, AcPhase::Air, runwayDeg);
    flown.flyTo(now + 40000, [&](const LiveAc& ac) {
        ASSERT_GT(ac.simState.altFt, airportElevationFt + cgFt - 1.0);
        ASSERT_GE(ac.maxLeadTicks, 1000);
        ASSERT_LE(ac.maxLeadTicks, 3000);
        ASSERT_GE(ac.maxLagTicks, 1000);
        ASSERT_LE(ac.maxLagTicks, 3000);
    });
    ASSERT_FALSE(flown.gone());
    EXPECT_TRUE(flown.ac().landed);
    expectSmooth(flown, 190.0, "shaky arrival");
}

TEST_F(Flights, SilenceInTheDescentEndsAboveTheGround) {
    std::vector<TrackPoint> reports = arrival().reports();
    reports.resize(30); // two minutes of it
    Flown flown = replay(reports, AcPhase::Air, runwayDeg);
    flown.flyTo(now + 40000,
                [&](const LiveAc& ac) { ASSERT_GT(ac.simState.altFt, airportElevationFt + cgFt - 1.0); });
    EXPECT_TRUE(flown.gone());
    expectSmooth(flown, 160.0, "silence");
}

} // namespace
} // namespace kst::test

#include "parking/parkairportchoice.h"

#include "core/controlids.h"
#include "core/display.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/runstate.h"
#include "feed/readers.h"
#include "parking/airportfile.h"
#include "parking/parkairports.h"
#include "parking/population.h"
#include "parking/staticparking.h"
#include "scanner/airportdirectory.h"

#include <exception>
#include <fmt/format.h>
#include <optional>

namespace kst {

namespace {

constexpr std::uint32_t minutesAfterPopulation = 19;

/// A park airport has been chosen, and its file has yet to be read.
bool parkAirportPending = false;
/// Where the user was when the list was last put in order.
std::optional<LatLon> orderedFor;

bool makeParkAirport(std::string_view code) {
    const AirportEntry* const airport = gf_airportByCode(code);
    if (airport == nullptr) {
        return false;
    }
    // The directory has no names: the airport's own file tells it.
    setParkAirport(ParkAirportFacts{airport->code, airport->code, airport->position(), airport->alt});
    updateStatus(Band::Park, [&](StatusValues& status) { status.airportCode = airport->code; });
    logLine(fmt::format("The park airport is {}", airport->code));
    return true;
}

/// The reader begins to note who is in the feed: none of those is to stand parked as well.
void lf_prepareParking(bool showMessageLine) {
    parkingRunning = true;
    enableParkingControls(false);
    collectSeenTargets(true);
    if (showMessageLine) {
        showMessage("Calculating static parked aircraft ...", true);
    }
}

void takeParkAirport(bool showMessageLine) {
    parkAirportPending = true;
    lf_prepareParking(showMessageLine);
}

bool inSight(double distanceNm) {
    return distanceNm <= AIRPORT_RANGE && userData.heightAglFt <= AIRPORT_HEIGHT;
}

void lookOnGround(LatLon position, bool showMessageLine) {
    const AirportEntry* const closest = gf_closestAirport(position);
    if (closest == nullptr) {
        showMessage("User aircraft on the ground, no airport in sight", true);
        return;
    }
    const std::string text = fmt::format("User aircraft on the ground at {}", closest->code);
    if (!gf_apfExists(closest->code)) {
        showMessage(text + ", no airport file found", true);
        return;
    }
    logLine(text);
    if (makeParkAirport(closest->code)) {
        takeParkAirport(showMessageLine);
    }
}

void lf_lookForAirport(LatLon position, bool showMessageLine) {
    if (userOnGround) {
        lookOnGround(position, showMessageLine);
        return;
    }
    enableControl(control::Destination, true);
    if (parkAirports.empty()) {
        return;
    }
    const ParkAirport& head = parkAirports.front();
    if (inSight(head.distance) && makeParkAirport(head.code)) {
        showMessage(fmt::format("{} in sight at {:.1F} nm", head.code, head.distance), true);
        takeParkAirport(false);
    }
}

/// On the ground the airport stays, wherever the user goes.
void lf_checkAirportInSight(LatLon position, const ParkAirportFacts& airport) {
    if (userOnGround) {
        return;
    }
    const double distance = gf_distanceNm(position, airport.position);
    if (!inSight(distance)) {
        logLine(fmt::format("\n{} {} is out of sight ({:.1F} nm), parked aircraft will be removed",
                            timeOfDay(), airport.code, distance));
        lf_removeAllParked();
        return;
    }
    if (parkAirports.empty() || parkAirports.front().code == airport.code) {
        return;
    }
    const ParkAirport& head = parkAirports.front();
    if (inSight(head.distance) && head.distance <= distance) {
        logLine(fmt::format("\n{} {} is in sight ({:.1F} nm), parked aircraft at {} will be removed first",
                            timeOfDay(), head.code, head.distance, airport.code));
        lf_removeAllParked();
    }
}

void chooseAirport(bool showMessageLine) {
    const LatLon position = userData.position();
    if (!positionKnown(position)) {
        return;
    }
    if (!parkAirports.empty()) {
        if (orderedFor != position) {
            orderedFor = position;
            orderParkAirports(position);
        } else {
            parkAirports.front().distance = gf_distanceNm(position, parkAirports.front().position);
        }
    }
    if (const auto airport = parkAirport()) {
        lf_checkAirportInSight(position, *airport);
    } else {
        lf_lookForAirport(position, showMessageLine);
    }
}

void endPopulation() {
    parkingRunning = false;
    updateStatus(Band::Control,
                 [](StatusValues& status) { status.nextRenewalMinutes = minutesAfterPopulation; });
    enableParkingControls(true);
    showMeanAges();
}

void loadChosenAirport() {
    parkAirportPending = false;
    const std::string error = lf_readParkedFile();
    if (error.empty()) {
        lf_initialParking();
    } else {
        showMessage(error, true);
        lf_closeAirport();
    }
    enableControl(control::Destination, true);
}

} // namespace

void gf_checkForParkAirportUpdates(bool showMessageLine) {
    try {
        if (parkingRunning && parkQueue.empty()) {
            endPopulation();
        }
        if (parkAirportPending) {
            loadChosenAirport();
        } else {
            chooseAirport(showMessageLine);
        }
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: {}", "gf_checkForParkAirportUpdates", error.what()));
        throw;
    }
}

void resetParkAirportChoice() {
    parkAirportPending = false;
    orderedFor.reset();
}

} // namespace kst

#include "parking/parkingworld.h"

#include "core/display.h"
#include "core/files.h"
#include "core/parameters.h"
#include "core/parkairport.h"
#include "core/random.h"
#include "core/runstate.h"
#include "parking/learning.h"
#include "parking/stands.h"
#include "support/environment.h"

#include <fmt/format.h>

namespace kst::test {

namespace {

void resetParking() {
    clearLoadedAirport();
    clearStandChanges();
    resetDisplay();
    resetRunState();
    setParkAirport(std::nullopt);
    for (Parameter* const parameter : allParameters()) {
        parameter->setDefault();
    }
}

bool coin() {
    return randomBelow(2) == 0;
}

} // namespace

ParkingWorld::ParkingWorld() {
    resetParking();
    setEnvironment("KESTRANE_DOWNLOAD_ROOT", "file:///nowhere/downloads/");
    lf_createFolders();
    openLog();
    setParkAirport(ParkAirportFacts{"TEST", "Testville", {47.0, 8.0}, 0.0});
}

ParkingWorld::~ParkingWorld() {
    closeLog();
    setEnvironment("KESTRANE_DOWNLOAD_ROOT", std::nullopt);
    resetParking();
}

std::string airportXml(std::string_view parameters, std::string_view parkpositions) {
    return fmt::format(
        "<?xml version=\"1.0\"?><meta/><parameters>{}</parameters><parkpositions>{}</parkpositions>",
        parameters, parkpositions);
}

std::string standXml(std::string_view id, double latitude, double longitude, std::string_view options) {
    return fmt::format("<parkpos id=\"{}\" latitude=\"{}\" longitude=\"{}\" heading=\"90.0\" radius=\"30.0\" "
                       "cargo=\"false\" ramp=\"true\">{}</parkpos>",
                       id, latitude, longitude, options);
}

AirportFile drawnAirport(std::uint32_t seed) {
    seedRandom(seed);
    AirportFile airport;
    airport.icao = "TEST";
    airport.airport_name = coin() ? "Testville <\"&\"> \xC3\xA9t\xC3\xA9" : "";
    airport.publisher = coin() ? "unknown" : "A Maker & Sons";
    airport.BGLpath = "C:\\scenery\\<test>.bgl";
    airport.altitude = static_cast<int>(randomBelow(16000)) - 1300;
    for (std::uint32_t i = 0, stands = 1 + randomBelow(30); i < stands; ++i) {
        ParkPos& stand = airport.stands.emplace_back();
        stand.id = fmt::format("G'{}\"{}", i, coin() ? "" : "<&");
        stand.latitude = randomBelow(180'000'000) / 1e6 - 90.0;
        stand.longitude = randomBelow(360'000'000) / 1e6 - 180.0;
        stand.heading = randomBelow(36'001) / 100.0 * radPerDeg;
        stand.radius = randomBelow(1000) / 10.0 / metresPerNm;
        stand.heli = randomBelow(4) == 0;
        stand.cargo = coin();
        stand.ramp = coin();
    }
    return airport;
}

ParkOption drawnOption(std::string registration) {
    ParkOption option;
    option.reg = std::move(registration);
    option.airl = coin() ? "SWR" : "";
    option.type = coin() ? "A320" : "";
    option.day = static_cast<int>(randomBelow(8));
    for (int i = 0; i < 5; ++i) {
        option.hours.set(randomBelow(48), coin());
    }
    option.cs = coin() ? "SWR12&" : "";
    option.cs2 = coin() && !option.cs.empty() ? "SWR13" : "";
    option.real = coin();
    option.seq = 1 + randomBelow(3);
    return option;
}

} // namespace kst::test

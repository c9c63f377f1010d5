#pragma once

#include "core/log.h"
#include "model/airportfile.h"
#include "support/tempfolder.h"
#include "support/virtualtime.h"

#include <string>

namespace kst::test {

/// An install folder with an open log in which Testville (ICAO TEST) is the park airport and no airport is
/// loaded. There is no download server. Everything is put back at the end.
class ParkingWorld {
public:
    ParkingWorld();
    ~ParkingWorld();

    std::string log() const { return folder.read("Log.txt").value_or(""); }

    TempFolder folder;
    VirtualTime time;
};

/// An airport file with these parameters and stands.
std::string airportXml(std::string_view parameters, std::string_view parkpositions);
std::string standXml(std::string_view id, double latitude, double longitude, std::string_view options = {});

/// An airport with what its file can hold, different for each seed; the ids and registrations are unique.
/// Without options, as scenery gives it.
AirportFile drawnAirport(std::uint32_t seed);
/// An observation as a visit leaves it.
ParkOption drawnOption(std::string registration);

} // namespace kst::test

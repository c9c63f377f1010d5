#pragma once

#include "model/airportfile.h"

#include <string>

namespace kst::data {

/// Adds to each stand a week of observations that could have been made there: airliners that turn round by
/// day and stay over night, light aircraft at home on small stands, helicopters on helipads. The airlines and
/// their shares come from stocktraffic.csv, their aircraft from registrations.csv, their sizes from
/// types.csv. The same each time.
void addMadeUpTraffic(AirportFile& airport, const std::string& folder);

} // namespace kst::data

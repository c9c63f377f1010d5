#pragma once

#include "model/liverydata.h"

#include <string>
#include <vector>

namespace kst::data {

/// The matcher's tables of liveries in the store's order, without the reports and registration files of a
/// start.
void buildMatchTables(const std::vector<LiveryData>& liveries);

/// Matches every aircraft of the recorded tracks against the liveries of a store, as the program would
/// without RANDOM, and prints which rungs were reached and why none was. Throws std::runtime_error where a
/// file is missing.
void printMatches(const std::string& store, const std::string& reference,
                  const std::vector<std::string>& tracks);

} // namespace kst::data

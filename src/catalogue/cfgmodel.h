#pragma once

#include "catalogue/scanreports.h"

#include <string>
#include <string_view>

namespace kst {

/// The model code that the value of a file's first atc_model line stands for: the code itself, or what a
/// known mistake is corrected to. Empty, and reported, when there is no line (`value` empty) or no such
/// model.
std::string modelOfValue(std::string_view value, std::string_view path, ScanReports& reports);

/// The same for a file of the IVAO model sets, whose model stands in its path
/// (...\IVAO_MTL\IVAO_A320\aircraft.cfg).
std::string modelOfIvaoPath(std::string_view path, ScanReports& reports);

} // namespace kst

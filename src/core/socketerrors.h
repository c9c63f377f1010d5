#pragma once

#include <string>
#include <system_error>

namespace kst {

/// "{} {}" with the Winsock number and its words; "Unknown errror code" for a number not in the table.
std::string socketErrorText(int winsockNumber);

/// The same for an error of this system's socket library, whose number is mapped to the Winsock number.
std::string socketErrorText(const std::error_code& error);

} // namespace kst

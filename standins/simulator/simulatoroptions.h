#pragma once

// The command line of the stand-in simulator.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kst::standin {

struct AirportOption {
    double lat = 0.0;
    double lon = 0.0;
    double elevationFt = 0.0;
};

struct SimulatorOptions {
    bool help = false;
    std::string pipe;                     ///< empty: no pipe
    std::optional<std::uint16_t> tcpPort; ///< 0 is a free one
    std::uint16_t httpPort = 0;           ///< 0 is a free one
    double userLat = 47.458056;           ///< degrees; Zurich
    double userLon = 8.548056;
    double userAltFt = 0.0;
    double userHeadingDeg = 0.0;
    double userSpeedKt = 0.0;
    bool userOnGround = true;
    std::string title = "Mooney Bravo";
    std::string model = "M20T";
    std::optional<double> utcSeconds; ///< since 1970; now, when not given
    double framesPerSecond = 30.0;
    std::string historyFile;          ///< CSV; empty: none
    double historyInterval = 1.0;     ///< seconds between points of one object
    std::optional<double> runSeconds; ///< ends by itself
    std::vector<AirportOption> airports;
};

/// Reads the arguments behind the program's name. Throws std::invalid_argument that names the wrong one.
SimulatorOptions readSimulatorOptions(const std::vector<std::string_view>& arguments);

/// The text for --help.
std::string_view simulatorOptionsHelp();

} // namespace kst::standin

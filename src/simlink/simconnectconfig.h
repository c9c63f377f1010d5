#pragma once

// What "SimConnect.cfg" says about how to reach the simulator.
//
// An INI file: lines of "Key=Value" below "[Section]". Section and key are compared without regard to case,
// blanks round them and round the value do not count, a value may stand in quotes, a line that begins with
// ';' is a comment. Of several sections of one name the first counts, of several keys of one name the first.

#include "simlink/streamtransport.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

struct SimConnectConfig {
    SimProtocol protocol = SimProtocol::Pipe;
    std::string address{};
    std::string port{};
    std::uint32_t maxReceiveSize = 41088;
    bool disableNagle = false;
};

/// Configuration index that reads no file.
inline constexpr std::uint32_t noConfigIndex = 0xFFFFFFFFU;

/// "SimConnect" for index 0, else "SimConnect.<index>".
std::string simConnectSection(std::uint32_t index);

/// Applies one file's text: what it names replaces what `config` holds. `registryPort` gives the port that
/// the simulator has registered for a protocol, empty when none.
void applySimConnectText(std::string_view text, std::uint32_t index,
                         const std::function<std::string(SimProtocol)>& registryPort,
                         SimConnectConfig& config);
/// Whether the section stands in the text with at least one line.
bool hasSimConnectSection(std::string_view text, std::uint32_t index);

/// The files in the order in which they are read: public documents, user's documents, current directory.
std::vector<std::filesystem::path> simConnectConfigFiles();

/// The port that the simulator has registered for IPv4 or IPv6 on this machine, empty when none.
std::string registeredSimPort(SimProtocol protocol);

/// Reads all files. False when `index` names a section (neither 0 nor `noConfigIndex`) that no file has.
bool readSimConnectConfig(std::uint32_t index, SimConnectConfig& config);

} // namespace kst

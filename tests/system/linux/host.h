#pragma once

// The system that the program of a test runs on: Linux itself, or Windows as Wine has it. host.cpp of this
// folder is the one, that of system_windows/ the other.

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace kst::test {

class ChildProcess;

namespace host {

/// Where the user's settings are, below the folder of a test.
std::filesystem::path roamingBelow(const std::filesystem::path& folder);

/// Creates the user's folders below the folder of a test and lets the system name them; the documents are in
/// documents/. Returns what the program needs in its environment.
std::map<std::string, std::string> prepare(const std::filesystem::path& folder);

/// The address of a local file or folder as the program understands it.
std::string urlOf(const std::filesystem::path& path);

/// Values that parameters.xml must hold for a start.
std::map<std::string, std::string> parameters();

/// The words that start Kestrane_P3D.
std::vector<std::string> program();

/// Arguments of the native stand-in simulator, so that the program of this test finds it.
std::vector<std::string> simulatorArguments(const std::filesystem::path& folder);

/// As the close button asks.
void askToClose(ChildProcess& program);

} // namespace host
} // namespace kst::test

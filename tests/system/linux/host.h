#pragma once

// The system that the program of a test runs on: Linux itself, or Windows as Wine has it. host.cpp of this
// folder is the one, that of system_windows/ the other.

#include "platform/ui.h"

#include <filesystem>
#include <map>
#include <optional>
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

/// A path of this machine as the program writes it and a person types it.
std::string pathText(const std::filesystem::path& path);

/// Has the display as fine as told for programs that are started with this environment from now on.
void setDotsPerInch(std::map<std::string, std::string>& environment, int dotsPerInch);

/// The words in front of a command that is to run on the display on which the program's window appears.
std::vector<std::string> onDisplay();

/// What the program's own controls say of themselves.
struct ControlState {
    bool enabled = false;
    bool checked = false;
    platform::Rect area; ///< pixels of the display
    std::string text;    ///< of a text box
};

/// The window as the system knows it.
struct WindowState {
    bool topMost = false;
    std::string toolTip; ///< the one that is shown
    int width = 0;       ///< of the client area, as the height
    int height = 0;
    std::map<int, ControlState> controls;
};

/// Nothing where the system does not let another process ask.
std::optional<WindowState> windowState(const std::filesystem::path& folder);

/// Puts UTF-8 text on the clipboard; false when that fails. `folder` is for a file on the way.
bool setClipboard(const std::filesystem::path& folder, const std::string& text);

/// As the close button asks.
void askToClose(ChildProcess& program);

} // namespace host
} // namespace kst::test

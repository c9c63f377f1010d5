#include "system/linux/host.h"

#include "support/linux/childprocess.h"
#include "support/places.h"
#include "system_windows/linux/wine.h"

#include <fstream>
#include <sstream>

#include <fmt/format.h>

namespace kst::test::host {

namespace {

namespace fs = std::filesystem;

constexpr const char* simulatorKey = R"(SOFTWARE\Lockheed Martin\Prepar3D v5)";
constexpr const char* foldersKey =
    R"(HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders)";

} // namespace

fs::path roamingBelow(const fs::path& folder) {
    return folder / "Users" / "J\u00fcrgen" / "AppData" / "Roaming";
}

std::map<std::string, std::string> prepare(const fs::path& folder) {
    fs::create_directories(roamingBelow(folder));
    fs::create_directories(folder / "documents");
    fs::create_directories(folder / "Pr\u00e4par3D v5");
    wine::setRegistry(folder, {{foldersKey, "AppData", wine::pathText(roamingBelow(folder))},
                               {foldersKey, "Personal", wine::pathText(folder / "documents")},
                               {fmt::format(R"(HKEY_LOCAL_MACHINE\{})", simulatorKey), "SetupPath",
                                wine::pathText(folder / "Pr\u00e4par3D v5")}});
    return {};
}

std::string urlOf(const fs::path& path) {
    return "file:///Z:" + path.string();
}

std::map<std::string, std::string> parameters() {
    return {};
}

std::vector<std::string> program() {
    return wine::program("Kestrane_P3D.exe");
}

std::vector<std::string> simulatorArguments(const fs::path& folder) {
    const std::string port = std::to_string(freeTcpPort());
    wine::setRegistry(folder,
                      {{fmt::format(R"(HKEY_CURRENT_USER\{})", simulatorKey), "SimConnect_Port_IPv4", port}});
    return {"--tcp", port};
}

std::string pathText(const fs::path& path) {
    return wine::pathText(path);
}

void setDotsPerInch(std::map<std::string, std::string>&, int dotsPerInch) {
    wine::run({"reg", "add", R"(HKCU\Control Panel\Desktop)", "/v", "LogPixels", "/t", "REG_DWORD", "/d",
               std::to_string(dotsPerInch), "/f"});
}

std::vector<std::string> onDisplay() {
    return {(sourceFolder() / "scripts" / "wine-session").string(), "run"};
}

std::optional<WindowState> windowState(const fs::path& folder) {
    const fs::path output = folder / "probe.txt";
    fs::remove(output);
    ChildProcess probe(wine::program("tests/windowprobe.exe"), {}, folder, output);
    if (probe.wait(std::chrono::seconds{20}) != 0) {
        return std::nullopt;
    }
    WindowState state;
    std::istringstream lines(contentOf(output));
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        std::istringstream words(line);
        int id = 0;
        if (line.starts_with("topmost ")) {
            state.topMost = line.ends_with('1');
        } else if (line.starts_with("client ")) {
            words >> line >> state.width >> state.height;
        } else if (line.starts_with("tip ")) {
            state.toolTip = line.substr(4);
        } else if (words >> id) {
            ControlState& control = state.controls[id];
            words >> control.enabled >> control.checked >> control.area.left >> control.area.top >>
                control.area.right >> control.area.bottom;
            words.get();
            std::getline(words, control.text);
        }
    }
    return state;
}

bool setClipboard(const fs::path& folder, const std::string& text) {
    const fs::path file = folder / "clipboard.txt";
    std::ofstream(file, std::ios::binary) << text;
    ChildProcess probe(
        wine::words(wine::buildFolder() / "tests/windowprobe.exe", {"clipboard", wine::pathText(file)}), {},
        folder, folder / "probe.txt");
    return probe.wait(std::chrono::seconds{20}) == 0;
}

void askToClose(ChildProcess&) {
    wine::run({"taskkill", "/IM", "Kestrane_P3D.exe"});
}

} // namespace kst::test::host

#include "system/linux/host.h"

#include "support/linux/childprocess.h"
#include "support/places.h"
#include "system_windows/linux/wine.h"

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

void askToClose(ChildProcess&) {
    wine::run({"taskkill", "/IM", "Kestrane_P3D.exe"});
}

} // namespace kst::test::host

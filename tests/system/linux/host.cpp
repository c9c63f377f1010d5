#include "system/linux/host.h"

#include "support/linux/childprocess.h"
#include "support/places.h"

#include <csignal>

namespace kst::test::host {

std::filesystem::path roamingBelow(const std::filesystem::path& folder) {
    return folder / "config";
}

std::map<std::string, std::string> prepare(const std::filesystem::path& folder) {
    for (const char* sub : {"config", "runtime", "documents", "public", "share"}) {
        std::filesystem::create_directories(folder / sub);
    }
    return {{"XDG_CONFIG_HOME", (folder / "config").string()},
            {"XDG_RUNTIME_DIR", (folder / "runtime").string()},
            {"XDG_DATA_HOME", (folder / "share").string()},
            {"XDG_DOCUMENTS_DIR", (folder / "documents").string()},
            {"XDG_PUBLICSHARE_DIR", (folder / "public").string()},
            {"QT_QPA_PLATFORM", "offscreen"}};
}

std::string urlOf(const std::filesystem::path& path) {
    return "file://" + path.string();
}

std::map<std::string, std::string> parameters() {
    return {{"SIM_INSTALL_PATH", "/opt/Prepar3D v5"}};
}

std::vector<std::string> program() {
    return {(buildFolder() / "Kestrane_P3D").string()};
}

std::vector<std::string> simulatorArguments(const std::filesystem::path&) {
    return {"--pipe", R"(\\.\pipe\Lockheed Martin Prepar3D v5\SimConnect)"};
}

void askToClose(ChildProcess& program) {
    program.signal(SIGTERM);
}

} // namespace kst::test::host

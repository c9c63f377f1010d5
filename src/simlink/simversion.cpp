// Which version of the simulator is installed, and which one this program is set up for.

#include "core/exceptions.h"
#include "core/parameters.h"
#include "platform/registry.h"
#include "simlink/session.h"

#include <fmt/format.h>

namespace kst {

namespace {

std::string versionKey(int version) {
    return fmt::format("SOFTWARE\\Lockheed Martin\\Prepar3D v{}", version);
}

bool containsVersion(const std::string& text, int version) {
    return text.find(fmt::format("v{}", version)) != std::string::npos ||
           text.find(fmt::format("V{}", version)) != std::string::npos;
}

} // namespace

bool lf_simInstalled(int version) {
    return platform::registryKeyExists(platform::RegistryHive::LocalMachine, versionKey(version));
}

std::string lf_simInstallPath(int version) {
    return platform::registryText(platform::RegistryHive::LocalMachine, versionKey(version), "SetupPath")
        .value_or("");
}

std::string gf_simVersionDigit() {
    constexpr int oldestVersion = 5;
    constexpr int newestVersion = 6;
    constexpr int noVersionError = 77;
    const std::string path = SIM_INSTALL_PATH.get();
    for (int version = oldestVersion; version <= newestVersion; ++version) {
        if (containsVersion(path, version)) {
            return fmt::format("{}", version);
        }
    }
    if (P3D_VERSION.get() >= oldestVersion) {
        return fmt::format("{}", P3D_VERSION.get());
    }
    throw UserErrorException(
        noVersionError,
        fmt::format("P3D install path does not contain v5 or v6? Use hidden parameter {}, set it at 5 or 6",
                    P3D_VERSION.name()));
}

} // namespace kst

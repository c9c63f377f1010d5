#include "feed/realtrafficlink.h"

#include "core/display.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "core/socketerrors.h"
#include "feed/feedtext.h"
#include "feed/linkserver.h"
#include "feed/readers.h"
#include "model/units.h"
#include "platform/knownfolders.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kst {

namespace {

constexpr int professionalLevel = 2;

LinkServer server;

std::function<void()>& linkLostHandler() {
    static std::function<void()> handler;
    return handler;
}

void setConnectedShown(bool connected) {
    updateStatus(Band::Status, [connected](StatusValues& status) { status.rtConnected = connected; });
}

void loseLink() {
    setConnectedShown(false);
    if (linkLostHandler()) {
        linkLostHandler()();
    }
    lf_resetReaders();
    showMessage(fmt::format("{} RealTraffic gone? Wait for RealTraffic to re-connect ...", timeOfDay()),
                true);
}

bool userKnown() {
    const std::array<double, 7> values = {userData.latitude,     userData.longitude, userData.pitch,
                                          userData.bank,         userData.heading,   userData.altitudeFt,
                                          userData.groundSpeedKt};
    return positionKnown(userData.position()) &&
           std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

} // namespace

void setLinkLostHandler(std::function<void()> handler) {
    linkLostHandler() = std::move(handler);
}

bool realTrafficConnected() {
    return server.connected();
}

int realTrafficPort() {
    return server.port();
}

void lf_detectRealTraffic() {
    const std::filesystem::path folder = platform::roamingAppData();
    realTrafficHere =
        !folder.empty() && std::filesystem::exists(folder / "InsideSystems" / "RealTraffic.jar");
    showMessage(fmt::format("RealTraffic {}detected at this PC", realTrafficHere ? "" : "not "), true);
}

void lf_openRealTraffic() {
    server.open(PORT_NUMBER.get());
}

bool sendDataPacket(std::string_view text) {
    if (const std::error_code error = server.send(text)) {
        logLine(fmt::format("sendDataPacket to RealTraffic failed: {}", socketErrorText(error)));
        logLine("RealTraffic client socket closed");
        return false;
    }
    return true;
}

void lf_waitForRealTraffic() {
    if (!realTrafficHere) {
        return;
    }
    showMessage(fmt::format("Waiting for RealTraffic to connect to {} ...", programName), true);
    lf_resetReaders();
    if (server.waitForClient()) {
        sendDataPacket("Qs999=version\r\n");
        const std::string reply = server.receive();
        if (stopAsked()) {
            return;
        }
        lf_readRealTrafficVersion(reply);
        setConnectedShown(true);
        waitingForRealTraffic = false;
        logLine("RealTraffic connected");
    }
    clearMessage();
}

void lf_readRealTrafficVersion(std::string_view reply) {
    if (reply.empty()) {
        showMessage("No RealTraffic version received?", true);
        timeFollowing = false;
        return;
    }
    const nlohmann::json answer = nlohmann::json::parse(reply);
    const auto level = answer.find("level");
    const bool levelGiven = level != answer.end() && level->is_number();
    const bool professional = !levelGiven || level->get<double>() == professionalLevel;
    timeFollowing = professional;

    const auto version = answer.find("version");
    std::string versionText =
        version != answer.end() && version->is_string() ? version->get<std::string>() : "";
    if (versionText.empty() || !isPlainName(versionText)) {
        versionText = "?";
    }
    const std::string edition =
        fmt::format("RT{} edition: {}", professional ? " prof" : " stnd", versionText);
    updateStatus(Band::Status, [&](StatusValues& status) { status.rtEditionText = edition; });
}

std::string userPositionCommand() {
    constexpr double angleScale = 100'000.0;
    constexpr double thousandths = 1'000.0;
    return fmt::format("Qs121={:.0f};{:.0f};{:.6f};{:.0f};{};{:.6f};{:.6f}\r\n", userData.pitch * angleScale,
                       userData.bank * angleScale, userData.heading, userData.altitudeFt * thousandths,
                       userData.groundSpeedKt * thousandths, userData.latitude * radPerDeg,
                       userData.longitude * radPerDeg);
}

void lf_sendUserPosition() {
    if (!realTrafficHere || !userKnown()) {
        return;
    }
    if (!server.connected()) {
        if (exitReason.load() != ExitReason::NotYetSet || !server.waitForClient()) {
            return;
        }
        setConnectedShown(true);
        showMessage(fmt::format("{} RealTraffic re-connected", timeOfDay()), true);
        clearMessage();
        return;
    }
    if (!sendDataPacket(userPositionCommand())) {
        loseLink();
    }
}

void lf_sendSimTime(std::int64_t seconds) {
    constexpr std::int64_t millisecondsPerSecond = 1000;
    if (!server.connected() || seconds < 1 ||
        seconds > std::numeric_limits<std::int64_t>::max() / millisecondsPerSecond) {
        return;
    }
    if (!sendDataPacket(fmt::format("Qs123={}\r\n", seconds * millisecondsPerSecond))) {
        loseLink();
    }
}

void lf_cancelRealTrafficWait() {
    server.cancelWait();
}

void lf_closeRealTraffic() {
    server.close("exit\r\n");
}

} // namespace kst

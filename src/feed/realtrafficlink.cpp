#include "feed/realtrafficlink.h"

#include "core/display.h"
#include "core/exceptions.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "core/socketerrors.h"
#include "feed/feedtext.h"
#include "feed/readers.h"
#include "model/units.h"
#include "platform/knownfolders.h"

#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/write.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kst {

namespace {

using asio::ip::tcp;

enum OpenFailure : int {
    startFailed = 0,
    resolveFailed = 1,
    createFailed = 2,
    modeFailed = 3,
    optionFailed = 4,
    bindFailed = 5,
    listenFailed = 6
};

constexpr std::size_t longestReply = 8192;
constexpr int professionalLevel = 2;

/// How long a client that does not read may hold up a send.
constexpr std::chrono::milliseconds sendLimit{500};
/// How often a wait looks whether it is to end.
constexpr std::chrono::milliseconds waitSlice{50};

/// The sockets and the context that both use. The context lives as long as the process, so that any thread
/// can post to it; it runs only inside the calls below, one at a time.
struct Link {
    asio::io_context context{1};
    tcp::acceptor listener{context};
    tcp::socket client{context};
    bool receiving = false;
};

std::mutex linkLock; ///< guards the link; held through waits, which `closing` ends
std::atomic<bool> linkConnected{false};
std::atomic<bool> waiting{false};
std::atomic<bool> closing{false};
std::atomic<int> listeningPort{0};

Link& link() {
    static Link theLink;
    return theLink;
}

std::function<void()>& linkLostHandler() {
    static std::function<void()> handler;
    return handler;
}

void setConnectedShown(bool connected) {
    updateStatus(Band::Status, [connected](StatusValues& status) { status.rtConnected = connected; });
}

void closeClient(Link& l) {
    std::error_code ignored;
    l.client.shutdown(tcp::socket::shutdown_both, ignored);
    l.client.close(ignored);
}

void closeListener(Link& l) {
    std::error_code ignored;
    l.listener.close(ignored);
    listeningPort = 0;
}

/// One asynchronous operation: whether it has ended, and how.
struct Operation {
    bool finished = false;
    std::error_code error;
    std::size_t length = 0;

    void finish(const std::error_code& result, std::size_t bytes = 0) {
        finished = true;
        error = result;
        length = bytes;
    }
};

/// Drops what was posted to end a wait that is over.
void forgetStalePosts(Link& l) {
    l.context.restart();
    l.context.poll();
    l.context.restart();
}

/// Runs until the operation has ended, for a wait without limit. `cancel` ends the operation once the wait is
/// to end.
template <class Cancel>
void waitFor(Link& l, const Operation& operation, Cancel cancel) {
    waiting = true;
    while (!operation.finished) {
        if (stopAsked() || closing) {
            cancel();
        }
        l.context.run_for(waitSlice);
    }
    waiting = false;
}

[[noreturn]] void failOpen(OpenFailure code, const std::string& text) {
    closeListener(link());
    throw SysErrorException(code, text);
}

tcp::endpoint resolvePort(Link& l, const std::string& port) {
    const std::optional<std::uint32_t> number = digitsAtStart(port);
    std::error_code error;
    if (number && *number > std::numeric_limits<std::uint16_t>::max()) {
        // The resolver would cut such a number to 16 bits.
        error = asio::error::service_not_found;
    } else {
        tcp::resolver resolver(l.context);
        const auto found = resolver.resolve(tcp::v4(), "", port, tcp::resolver::passive, error);
        if (!error && !found.empty()) {
            return found.begin()->endpoint();
        }
    }
    failOpen(resolveFailed, fmt::format("getaddrinfo failed with error {}", socketErrorText(error)));
}

/// Accepts one client; blocks. False when the wait was ended.
bool waitForClient() {
    if (linkConnected) {
        return false;
    }
    const std::lock_guard lock(linkLock);
    Link& l = link();
    forgetStalePosts(l);
    Operation accepted;
    l.listener.async_accept(l.client, [&](const std::error_code& error) { accepted.finish(error); });
    waitFor(l, accepted, [&] {
        std::error_code ignored;
        l.listener.cancel(ignored);
    });
    if (accepted.error) {
        closeClient(l);
        return false;
    }
    std::error_code error;
    l.client.set_option(tcp::no_delay(true), error);
    if (error) {
        logLine(
            fmt::format("waitForClient interrupted: {}", fmt::format("{} setsockopt failed with error {}",
                                                                     timeOfDay(), socketErrorText(error))));
        closeClient(l);
        return false;
    }
    linkConnected = true;
    return true;
}

/// One read of what the client has to say; blocks. Empty when it left, on an error, and when the wait was
/// ended.
std::string receive() {
    const std::lock_guard lock(linkLock);
    Link& l = link();
    forgetStalePosts(l);
    std::string reply(longestReply, '\0');
    Operation received;
    l.receiving = true;
    l.client.async_read_some(asio::buffer(reply), [&](const std::error_code& error, std::size_t length) {
        received.finish(error, length);
    });
    waitFor(l, received, [&] {
        std::error_code ignored;
        l.client.cancel(ignored);
    });
    l.receiving = false;
    if (received.error && received.error != asio::error::eof &&
        received.error != asio::error::operation_aborted) {
        logLine(fmt::format("receive: {}", socketErrorText(received.error)));
    }
    reply.resize(received.length);
    return reply;
}

/// Sends all of the text, with `linkLock` held. Waits `sendLimit` at most.
std::error_code send(Link& l, std::string_view text) {
    Operation sent;
    l.context.restart();
    asio::async_write(l.client, asio::buffer(text),
                      [&](const std::error_code& error, std::size_t length) { sent.finish(error, length); });
    l.context.run_for(sendLimit);
    if (sent.finished) {
        return sent.error;
    }
    std::error_code ignored;
    l.client.cancel(ignored);
    l.context.restart();
    while (!sent.finished) {
        l.context.run_one();
    }
    return asio::error::timed_out;
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
    return linkConnected;
}

int realTrafficPort() {
    return listeningPort;
}

void lf_detectRealTraffic() {
    const std::filesystem::path folder = platform::roamingAppData();
    realTrafficHere =
        !folder.empty() && std::filesystem::exists(folder / "InsideSystems" / "RealTraffic.jar");
    showMessage(fmt::format("RealTraffic {}detected at this PC", realTrafficHere ? "" : "not "), true);
}

void lf_openRealTraffic() {
    const std::lock_guard lock(linkLock);
    std::error_code error;
    try {
        link();
    } catch (const std::system_error& e) {
        throw SysErrorException(startFailed,
                                fmt::format("WSAStartup failed with error {}", socketErrorText(e.code())));
    }
    Link& l = link();
    closeClient(l);
    closeListener(l);
    linkConnected = false;
    const std::string port = PORT_NUMBER.get();
    const tcp::endpoint endpoint = resolvePort(l, port);
    l.listener.open(tcp::v4(), error);
    if (error) {
        failOpen(createFailed, fmt::format("socket failed with error {}", socketErrorText(error)));
    }
    l.listener.non_blocking(false, error);
    if (error) {
        failOpen(modeFailed, fmt::format("ioctlsocket failed with error {}", socketErrorText(error)));
    }
    l.listener.set_option(tcp::acceptor::reuse_address(true), error);
    if (error) {
        failOpen(optionFailed, "setsockopt(SO_REUSEADDR) failed");
    }
    l.listener.bind(endpoint, error);
    if (error) {
        failOpen(bindFailed,
                 fmt::format("Bind failed at port {} with error {}", port, socketErrorText(error)));
    }
    l.listener.listen(tcp::acceptor::max_listen_connections, error);
    if (error) {
        failOpen(listenFailed, fmt::format("listen failed with error {}", socketErrorText(error)));
    }
    listeningPort = l.listener.local_endpoint(error).port();
}

bool sendDataPacket(std::string_view text) {
    const std::lock_guard lock(linkLock);
    Link& l = link();
    const std::error_code error = send(l, text);
    if (!error) {
        return true;
    }
    logLine(fmt::format("sendDataPacket to RealTraffic failed: {}", socketErrorText(error)));
    linkConnected = false;
    closeClient(l);
    logLine("RealTraffic client socket closed");
    return false;
}

void lf_waitForRealTraffic() {
    if (!realTrafficHere) {
        return;
    }
    showMessage(fmt::format("Waiting for RealTraffic to connect to {} ...", programName), false);
    lf_resetReaders();
    if (waitForClient()) {
        sendDataPacket("Qs999=version\r\n");
        const std::string reply = receive();
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
    std::string versionText = "?";
    if (version != answer.end() && version->is_string()) {
        const auto& text = version->get_ref<const std::string&>();
        if (!text.empty()) {
            versionText = isPlainName(text) ? text : "?";
        }
    }
    updateStatus(Band::Status, [&](StatusValues& status) {
        status.rtEditionText = fmt::format("RT{} edition: {}", professional ? " prof" : " stnd", versionText);
    });
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
    if (!linkConnected) {
        if (exitReason.load() != ExitReason::NotYetSet || !waitForClient()) {
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
    if (!linkConnected || seconds < 1 ||
        seconds > std::numeric_limits<std::int64_t>::max() / millisecondsPerSecond) {
        return;
    }
    if (!sendDataPacket(fmt::format("Qs123={}\r\n", seconds * millisecondsPerSecond))) {
        loseLink();
    }
}

void lf_cancelRealTrafficWait() {
    if (!waiting) {
        return;
    }
    // Only the thread that runs the context may touch the sockets.
    asio::post(link().context, [] {
        std::error_code ignored;
        link().listener.cancel(ignored);
        if (link().receiving) {
            link().client.cancel(ignored);
        }
    });
}

void lf_closeRealTraffic() {
    closing = true;
    lf_cancelRealTrafficWait();
    const std::lock_guard lock(linkLock);
    if (linkConnected || listeningPort != 0) {
        Link& l = link();
        if (linkConnected) {
            send(l, "exit\r\n");
        }
        closeListener(l);
        closeClient(l);
        linkConnected = false;
    }
    closing = false;
}

} // namespace kst

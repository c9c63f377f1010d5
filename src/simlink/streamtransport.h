#pragma once

// The two connections of the client: a TCP socket and a named pipe.

#include "simlink/transport.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace kst {

/// How to reach the simulator. The numbers are those of the published configuration.
enum class SimProtocol : std::uint32_t { Pipe = 1, IPv4 = 2, IPv6 = 23 };

/// One attempt to connect.
struct TransportTarget {
    SimProtocol protocol = SimProtocol::Pipe;
    std::string address{}; ///< host name or address; of a pipe its server
    std::string port{};    ///< port number or service; of a pipe its name, empty for the default
    std::uint32_t maxReceiveSize = 0;
    bool disableNagle = false;
};

/// The name of the pipe that the target means.
std::string pipeName(const TransportTarget& target);

/// Connects, blocking the caller for at most a few seconds, or until `stopped()` holds; nullptr when that
/// fails. It receives once its owner calls `onConnected`.
std::shared_ptr<SimTransport> connectTransport(const TransportTarget& target,
                                               const std::function<bool()>& stopped);

} // namespace kst

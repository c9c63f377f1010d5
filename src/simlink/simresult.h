#pragma once

// Result codes of the client's operations, and why a connection ended.

#include <cstdint>

namespace kst {

/// Result of an operation: `simOk`, or a negative code.
using SimResult = std::int32_t;

inline constexpr SimResult simOk = 0;
inline constexpr SimResult simFailed = static_cast<SimResult>(0x80004005U);
inline constexpr SimResult simBadArgument = static_cast<SimResult>(0x80070057U);
/// A text does not fit into its field; nothing was sent.
inline constexpr SimResult simTextTooLong = static_cast<SimResult>(0x8007007AU);

/// Why a connection ended. The numbers are those that the published client reports.
enum class DisconnectCode : std::uint32_t {
    Closed = 0,         ///< by this side
    PacketTooLong = 1,  ///< above the limit of a received packet
    BadPacketSize = 2,  ///< shorter than its own size field, or negative
    OutOfMemory = 3,    ///< a list or buffer could not grow
    EndOfData = 4,      ///< the simulator ended its side of a socket
    ConnectionGone = 5, ///< reset, or the pipe broke
    Cancelled = 8,
    IoFailed = 9
};

/// The system status that goes with a code; the result of every operation after the end of the connection.
namespace disconnectdetail {
inline constexpr std::uint32_t aborted = 0x80004004U;
inline constexpr std::uint32_t outOfMemory = 0x8007000EU;
inline constexpr std::uint32_t endOfData = 0xC000013EU;
inline constexpr std::uint32_t remoteDisconnect = 0xC000013CU;
inline constexpr std::uint32_t pipeBroken = 0xC000014BU;
inline constexpr std::uint32_t cancelled = 0xC0000120U;
inline constexpr std::uint32_t ioFailed = 0xC0000001U;
} // namespace disconnectdetail

} // namespace kst

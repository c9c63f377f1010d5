#pragma once

// The packets that go to the simulator. Each begins with a head of 16 bytes: size of the whole packet,
// protocol version, operation mark plus number, send id; all 32-bit little-endian. Fields follow without
// gaps, texts zero-ended in a field of fixed length.

#include "simlink/simresult.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kst {

/// The block in which a packet is built: the longest packet that can be sent.
inline constexpr std::size_t sendBlockSize = 41088;

/// Send ids count 1, 2, ... and skip 0 when they wrap.
constexpr std::uint32_t nextSendId(std::uint32_t last) {
    return last == 0xFFFFFFFFU ? 1U : last + 1U;
}

/// Builds one packet after the other in a block of its own. Every field is appended behind the one before; a
/// field that does not fit is remembered as an error instead of being written.
class PacketWriter {
public:
    /// Begins a packet of this operation.
    void begin(std::uint32_t operation);
    void add(std::uint32_t value);
    void add(float value);
    /// A text in a field of `field` bytes, zero-ended.
    void addText(std::string_view text, std::size_t field);
    void addBytes(std::span<const std::byte> bytes);
    void addZeros(std::size_t count);

    /// `simOk`, `simTextTooLong` for a text longer than its field, `simBadArgument` for too long a packet.
    SimResult result() const { return result_; }
    /// Writes size and send id into the head and gives the whole packet, valid until the next `begin`.
    std::span<const std::byte> finish(std::uint32_t sendId);

private:
    std::byte* reserve(std::size_t count);

    std::array<std::byte, sendBlockSize> block_{};
    std::size_t size_ = 0;
    SimResult result_ = simOk;
};

} // namespace kst

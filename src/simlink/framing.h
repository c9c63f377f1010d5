#pragma once

// Cuts the byte stream from the simulator into packets.
//
// A packet begins with its own size, 32-bit little-endian, which counts the whole packet. A size of zero is
// padding: every zero byte up to the next other byte is skipped, wherever reads happen to split it. Anything
// else that is not a size ends the stream with a fault.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kst {

/// One stream. Not for use by two threads at once.
class PacketFraming {
public:
    /// Numbered as the disconnect codes that they lead to.
    enum class Fault : std::uint32_t { None = 0, PacketTooLong = 1, BadPacketSize = 2, OutOfMemory = 3 };

    static constexpr std::size_t bufferStep = 2048;
    /// The receive buffer grows no further: a longer packet is dropped.
    static constexpr std::size_t largestBuffer = 0x100000;

    explicit PacketFraming(std::uint32_t maxReceiveSize);

    /// Where the next bytes from the stream go. Empty only with a fault. Ends the life of every packet handed
    /// out before.
    std::span<std::byte> freeSpace();
    /// Takes the first `count` bytes of that space as received.
    void advance(std::size_t count);
    /// The next whole packet, valid until the next call of `freeSpace`. False when there is none yet, or with
    /// a fault.
    bool next(std::span<const std::byte>& packet);

    Fault fault() const { return fault_; }
    /// Forgets everything received.
    void reset();

private:
    enum class Step { Again, Wait, Packet };
    Step step(std::span<const std::byte>& packet);
    void grow();

    std::vector<std::byte> buffer_;
    std::size_t read_ = 0;
    std::size_t write_ = 0;
    std::size_t wanted_ = 0; ///< size of the packet that is not yet complete
    std::size_t drop_ = 0;   ///< bytes still to come of a packet that is dropped
    bool padding_ = false;   ///< a zero size was seen, and no other byte since
    std::uint32_t maxReceiveSize_;
    Fault fault_ = Fault::None;
};

} // namespace kst

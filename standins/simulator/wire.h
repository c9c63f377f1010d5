#pragma once

// Bytes of the simulator's protocol: a bounded reader that remembers that it ran over, and a writer. All
// numbers are little-endian; texts are zero-ended in a field of fixed length.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kst::standin {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// Reads one packet from front to back. A read beyond the end gives zero or an empty text and sets `failed`,
/// so a handler reads all its fields first and asks once.
class PacketReader {
public:
    explicit PacketReader(ByteView bytes) : bytes_(bytes) {}

    std::uint32_t u32();
    std::int32_t i32() { return static_cast<std::int32_t>(u32()); }
    std::uint64_t u64();
    float f32();
    double f64();
    /// The text in a field of `length` bytes. A field without its zero is a failure.
    std::string text(std::size_t length);
    /// A text of open length up to its zero.
    std::string openText();
    ByteView bytes(std::size_t length);
    void skip(std::size_t length) { bytes(length); }

    std::size_t left() const { return bytes_.size() - position_; }
    bool failed() const { return failed_; }

private:
    ByteView bytes_;
    std::size_t position_ = 0;
    bool failed_ = false;
};

/// Builds one message.
class PacketWriter {
public:
    PacketWriter& u32(std::uint32_t value);
    PacketWriter& u64(std::uint64_t value);
    PacketWriter& f32(float value);
    PacketWriter& f64(double value);
    /// The text in a field of `length` bytes, cut so that its zero fits.
    PacketWriter& text(std::string_view value, std::size_t length);
    /// The text and its zero.
    PacketWriter& openText(std::string_view value);
    PacketWriter& bytes(ByteView value);

    Bytes& data() { return data_; }

private:
    Bytes data_;
};

/// A message to the client with its head (size, version, `dwID`) in front of the body.
Bytes message(std::uint32_t id, PacketWriter& body);

} // namespace kst::standin

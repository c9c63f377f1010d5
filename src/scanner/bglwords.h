#pragma once

// A BGL file as the reader sees it: little-endian 32-bit words, each access checked against the file's end.

#include <cstddef>
#include <cstdint>
#include <span>

namespace kst {

class BglWords {
public:
    static constexpr std::size_t bytesPerWord = 4;

    /// A view of the file's bytes, which must outlive it. What is missing of the last word reads as zero
    /// bytes.
    explicit BglWords(std::span<const std::byte> bytes) : bytes_(bytes) {}

    std::size_t size() const { return (bytes_.size() + bytesPerWord - 1) / bytesPerWord; }

    /// The word at this index. Throws std::out_of_range beyond the end.
    std::uint32_t word(std::size_t index) const;
    std::int32_t signedWord(std::size_t index) const { return static_cast<std::int32_t>(word(index)); }
    /// A 32-bit float.
    float real(std::size_t index) const;
    /// One byte of a word, 0 the lowest.
    std::uint8_t byteOf(std::size_t index, unsigned byte) const {
        return static_cast<std::uint8_t>(word(index) >> (8 * byte));
    }

    // What every record and sub-record begins with.
    std::uint16_t recordId(std::size_t index) const { return static_cast<std::uint16_t>(word(index)); }
    /// Size in bytes, header included.
    std::uint32_t recordSize(std::size_t index) const { return word(index) >> 16 | word(index + 1) << 16; }

private:
    /// The last word of a file that ends within it. Throws std::out_of_range beyond that.
    std::uint32_t lastWord(std::size_t index) const;

    std::span<const std::byte> bytes_;
};

inline std::uint32_t BglWords::word(std::size_t index) const {
    if (index >= bytes_.size() / bytesPerWord) {
        return lastWord(index);
    }
    const std::byte* const first = bytes_.data() + index * bytesPerWord;
    return std::to_integer<std::uint32_t>(first[0]) | std::to_integer<std::uint32_t>(first[1]) << 8 |
           std::to_integer<std::uint32_t>(first[2]) << 16 | std::to_integer<std::uint32_t>(first[3]) << 24;
}

} // namespace kst

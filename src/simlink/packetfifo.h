#pragma once

// A first-in, first-out list of packets in one block of memory, which is kept when the list is emptied:
// nothing is allocated once it has its working size. Not for use by two threads at once.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

namespace kst {

class PacketFifo {
public:
    void push(std::span<const std::byte> packet) {
        const auto length = static_cast<std::uint32_t>(packet.size());
        const std::size_t at = bytes_.size();
        bytes_.resize(at + sizeof length + packet.size());
        std::memcpy(bytes_.data() + at, &length, sizeof length);
        std::memcpy(bytes_.data() + at + sizeof length, packet.data(), packet.size());
    }

    /// Takes the oldest packet; it stays valid until the next `push` or `clear`. False when none is left.
    bool pop(std::span<const std::byte>& packet) {
        if (read_ == bytes_.size()) {
            return false;
        }
        std::uint32_t length = 0;
        std::memcpy(&length, bytes_.data() + read_, sizeof length);
        packet = std::span<const std::byte>(bytes_).subspan(read_ + sizeof length, length);
        read_ += sizeof length + length;
        return true;
    }

    bool empty() const { return read_ == bytes_.size(); }
    std::size_t byteCount() const { return bytes_.size(); }
    void clear() {
        bytes_.clear();
        read_ = 0;
    }
    void swap(PacketFifo& other) noexcept {
        bytes_.swap(other.bytes_);
        std::swap(read_, other.read_);
    }

private:
    std::vector<std::byte> bytes_;
    std::size_t read_ = 0;
};

} // namespace kst

#include "simlink/framing.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

namespace kst {

static_assert(std::endian::native == std::endian::little, "the wire is little-endian, as every target is");

namespace {
constexpr std::size_t sizeField = 4;
}

PacketFraming::PacketFraming(std::uint32_t maxReceiveSize)
    : buffer_(bufferStep), maxReceiveSize_(maxReceiveSize) {}

std::span<std::byte> PacketFraming::freeSpace() {
    if (fault_ != Fault::None) {
        return {};
    }
    if (read_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + read_, write_ - read_);
        write_ -= read_;
        read_ = 0;
    }
    if (write_ == buffer_.size()) {
        grow();
    }
    return std::span(buffer_).subspan(write_);
}

void PacketFraming::advance(std::size_t count) {
    write_ += std::min(count, buffer_.size() - write_);
}

bool PacketFraming::next(std::span<const std::byte>& packet) {
    if (fault_ != Fault::None) {
        return false;
    }
    Step result = Step::Again;
    while (result == Step::Again) {
        result = step(packet);
    }
    return result == Step::Packet;
}

void PacketFraming::reset() {
    read_ = write_ = wanted_ = drop_ = 0;
    padding_ = false;
    fault_ = Fault::None;
}

PacketFraming::Step PacketFraming::step(std::span<const std::byte>& packet) {
    const std::size_t available = write_ - read_;
    if (drop_ > 0) {
        const std::size_t dropped = std::min(drop_, available);
        read_ += dropped;
        drop_ -= dropped;
        return drop_ > 0 ? Step::Wait : Step::Again;
    }
    if (padding_) {
        while (read_ < write_ && buffer_[read_] == std::byte{0}) {
            ++read_;
        }
        padding_ = read_ == write_;
        return padding_ ? Step::Wait : Step::Again;
    }
    if (available < sizeField) {
        return Step::Wait;
    }
    std::int32_t size = 0;
    std::memcpy(&size, buffer_.data() + read_, sizeField);
    if (size == 0) {
        padding_ = true;
        return Step::Again;
    }
    if (size < static_cast<std::int32_t>(sizeField)) {
        fault_ = Fault::BadPacketSize;
        return Step::Wait;
    }
    const auto whole = static_cast<std::size_t>(size);
    if (whole > maxReceiveSize_) {
        fault_ = Fault::PacketTooLong;
        return Step::Wait;
    }
    if (available >= whole) {
        packet = std::span<const std::byte>(buffer_).subspan(read_, whole);
        read_ += whole;
        wanted_ = 0;
        return Step::Packet;
    }
    if (whole > largestBuffer) {
        drop_ = whole;
        return Step::Again;
    }
    wanted_ = whole;
    return Step::Wait;
}

void PacketFraming::grow() {
    const std::size_t needed = std::max(wanted_, buffer_.size() + 1);
    const std::size_t rounded = (needed + bufferStep - 1) / bufferStep * bufferStep;
    try {
        buffer_.resize(std::min(rounded, largestBuffer));
    } catch (const std::bad_alloc&) {
        fault_ = Fault::OutOfMemory;
    }
}

} // namespace kst

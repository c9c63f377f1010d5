#include "simlink/packets.h"

#include "model/simconnect.h"

#include <bit>
#include <cstring>

namespace kst {

static_assert(std::endian::native == std::endian::little, "the wire is little-endian, as every target is");

namespace {
constexpr std::size_t headSize = 16;
constexpr std::size_t protocolOffset = 4;
constexpr std::size_t operationOffset = 8;
constexpr std::size_t sendIdOffset = 12;
} // namespace

void PacketWriter::begin(std::uint32_t operation) {
    size_ = headSize;
    result_ = simOk;
    const std::uint32_t mark = simconnect::operationMark + operation;
    std::memcpy(block_.data() + protocolOffset, &simconnect::protocolVersion,
                sizeof simconnect::protocolVersion);
    std::memcpy(block_.data() + operationOffset, &mark, sizeof mark);
}

void PacketWriter::add(std::uint32_t value) {
    if (std::byte* place = reserve(sizeof value)) {
        std::memcpy(place, &value, sizeof value);
    }
}

void PacketWriter::add(float value) {
    add(std::bit_cast<std::uint32_t>(value));
}

void PacketWriter::addText(std::string_view text, std::size_t field) {
    if (text.size() >= field) {
        result_ = simTextTooLong;
        return;
    }
    if (std::byte* place = reserve(field)) {
        std::memset(place, 0, field);
        if (!text.empty()) {
            std::memcpy(place, text.data(), text.size());
        }
    }
}

void PacketWriter::addBytes(std::span<const std::byte> bytes) {
    if (bytes.empty()) {
        return;
    }
    if (std::byte* place = reserve(bytes.size())) {
        std::memcpy(place, bytes.data(), bytes.size());
    }
}

void PacketWriter::addZeros(std::size_t count) {
    if (std::byte* place = reserve(count)) {
        std::memset(place, 0, count);
    }
}

std::span<const std::byte> PacketWriter::finish(std::uint32_t sendId) {
    const auto size = static_cast<std::uint32_t>(size_);
    std::memcpy(block_.data(), &size, sizeof size);
    std::memcpy(block_.data() + sendIdOffset, &sendId, sizeof sendId);
    return std::span<const std::byte>(block_).first(size_);
}

std::byte* PacketWriter::reserve(std::size_t count) {
    if (result_ != simOk || count > block_.size() - size_) {
        result_ = result_ == simOk ? simBadArgument : result_;
        return nullptr;
    }
    std::byte* place = block_.data() + size_;
    size_ += count;
    return place;
}

} // namespace kst

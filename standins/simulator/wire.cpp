#include "standins/simulator/wire.h"

#include "model/simconnect.h"

#include <algorithm>
#include <bit>

namespace kst::standin {

namespace {

constexpr std::size_t headSize = 12;
constexpr unsigned bitsPerByte = 8;

template <typename Number>
void putLittleEndian(Bytes& data, Number value) {
    for (std::size_t i = 0; i < sizeof(Number); ++i)
        data.push_back(static_cast<std::uint8_t>(value >> (bitsPerByte * i)));
}

template <typename Number>
Number getLittleEndian(ByteView bytes) {
    Number value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        value = static_cast<Number>((value << bitsPerByte) | bytes[i]);
    return value;
}

} // namespace

ByteView PacketReader::bytes(std::size_t length) {
    if (failed_ || length > left()) {
        failed_ = true;
        return {};
    }
    const ByteView part = bytes_.subspan(position_, length);
    position_ += length;
    return part;
}

std::uint32_t PacketReader::u32() {
    return getLittleEndian<std::uint32_t>(bytes(sizeof(std::uint32_t)));
}

std::uint64_t PacketReader::u64() {
    return getLittleEndian<std::uint64_t>(bytes(sizeof(std::uint64_t)));
}

float PacketReader::f32() {
    return std::bit_cast<float>(u32());
}

double PacketReader::f64() {
    return std::bit_cast<double>(u64());
}

std::string PacketReader::text(std::size_t length) {
    const ByteView field = bytes(length);
    const auto end = std::find(field.begin(), field.end(), std::uint8_t{0});
    if (end == field.end()) {
        failed_ = true;
        return {};
    }
    return {field.begin(), end};
}

std::string PacketReader::openText() {
    const ByteView rest = bytes_.subspan(position_);
    const auto end = std::find(rest.begin(), rest.end(), std::uint8_t{0});
    if (failed_ || end == rest.end()) {
        failed_ = true;
        return {};
    }
    position_ += static_cast<std::size_t>(end - rest.begin()) + 1;
    return {rest.begin(), end};
}

PacketWriter& PacketWriter::u32(std::uint32_t value) {
    putLittleEndian(data_, value);
    return *this;
}

PacketWriter& PacketWriter::u64(std::uint64_t value) {
    putLittleEndian(data_, value);
    return *this;
}

PacketWriter& PacketWriter::f32(float value) {
    return u32(std::bit_cast<std::uint32_t>(value));
}

PacketWriter& PacketWriter::f64(double value) {
    return u64(std::bit_cast<std::uint64_t>(value));
}

PacketWriter& PacketWriter::text(std::string_view value, std::size_t length) {
    const std::string_view fitting = value.substr(0, length - 1);
    data_.insert(data_.end(), fitting.begin(), fitting.end());
    data_.insert(data_.end(), length - fitting.size(), std::uint8_t{0});
    return *this;
}

PacketWriter& PacketWriter::openText(std::string_view value) {
    return text(value, value.size() + 1);
}

PacketWriter& PacketWriter::bytes(ByteView value) {
    data_.insert(data_.end(), value.begin(), value.end());
    return *this;
}

Bytes message(std::uint32_t id, PacketWriter& body) {
    PacketWriter whole;
    whole.data().reserve(headSize + body.data().size());
    whole.u32(static_cast<std::uint32_t>(headSize + body.data().size()))
        .u32(simconnect::protocolVersion)
        .u32(id)
        .bytes(body.data());
    return std::move(whole.data());
}

} // namespace kst::standin

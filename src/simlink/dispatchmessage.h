#pragma once

// One received message as bytes with bounds: a read beyond its end gives zero or an empty text, never
// another's memory.

#include "core/log.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include <fmt/format.h>

namespace kst {

class Message {
public:
    /// Size, version and id of every message.
    static constexpr std::size_t headSize = 12;

    Message(const void* data, std::size_t size) : bytes_(static_cast<const char*>(data), size) {}

    std::size_t size() const { return bytes_.size(); }
    std::uint32_t id() const { return u32(8); }
    /// Whether the message is at least this long. One that is shorter than its layout is logged.
    bool holds(std::size_t size) const {
        if (bytes_.size() >= size) {
            return true;
        }
        logLine(fmt::format("! SimConnect message dwID {} too short, {} bytes", id(), bytes_.size()));
        return false;
    }

    std::uint32_t u32(std::size_t offset) const { return value<std::uint32_t>(offset); }
    std::int64_t i64(std::size_t offset) const { return value<std::int64_t>(offset); }
    float f32(std::size_t offset) const { return value<float>(offset); }
    double f64(std::size_t offset) const { return value<double>(offset); }
    /// The text in a field of at most `field` bytes, without its NUL.
    std::string_view text(std::size_t offset, std::size_t field) const {
        if (offset >= bytes_.size()) {
            return {};
        }
        const std::string_view whole = bytes_.substr(offset, field);
        return whole.substr(0, whole.find('\0'));
    }

private:
    template <typename T>
    T value(std::size_t offset) const {
        T result{};
        if (offset <= bytes_.size() && bytes_.size() - offset >= sizeof result) {
            std::memcpy(&result, bytes_.data() + offset, sizeof result);
        }
        return result;
    }

    std::string_view bytes_;
};

} // namespace kst

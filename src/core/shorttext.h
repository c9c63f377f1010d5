#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kst {

/// A text of at most `Capacity` characters in place, for codes that are kept by the hundred thousand. Reads
/// as a string_view.
template <std::size_t Capacity>
class ShortText {
    static_assert(Capacity < 256);

public:
    static constexpr std::size_t capacity = Capacity;

    constexpr ShortText() = default;
    // Implicit on purpose: a code is a text.
    /// Throws std::length_error when the text is too long.
    // NOLINTNEXTLINE(google-explicit-constructor)
    constexpr ShortText(std::string_view text) : size_(static_cast<std::uint8_t>(text.size())) {
        if (text.size() > Capacity) {
            throw std::length_error("text too long for its place");
        }
        // A loop of its own: for so few characters a call costs more than the copying.
        for (std::size_t i = 0; i < text.size(); ++i) {
            text_[i] = text[i];
        }
    }
    // NOLINTNEXTLINE(google-explicit-constructor)
    constexpr ShortText(const char* text) : ShortText(std::string_view(text)) {}

    // NOLINTNEXTLINE(google-explicit-constructor)
    ShortText(const std::string& text) : ShortText(std::string_view(text)) {}

    // NOLINTNEXTLINE(google-explicit-constructor)
    constexpr operator std::string_view() const { return view(); }
    constexpr std::string_view view() const { return {text_.data(), size_}; }
    constexpr bool empty() const { return size_ == 0; }
    constexpr std::size_t size() const { return size_; }

    friend constexpr bool operator==(const ShortText& a, std::string_view b) { return a.view() == b; }
    friend constexpr bool operator==(const ShortText& a, const ShortText& b) { return a.view() == b.view(); }
    friend constexpr auto operator<=>(const ShortText& a, const ShortText& b) {
        return a.view() <=> b.view();
    }

private:
    std::array<char, Capacity> text_{};
    std::uint8_t size_ = 0;
};

} // namespace kst

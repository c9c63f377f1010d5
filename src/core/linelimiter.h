#pragma once

// Keeps a log readable and bounded when something shouts: of the lines of one kind a hundred a second pass,
// the rest are counted, and the count is told once a second. One owner, which guards it.

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace kst {

class LineLimiter {
public:
    /// Lines of one kind that pass in one second.
    static constexpr std::uint32_t linesPerSecond = 100;
    /// Kinds told apart at a time. When as many are busy within one second, all others share one more kind,
    /// so that memory and lines stay bounded whatever the lines say.
    static constexpr std::size_t kindsKept = 512;
    /// A kind is the text before the first digit, at most this many bytes of it.
    static constexpr std::size_t kindLength = 32;

    /// Whether this line may be written at `now`. What has been held back in seconds that are over is
    /// appended to `reports`, one line each with its line end.
    bool admit(std::string_view line, std::chrono::nanoseconds now, std::string& reports);

    /// Appends all that has been held back and not yet been told.
    void flush(std::string& reports);

private:
    struct Kind {
        std::chrono::nanoseconds begin{0};
        std::uint32_t passed = 0;
        std::uint32_t heldBack = 0;
        std::size_t length = 0;
        std::array<char, kindLength> text{};
    };

    Kind& kindOf(std::string_view line, std::chrono::nanoseconds now);
    void report(Kind& kind, std::string& reports);
    void reportThoseOver(std::chrono::nanoseconds now, std::string& reports);

    /// The last one is shared by all kinds that find no place.
    std::array<Kind, kindsKept + 1> kinds_{};
    std::array<std::size_t, kindsKept> hashes_{};
    std::size_t used_ = 0;
    std::chrono::nanoseconds nextReport_ = std::chrono::nanoseconds::max();
};

} // namespace kst

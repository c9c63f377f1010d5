#include "core/linelimiter.h"

#include <algorithm>
#include <functional>
#include <iterator>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::chrono::nanoseconds window = std::chrono::seconds{1};

/// A clock that ran backwards, as one that a test has replaced, also ends the window.
bool isOver(std::chrono::nanoseconds begin, std::chrono::nanoseconds now) {
    return now < begin || now - begin >= window;
}

} // namespace

LineLimiter::Kind& LineLimiter::kindOf(std::string_view line, std::chrono::nanoseconds now) {
    const std::string_view text = line.substr(0, line.find_first_of("0123456789")).substr(0, kindLength);
    const std::size_t hash = std::hash<std::string_view>{}(text);
    const auto place = std::find(hashes_.begin(), hashes_.begin() + static_cast<std::ptrdiff_t>(used_), hash);
    std::size_t index = static_cast<std::size_t>(place - hashes_.begin());
    if (index < used_) {
        return kinds_[index];
    }
    if (used_ < kindsKept) {
        ++used_;
    } else {
        const auto idle = std::find_if(kinds_.begin(), kinds_.end() - 1, [&](const Kind& kind) {
            return kind.heldBack == 0 && isOver(kind.begin, now);
        });
        index = static_cast<std::size_t>(idle - kinds_.begin());
        if (index == kindsKept) {
            return kinds_[kindsKept];
        }
    }
    hashes_[index] = hash;
    Kind& kind = kinds_[index];
    kind = Kind{};
    kind.begin = now;
    kind.length = text.copy(kind.text.data(), kindLength);
    return kind;
}

void LineLimiter::report(Kind& kind, std::string& reports) {
    if (kind.heldBack > 0) {
        fmt::format_to(std::back_inserter(reports), "... {} more line{} of the kind \"{}\" left out\n",
                       kind.heldBack, kind.heldBack == 1 ? "" : "s",
                       std::string_view(kind.text.data(), kind.length));
        kind.heldBack = 0;
    }
}

void LineLimiter::reportThoseOver(std::chrono::nanoseconds now, std::string& reports) {
    nextReport_ = std::chrono::nanoseconds::max();
    for (Kind& kind : kinds_) {
        if (kind.heldBack == 0) {
            continue;
        }
        if (isOver(kind.begin, now)) {
            report(kind, reports);
        } else {
            nextReport_ = std::min(nextReport_, kind.begin + window);
        }
    }
}

bool LineLimiter::admit(std::string_view line, std::chrono::nanoseconds now, std::string& reports) {
    if (now >= nextReport_) {
        reportThoseOver(now, reports);
    }
    Kind& kind = kindOf(line, now);
    if (isOver(kind.begin, now)) {
        report(kind, reports);
        kind.begin = now;
        kind.passed = 0;
    }
    if (kind.passed < linesPerSecond) {
        ++kind.passed;
        return true;
    }
    ++kind.heldBack;
    nextReport_ = std::min(nextReport_, kind.begin + window);
    return false;
}

void LineLimiter::flush(std::string& reports) {
    for (Kind& kind : kinds_) {
        report(kind, reports);
    }
    nextReport_ = std::chrono::nanoseconds::max();
}

} // namespace kst

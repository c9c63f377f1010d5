#include "core/log.h"

#include "core/clock.h"
#include "core/exceptions.h"
#include "core/linelimiter.h"
#include "platform/paths.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <fstream>
#include <mutex>
#include <system_error>

#include <fmt/format.h>

namespace kst {

namespace {

/// A line longer than this comes from no part of the program but from a file or a sender, and is cut.
constexpr std::size_t longestLine = 64 * 1024;

struct Log {
    std::mutex lock; ///< guards what follows, for one line at a time
    std::ofstream stream;
    LineLimiter limiter;
    std::string line;
    std::string output;
    /// Lets a call return without the lock while no log is open.
    std::atomic<bool> open{false};
};

/// Never destroyed: threads that outlive main may still log.
Log& theLog() {
    static Log& log = *new Log;
    return log;
}

/// Called with the lock held.
void writeOut(Log& log) {
    log.stream.write(log.output.data(), static_cast<std::streamsize>(log.output.size()));
    log.stream.flush();
    // After a full disk the next line tries again.
    log.stream.clear();
    log.output.clear();
}

void writeLine(std::string_view prefix, std::string_view text) {
    Log& log = theLog();
    if (!log.open.load(std::memory_order_relaxed)) {
        return;
    }
    const std::lock_guard guard(log.lock);
    if (!log.stream.is_open()) {
        return;
    }
    log.line.assign(prefix);
    log.line.append(text.substr(0, longestLine));
    const bool admitted = log.limiter.admit(log.line, monotonicNow(), log.output);
    if (admitted) {
        log.output.append(log.line);
        if (text.size() > longestLine) {
            fmt::format_to(std::back_inserter(log.output), " ... ({} more bytes)", text.size() - longestLine);
        }
        log.output.push_back('\n');
    }
    if (!log.output.empty()) {
        writeOut(log);
    }
}

/// Best effort: what cannot be moved is overwritten.
void rotateLogs() {
    std::error_code ignored;
    const auto moveOver = [&](const char* from, const char* to) {
        if (std::filesystem::exists(from, ignored)) {
            std::filesystem::rename(from, to, ignored);
        }
    };
    moveOver("Log0.txt", "Log00.txt");
    moveOver("Log.txt", "Log0.txt");
}

/// Called with the lock held.
void closeStream(Log& log) {
    log.open = false;
    if (log.stream.is_open()) {
        log.limiter.flush(log.output);
        writeOut(log);
        log.stream.close();
    }
}

struct UtcTime {
    std::chrono::year_month_day date;
    std::chrono::weekday weekday;
    std::chrono::hh_mm_ss<std::chrono::seconds> time;
};

UtcTime utcNow() {
    const auto now = std::chrono::floor<std::chrono::seconds>(wallNow());
    const auto day = std::chrono::floor<std::chrono::days>(now);
    return {day, std::chrono::weekday{day}, std::chrono::hh_mm_ss{now - day}};
}

std::string clockText(const UtcTime& utc) {
    return fmt::format("{:02}:{:02}:{:02}", utc.time.hours().count(), utc.time.minutes().count(),
                       utc.time.seconds().count());
}

} // namespace

std::string_view programVersionText() {
    return KST_VERSION;
}

void openLog() {
    Log& log = theLog();
    const std::lock_guard guard(log.lock);
    closeStream(log);
    rotateLogs();
    const std::filesystem::path path = "Log.txt";
    log.stream.clear();
    log.stream.open(path, std::ios::binary | std::ios::trunc);
    if (!log.stream.is_open()) {
        std::error_code ignored;
        throw SysErrorException(
            40, fmt::format("Failed to write file {}",
                            platform::utf8FromPath(std::filesystem::absolute(path, ignored))));
    }
    log.limiter = {};
    log.output = fmt::format("{} (utc) {} version {} for Prepar3D v5/v6\n", nowText(), programName,
                             programVersionText());
    writeOut(log);
    log.open = true;
}

void closeLog() {
    Log& log = theLog();
    const std::lock_guard guard(log.lock);
    closeStream(log);
}

void flushLog() {
    Log& log = theLog();
    const std::lock_guard guard(log.lock);
    if (log.stream.is_open()) {
        log.limiter.flush(log.output);
        writeOut(log);
    }
}

void logLine(std::string_view text) {
    writeLine({}, text);
}

void logAlert(std::string_view text) {
    writeLine("===> ", text);
}

void logIndented(std::string_view text) {
    writeLine("          ", text);
}

std::string bannerLine(int width, int extra, bool newlineBefore, bool newlineAfter, std::string_view title) {
    const int total = std::max(width + extra, 0);
    const auto stars = static_cast<std::size_t>(total + total % 2);
    std::string line;
    if (title.empty()) {
        line.assign(stars, '*');
    } else if (title.size() + 2 < stars) {
        const std::string side(stars / 2 - 1, '*');
        line = fmt::format("{} {} {}", side, title, side);
    } else {
        line = title;
    }
    return fmt::format("{}{}{}", newlineBefore ? "\n" : "", line, newlineAfter ? "\n" : "");
}

std::string timeOfDay() {
    return clockText(utcNow());
}

std::string nowText() {
    constexpr std::array<std::string_view, 7> dayNames = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr std::array<std::string_view, 12> monthNames = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const UtcTime utc = utcNow();
    return fmt::format("{} {} {:2} {} {}", dayNames[utc.weekday.c_encoding()],
                       monthNames[static_cast<unsigned>(utc.date.month()) - 1],
                       static_cast<unsigned>(utc.date.day()), clockText(utc),
                       static_cast<int>(utc.date.year()));
}

std::string formatHours(double hours) {
    return hours == std::floor(hours) ? fmt::format("{:.0f}", hours) : fmt::format("{:.1F}", hours);
}

} // namespace kst

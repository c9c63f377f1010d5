#include "core/reasoncounts.h"

#include "core/log.h"

#include <atomic>
#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::array<std::string_view, reasonCount> reasonTexts = {
    "none",
    "line too long",
    "line repeated",
    "ground vehicle",
    "malformed line",
    "no registration from source F",
    "out of range",
    "category is no aircraft",
    "type missing or no aircraft",
    "identity reserved",
    "no callsign and no registration",
    "callsign never shown",
    "too high in airport range",
    "on the ground away from a park airport",
    "feed closed",
    "feed queue full",
    "type unknown",
    "size class switched off",
    "same flight under another identity",
    "aircraft is leaving",
    "too soon after the last position",
    "speed not plausible",
    "place or altitude not plausible",
    "straight track thinned",
    "altitude of the field in the buffer",
    "ghost of a present target",
    "new identity, aircraft respawns",
    "position rejected by its filter",
    "fell silent before its time",
    "ghost replaced by the real target",
    "ground and air mixed in the buffer",
    "held back for the user",
    "creation queue full",
    "farthest at the live limit",
    "blocked by the operator",
    "callsign not valid",
    "no livery",
    "no free stand",
    "stand taken",
    "neighbour stand taken",
    "refused by the simulator",
    "track ended",
    "too many points",
    "feed left the holding aircraft",
    "held too long",
    "taxiing neighbour too close",
    "feed far from the stand",
    "stand taken on arrival",
    "live limit",
    "parking limit",
    "parking renewal",
    "park airport closed",
    "conflict with the user",
    "conflict with a live aircraft",
    "conflict with a static aircraft",
    "empty track",
    "no object id",
    "removed by the simulator itself",
    "flushed by the operator",
    "link to RealTraffic lost",
    "run ended",
};

static_assert(!reasonTexts.back().empty(), "a text for each reason");

std::array<std::atomic<std::uint64_t>, reasonCount> reasons{};
std::array<std::atomic<std::uint64_t>, static_cast<std::size_t>(Happening::Count)> happenings{};
std::atomic<std::uint64_t> passes{0};
std::atomic<std::uint64_t> overruns{0};
std::atomic<std::uint64_t> longest{0};

constexpr std::uint64_t passMicroseconds = 10'000;

} // namespace

std::string_view reasonText(Reason reason) {
    return reasonTexts.at(static_cast<std::size_t>(reason));
}

void countReason(Reason reason) {
    reasons[static_cast<std::size_t>(reason)].fetch_add(1, std::memory_order_relaxed);
}

std::uint64_t reasonTotal(Reason reason) {
    return reasons[static_cast<std::size_t>(reason)].load(std::memory_order_relaxed);
}

void countHappening(Happening happening, std::uint64_t by) {
    happenings[static_cast<std::size_t>(happening)].fetch_add(by, std::memory_order_relaxed);
}

std::uint64_t happeningTotal(Happening happening) {
    return happenings[static_cast<std::size_t>(happening)].load(std::memory_order_relaxed);
}

void countPass(std::uint64_t microseconds) {
    passes.fetch_add(1, std::memory_order_relaxed);
    if (microseconds > passMicroseconds) {
        overruns.fetch_add(1, std::memory_order_relaxed);
    }
    if (microseconds > longest.load(std::memory_order_relaxed)) {
        longest.store(microseconds, std::memory_order_relaxed);
    }
}

std::uint64_t passTotal() {
    return passes.load(std::memory_order_relaxed);
}
std::uint64_t passOverrunTotal() {
    return overruns.load(std::memory_order_relaxed);
}
std::uint64_t passLongestMicroseconds() {
    return longest.load(std::memory_order_relaxed);
}

void logCounts() {
    logLine(fmt::format(
        "traffic: lines={} accepted={} targets={} buffered={} created={} positions={} removed={} "
        "passes={} overruns={} longest_us={}",
        happeningTotal(Happening::LinesHeard), happeningTotal(Happening::LinesAccepted),
        happeningTotal(Happening::TargetsHeard), happeningTotal(Happening::Buffered),
        happeningTotal(Happening::Created), happeningTotal(Happening::PositionsSent),
        happeningTotal(Happening::Removed), passTotal(), passOverrunTotal(), passLongestMicroseconds()));
    for (std::size_t i = 1; i < reasonCount; ++i) {
        const std::uint64_t total = reasons[i].load(std::memory_order_relaxed);
        if (total > 0) {
            logLine(fmt::format("reason {}: {}", reasonTexts[i], total));
        }
    }
}

void resetCounts() {
    for (auto& reason : reasons) {
        reason = 0;
    }
    for (auto& happening : happenings) {
        happening = 0;
    }
    passes = 0;
    overruns = 0;
    longest = 0;
}

} // namespace kst

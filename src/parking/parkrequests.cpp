#include "parking/parkrequests.h"

#include "catalogue/reference.h"
#include "core/display.h"
#include "core/geodesy.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/random.h"
#include "core/runstate.h"
#include "engine/tables.h"
#include "parking/population.h"
#include "parking/stands.h"

#include <algorithm>
#include <exception>
#include <fmt/format.h>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace kst {

namespace {

enum class OptionKind { Real, Soft };

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};
using TextSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;
/// The stands on which static aircraft with this text stand.
using StandsOfText = std::unordered_multimap<std::string_view, std::uint32_t>;

bool holdsElsewhere(const StandsOfText& table, std::string_view text, std::uint32_t sid) {
    const auto [first, last] = table.equal_range(text);
    return std::any_of(first, last, [sid](const auto& entry) { return entry.second != sid; });
}

/// One search: who stands or is to stand where, and what was found so far.
class StandSearch {
public:
    explicit StandSearch(DayHH now);

    /// Looks at the observations of one half hour: `offset` half hours before now.
    std::vector<ParkRequest> lf_searchStands(OptionKind kind, int offset);
    /// Puts a batch of requests into `parkQueue`.
    void append(std::vector<ParkRequest>& batch);
    /// The number of stands that are taken.
    int allocated() const { return allocated_; }

private:
    bool meetsNeighbour(const ParkPos& stand, const ParkOption& option) const;
    bool standsHere(const ParkPos& stand, const ParkOption& option) const;
    bool isRefused(const ParkPos& stand, const ParkOption& option) const;
    bool isInFeed(std::string_view callsign) const;
    ParkOption* pick(ParkPos& stand) const;
    void gatherCandidates(ParkPos& stand, OptionKind kind, DayHH searched);
    ParkRequest take(ParkPos& stand, const ParkOption& option, int offset);

    DayHH now_;
    std::vector<const StaticAc*> standing_; ///< the created static aircraft on each stand, by sid
    StandsOfText staticCallsigns_;
    StandsOfText staticRegistrations_;
    TextSet stayerCallsigns_;
    TextSet queuedCallsigns_;
    TextSet queuedRegistrations_;
    std::vector<ParkOption*> candidates_; ///< of the stand that is looked at
    int allocated_ = 0;
};

StandSearch::StandSearch(DayHH now) : now_(now), standing_(parkPositions().size() + 1) {
    for (const StaticAc& ac : staticAcs) {
        staticCallsigns_.emplace(ac.primaryCallsign, ac.sid);
        staticRegistrations_.emplace(ac.regcode, ac.sid);
        if (ac.state == AcState::Live && ac.sid < standing_.size()) {
            standing_[ac.sid] = &ac;
        }
    }
    for (const LiveStayer& stayer : liveStayers) {
        stayerCallsigns_.insert(stayer.callsign);
    }
    for (const ParkRequest& request : parkQueue) {
        queuedCallsigns_.insert(request.cs);
        queuedRegistrations_.insert(request.reg);
    }
    allocated_ = static_cast<int>(std::ranges::count(parkPositions(), true, &ParkPos::allocated));
}

bool StandSearch::meetsNeighbour(const ParkPos& stand, const ParkOption& option) const {
    return std::ranges::any_of(stand.neighbours, [&](std::uint32_t sid) {
        const StaticAc* ac = sid < standing_.size() ? standing_[sid] : nullptr;
        return ac != nullptr && gf_halfWingSpan(option.type) + gf_halfWingSpan(ac->acType) >
                                    gf_distanceNm({ac->standLat, ac->standLon}, stand.position());
    });
}

bool StandSearch::isInFeed(std::string_view callsign) const {
    return liveCallsigns.contains(std::string(callsign)) ||
           liveCallsigns.contains(std::string(callsign) + '_');
}

/// Whether the aircraft of this observation stands on this stand already.
bool StandSearch::standsHere(const ParkPos& stand, const ParkOption& option) const {
    const StaticAc* ac = stand.sid < standing_.size() ? standing_[stand.sid] : nullptr;
    return ac != nullptr && ac->airline == option.airl && ac->acType == option.type &&
           ac->regcode == option.reg && ac->primaryCallsign == option.cs && ac->coupledCallsign == option.cs2;
}

/// Each flight and each airframe stands once. A static aircraft on this very stand is the one that the
/// renewal recognises. Unknown texts count as alike, but not against who stands here already: aircraft
/// without callsigns would drive each other out.
bool StandSearch::isRefused(const ParkPos& stand, const ParkOption& option) const {
    const bool unknownCounts = !standsHere(stand, option);
    const auto flightRefused = [&](const std::string& callsign) {
        return (unknownCounts || !callsign.empty()) &&
               (isInFeed(callsign) || holdsElsewhere(staticCallsigns_, callsign, stand.sid) ||
                queuedCallsigns_.contains(callsign) || stayerCallsigns_.contains(callsign));
    };
    const auto airframeRefused = [&](const std::string& registration) {
        return (unknownCounts || !registration.empty()) &&
               (holdsElsewhere(staticRegistrations_, registration, stand.sid) ||
                queuedRegistrations_.contains(registration));
    };
    return flightRefused(option.cs) || flightRefused(option.cs2) || airframeRefused(option.reg);
}

void StandSearch::gatherCandidates(ParkPos& stand, OptionKind kind, DayHH searched) {
    candidates_.clear();
    if (stand.blocked || (stand.heli && !HELICOPTERS)) {
        return;
    }
    for (ParkOption& option : stand.options) {
        if (option.seq != 0 && option.real == (kind == OptionKind::Real) &&
            (WEEK || isOfDay(option, searched.day)) &&
            option.hours.test(static_cast<std::size_t>(searched.hh)) && !meetsNeighbour(stand, option)) {
            candidates_.push_back(&option);
        }
    }
}

/// One of the candidates: at random, but rather the one that stands here already.
ParkOption* StandSearch::pick(ParkPos& stand) const {
    if (candidates_.size() < 2 || !RANDOM) {
        return candidates_.front();
    }
    for (const StaticAc& ac : staticAcs) {
        if (ac.sid != stand.sid) {
            continue;
        }
        const auto same = std::ranges::find_if(candidates_, [&](const ParkOption* option) {
            return option->airl == ac.airline && option->type == ac.acType &&
                   (ac.callsign == option->cs + '*' || ac.callsign == option->cs2 + '*');
        });
        if (same != candidates_.end()) {
            return *same;
        }
    }
    return candidates_[randomBelow(static_cast<std::uint32_t>(candidates_.size()))];
}

ParkRequest StandSearch::take(ParkPos& stand, const ParkOption& option, int offset) {
    stand.allocated = true;
    ++allocated_;
    for (const std::uint32_t sid : stand.neighbours) {
        if (ParkPos* neighbour = standBySid(sid)) {
            neighbour->blocked = true;
        }
    }
    // What is unknown counts from the next half hour on: aircraft without callsigns come together.
    if (!option.cs.empty()) {
        queuedCallsigns_.insert(option.cs);
    }
    if (!option.reg.empty()) {
        queuedRegistrations_.insert(option.reg);
    }
    return {.sid = stand.sid,
            .offset = static_cast<std::uint32_t>(offset),
            .airl = option.airl,
            .type = option.type,
            .cs = option.cs,
            .cs2 = option.cs2,
            .reg = option.reg,
            .inbound = option.cs2.empty() || hasNextHalfHour(stand, option, now_)};
}

std::vector<ParkRequest> StandSearch::lf_searchStands(OptionKind kind, int offset) {
    std::vector<ParkRequest> requests;
    const DayHH searched = now_.back(offset);
    try {
        for (ParkPos& stand : parkPositions()) {
            if (stand.reserved || stand.allocated) {
                continue;
            }
            gatherCandidates(stand, kind, searched);
            if (candidates_.empty()) {
                continue;
            }
            ParkOption& option = *pick(stand);
            if (isRefused(stand, option)) {
                option.seq = 0;
            } else {
                requests.push_back(take(stand, option, offset));
            }
        }
    } catch (const std::exception& error) {
        logLine(fmt::format("{}: day: {}, offset {}: {}", "lf_searchStands", now_.day, offset, error.what()));
    }
    return requests;
}

void StandSearch::append(std::vector<ParkRequest>& batch) {
    for (ParkRequest& request : batch) {
        queuedCallsigns_.insert(request.cs);
        queuedRegistrations_.insert(request.reg);
        parkQueue.push_back(std::move(request));
    }
    batch.clear();
}

void logFound(int found, OptionKind kind, DayHH now, int lastOffset) {
    const bool soft = kind == OptionKind::Soft;
    const DayHH searched = now.back(lastOffset);
    const std::string day = WEEK ? ", week" : fmt::format(", day {}", searched.day);
    const std::string fit = fmt::format(" fit: {} hour, hh:{} or {} hrs", halfHoursText(lastOffset),
                                        searched.hh, halfHoursText(searched.hh));
    logLine(fmt::format("{} {} position{} found, Max fit={} hours{}{}", found, soft ? "soft" : "real",
                        found > 1 ? "s" : "", formatHours(static_cast<double>(MAX_FIT_FL.get())), day, fit));
    if (soft) {
        updateStatus(Band::Park, [](StatusValues& status) { status.staticBusyShown = true; });
    }
}

/// Searches half hour by half hour back from now until enough stands are taken. Of the last half hour only so
/// many count as are wanted.
void lf_collectPositions(StandSearch& search, DayHH now, int wanted, int existing, OptionKind kind) {
    const int before = search.allocated();
    std::vector<ParkRequest> batch;
    int offset = 0;
    while (true) {
        batch = search.lf_searchStands(kind, offset);
        if (search.allocated() >= wanted) {
            break;
        }
        search.append(batch);
        if (offset >= MAX_FIT) {
            break;
        }
        ++offset;
    }
    (kind == OptionKind::Real ? realFit : softFit) = offset;
    if (const int found = search.allocated() - before; found > 0) {
        logFound(found, kind, now, offset);
    }
    const int over = static_cast<int>(parkQueue.size() + batch.size()) + existing - wanted;
    if (over > 0 && !batch.empty()) {
        if (RANDOM) {
            shuffle(batch);
        }
        batch.resize(batch.size() - std::min(batch.size(), static_cast<std::size_t>(over)));
    }
    search.append(batch);
    while (!parkQueue.empty() && static_cast<int>(parkQueue.size()) + existing > wanted) {
        parkQueue.pop_back();
    }
}

} // namespace

void lf_fillPositions(DayHH now, int wanted, int existing) {
    realFit = 0;
    softFit = -1;
    StandSearch search(now);
    lf_collectPositions(search, now, wanted, existing, OptionKind::Real);
    if (static_cast<int>(parkQueue.size()) + existing < wanted && (PARK_SOFT || PARK_FAKE)) {
        lf_collectPositions(search, now, wanted, existing, OptionKind::Soft);
    }
}

bool hasNextHalfHour(const ParkPos& stand, const ParkOption& option, DayHH now) {
    const DayHH next = now.next();
    if (next.hh != 0) {
        return option.hours.test(static_cast<std::size_t>(next.hh));
    }
    return std::ranges::any_of(stand.options, [&](const ParkOption& other) {
        return other.seq > 0 && isOfDay(other, next.day) && other.airl == option.airl &&
               other.type == option.type && other.hours.test(0);
    });
}

bool isOfDay(const ParkOption& option, int day) {
    return option.day == day || option.day == 0;
}

std::string halfHoursText(int halfHours) {
    return formatHours(halfHours * 0.5 + 0.5);
}

} // namespace kst

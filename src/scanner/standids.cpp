#include "scanner/standids.h"

#include <algorithm>
#include <array>
#include <map>

namespace kst {

namespace {

constexpr std::string_view suffixes = "abcdef";

constexpr std::array<std::string_view, 12> prefixes = {"",   "r",   "p",  "np",  "ep", "sep",
                                                       "sp", "swp", "wp", "nwp", "g",  ""};
/// From the name code after the last prefix on, a prefix is one letter: 12 is "A".
constexpr unsigned letterOffset = 'A' - 12;

} // namespace

std::string lf_standPrefix(unsigned nameCode) {
    if (nameCode < prefixes.size()) {
        return std::string(prefixes[nameCode]);
    }
    return {static_cast<char>(nameCode + letterOffset)};
}

std::optional<StandIds::Id> StandIds::take(std::string id) {
    if (taken_.insert(id).second) {
        return Id{std::move(id), false};
    }
    for (const char suffix : suffixes) {
        if (std::string longer = id + suffix; taken_.insert(longer).second) {
            return Id{std::move(longer), true};
        }
    }
    return std::nullopt;
}

void lf_settleDuplicateIds(std::vector<ParkPos>& stands) {
    std::map<std::string, std::vector<ParkPos*>> sharers;
    for (ParkPos& stand : stands) {
        if (stand.suffixed) {
            sharers.try_emplace(stand.id.substr(0, stand.id.size() - 1));
        }
    }
    for (ParkPos& stand : stands) {
        const std::string plain = stand.suffixed ? stand.id.substr(0, stand.id.size() - 1) : stand.id;
        if (const auto found = sharers.find(plain); found != sharers.end()) {
            found->second.push_back(&stand);
        }
        stand.suffixed = false;
    }
    for (auto& [plain, group] : sharers) {
        std::stable_sort(group.begin(), group.end(),
                         [](const ParkPos* a, const ParkPos* b) { return a->radius > b->radius; });
        for (std::size_t place = 0; place < group.size(); ++place) {
            group[place]->id = place == 0 ? plain : plain + suffixes[place - 1];
        }
    }
}

} // namespace kst

#include "scanner/standids.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace kst {

namespace {

constexpr std::string_view suffixes = "abcdef";

constexpr std::array<std::string_view, 12> prefixes = {"",   "r",   "p",  "np",  "ep", "sep",
                                                       "sp", "swp", "wp", "nwp", "g",  ""};
/// From the name code after the last prefix on, a prefix is one letter: 12 is "A".
constexpr unsigned letterOffset = 'A' - 12;

/// Two name codes may give one prefix, as 1 and 61 do.
unsigned lowestCodeAlike(unsigned nameCode) {
    static const auto codes = [] {
        std::array<unsigned, 64> result{};
        for (unsigned code = 0; code < result.size(); ++code) {
            const std::string prefix = lf_standPrefix(code);
            while (lf_standPrefix(result[code]) != prefix) {
                ++result[code];
            }
        }
        return result;
    }();
    return codes[nameCode];
}

} // namespace

std::string lf_standPrefix(unsigned nameCode) {
    if (nameCode < prefixes.size()) {
        return std::string(prefixes[nameCode]);
    }
    return {static_cast<char>(nameCode + letterOffset)};
}

std::optional<StandIds::Id> StandIds::take(unsigned nameCode, unsigned number) {
    std::unique_ptr<Counts>& counts = counts_[lowestCodeAlike(nameCode)];
    if (!counts) {
        counts = std::make_unique<Counts>();
    }
    std::uint8_t& count = (*counts)[number];
    if (count > suffixes.size()) {
        return std::nullopt;
    }
    Id id{lf_standPrefix(nameCode) + std::to_string(number), count > 0};
    if (id.suffixed) {
        id.text += suffixes[count - 1U];
    }
    ++count;
    return id;
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

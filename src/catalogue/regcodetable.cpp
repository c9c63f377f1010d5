#include "catalogue/regcodetable.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <stdexcept>

namespace kst {

namespace {

constexpr std::size_t fewestSlots = 16;
constexpr std::size_t slotsPerEntry = 2;
constexpr unsigned numberBits = 24;
constexpr std::size_t mostEntries = (std::size_t{1} << numberBits) - 1;

std::size_t hashOf(std::string_view regcode) {
    return std::hash<std::string_view>{}(regcode);
}

std::uint32_t numberIn(std::uint32_t slot) {
    return slot & static_cast<std::uint32_t>(mostEntries);
}

/// The bits of the hash that a slot keeps: its topmost, which do not choose the slot.
std::uint32_t markOf(std::size_t hash) {
    return static_cast<std::uint32_t>(hash >> (8 * sizeof hash - 8)) << numberBits;
}

} // namespace

RegcodeTable::RegcodeTable(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) {
        insert(entry.regcode, entry.record);
    }
}

void RegcodeTable::reserve(std::size_t count) {
    entries_.reserve(count);
    if (count * slotsPerEntry > slots_.size()) {
        spread(std::bit_ceil(std::max(count * slotsPerEntry, fewestSlots)));
    }
}

bool RegcodeTable::insert(std::string_view regcode, const Registration& record) {
    if ((entries_.size() + 1) * slotsPerEntry > slots_.size()) {
        spread(std::max(slots_.size() * 2, fewestSlots));
    }
    const std::size_t hash = hashOf(regcode);
    const std::size_t slot = slotOf(regcode, hash);
    if (slots_[slot] != 0) {
        return false;
    }
    if (entries_.size() == mostEntries) {
        throw std::length_error("too many registrations");
    }
    entries_.push_back({regcode, record});
    slots_[slot] = markOf(hash) | static_cast<std::uint32_t>(entries_.size());
    return true;
}

void RegcodeTable::prepare(std::string_view regcode) const {
    if (!slots_.empty()) {
        __builtin_prefetch(&slots_[hashOf(regcode) & (slots_.size() - 1)]);
    }
}

const Registration* RegcodeTable::find(std::string_view regcode) const {
    if (entries_.empty()) {
        return nullptr;
    }
    const Slot slot = slots_[slotOf(regcode, hashOf(regcode))];
    return slot != 0 ? &entries_[numberIn(slot) - 1].record : nullptr;
}

std::size_t RegcodeTable::slotOf(std::string_view regcode, std::size_t hash) const {
    const std::size_t last = slots_.size() - 1;
    const std::uint32_t mark = markOf(hash);
    std::size_t at = hash & last;
    for (; slots_[at] != 0; at = (at + 1) & last) {
        const std::uint32_t number = numberIn(slots_[at]);
        if ((mark | number) == slots_[at] && entries_[number - 1].regcode == regcode) {
            break;
        }
    }
    return at;
}

void RegcodeTable::spread(std::size_t slotCount) {
    slots_.assign(slotCount, 0);
    std::uint32_t number = 0;
    for (const Entry& entry : entries_) {
        const std::size_t hash = hashOf(entry.regcode);
        slots_[slotOf(entry.regcode, hash)] = markOf(hash) | ++number;
    }
}

} // namespace kst

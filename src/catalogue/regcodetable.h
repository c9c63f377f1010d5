#pragma once

#include "catalogue/scramble.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace kst {

/// A RegcodeRec in little space: there are hundreds of thousands.
struct Registration {
    AirlineCode airline;
    ModelCode model;
    AirlineCode operatorCode;
    bool cargo = false;
};

/// Registrations and what is known of them: a hash table whose entries lie side by side in the order of their
/// insertion. Filled once, then read on any thread.
class RegcodeTable {
public:
    struct Entry {
        RegcodeCode regcode;
        Registration record;
    };

    RegcodeTable() = default;
    RegcodeTable(std::initializer_list<Entry> entries);
    void reserve(std::size_t count);
    /// False when the registration is there already: the first record stays. Throws std::length_error for one
    /// of more than 24 characters.
    bool insert(std::string_view regcode, const Registration& record);
    /// Brings the place of a registration near that will soon be inserted: on the way into a large table the
    /// memory is what takes the time.
    void prepare(std::string_view regcode) const;
    /// Null when it is not there.
    const Registration* find(std::string_view regcode) const;
    std::size_t size() const { return entries_.size(); }
    std::vector<Entry>::const_iterator begin() const { return entries_.begin(); }
    std::vector<Entry>::const_iterator end() const { return entries_.end(); }
    void clear() { *this = RegcodeTable(); }

private:
    /// A free slot is 0. A taken one holds the number of its entry from 1, and above it a few bits of the
    /// hash, so that an entry is looked at only when it is very likely the right one.
    using Slot = std::uint32_t;

    /// The slot of the registration, or the free one where it belongs. There is always a free one.
    std::size_t slotOf(std::string_view regcode, std::size_t hash) const;
    void spread(std::size_t slotCount);

    std::vector<Entry> entries_;
    std::vector<Slot> slots_; ///< a power of two of them, at most half taken
};

} // namespace kst

#pragma once

// The frame of every fuzz target: it defines `fuzz`, which gets each input as text.

#include <cstdint>
#include <cstdlib>
#include <string_view>

/// Without the promise, libFuzzer keeps the input as a finding.
inline void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// Takes the first byte, which chooses among what the target has; 0 when there is none.
inline unsigned takeChoice(std::string_view& input) {
    if (input.empty()) {
        return 0;
    }
    const auto choice = static_cast<std::uint8_t>(input.front());
    input.remove_prefix(1);
    return choice;
}

void fuzz(std::string_view input);

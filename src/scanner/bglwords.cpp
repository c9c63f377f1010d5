#include "scanner/bglwords.h"

#include <bit>
#include <stdexcept>

#include <fmt/format.h>

namespace kst {

float BglWords::real(std::size_t index) const {
    static_assert(sizeof(float) == bytesPerWord);
    return std::bit_cast<float>(word(index));
}

std::uint32_t BglWords::lastWord(std::size_t index) const {
    if (index >= size()) {
        throw std::out_of_range(fmt::format("word {} is beyond the {} words of the file", index, size()));
    }
    std::uint32_t value = 0;
    unsigned shift = 0;
    for (const std::byte byte : bytes_.subspan(index * bytesPerWord)) {
        value |= std::to_integer<std::uint32_t>(byte) << shift;
        shift += 8;
    }
    return value;
}

} // namespace kst

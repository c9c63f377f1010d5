#include "catalogue/scramble.h"

#include "core/log.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr char firstCode = '-';
constexpr char lastCode = 'Z';
constexpr int codeCount = lastCode - firstCode + 1;
constexpr std::size_t airlineLength = 3;
constexpr std::size_t scrambledAirlineLength = 6;

/// Shifts of the places of a registration.
constexpr std::array<int, longestScrambledRegcode> K = {7,  19, 3,  31, 12, 27, 5, 38, 16, 22, 9, 41,
                                                        14, 2,  33, 25, 11, 36, 6, 29, 18, 40, 8, 21};

/// For each output place of a model code the input place and the shift.
struct Place {
    std::size_t input;
    int shift;
};
constexpr std::array<Place, 2> modelPlaces2 = {{{1, 13}, {0, 29}}};
constexpr std::array<Place, 3> modelPlaces3 = {{{2, 8}, {0, 35}, {1, 17}}};
constexpr std::array<Place, 4> modelPlaces4 = {{{2, 23}, {0, 6}, {3, 39}, {1, 15}}};
constexpr std::array<Place, airlineLength> airlinePlaces = {{{4, 11}, {1, 32}, {3, 20}}};
/// The other places of a scrambled airline.
constexpr std::array<std::size_t, scrambledAirlineLength - airlineLength> fillerPlaces = {0, 2, 5};

char shifted(char code, int by) {
    int value = code + by;
    if (value > lastCode) {
        value -= codeCount;
    }
    if (value < firstCode) {
        value += codeCount;
    }
    return static_cast<char>(value);
}

bool isCode(char c) {
    return c >= firstCode && c <= lastCode;
}

/// Hostile text may hold any byte: what is no code stays as it is, so that decoding never leaves the range of
/// char.
char shiftedIfCode(char c, int by) {
    return isCode(c) ? shifted(c, by) : c;
}

template <typename Places>
auto unscramble(std::string_view text, const Places& places) {
    std::array<char, std::tuple_size_v<Places>> result{};
    for (std::size_t i = 0; i < places.size(); ++i) {
        result[i] = shiftedIfCode(text[places[i].input], -places[i].shift);
    }
    return result;
}

template <std::size_t Size>
std::string_view viewOf(const std::array<char, Size>& text) {
    return {text.data(), Size};
}

template <typename Places>
void scrambleInto(std::string_view code, const Places& places, std::string& result) {
    for (std::size_t i = 0; i < places.size(); ++i) {
        result[places[i].input] = shiftedIfCode(code[i], places[i].shift);
    }
}

} // namespace

RegcodeCode decodedRegcode(std::string_view text) {
    if (text.size() > longestScrambledRegcode) {
        throw std::runtime_error(fmt::format("regcode of {} characters", text.size()));
    }
    std::array<char, longestScrambledRegcode> result{};
    for (std::size_t i = 0; i < text.size(); ++i) {
        result[i] = text[i] == '+' ? '+' : shiftedIfCode(text[i], -K[i]);
    }
    return viewOf(result).substr(0, text.size());
}

std::string gf_decodeRegcode(std::string_view text) {
    return std::string(decodedRegcode(text));
}

std::string gf_encodeRegcode(std::string_view text) {
    if (text.size() == 1 || text.size() > longestScrambledRegcode) {
        logLine(fmt::format("regcode of {} characters to encrypt", text.size()));
    }
    if (text.size() > longestScrambledRegcode) {
        throw std::runtime_error("regcode encrypt error");
    }
    std::string result(text);
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (result[i] >= 'a' && result[i] <= 'z') {
            logLine(fmt::format("lower case in regcode encryp {}", text));
            throw std::runtime_error("regcode encrypt error");
        }
        if (result[i] != '+') {
            result[i] = shiftedIfCode(result[i], K[i]);
        }
    }
    return result;
}

ModelCode decodedModel(std::string_view text) {
    switch (text.size()) {
    case 0:
        return {};
    case 2:
        return viewOf(unscramble(text, modelPlaces2));
    case 3:
        return viewOf(unscramble(text, modelPlaces3));
    case 4:
        return viewOf(unscramble(text, modelPlaces4));
    default:
        throw std::runtime_error(fmt::format("decrypt model \"{}\" error", text));
    }
}

std::string gf_decodeModel(std::string_view text) {
    return std::string(decodedModel(text));
}

std::string gf_encodeModel(std::string_view text) {
    std::string result(text);
    switch (text.size()) {
    case 0:
        break;
    case 2:
        scrambleInto(text, modelPlaces2, result);
        break;
    case 3:
        scrambleInto(text, modelPlaces3, result);
        break;
    case 4:
        scrambleInto(text, modelPlaces4, result);
        break;
    default:
        throw std::runtime_error(fmt::format("encrypt model \"{}\" error", text));
    }
    return result;
}

AirlineCode decodedAirline(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    if (text.size() == airlineLength) {
        logLine(fmt::format("Unencrypted airline {} in decrypt airl?", text));
        return text;
    }
    if (text.size() != scrambledAirlineLength) {
        throw std::runtime_error(fmt::format("decrypt airl \"{}\" error", text));
    }
    return viewOf(unscramble(text, airlinePlaces));
}

std::string gf_decodeAirline(std::string_view text) {
    return std::string(decodedAirline(text));
}

std::string gf_encodeAirline(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    if (text.size() != airlineLength) {
        throw std::runtime_error(fmt::format("encrypt airl \"{}\" error", text));
    }
    std::string result(scrambledAirlineLength, ' ');
    scrambleInto(text, airlinePlaces, result);
    for (std::size_t i = 0; i < fillerPlaces.size(); ++i) {
        // Filler that follows from the code, so that the same list gives the same file.
        result[fillerPlaces[i]] = shiftedIfCode(text[i], K[i] + static_cast<int>(i));
    }
    return result;
}

} // namespace kst

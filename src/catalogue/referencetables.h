#pragma once

// The tables of the reference database, shared by the reader that fills them and the look-ups.

#include "catalogue/regcodetable.h"
#include "model/category.h"

#include <array>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kst {

/// Lets a hash map of strings be asked with a view, without a copy.
struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

using TextSet = std::set<std::string, std::less<>>;

struct ReferenceTables {
    TextSet validModels;
    TextSet heavyModels, largeModels, buzjetModels, highPerfModels, rotorcraftModels;
    std::map<std::string, double, std::less<>> wingSpans; ///< half wing span, nautical miles
    double maxHalfWingSpan = 0.0;
    std::array<double, categoryCount> categoryHalfSpan{}; ///< mean of each category, nautical miles
    std::vector<std::vector<std::string>> similarLists;   ///< each sorted
    TextSet validAirlines;
    std::vector<std::vector<std::string>> publisherNames; ///< first of each is the publisher's name
    std::unordered_map<std::string, std::string> modelFixes;
    TextSet simaddonAirports;
    std::vector<std::pair<std::string, std::vector<std::string>>> thirdPartyAirports;
    RegcodeTable regcodeTable;
    /// Registrations of private aircraft that are short enough to be looked for in titles, in document order.
    std::vector<std::string> shortPrivateRegcodes;
};

/// The one set of tables. Written before anything looks up, read-only afterwards.
ReferenceTables& referenceTables();

/// The first record that one of the registration's spellings finds; null when there is none.
const Registration* findRegistration(std::string_view regcode);

/// Works out `categoryHalfSpan` from `wingSpans`. A class without any span takes the mean of all.
void computeCategorySpans(ReferenceTables& tables);

} // namespace kst

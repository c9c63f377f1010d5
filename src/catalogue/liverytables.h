#pragma once

// The tables of the matcher: every installed livery under the keys that it is looked up by, and which models
// may stand in for which. Built once from the scanned liveries on the worker, read-only and lock-free after
// that.

#include "catalogue/referencetables.h"
#include "catalogue/scramble.h"
#include "model/category.h"
#include "model/liverydata.h"

#include <array>
#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace kst {

template <typename Value>
using TextMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

struct IndexedTitle {
    std::string_view title;
    bool cargo = false;
};
using ModelTitles = TextMap<std::vector<std::string_view>>;

/// A model that may stand in for another, with its size class at hand.
struct SimilarModel {
    ModelCode model;
    Category category = Category::Light;
};
using SimilarModels = TextMap<std::vector<SimilarModel>>;

/// Index of the tables that hold passenger and cargo liveries apart.
enum LiveryKind : std::size_t { paxKind = 0, cargoKind = 1, kindCount = 2 };

struct LiveryTables {
    /// Owns the titles. Every view of one anywhere in the program points in here.
    std::deque<std::string> titles;
    std::unordered_set<std::string_view> knownTitles;
    TextMap<TextMap<std::vector<IndexedTitle>>> airlineIndex; ///< every livery by airline, then model
    std::array<TextMap<ModelTitles>, kindCount> airlineModelTitles;
    std::array<ModelTitles, kindCount> modelTitles; ///< over all airlines
    SimilarModels similarModels;                    ///< for a model those of its groups that have a livery
    /// For an airline and a model of which it has no livery, the similar models of which it has one.
    TextMap<SimilarModels> airlineSimilar;
    std::vector<SimilarModel> lightLiveryModels, buzjetLiveryModels, rotorcraftLiveryModels;
    TextMap<std::string_view> regcodeTitles; ///< which title belongs to a registration
    /// Liveries that only their own aircraft may wear.
    std::unordered_set<std::string_view> specialTitles;
};

/// The one set of tables.
LiveryTables& liveryTables();

/// Fills `titles`, `knownTitles` and `airlineIndex` from liveries in the store's order.
void gf_buildAirlineIndex(const std::vector<LiveryData>& liveries);
void gf_buildAirlineModelTitles();
void gf_buildModelTitles();
/// `similarModels` and `airlineSimilar`. Needs the other tables and the reference database.
void gf_buildSimilarTables();

/// The view of this title that the tables hold; empty when it is no scanned title.
std::string_view gf_findTitle(std::string_view title);
/// Whether any livery of the model is installed.
bool gf_hasLivery(std::string_view model);
bool gf_airlineHasModel(std::string_view airline, std::string_view model);

/// The models that any livery may come from when the size class alone decides; null for the other classes.
std::vector<SimilarModel>* fallbackModels(Category category);

/// Fills them from the installed models of the class, in order; does nothing for the other classes.
void listFallbackModels(Category category);

/// Adds one livery of an airline and a model, for tests of others.
void addLiveryTitle(std::string_view airline, std::string_view model, const std::string& title);

} // namespace kst

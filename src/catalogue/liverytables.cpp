#include "catalogue/liverytables.h"

#include "catalogue/reference.h"
#include "core/log.h"

#include <algorithm>
#include <set>
#include <tuple>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr std::size_t airlineKeyLength = 3;

LiveryKind kindOf(bool cargo) {
    return cargo ? cargoKind : paxKind;
}

/// A model and those that resemble it, in the order of their group.
using SimilarEntry = std::vector<std::string_view>;

/// Each member of a group with the other members that have a livery; those with none are left out.
void addEntries(const std::vector<std::string>& group, std::vector<SimilarEntry>& entries) {
    for (std::size_t i = 0; i < group.size(); ++i) {
        SimilarEntry entry{group[i]};
        for (std::size_t j = 0; j < group.size(); ++j) {
            if (j != i && gf_hasLivery(group[j])) {
                entry.emplace_back(group[j]);
            }
        }
        if (entry.size() > 1) {
            entries.push_back(std::move(entry));
        }
    }
}

void buildSimilarModels(SimilarModels& similarModels) {
    std::vector<SimilarEntry> entries;
    for (const std::vector<std::string>& group : referenceTables().similarLists) {
        addEntries(group, entries);
    }
    std::sort(entries.begin(), entries.end());
    for (const SimilarEntry& entry : entries) {
        const auto [place, isNew] = similarModels.try_emplace(std::string(entry.front()));
        if (!isNew) {
            continue;
        }
        for (auto model = entry.begin() + 1; model != entry.end(); ++model) {
            place->second.push_back({*model, gf_category(*model)});
        }
    }
}

/// What an airline can show for the models that it has no livery of.
SimilarModels similarOfAirline(const TextMap<std::vector<IndexedTitle>>& own,
                               const SimilarModels& similarModels) {
    SimilarModels result;
    for (const auto& [model, others] : similarModels) {
        if (own.contains(model)) {
            continue;
        }
        std::vector<SimilarModel> shown;
        std::ranges::copy_if(others, std::back_inserter(shown),
                             [&own](const SimilarModel& other) { return own.contains(other.model.view()); });
        if (!shown.empty()) {
            result.emplace(model, std::move(shown));
        }
    }
    return result;
}

} // namespace

LiveryTables& liveryTables() {
    static LiveryTables tables;
    return tables;
}

void gf_buildAirlineIndex(const std::vector<LiveryData>& liveries) {
    LiveryTables& tables = liveryTables();
    tables.knownTitles.reserve(liveries.size());
    for (auto begin = liveries.begin(); begin != liveries.end();) {
        const auto end = std::find_if(begin, liveries.end(), [&begin](const LiveryData& livery) {
            return livery.airlineModel() != begin->airlineModel();
        });
        auto& indexed = tables.airlineIndex[begin->airline][begin->model];
        indexed.reserve(indexed.size() + static_cast<std::size_t>(end - begin));
        for (; begin != end; ++begin) {
            const std::string_view title = tables.titles.emplace_back(begin->title);
            tables.knownTitles.insert(title);
            indexed.push_back({title, begin->cargo});
        }
    }
}

void gf_buildAirlineModelTitles() {
    LiveryTables& tables = liveryTables();
    for (const auto& [airline, models] : tables.airlineIndex) {
        for (const auto& [model, titles] : models) {
            for (const IndexedTitle& entry : titles) {
                tables.airlineModelTitles[kindOf(entry.cargo)][airline][model].push_back(entry.title);
            }
        }
    }
}

void gf_buildModelTitles() {
    LiveryTables& tables = liveryTables();
    for (const auto& [airline, models] : tables.airlineIndex) {
        for (const auto& [model, titles] : models) {
            for (const IndexedTitle& entry : titles) {
                tables.modelTitles[kindOf(entry.cargo)][model].push_back(entry.title);
            }
        }
    }
    // The index has no order of its own; with RANDOM off the same installation is to give the same titles.
    for (ModelTitles& kind : tables.modelTitles) {
        for (auto& [model, titles] : kind) {
            std::sort(titles.begin(), titles.end());
        }
    }
}

void gf_buildSimilarTables() {
    LiveryTables& tables = liveryTables();
    buildSimilarModels(tables.similarModels);
    for (const auto& [airline, models] : tables.airlineIndex) {
        const std::string_view key = std::string_view(airline).substr(0, airlineKeyLength);
        const auto own = tables.airlineIndex.find(key);
        if (own == tables.airlineIndex.end()) {
            continue;
        }
        if (SimilarModels shown = similarOfAirline(own->second, tables.similarModels); !shown.empty()) {
            tables.airlineSimilar.try_emplace(std::string(key), std::move(shown));
        }
    }
    logLine(fmt::format("{} similar model definitions", tables.similarModels.size()));
}

std::string_view gf_findTitle(std::string_view title) {
    const auto found = liveryTables().knownTitles.find(title);
    return found != liveryTables().knownTitles.end() ? *found : std::string_view{};
}

bool gf_hasLivery(std::string_view model) {
    const auto& kinds = liveryTables().modelTitles;
    return kinds[paxKind].contains(model) || kinds[cargoKind].contains(model);
}

bool gf_airlineHasModel(std::string_view airline, std::string_view model) {
    const auto found = liveryTables().airlineIndex.find(airline);
    return found != liveryTables().airlineIndex.end() && found->second.contains(model);
}

std::vector<SimilarModel>* fallbackModels(Category category) {
    LiveryTables& tables = liveryTables();
    switch (category) {
    case Category::Light:
        return &tables.lightLiveryModels;
    case Category::Buzjets:
        return &tables.buzjetLiveryModels;
    case Category::Rotorcraft:
        return &tables.rotorcraftLiveryModels;
    case Category::Large:
    case Category::Heavy:
    case Category::HighPerf:
        break;
    }
    return nullptr;
}

void listFallbackModels(Category category) {
    std::vector<SimilarModel>* const fallbacks = fallbackModels(category);
    if (fallbacks == nullptr) {
        return;
    }
    std::set<std::string_view> models;
    for (const ModelTitles& kind : liveryTables().modelTitles) {
        for (const auto& [model, titles] : kind) {
            if (gf_category(model) == category) {
                models.insert(model);
            }
        }
    }
    fallbacks->clear();
    for (const std::string_view model : models) {
        // Only a hand-edited store has longer ones, and no aircraft asks for such.
        if (model.size() <= ModelCode::capacity) {
            fallbacks->push_back({model, category});
        }
    }
}

void addLiveryTitle(std::string_view airline, std::string_view model, const std::string& title) {
    LiveryTables& tables = liveryTables();
    const std::string airlineKey(airline);
    const std::string modelKey(model);
    const std::string_view view = tables.titles.emplace_back(title);
    tables.knownTitles.insert(view);
    tables.airlineIndex[airlineKey][modelKey].push_back({view, false});
    tables.airlineModelTitles[paxKind][airlineKey][modelKey].push_back(view);
    tables.modelTitles[paxKind][modelKey].push_back(view);
}

} // namespace kst

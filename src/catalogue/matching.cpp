#include "catalogue/matching.h"

#include "catalogue/reference.h"
#include "core/describe.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/random.h"

#include <algorithm>
#include <span>

#include <fmt/format.h>

namespace kst {

std::array<std::uint32_t, rungCount> matchSteps{};

namespace {

using Titles = std::span<const std::string_view>;

/// MATCHING_DEPTH from which a rung is tried.
constexpr int depthOfAirlineModel = 2;
constexpr int depthOfAirlineSimilar = 3;
constexpr int depthOfGeneric = 4;

/// Working lists of a match, kept so that none allocates. Worker only.
std::vector<std::string_view> ordinaryTitles;
std::vector<SimilarModel> candidates;

std::string_view drawTitle(Titles titles) {
    const bool draws = RANDOM && titles.size() > 1;
    return titles[draws ? randomBelow(static_cast<std::uint32_t>(titles.size())) : 0];
}

/// One of the titles that is bound to no single aircraft; empty when all are.
std::string_view lf_pickTitle(Titles titles) {
    constexpr int mostDraws = 5;
    const auto& special = liveryTables().specialTitles;
    for (int i = 0; i < mostDraws; ++i) {
        const std::string_view title = drawTitle(titles);
        if (special.empty() || !special.contains(title)) {
            return title;
        }
    }
    ordinaryTitles.clear();
    std::ranges::copy_if(titles, std::back_inserter(ordinaryTitles),
                         [&special](std::string_view title) { return !special.contains(title); });
    return ordinaryTitles.empty() ? std::string_view{} : drawTitle(ordinaryTitles);
}

std::string_view pickOfModel(const ModelTitles& models, std::string_view model) {
    const auto found = models.find(model);
    return found != models.end() ? lf_pickTitle(found->second) : std::string_view{};
}

std::string_view pickOfPair(LiveryKind kind, std::string_view airline, std::string_view model) {
    const auto& airlines = liveryTables().airlineModelTitles[kind];
    const auto found = airlines.find(airline);
    return found != airlines.end() ? pickOfModel(found->second, model) : std::string_view{};
}

LiveryKind wantedKind(const AcBase& ac) {
    return ac.cargo ? cargoKind : paxKind;
}

/// A cargo aircraft falls back to passenger liveries, never the other way round.
bool lf_tryPair(AcBase& ac, std::string_view airline, std::string_view model) {
    ac.liveryTitle = pickOfPair(wantedKind(ac), airline, model);
    if (ac.liveryTitle.empty() && ac.cargo) {
        ac.liveryTitle = pickOfPair(paxKind, airline, model);
    }
    return !ac.liveryTitle.empty();
}

bool lf_anyLiveryOfModel(AcBase& ac, std::string_view model) {
    ac.liveryTitle = pickOfModel(liveryTables().modelTitles[wantedKind(ac)], model);
    return !ac.liveryTitle.empty();
}

bool tryOwnLivery(AcBase& ac) {
    const auto& titles = liveryTables().regcodeTitles;
    for (const RegcodeText& form : gf_regcodeVariants(ac.regcode)) {
        if (const auto found = titles.find(form.view()); found != titles.end()) {
            ac.liveryTitle = found->second;
            return true;
        }
    }
    return false;
}

void shuffleIfRandom(std::vector<SimilarModel>& models) {
    if (RANDOM && models.size() > 1) {
        shuffle(models);
    }
}

void listSimilarForAirline(std::string_view airline, std::string_view model,
                           std::vector<SimilarModel>& models) {
    models.clear();
    const auto& airlines = liveryTables().airlineSimilar;
    if (const auto own = airlines.find(airline); own != airlines.end()) {
        if (const auto found = own->second.find(model); found != own->second.end()) {
            models = found->second;
        }
    }
    shuffleIfRandom(models);
}

void listSimilarModels(std::string_view model, std::vector<SimilarModel>& models) {
    models.clear();
    const LiveryTables& tables = liveryTables();
    if (const auto found = tables.similarModels.find(model); found != tables.similarModels.end()) {
        models = found->second;
        shuffleIfRandom(models);
        return;
    }
    const std::vector<SimilarModel>* const ofClass = fallbackModels(gf_category(model));
    if (ofClass != nullptr && !ofClass->empty()) {
        models.push_back((*ofClass)[RANDOM ? randomBelow(static_cast<std::uint32_t>(ofClass->size())) : 0]);
    }
}

/// What sets the ladder of a live aircraft apart from that of a parked one.
enum class Ladder { Live, Static };

bool trySimilar(AcBase& ac, std::string_view airline, Ladder ladder) {
    listSimilarForAirline(airline, ac.acType, candidates);
    return std::ranges::any_of(candidates, [&](const SimilarModel& similar) {
        return (ladder == Ladder::Static || similar.category == ac.category) &&
               lf_tryPair(ac, airline, similar.model);
    });
}

bool isSmall(Category category) {
    return category == Category::Light || category == Category::Buzjets || category == Category::Rotorcraft;
}

/// Rungs 4 to 6.
Rung tryOtherAirlines(AcBase& ac, int depth) {
    if (depth >= depthOfGeneric && lf_tryPair(ac, genericAirline, ac.acType)) {
        return Rung::Generic;
    }
    if (!isSmall(ac.category)) {
        return Rung::None;
    }
    if (ac.airline != privateAirline && lf_tryPair(ac, genericAirline, ac.acType)) {
        return Rung::Generic;
    }
    if (lf_anyLiveryOfModel(ac, ac.acType)) {
        return Rung::AnyOfModel;
    }
    listSimilarModels(ac.acType, candidates);
    const bool found = std::ranges::any_of(
        candidates, [&ac](const SimilarModel& similar) { return lf_anyLiveryOfModel(ac, similar.model); });
    return found ? Rung::AnyOfSimilarModel : Rung::None;
}

/// Every rung after the aircraft's own livery.
Rung climb(AcBase& ac, Ladder ladder) {
    const int depth = MATCHING_DEPTH;
    if (depth < depthOfAirlineModel) {
        return Rung::None;
    }
    if (ac.airline == privateAirline && lf_tryPair(ac, genericAirline, ac.acType)) {
        return Rung::Generic;
    }
    const bool ownAirline = !ac.airline.empty() || ladder == Ladder::Static;
    if (ownAirline && lf_tryPair(ac, ac.airline, ac.acType)) {
        return Rung::AirlineModel;
    }
    const Registration* const known = findRegistration(ac.regcode);
    const bool operated = known != nullptr && !known->operatorCode.empty();
    if (operated && lf_tryPair(ac, known->airline, ac.acType)) {
        return Rung::AirlineModel;
    }
    if (depth < depthOfAirlineSimilar) {
        return Rung::None;
    }
    if ((ownAirline && trySimilar(ac, ac.airline, ladder)) ||
        (operated && trySimilar(ac, known->airline, ladder))) {
        return Rung::AirlineSimilar;
    }
    return tryOtherAirlines(ac, depth);
}

void logMatch(const AcBase& ac, Rung rung) {
    if (LOG) {
        logIndented(fmt::format("{} ={}= {}", describe(ac), static_cast<int>(rung), ac.liveryTitle));
    }
}

/// Takes away a title that the simulator cannot create.
Rung usable(AcBase& ac, Rung rung) {
    if (rung != Rung::None && gf_isFailedTitle(ac.liveryTitle)) {
        ac.liveryTitle = {};
        return Rung::None;
    }
    return rung;
}

} // namespace

Rung gf_matchLivery(AcBase& ac) {
    const Rung rung = usable(ac, tryOwnLivery(ac) ? Rung::OwnLivery : climb(ac, Ladder::Live));
    if (rung == Rung::None) {
        return rung;
    }
    ++matchSteps[static_cast<std::size_t>(rung) - 1];
    logMatch(ac, rung);
    ac.fsltlLivery = ac.liveryTitle.find("FSLTL_") != std::string_view::npos;
    return rung;
}

bool gf_matchStaticLivery(AcBase& ac, const ParkPos& parked) {
    if (!ac.liveryTitle.empty()) {
        if (LOG) {
            logIndented(fmt::format("{} =s= {}", describe(ac), ac.liveryTitle));
        }
        return true;
    }
    Rung rung = tryOwnLivery(ac) ? Rung::OwnLivery : Rung::None;
    ac.cargo = parked.cargo;
    if (rung == Rung::None) {
        rung = climb(ac, Ladder::Static);
    }
    if (rung == Rung::None) {
        if (LOG) {
            logLine(fmt::format("{:8}: {} no livery match ...", parked.id, describe(ac)));
        }
        return false;
    }
    if (usable(ac, rung) == Rung::None) {
        return false;
    }
    logMatch(ac, rung);
    return true;
}

std::vector<SimilarModel> gf_similarModels(std::string_view model) {
    std::vector<SimilarModel> models;
    listSimilarModels(model, models);
    return models;
}

std::vector<SimilarModel> gf_similarForAirline(std::string_view airline, std::string_view model) {
    std::vector<SimilarModel> models;
    listSimilarForAirline(airline, model, models);
    return models;
}

} // namespace kst

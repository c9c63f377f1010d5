#include "catalogue/reference.h"

#include "catalogue/referencetables.h"
#include "model/units.h"

#include <algorithm>

namespace kst {

ReferenceTables& referenceTables() {
    static ReferenceTables tables;
    return tables;
}

void computeCategorySpans(ReferenceTables& tables) {
    if (tables.wingSpans.empty()) {
        return;
    }
    std::array<double, categoryCount> sums{};
    std::array<int, categoryCount> counts{};
    double sum = 0.0;
    for (const auto& [model, span] : tables.wingSpans) {
        const auto category = static_cast<std::size_t>(gf_category(model));
        sums[category] += span;
        ++counts[category];
        sum += span;
    }
    const double mean = sum / static_cast<double>(tables.wingSpans.size());
    for (std::size_t i = 0; i < sums.size(); ++i) {
        tables.categoryHalfSpan[i] = counts[i] > 0 ? sums[i] / counts[i] : mean;
    }
}

Category gf_category(std::string_view model) {
    const ReferenceTables& tables = referenceTables();
    if (tables.largeModels.contains(model)) {
        return Category::Large;
    }
    if (tables.heavyModels.contains(model)) {
        return Category::Heavy;
    }
    if (tables.buzjetModels.contains(model)) {
        return Category::Buzjets;
    }
    if (tables.rotorcraftModels.contains(model)) {
        return Category::Rotorcraft;
    }
    return tables.highPerfModels.contains(model) ? Category::HighPerf : Category::Light;
}

bool gf_isValidModel(std::string_view model) {
    return !model.empty() && referenceTables().validModels.contains(model);
}

bool gf_isValidAirline(std::string_view code) {
    return !code.empty() && referenceTables().validAirlines.contains(code);
}

double gf_halfWingSpan(std::string_view model) {
    const ReferenceTables& tables = referenceTables();
    const auto found = tables.wingSpans.find(model);
    return found != tables.wingSpans.end()
               ? found->second
               : tables.categoryHalfSpan[static_cast<std::size_t>(gf_category(model))];
}

double maxHalfWingSpan() {
    return referenceTables().maxHalfWingSpan;
}

RegcodeVariants gf_regcodeVariants(std::string_view regcode) {
    constexpr std::size_t shortestSplit = 5;
    RegcodeVariants variants;
    if (regcode.size() >= RegcodeText::capacity) {
        return variants;
    }
    const bool splits = regcode.size() >= shortestSplit && regcode.front() != 'N' &&
                        regcode.find('-') == std::string_view::npos;
    if (splits) {
        for (const std::size_t prefix : {2U, 1U}) {
            std::array<char, RegcodeText::capacity> text{};
            const auto rest = std::ranges::copy(regcode.substr(0, prefix), text.begin()).out;
            *rest = '-';
            std::ranges::copy(regcode.substr(prefix), rest + 1);
            variants.add(std::string_view(text.data(), regcode.size() + 1));
        }
    }
    variants.add(regcode);
    return variants;
}

const Registration* findRegistration(std::string_view regcode) {
    if (regcode.empty()) {
        return nullptr;
    }
    for (const RegcodeText& variant : gf_regcodeVariants(regcode)) {
        if (const Registration* const known = referenceTables().regcodeTable.find(variant)) {
            return known;
        }
    }
    return nullptr;
}

std::optional<RegcodeRec> gf_regcodeRecord(std::string_view regcode) {
    const Registration* const known = findRegistration(regcode);
    if (known == nullptr) {
        return std::nullopt;
    }
    return RegcodeRec{std::string(known->airline), std::string(known->model),
                      std::string(known->operatorCode), known->cargo};
}

std::string gf_regcodeAirline(std::string_view regcode) {
    const Registration* const known = findRegistration(regcode);
    return known != nullptr ? std::string(known->airline) : std::string();
}

std::string gf_regcodeModel(std::string_view regcode) {
    const Registration* const known = findRegistration(regcode);
    return known != nullptr ? std::string(known->model) : std::string();
}

std::string gf_regcodeOperator(std::string_view regcode) {
    const Registration* const known = findRegistration(regcode);
    return known != nullptr ? std::string(known->operatorCode) : std::string();
}

std::string gf_regcodeInTitle(std::string_view title) {
    const auto& regcodes = referenceTables().shortPrivateRegcodes;
    const auto found = std::ranges::find_if(regcodes, [title](const std::string& regcode) {
        return title.find(regcode) != std::string_view::npos;
    });
    return found != regcodes.end() ? *found : std::string();
}

void setReferenceForTest(const std::vector<ReferenceModel>& models) {
    ReferenceTables& tables = referenceTables();
    tables = {};
    for (const ReferenceModel& entry : models) {
        tables.validModels.insert(entry.model);
        switch (entry.category) {
        case Category::Large:
            tables.largeModels.insert(entry.model);
            break;
        case Category::Heavy:
            tables.heavyModels.insert(entry.model);
            break;
        case Category::Buzjets:
            tables.buzjetModels.insert(entry.model);
            break;
        case Category::HighPerf:
            tables.highPerfModels.insert(entry.model);
            break;
        case Category::Rotorcraft:
            tables.rotorcraftModels.insert(entry.model);
            break;
        case Category::Light:
            break;
        }
        if (entry.spanMetres > 0.0) {
            const double halfSpan = entry.spanMetres * 0.5 * nmPerMetre;
            tables.wingSpans.emplace(entry.model, halfSpan);
            tables.maxHalfWingSpan = std::max(tables.maxHalfWingSpan, halfSpan);
        }
    }
    computeCategorySpans(tables);
}

} // namespace kst

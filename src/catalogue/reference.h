#pragma once

// What exists in the real aviation world: models, size classes, wing spans, airlines, registrations. Filled
// once by `gf_readDbase` before anything looks up; read-only and lock-free after that.

#include "core/shorttext.h"
#include "model/category.h"
#include "model/regcoderec.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// Fetches and reads the reference document. Throws SysErrorException 23 when it cannot be had,
/// UserErrorException 60 or 61 when it is not what it should be. False when the parser failed half way: what
/// was read stands. Worker.
bool gf_readDbase();

/// The size class; an unknown model is Light.
Category gf_category(std::string_view model);
bool gf_isValidModel(std::string_view model);
bool gf_isValidAirline(std::string_view code);
/// Half wing span in nautical miles; of an unknown model the mean of its size class.
double gf_halfWingSpan(std::string_view model);
/// The largest half wing span known, nautical miles.
double maxHalfWingSpan();

/// A registration of the longest kind, with one hyphen more.
using RegcodeText = ShortText<25>;
/// A few spellings of a registration, in place.
class RegcodeVariants {
public:
    void add(const RegcodeText& text) { texts_[size_++] = text; }
    const RegcodeText* begin() const { return texts_.data(); }
    const RegcodeText* end() const { return texts_.data() + size_; }
    std::size_t size() const { return size_; }

private:
    std::array<RegcodeText, 3> texts_;
    std::size_t size_ = 0;
};
/// The spellings of a registration that a lookup tries, in order. None of a text that is too long to be one.
RegcodeVariants gf_regcodeVariants(std::string_view regcode);
std::optional<RegcodeRec> gf_regcodeRecord(std::string_view regcode);
std::string gf_regcodeAirline(std::string_view regcode);
std::string gf_regcodeModel(std::string_view regcode);
std::string gf_regcodeOperator(std::string_view regcode);
/// The first registration of a private aircraft, of less than 5 characters, that stands in the title; empty
/// when none does. Any thread.
std::string gf_regcodeInTitle(std::string_view title);

/// Who made a scenery file, told from its path: "simaddon" for the ORBX family, else the first publisher one
/// of whose names stands in the path, without regard to case; "unknown" when there is none. Any thread.
std::string gf_publisherOfFile(std::string_view filename);

/// Puts tables in place of the document, for tests.
struct ReferenceModel {
    std::string model;
    Category category = Category::Light;
    double spanMetres = 0.0;
};
void setReferenceForTest(const std::vector<ReferenceModel>& models);

} // namespace kst

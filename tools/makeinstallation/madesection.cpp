#include "facts.h"
#include "sections.h"

#include <algorithm>

#include <fmt/format.h>

namespace kst::made {

namespace {

std::string withoutHyphen(std::string text) {
    std::erase(text, '-');
    return text;
}

const Registration* recordOf(const std::string& regcode) {
    const auto& all = registrations();
    const auto found = std::find_if(all.begin(), all.end(), [&](const Registration& registration) {
        return !regcode.empty() && withoutHyphen(registration.regcode) == withoutHyphen(regcode);
    });
    return found != all.end() ? &*found : nullptr;
}

std::string upperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

} // namespace

MadeSection::MadeSection(MadeFile& file, Expectation& expected, std::size_t number, std::string header)
    : file_(file), expected_(expected), number_(number), header_(std::move(header)),
      title_(fmt::format("Made {} {}", expected.files, number)), text_(header_ + "\n") {}

void MadeSection::key(const std::string& name, const std::string& value) {
    line(name + "=" + value);
}

void MadeSection::line(const std::string& text) {
    text_ += text + "\n";
}

void MadeSection::begin(const std::string& title, const std::string& missing) {
    if (!title.empty()) {
        key("title", title);
    }
    struct Part {
        const char* key;
        const char* prefix;
        const char* ending;
        bool plain; ///< the key is left out: what stands without a name must exist
    };
    // Every kind of section comes in every form in the course of an installation.
    const Part parts[] = {{"sim", "", ".air", number_ % 11 == 5},
                          {"model", "model.", "", number_ % 7 == 3},
                          {"texture", "texture.", "", number_ % 5 == 2}};
    for (const Part& part : parts) {
        if (missing == part.key) {
            key(part.key, "gone");
        } else if (part.plain) {
            file_.parts.insert(*part.ending != '\0' ? part.ending : part.key);
        } else {
            const std::string name =
                *part.key == 't' ? fmt::format("paint{}", number_) : std::string("standard");
            file_.parts.insert(part.prefix + name + part.ending);
            key(part.key, number_ % 4 == 1 ? upperCase(name) : name);
        }
    }
    line("ui_manufacturer=\"Maker\"");
    if (!file_.ofModelSet) {
        line("ui_variation=\"a paint [of many]\"");
    }
    line("atc_airline=MAKER");
}

std::string MadeSection::place() const {
    return file_.path + " " + header_;
}

void MadeSection::report(const std::string& file, const std::string& reportLine) {
    expected_.reports[file].push_back(reportLine);
}

void MadeSection::incomplete(const std::string& reason) {
    report("IncompleFltsimSections.txt", place() + " " + reason);
}

std::string MadeSection::takenTitle() const {
    return expected_.liveries.empty() ? std::string() : expected_.liveries.back().title;
}

void MadeSection::becomes(const std::string& airline, const std::string& regcode, bool cargo) {
    ExpectedLivery livery{airline, file_.model, title_, regcode, cargo};
    const auto converted = [&](const std::string& change) {
        report("AirlineModelConversions.txt", fmt::format("{:80} {} {}", title_, regcode, change));
    };
    if (const Registration* record = recordOf(regcode)) {
        if (record->cargo != livery.cargo) {
            converted(fmt::format("cargo {} => {}", livery.cargo, record->cargo));
            livery.cargo = record->cargo;
        }
        const std::string flownBy = *record->operatorCode != '\0' ? record->operatorCode : record->airline;
        if (flownBy != livery.airline) {
            converted(fmt::format("airl {} => {}", livery.airline, flownBy));
            livery.airline = flownBy;
        }
        if (record->model != livery.model) {
            converted(fmt::format("model {} => {}", livery.model, record->model));
            livery.model = record->model;
        }
    }
    expected_.liveries.push_back(std::move(livery));
}

} // namespace kst::made

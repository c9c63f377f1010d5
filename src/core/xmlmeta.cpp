#include "core/xmlmeta.h"

#include "core/clock.h"
#include "core/log.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr const char* copyrightLine = "Copyright the contributors of Kestrane_P3D";

std::string dateText() {
    const std::chrono::year_month_day date{std::chrono::floor<std::chrono::days>(wallNow())};
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

void addInfo(pugi::xml_node meta, const char* name, const std::string& value) {
    pugi::xml_node info = meta.append_child("info");
    info.append_attribute("name").set_value(name);
    info.append_attribute("value").set_value(value.c_str());
}

} // namespace

void addXmlMeta(pugi::xml_document& document) {
    document.remove_child("meta");
    const pugi::xml_node first = document.document_element();
    pugi::xml_node meta = first ? document.insert_child_before("meta", first) : document.append_child("meta");
    addInfo(meta, "author", std::string(programName));
    addInfo(meta, "version", std::string(programVersionText()));
    addInfo(meta, "date", dateText());
    addInfo(meta, "copyright", copyrightLine);
}

bool checkXmlMeta(const pugi::xml_document& document) {
    constexpr std::array<const char*, 3> needed = {"author", "date", "version"};
    const pugi::xml_node meta = document.child("meta");
    const bool complete = std::all_of(needed.begin(), needed.end(), [&](const char* name) {
        return !meta.find_child_by_attribute("info", "name", name).empty();
    });
    if (!complete) {
        logLine("meta data incorrect?");
    }
    return complete;
}

} // namespace kst

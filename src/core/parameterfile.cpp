#include "core/parameterfile.h"

#include "core/display.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "platform/knownfolders.h"
#include "platform/paths.h"

#include <algorithm>
#include <exception>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr int bannerWidth = 100;
constexpr std::string_view bannerTitle = "parameters";
/// The file holds some 3 KB; far beyond that it is none of ours.
constexpr std::size_t largestParameterFile = 4 * 1024 * 1024;

/// One at a time loads and replaces the file.
std::mutex fileLock;

bool isFolderEntry(const Parameter& parameter) {
    const auto holds = [&](const std::array<TextParameter, 10>& list) {
        return std::any_of(list.begin(), list.end(),
                           [&](const TextParameter& entry) { return &entry == &parameter; });
    };
    return holds(lfolder) || holds(afolder);
}

/// The entries of that name in the order of the file. Only the first one counts.
pugi::xpath_node_set findEntries(const pugi::xml_document& document, std::string_view name) {
    pugi::xpath_variable_set variables;
    variables.set("name", std::string(name).c_str());
    pugi::xpath_node_set entries = document.select_nodes("/parameters/parameter[@name=$name]", &variables);
    entries.sort();
    return entries;
}

pugi::xml_node findEntry(const pugi::xml_document& document, std::string_view name) {
    return findEntries(document, name).first().node();
}

bool setValue(pugi::xml_node entry, const std::string& value) {
    pugi::xml_attribute attribute = entry.attribute("value");
    if (!attribute) {
        attribute = entry.append_attribute("value");
    }
    return attribute.set_value(value.c_str());
}

bool addEntry(pugi::xml_document& document, const Parameter& parameter) {
    pugi::xml_node list = document.child("parameters");
    if (!list) {
        list = document.append_child("parameters");
    }
    pugi::xml_node entry = list.append_child("parameter");
    const bool named = entry.append_attribute("name").set_value(std::string(parameter.name()).c_str());
    return named && setValue(entry, parameter.text());
}

void addInitialEntry(pugi::xml_document& document, const Parameter& parameter) {
    if (!addEntry(document, parameter)) {
        logAlert(
            fmt::format("adding init xml parameter {} with {} failed!", parameter.name(), parameter.text()));
    }
}

/// Leaf by leaf: the library takes a node out by recursion, as deep as the file likes.
void removeEntry(pugi::xml_node entry) {
    pugi::xml_node node = entry;
    for (;;) {
        while (node.first_child()) {
            node = node.first_child();
        }
        pugi::xml_node parent = node.parent();
        const bool last = node == entry;
        parent.remove_child(node);
        if (last) {
            return;
        }
        node = parent;
    }
}

void logValue(const Parameter& parameter) {
    logLine(fmt::format("{}={}", parameter.name(), parameter.text()));
}

/// Returns whether the document changed.
bool takeFolderEntry(const pugi::xml_document& document, Parameter& parameter) {
    parameter.setFromText({});
    bool changed = false;
    // A file that was edited by hand may hold a name twice: what counts now must count at the next start too.
    for (const pugi::xpath_node& found : findEntries(document, parameter.name())) {
        const std::string_view value = found.node().attribute("value").value();
        if (!value.empty()) {
            parameter.setFromText(value);
            logValue(parameter);
            break;
        }
        removeEntry(found.node());
        logLine(fmt::format("Parameter {} removed", parameter.name()));
        changed = true;
    }
    return changed;
}

/// Returns whether the document changed.
bool takeEntry(pugi::xml_document& document, Parameter& parameter) {
    pugi::xml_node entry = findEntry(document, parameter.name());
    const pugi::xml_attribute value = entry.attribute("value");
    if (value) {
        parameter.setFromText(value.value());
    } else {
        parameter.setDefault();
    }
    logValue(parameter);
    if (!entry) {
        addInitialEntry(document, parameter);
    } else if (!value) {
        setValue(entry, parameter.text());
    }
    return !value;
}

/// Replaces the file. Called with `fileLock` held.
bool writeDocument(const pugi::xml_document& document) {
    std::error_code ignored;
    std::filesystem::create_directories(parametersFolder(), ignored);
    if (!replaceFile(parametersFile(), xmlText(document))) {
        logLine("saving xml did not work?");
        return false;
    }
    return true;
}

/// Moves a file that cannot be used out of the way under a free name, so that nothing in it is lost. Returns
/// whether the place is free for a new file. Called with `fileLock` held.
bool keepUnusableFile(std::string_view why) {
    const std::filesystem::path file = parametersFile();
    std::filesystem::path kept;
    std::error_code error;
    for (int number = 1; kept.empty() || std::filesystem::exists(kept, error); ++number) {
        kept = parametersFolder() / fmt::format("parameters-unusable-{}.xml", number);
    }
    std::filesystem::rename(file, kept, error);
    if (error) {
        logAlert(fmt::format("\"{}\" cannot be used ({}) nor moved away ({}), its settings are not changed",
                             platform::utf8FromPath(file), why, error.message()));
        return false;
    }
    showMessage(fmt::format("\"{}\" cannot be used ({}), it is kept as \"{}\"", platform::utf8FromPath(file),
                            why, platform::utf8FromPath(kept)),
                true);
    return true;
}

enum class Stored { Usable, Missing, Unusable };

/// Loads the file; `why` says what is wrong with an unusable one. Called with `fileLock` held.
Stored loadDocument(pugi::xml_document& document, std::string& why) {
    std::string content;
    const std::error_code error = readFile(parametersFile(), content, largestParameterFile);
    if (error == std::errc::no_such_file_or_directory) {
        return Stored::Missing;
    }
    if (error) {
        why = error.message();
        return Stored::Unusable;
    }
    if (!parseParameters(content, document)) {
        why = "it is no well-formed XML document";
        return Stored::Unusable;
    }
    return Stored::Usable;
}

/// Called with `fileLock` held.
void takeDefaults(bool mayWrite) {
    for (Parameter* parameter : allParameters()) {
        parameter->setDefault();
        if (!isFolderEntry(*parameter)) {
            logValue(*parameter);
        }
    }
    if (mayWrite) {
        pugi::xml_document document;
        fillParameters(document);
        writeDocument(document);
    }
}

void readStore() {
    const std::lock_guard guard(fileLock);
    const std::string path = platform::utf8FromPath(parametersFile());
    pugi::xml_document document;
    std::string why;
    const Stored stored = loadDocument(document, why);
    if (stored == Stored::Usable) {
        logLine(fmt::format("from \"{}\"", path));
        if (takeParameters(document)) {
            writeDocument(document);
        }
        return;
    }
    const bool mayWrite = stored == Stored::Missing || keepUnusableFile(why);
    logLine(fmt::format("{} not found, default values taken:", path));
    takeDefaults(mayWrite);
}

} // namespace

bool parseParameters(std::string_view content, pugi::xml_document& document) {
    // The user's comments survive a rewrite; the XML declaration does not, for it may name another encoding
    // than the one in which the file is written.
    return document.load_buffer(content.data(), content.size(), pugi::parse_default | pugi::parse_comments);
}

bool takeParameters(pugi::xml_document& document) {
    bool changed = false;
    for (Parameter* parameter : allParameters()) {
        const bool entryChanged = isFolderEntry(*parameter) ? takeFolderEntry(document, *parameter)
                                                            : takeEntry(document, *parameter);
        changed = changed || entryChanged;
    }
    return changed;
}

void fillParameters(pugi::xml_document& document) {
    document.reset();
    document.append_child("parameters");
    for (const Parameter* parameter : allParameters()) {
        if (!isFolderEntry(*parameter) || !parameter->text().empty()) {
            addInitialEntry(document, *parameter);
        }
    }
}

std::filesystem::path parametersFolder() {
    return platform::roamingAppData() / programName;
}

std::filesystem::path parametersFile() {
    return parametersFolder() / "parameters.xml";
}

void readParameters() {
    platform::removeLeftovers(parametersFolder());
    logLine(bannerLine(bannerWidth - static_cast<int>(bannerTitle.size()), 0, true, false, bannerTitle));
    try {
        readStore();
    } catch (const std::exception& failure) {
        logAlert(fmt::format("readParameters: {}", failure.what()));
    }
    logLine(bannerLine(bannerWidth, 0, false, true, {}));
    for (const Parameter* parameter : allParameters()) {
        showParameter(*parameter);
    }
}

bool saveParameter(const Parameter& parameter) {
    const std::lock_guard guard(fileLock);
    logValue(parameter);
    try {
        pugi::xml_document document;
        std::string why;
        if (loadDocument(document, why) == Stored::Unusable) {
            if (!keepUnusableFile(why)) {
                logLine("saving xml did not work?");
                return false;
            }
            fillParameters(document);
        }
        const pugi::xml_node entry = findEntry(document, parameter.name());
        const bool stored = entry ? setValue(entry, parameter.text()) : addEntry(document, parameter);
        return stored && writeDocument(document);
    } catch (const std::exception& failure) {
        logAlert(fmt::format("saveParameter {}: {}", parameter.name(), failure.what()));
        return false;
    }
}

std::string storedParameterText(std::string_view name) {
    const std::lock_guard guard(fileLock);
    pugi::xml_document document;
    std::string why;
    if (loadDocument(document, why) != Stored::Usable) {
        return {};
    }
    return findEntry(document, name).attribute("value").value();
}

} // namespace kst

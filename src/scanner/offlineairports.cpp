#include "scanner/offlineairports.h"

#include "core/display.h"
#include "core/files.h"
#include "core/log.h"
#include "core/progress.h"
#include "core/runstate.h"
#include "parking/learning.h"
#include "platform/paths.h"

#include <algorithm>
#include <cctype>

#include <fmt/format.h>

namespace kst {

namespace {

namespace fs = std::filesystem;

const fs::path offlineFolder = "TBLO";
constexpr std::string_view makersAddress = "airports@kestrane.example";

/// One of the two folders of generated files, and what is told about it.
struct Stage {
    fs::path folder;
    const char* copyFailure; ///< with the source and the target in the placeholders
    const char* nothingToDo;
};

struct StageResult {
    std::size_t copied = 0;
    std::size_t unsuitable = 0;
};

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return text;
}

void removeOfflineFolder() {
    std::error_code error;
    fs::remove_all(offlineFolder, error);
    if (error) {
        logAlert(fmt::format("{}: {}", platform::utf8FromPath(offlineFolder), error.message()));
    }
}

void showShare(Progress& progress, std::size_t done, std::size_t all) {
    if (progress.due()) {
        progress.show(fmt::format("Looking for airports to learn off line ... {} of {}", done, all),
                      static_cast<double>(done) / static_cast<double>(all));
    }
}

/// Copies one airport's file. A link serves the airport itself from then on, where there is one.
bool copyAirport(const Stage& stage, const std::string& code) {
    const fs::path source = stage.folder / (code + ".xml");
    const fs::path target = offlineFolder / (code + ".xml");
    std::error_code error;
    if (!fs::copy_file(source, target, fs::copy_options::overwrite_existing, error)) {
        logAlert(fmt::format(fmt::runtime(stage.copyFailure), platform::utf8FromPath(source),
                             platform::utf8FromPath(target)));
        return false;
    }
    logLine(fmt::format("{} copied to {}", code, platform::utf8FromPath(target)));
    if (fs::exists(stage.folder / (code + ".txt"), error)) {
        fs::remove(source, error);
    }
    return true;
}

void askForMail() {
    std::error_code error;
    const fs::path place = fs::absolute(offlineFolder, error);
    logLine("");
    logAlert(fmt::format("please zip the folder {} and mail it to {}: its airports can then be learned off "
                         "line",
                         platform::utf8FromPath(error ? offlineFolder : place), makersAddress));
}

StageResult runStage(const Stage& stage, const std::vector<std::string>& codes) {
    StageResult result;
    Progress progress;
    std::error_code error;
    fs::create_directories(offlineFolder, error);
    for (std::size_t i = 0; i < codes.size() && !stopAsked(); ++i) {
        showShare(progress, i, codes.size());
        if (!gf_stockIsSuitable(codes[i])) {
            ++result.unsuitable;
        } else if (copyAirport(stage, codes[i])) {
            ++result.copied;
        }
    }
    if (result.copied > 0) {
        askForMail();
    } else if (!stopAsked()) {
        logLine(stage.nothingToDo);
    }
    return result;
}

} // namespace

std::vector<std::string> lf_listAirportFiles(const fs::path& folder, std::string_view extension) {
    constexpr std::size_t codeLength = 4;
    constexpr std::size_t usualFiles = 512;
    std::vector<std::string> names;
    names.reserve(usualFiles);
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator{};
         entry.increment(error)) {
        std::error_code gone;
        std::string name = platform::utf8FromPath(entry->path().stem());
        const std::string found = platform::utf8FromPath(entry->path().extension());
        if (entry->is_regular_file(gone) && name.size() == codeLength &&
            lowerCase(found) == lowerCase(std::string(extension))) {
            names.push_back(std::move(name));
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

void collectOfflineAirports() {
    const Stage orbx{folders::myOrbx, "failed to copy {}",
                     "All your ORBX airports are done, no off line learning needed."};
    const Stage thirdparty{folders::myThirdparty, "\"{}\" failed to copy \"{}\"",
                           "All your third party airports are done, no off line learning needed."};
    const std::vector<std::string> thirdpartyCodes = lf_listAirportFiles(thirdparty.folder, ".XML");
    const std::vector<std::string> orbxCodes = lf_listAirportFiles(orbx.folder, ".XML");
    bool complete = orbxCodes.empty();
    std::size_t copied = 0;
    const auto show = [&] {
        updateStatus(Band::Status, [&](StatusValues& status) {
            status.simaddonComplete = complete;
            status.offlineAirports = copied;
            status.offlineFolder = platform::utf8FromPath(offlineFolder);
        });
        repaint(Band::Control);
    };
    show();
    removeOfflineFolder();
    if (!orbxCodes.empty()) {
        const StageResult result = runStage(orbx, orbxCodes);
        copied += result.copied;
        complete = result.copied + result.unsuitable == orbxCodes.size();
        show();
    }
    if (!thirdpartyCodes.empty()) {
        copied += runStage(thirdparty, thirdpartyCodes).copied;
        show();
    }
    if (copied == 0) {
        removeOfflineFolder();
    }
    clearMessage();
}

} // namespace kst

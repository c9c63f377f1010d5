#include "catalogue/referencereader.h"
#include "catalogue/referencetables.h"
#include "catalogue/scan.h"
#include "catalogue/store.h"
#include "core/files.h"
#include "support/environment.h"
#include "support/tempfolder.h"
#include "tools/kestrane-data/codes.h"
#include "tools/makeinstallation/facts.h"
#include "tools/makeinstallation/installation.h"

#include <algorithm>
#include <map>

#include <gtest/gtest.h>

namespace kst {
namespace {

namespace fs = std::filesystem;

/// The made world goes the way of the real one: scrambled, then read.
void takeFacts() {
    pugi::xml_document document;
    made::addReferenceFacts(document);
    data::convertCodes(document, data::Direction::Scramble);
    referenceTables() = {};
    readReferenceDocument(document, "made", referenceTables());
}

std::vector<std::string> storedLiveries() {
    pugi::xml_document document;
    document.load_file(liveriesStorePath().c_str());
    std::vector<std::string> liveries;
    for (const pugi::xml_node node : document.child("liveries").children("liv")) {
        liveries.push_back(made::ExpectedLivery{
            node.attribute("airl").value(), node.attribute("type").value(), node.attribute("title").value(),
            node.attribute("atcid").value(), node.attribute("cargo").as_bool()}
                               .text());
    }
    return liveries;
}

/// The lines of all files in the folders of reports.
std::map<std::string, std::vector<std::string>> writtenReports() {
    std::map<std::string, std::vector<std::string>> reports;
    for (const fs::path& folder : {folders::errors, folders::info}) {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            gf_readExtTextFileToStringVector(entry.path(), reports[entry.path().filename().string()]);
        }
    }
    return reports;
}

/// What stands in only one of two lists of lines, whose order counts where `sorted` is false.
std::string difference(std::vector<std::string> found, std::vector<std::string> expected,
                       bool sorted = true) {
    if (!sorted && found != expected && found.size() == expected.size()) {
        const auto [at, other] = std::mismatch(found.begin(), found.end(), expected.begin());
        return "found \"" + *at + "\" in the place of \"" + *other + "\"";
    }
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    std::vector<std::string> lines;
    std::set_symmetric_difference(found.begin(), found.end(), expected.begin(), expected.end(),
                                  std::back_inserter(lines));
    std::string text;
    for (const std::string& line : lines) {
        const bool surplus = std::binary_search(found.begin(), found.end(), line);
        text += (surplus ? "\nfound, not expected: " : "\nexpected, not found: ") + line;
    }
    return text;
}

TEST(Installation, EveryRuleIsSeenInWhatTheScanFindsAndReports) {
    constexpr std::size_t files = 126;
    constexpr std::size_t sections = 6;
    constexpr std::size_t allKinds = 61;
    const test::TempFolder folder;
    test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", "file:///nowhere/downloads/");
    lf_createFolders();
    takeFacts();
    made::Expectation expected = made::makeInstallation("made", files, sections);
    EXPECT_EQ(expected.kinds.size(), allKinds);
    std::string unwanted;
    for (const std::string& title : expected.unwantedTitles) {
        unwanted += title + "\n";
    }
    folder.write("input/my_regcodes/unwanted.txt", unwanted);

    EXPECT_TRUE(lf_scanFolders({"made"}));
    std::vector<std::string> liveries;
    std::stable_sort(expected.liveries.begin(), expected.liveries.end(), [](const auto& a, const auto& b) {
        return std::tie(a.airline, a.model, a.title) < std::tie(b.airline, b.model, b.title);
    });
    for (const made::ExpectedLivery& livery : expected.liveries) {
        liveries.push_back(livery.text());
    }
    EXPECT_EQ(difference(storedLiveries(), liveries, false), "");

    auto reports = writtenReports();
    for (const auto& [name, lines] : expected.reports) {
        const bool inOrderOfTheWalk = name == "AirlineModelConversions.txt" || name == "Fixes.txt";
        EXPECT_EQ(difference(reports[name], lines, !inOrderOfTheWalk), "") << name;
    }
    EXPECT_EQ(reports.size(), expected.reports.size());
    EXPECT_EQ(expected.reports.size(), 7U) << "each report has something in it";
    referenceTables() = {};
    test::setEnvironment("KESTRANE_DOWNLOAD_ROOT", std::nullopt);
}

} // namespace
} // namespace kst

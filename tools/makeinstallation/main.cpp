// makeinstallation: makes folders of installed aircraft.
//
//   makeinstallation FOLDER [FILES [SECTIONS]]   everything that add-on makers do right and wrong (6000, 12);
//                                                what a scan must come to is written beside it
//   makeinstallation --demo DATA FOLDER          the airlines and types that fly in the recordings of DATA

#include "demotree.h"
#include "facts.h"
#include "installation.h"

#include <charconv>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>

namespace {

namespace fs = std::filesystem;

std::size_t numberOf(const std::string& text) {
    std::size_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || number == 0) {
        throw std::runtime_error(text + " is no number");
    }
    return number;
}

void makeAll(const fs::path& folder, std::size_t files, std::size_t sections) {
    const kst::made::Expectation expected = kst::made::makeInstallation(folder / "aircraft", files, sections);
    kst::made::writeExpectation(expected, folder / "expected");
    pugi::xml_document reference;
    kst::made::addReferenceFacts(reference);
    if (!reference.save_file((folder / "reference.xml").c_str())) {
        throw std::runtime_error("could not write the reference document");
    }
    fs::create_directories(folder / "my_regcodes");
    std::ofstream unwanted(folder / "my_regcodes" / "unwanted.txt", std::ios::binary);
    for (const std::string& title : expected.unwantedTitles) {
        unwanted << title << '\n';
    }
    std::cout << fmt::format("{} files with {} sections in {}, {} liveries to be found\n", expected.files,
                             expected.sections, (folder / "aircraft").string(), expected.liveries.size());
}

int run(const std::vector<std::string>& words) {
    if (words.size() == 3 && words[0] == "--demo") {
        const std::size_t liveries = kst::made::makeDemoTree(words[1], words[2]);
        std::cout << fmt::format("{} liveries in {}\n", liveries, words[2]);
        return 0;
    }
    if (words.empty() || words.size() > 3 || words[0].starts_with("-")) {
        std::cerr << "usage: makeinstallation FOLDER [FILES [SECTIONS]]\n"
                     "       makeinstallation --demo DATA FOLDER\n";
        return 2;
    }
    makeAll(words[0], words.size() > 1 ? numberOf(words[1]) : 6000,
            words.size() > 2 ? numberOf(words[2]) : 12);
    return 0;
}

} // namespace

int main(int count, char** words) {
    try {
        return run({words + 1, words + count});
    } catch (const std::exception& failure) {
        std::cerr << "makeinstallation: " << failure.what() << '\n';
        return 1;
    }
}

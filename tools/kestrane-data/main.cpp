// kestrane-data: makes the downloadable data files from plain documents, and shows them again.
//
//   kestrane-data dbase PLAIN.xml OUT.zip      the reference document
//   kestrane-data regcodes PLAIN.xml OUT.zip   the registration list
//   kestrane-data show FILE.zip                either of them in plain text
//   kestrane-data reference FOLDER PLAIN.xml   a plain reference document from the CSV facts in FOLDER
//   kestrane-data match STORE.xml DBASE.zip TRACKS.csv...
//                                              which rung of the matching ladder each recorded aircraft comes
//                                              to
//   kestrane-data airports FOLDER OUT.xml      the world directory of airports from the same
//   kestrane-data stock FOLDER ICAO OUT.xml    an airport's stock parking file from the same

#include "airportlist.h"
#include "codes.h"
#include "matchtable.h"
#include "referencefacts.h"
#include "stockfile.h"
#include "zipfile.h"

#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <pugixml.hpp>

namespace {

using kst::data::Direction;

std::string saved(const pugi::xml_document& document) {
    std::ostringstream text;
    document.save(text);
    return text.str();
}

void load(pugi::xml_document& document, const std::string& path) {
    const pugi::xml_parse_result result = document.load_file(path.c_str());
    if (!result) {
        throw std::runtime_error(fmt::format("{}: {}", path, result.description()));
    }
}

void pack(const std::string& plain, const std::string& zip, const std::string& entry) {
    pugi::xml_document document;
    load(document, plain);
    kst::data::convertCodes(document, Direction::Scramble);
    kst::data::writeZip(zip, entry, saved(document));
    std::cout << zip << " written\n";
}

void show(const std::string& zip) {
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_string(kst::data::readZip(zip).c_str());
    if (!result) {
        throw std::runtime_error(fmt::format("{}: {}", zip, result.description()));
    }
    kst::data::convertCodes(document, Direction::Unscramble);
    std::cout << saved(document);
}

void save(const pugi::xml_document& document, const std::string& out) {
    if (!document.save_file(out.c_str())) {
        throw std::runtime_error(fmt::format("{}: could not be written", out));
    }
    std::cout << out << " written\n";
}

void makeReference(const std::string& folder, const std::string& out) {
    pugi::xml_document document;
    kst::data::addReferenceFacts(document, folder);
    save(document, out);
}

void makeDirectory(const std::string& folder, const std::string& out) {
    pugi::xml_document document;
    kst::data::addAirports(document, folder);
    save(document, out);
}

void makeStock(const std::string& folder, const std::string& icao, const std::string& out) {
    pugi::xml_document document;
    kst::data::addStockAirport(document, folder, icao);
    save(document, out);
}

int usage() {
    std::cerr << "usage: kestrane-data dbase PLAIN.xml OUT.zip\n"
                 "       kestrane-data regcodes PLAIN.xml OUT.zip\n"
                 "       kestrane-data show FILE.zip\n"
                 "       kestrane-data reference FOLDER PLAIN.xml\n"
                 "       kestrane-data airports FOLDER OUT.xml\n"
                 "       kestrane-data stock FOLDER ICAO OUT.xml\n";
    return 2;
}

int run(const std::vector<std::string>& words) {
    if (words.size() == 3 && words[0] == "dbase") {
        pack(words[1], words[2], "dbase.xml");
    } else if (words.size() == 3 && words[0] == "regcodes") {
        pack(words[1], words[2], "AIG-regcodes.xml");
    } else if (words.size() == 2 && words[0] == "show") {
        show(words[1]);
    } else if (words.size() == 3 && words[0] == "reference") {
        makeReference(words[1], words[2]);
    } else if (words.size() == 3 && words[0] == "airports") {
        makeDirectory(words[1], words[2]);
    } else if (words.size() == 4 && words[0] == "stock") {
        makeStock(words[1], words[2], words[3]);
    } else if (words.size() >= 4 && words[0] == "match") {
        kst::data::printMatches(words[1], words[2], {words.begin() + 3, words.end()});
    } else {
        return usage();
    }
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    try {
        return run(std::vector<std::string>(arguments + 1, arguments + count));
    } catch (const std::exception& error) {
        std::cerr << "kestrane-data: " << error.what() << '\n';
        return 1;
    }
}

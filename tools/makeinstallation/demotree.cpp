#include "demotree.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>

namespace kst::made {

namespace {

namespace fs = std::filesystem;

std::vector<std::string> fieldsOf(const std::string& line) {
    std::vector<std::string> fields(1);
    for (const char c : line) {
        if (c == ',') {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

template <class Take>
void forEachLine(const fs::path& path, Take take) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("could not read " + path.string());
    }
    for (std::string line; std::getline(file, line);) {
        take(fieldsOf(line));
    }
}

/// The codes in the first column of a list with a header line.
std::set<std::string> codesOf(const fs::path& path) {
    std::set<std::string> codes;
    bool header = true;
    forEachLine(path, [&](const std::vector<std::string>& fields) {
        if (!header) {
            codes.insert(fields[0]);
        }
        header = false;
    });
    return codes;
}

using AirlinesByType = std::map<std::string, std::set<std::string>>;

/// Takes the airlines of one recording, by the callsigns of its aircraft: three letters and a digit.
void takeAirlines(const fs::path& recording, const std::set<std::string>& airlines, AirlinesByType& types) {
    constexpr std::size_t callsign = 4;
    constexpr std::size_t type = 6;
    forEachLine(recording, [&](const std::vector<std::string>& fields) {
        if (fields[0] != "aircraft" || fields.size() <= type - 1) {
            return;
        }
        const std::string& sign = fields[callsign - 1];
        const auto known = types.find(fields[type - 1]);
        if (known != types.end() && sign.size() > 3 && sign[3] >= '0' && sign[3] <= '9' &&
            airlines.contains(sign.substr(0, 3))) {
            known->second.insert(sign.substr(0, 3));
        }
    });
}

std::size_t writeType(const fs::path& folder, const std::string& type, std::set<std::string> airlines) {
    airlines.insert("ZZZ");
    fs::create_directories(folder / "model");
    std::ofstream(folder / (type + ".air")) << "demo";
    std::ofstream file(folder / "aircraft.cfg", std::ios::binary);
    file << "[General]\natc_model=" << type << "\n\n";
    std::size_t count = 0;
    for (const std::string& airline : airlines) {
        fs::create_directory(folder / ("texture." + airline));
        file << fmt::format("[fltsim.{}]\ntitle=Kestrane Demo {} {}\nsim={}\nmodel=\ntexture={}\n"
                            "atc_parking_codes={}\n\n",
                            count, type, airline == "ZZZ" ? "white" : airline, type, airline, airline);
        ++count;
    }
    return count;
}

} // namespace

std::size_t makeDemoTree(const fs::path& data, const fs::path& folder) {
    constexpr std::size_t shortestType = 2;
    AirlinesByType types;
    for (const std::string& type : codesOf(data / "types.csv")) {
        if (type.size() >= shortestType) {
            types.try_emplace(type);
        }
    }
    const std::set<std::string> airlines = codesOf(data / "airlines.csv");
    for (const fs::directory_entry& entry : fs::directory_iterator(data / "tracks")) {
        if (entry.path().extension() == ".csv") {
            takeAirlines(entry.path(), airlines, types);
        }
    }
    std::size_t count = 0;
    for (const auto& [type, ofType] : types) {
        count += writeType(folder / type, type, ofType);
    }
    return count;
}

} // namespace kst::made

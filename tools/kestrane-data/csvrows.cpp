#include "csvrows.h"

#include <fstream>
#include <stdexcept>

namespace kst::data {

namespace {

Row splitRow(const std::string& line) {
    Row fields;
    std::size_t begin = 0;
    while (true) {
        const std::size_t comma = line.find(',', begin);
        fields.push_back(line.substr(begin, comma - begin));
        if (comma == std::string::npos) {
            return fields;
        }
        begin = comma + 1;
    }
}

} // namespace

std::vector<Row> readRows(const std::string& path, bool header) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error(path + ": cannot be read");
    }
    std::vector<Row> rows;
    std::string line;
    while (std::getline(file, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (header) {
            header = false;
        } else if (!line.empty() && line.front() != '#') {
            rows.push_back(splitRow(line));
        }
    }
    return rows;
}

} // namespace kst::data

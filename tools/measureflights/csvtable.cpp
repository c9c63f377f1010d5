#include "tools/measureflights/csvtable.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <stdexcept>

namespace kst::tool {

namespace {

/// Cuts the line at its commas. Quotation marks round a field go, within one a doubled mark is a single one;
/// that shortens the line in place.
void cut(std::string& line, std::vector<std::string_view>& fields) {
    fields.clear();
    std::size_t write = 0;
    std::size_t fieldBegin = 0;
    bool quoted = false;
    const std::string_view all(line);
    for (std::size_t read = 0; read < all.size(); ++read) {
        const char letter = all[read];
        if (letter == '"' && quoted && read + 1 < all.size() && all[read + 1] == '"') {
            line[write++] = letter;
            ++read;
        } else if (letter == '"' && (quoted || write == fieldBegin)) {
            quoted = !quoted;
        } else if (letter == ',' && !quoted) {
            fields.push_back(all.substr(fieldBegin, write - fieldBegin));
            line[write++] = letter;
            fieldBegin = write;
        } else {
            line[write++] = letter;
        }
    }
    fields.push_back(all.substr(fieldBegin, write - fieldBegin));
}

bool nextLine(std::istream& in, std::string& line) {
    if (!std::getline(in, line)) {
        return false;
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return true;
}

} // namespace

std::string_view CsvRow::text(std::size_t n) const {
    const std::size_t column = columns_.at(n);
    return column < fields_.size() ? fields_[column] : std::string_view();
}

std::optional<double> CsvRow::number(std::size_t n) const {
    const std::string_view field = text(n);
    double value = 0.0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    if (error != std::errc() || end != field.data() + field.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

void readCsv(std::istream& in, const std::vector<std::string_view>& names,
             const std::function<void(const CsvRow&)>& row) {
    std::string line;
    std::vector<std::string_view> fields;
    if (!nextLine(in, line)) {
        throw std::runtime_error("the file is empty");
    }
    cut(line, fields);
    std::vector<std::size_t> columns;
    for (const std::string_view name : names) {
        const auto found = std::find(fields.begin(), fields.end(), name);
        if (found == fields.end()) {
            throw std::runtime_error(fmt::format("no column \"{}\" in the header", name));
        }
        columns.push_back(static_cast<std::size_t>(found - fields.begin()));
    }
    while (nextLine(in, line)) {
        cut(line, fields);
        row(CsvRow(columns, fields));
    }
}

} // namespace kst::tool

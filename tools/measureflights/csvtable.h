#pragma once

// Reader of CSV files with a header line. Columns are found by name, in whatever order they stand; a field
// may be quoted.

#include <cstddef>
#include <functional>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kst::tool {

class CsvRow {
public:
    CsvRow(const std::vector<std::size_t>& columns, const std::vector<std::string_view>& fields)
        : columns_(columns), fields_(fields) {}
    /// The text of the n-th column that was asked for; empty when the row ends before it.
    std::string_view text(std::size_t n) const;
    /// Its number, when the whole field is one and it is finite.
    std::optional<double> number(std::size_t n) const;

private:
    const std::vector<std::size_t>& columns_;
    const std::vector<std::string_view>& fields_;
};

/// Calls `row` for each line behind the header. Throws std::runtime_error naming the column when the header
/// lacks one of `names`.
void readCsv(std::istream& in, const std::vector<std::string_view>& names,
             const std::function<void(const CsvRow&)>& row);

} // namespace kst::tool

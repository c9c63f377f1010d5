#pragma once

// Writes every object's history to a CSV file while the world runs.

#include "standins/simulator/aircraft.h"

#include <filesystem>
#include <fstream>

namespace kst::standin {

class HistoryFile {
public:
    /// Begins a new file with its line of column names. Throws std::runtime_error when it cannot be written.
    explicit HistoryFile(const std::filesystem::path& path);
    /// One line: the machine's clock (seconds since 1970), simulated seconds, object, position and attitude.
    /// Texts are quoted.
    void add(double wallSeconds, const Aircraft& aircraft, const HistoryPoint& point);
    void flush() { file_.flush(); }

private:
    std::ofstream file_;
};

} // namespace kst::standin

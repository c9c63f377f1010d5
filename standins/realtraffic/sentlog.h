#pragma once

// Record of every line that went out, for measuring what the traffic program made of it (docs/formats.md,
// "Record of sent traffic").

#include "trafficsource.h"

#include <filesystem>
#include <fstream>

namespace kst::standin {

class SentLog {
public:
    /// Throws std::runtime_error when the file cannot be written.
    explicit SentLog(const std::filesystem::path& path);
    /// `wallSeconds`: moment of sending, seconds since 1970.
    void add(double wallSeconds, const TrafficReport& report);

private:
    std::ofstream out_;
};

} // namespace kst::standin

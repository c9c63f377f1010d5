#include "catalogue/reportfile.h"

#include "core/files.h"
#include "core/log.h"
#include "platform/paths.h"

#include <fmt/format.h>

namespace kst {

void writeReport(const std::filesystem::path& file, const std::vector<std::string>& lines) {
    std::error_code ignored;
    std::filesystem::create_directories(file.parent_path(), ignored);
    std::string text;
    for (const std::string& line : lines) {
        text += line;
        text += '\n';
    }
    if (!writeTextFile(text, file, false)) {
        logLine(fmt::format("could not write \"{}\"", platform::utf8FromPath(file)));
    }
}

} // namespace kst

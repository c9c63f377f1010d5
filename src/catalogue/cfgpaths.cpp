#include "catalogue/cfgpaths.h"

#include "platform/paths.h"

#include <algorithm>
#include <string>

namespace kst {

std::filesystem::path pathFromCfgText(std::string_view text) {
    // Windows takes both separators, so the one that every system knows serves all.
    std::string generic(text);
    std::replace(generic.begin(), generic.end(), '\\', '/');
    std::filesystem::path path = platform::pathFromUtf8(generic);
    return path.make_preferred();
}

} // namespace kst

#include "platform/environment.h"

#include <cstdlib>

namespace kst::platform {

std::optional<std::string> environmentText(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    if (value == nullptr || *value == '\0') {
        return std::nullopt;
    }
    return std::string(value);
}

} // namespace kst::platform

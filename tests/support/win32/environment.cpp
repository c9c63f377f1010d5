#include "support/environment.h"

#include "platform/win32/utf16.h"

#include <cstdlib>

namespace kst::test {

void setEnvironment(const std::string& name, const std::optional<std::string>& value) {
    // The C library's copy and the system's; an empty value removes the variable.
    _wputenv_s(platform::wideFromUtf8(name).c_str(), platform::wideFromUtf8(value.value_or("")).c_str());
}

} // namespace kst::test

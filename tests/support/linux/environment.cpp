#include "support/environment.h"

#include <cstdlib>

namespace kst::test {

void setEnvironment(const std::string& name, const std::optional<std::string>& value) {
    if (value) {
        setenv(name.c_str(), value->c_str(), 1);
    } else {
        unsetenv(name.c_str());
    }
}

} // namespace kst::test

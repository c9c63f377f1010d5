#pragma once

#include <optional>
#include <string>

namespace kst::test {

/// Sets or removes an environment variable of this process. No other thread may read the environment then.
void setEnvironment(const std::string& name, const std::optional<std::string>& value);

} // namespace kst::test

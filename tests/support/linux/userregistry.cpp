#include "support/userregistry.h"

namespace kst::test {

void writeRegistry(const TempFolder& folder, std::string_view text) {
    folder.write("user/roaming/registry.ini", text);
}

} // namespace kst::test

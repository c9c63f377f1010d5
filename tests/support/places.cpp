#include "support/places.h"

namespace kst::test {

std::filesystem::path sourceFolder() {
    return KST_SOURCE_DIR;
}

std::filesystem::path buildFolder() {
    return KST_BUILD_DIR;
}

} // namespace kst::test

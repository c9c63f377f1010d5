#include "platform/socketnumbers.h"

namespace kst::platform {

int winsockNumber(const std::error_code& error) {
    return error.value();
}

} // namespace kst::platform

#include "core/describe.h"

#include <fmt/format.h>

namespace kst {

std::string describe(const AcBase& ac) {
    return fmt::format("{:8} {} {} {} ({})", ac.callsign, ac.regcode.empty() ? "-" : ac.regcode,
                       ac.airline.empty() ? "-" : ac.airline, ac.acType.empty() ? "-" : ac.acType, ac.hexid);
}

} // namespace kst

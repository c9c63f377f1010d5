#pragma once

#include <string>

namespace kst::test {

/// What the Error that the call throws says of itself; "nothing was thrown" if it throws nothing. Any other
/// exception passes.
template <typename Error, typename Call>
std::string thrown(Call call) {
    try {
        call();
    } catch (const Error& error) {
        return error.what();
    }
    return "nothing was thrown";
}

} // namespace kst::test

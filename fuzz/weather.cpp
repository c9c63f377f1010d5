// One weather datagram, from anybody, and the same bytes as RealTraffic's answer to the version question.

#include "core/display.h"
#include "core/runstate.h"
#include "feed/qnhreader.h"
#include "feed/realtrafficlink.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <string_view>

namespace {

using namespace kst;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::size_t length = std::min(size, FeedReader::bufferSize);
    std::copy_n(data, length, qnhReader.buffer.begin());
    qnhReader.handleDatagram(length);
    require(qnh >= 930 && qnh <= 1080 && qnhReader.lastQnh == qnh);

    try {
        lf_readRealTrafficVersion({reinterpret_cast<const char*>(data), size});
        require(statusValues().rtEditionText.size() < 60);
    } catch (const std::exception&) {
        // A reply that is no JSON ends the run with the parser's words.
    }
    return 0;
}

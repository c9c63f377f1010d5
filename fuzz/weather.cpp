// One weather datagram, from anybody, and the same bytes as RealTraffic's answer to the version question.

#include "core/display.h"
#include "core/runstate.h"
#include "feed/qnhreader.h"
#include "feed/realtrafficlink.h"
#include "fuzz/support/fuzzing.h"

#include <algorithm>
#include <exception>

void fuzz(std::string_view input) {
    using namespace kst;
    const std::string_view datagram = input.substr(0, FeedReader::bufferSize);
    std::ranges::copy(datagram, qnhReader.buffer.begin());
    qnhReader.handleDatagram(datagram.size());
    require(qnh >= 930 && qnh <= 1080 && qnhReader.lastQnh == qnh);

    try {
        lf_readRealTrafficVersion(input);
        require(statusValues().rtEditionText.size() < 60);
    } catch (const std::exception&) {
        // A reply that is no JSON ends the run with the parser's words.
    }
}

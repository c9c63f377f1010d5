// The text of a SimConnect.cfg. The first byte is the configuration index that is asked for.

#include "fuzz/support/fuzzing.h"
#include "simlink/simconnectconfig.h"

namespace {

std::string portOf(kst::SimProtocol protocol) {
    return protocol == kst::SimProtocol::IPv6 ? "600" : "500";
}

bool same(const kst::SimConnectConfig& a, const kst::SimConnectConfig& b) {
    return a.protocol == b.protocol && a.address == b.address && a.port == b.port &&
           a.maxReceiveSize == b.maxReceiveSize && a.disableNagle == b.disableNagle;
}

} // namespace

void fuzz(std::string_view input) {
    const unsigned index = takeChoice(input);
    const kst::SimConnectConfig defaults;
    kst::SimConnectConfig once;
    kst::applySimConnectText(input, index, portOf, once);
    kst::SimConnectConfig twice = once;
    kst::applySimConnectText(input, index, portOf, twice);
    require(once.maxReceiveSize >= defaults.maxReceiveSize && once.maxReceiveSize <= 0x7FFFFFFFU);
    require(same(once, twice) && (kst::hasSimConnectSection(input, index) || same(once, defaults)));
}

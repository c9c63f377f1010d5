// The text of a SimConnect.cfg. The first byte is the configuration index that is asked for.

#include "simlink/simconnectconfig.h"

#include <cstdlib>

namespace {

std::string portOf(kst::SimProtocol protocol) {
    return protocol == kst::SimProtocol::IPv6 ? "600" : "500";
}

bool same(const kst::SimConnectConfig& a, const kst::SimConnectConfig& b) {
    return a.protocol == b.protocol && a.address == b.address && a.port == b.port &&
           a.maxReceiveSize == b.maxReceiveSize && a.disableNagle == b.disableNagle;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::uint32_t index = data[0];
    const kst::SimConnectConfig defaults;
    kst::SimConnectConfig once;
    kst::applySimConnectText(text, index, portOf, once);
    kst::SimConnectConfig twice = once;
    kst::applySimConnectText(text, index, portOf, twice);
    const bool sound = once.maxReceiveSize >= defaults.maxReceiveSize && once.maxReceiveSize <= 0x7FFFFFFFU &&
                       same(once, twice) && (kst::hasSimConnectSection(text, index) || same(once, defaults));
    if (!sound) {
        std::abort();
    }
    return 0;
}

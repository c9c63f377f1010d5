// A client's byte stream to the stand-in simulator, whatever it holds.

#include "fuzz/support/fuzzing.h"
#include "standins/simulator/session.h"

#include <cmath>

namespace {

using namespace kst::standin;

Bytes openPacket() {
    PacketWriter packet;
    packet.u32(296).u32(kst::simconnect::protocolVersion);
    packet.u32(kst::simconnect::operationMark + kst::simconnect::OpOpen).u32(1);
    packet.text("Fuzz", 256).u32(0).u32(0x50334400).u32(5).u32(3).u32(0).u32(0);
    return std::move(packet.data());
}

} // namespace

void fuzz(std::string_view input) {
    World world;
    {
        Session session(world);
        session.receive(openPacket());
        session.receive(Bytes(input.begin(), input.end()));
        world.frame(0.05);
        world.second();
        for (Bytes packet; session.take(packet);) {
            // Each message names its own length, or the client's stream would fall out of step.
            require(packet.size() >= 12 && PacketReader(packet).u32() == packet.size());
        }
        for (const auto& [id, object] : world.objects()) {
            require(std::isfinite(object.place.lat) && std::isfinite(object.place.lon) &&
                    std::isfinite(object.place.altFt));
        }
    }
    require(world.objects().empty());
}

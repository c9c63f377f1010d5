// Bytes from the simulator: cut into packets, each handled as a message of the session. The first byte says
// how the stream is split into reads; whatever it says, the same packets must come out.

#include "core/exceptions.h"
#include "core/runstate.h"
#include "fuzz/support/fuzzing.h"
#include "simlink/framing.h"
#include "simlink/objectcommands.h"
#include "simlink/session.h"
#include "simlink/sessionstate.h"

#include <algorithm>
#include <span>
#include <vector>

namespace {

using namespace kst;

using Packets = std::vector<std::vector<std::byte>>;

constexpr std::uint32_t receiveLimit = 41088;
constexpr std::size_t headSize = 12;

PacketFraming::Fault cut(std::span<const std::byte> stream, std::size_t pieceLength, Packets& packets) {
    PacketFraming framing(receiveLimit);
    while (!stream.empty() && framing.fault() == PacketFraming::Fault::None) {
        const std::span<std::byte> space = framing.freeSpace();
        const std::size_t count = std::min({space.size(), stream.size(), pieceLength});
        std::copy_n(stream.begin(), count, space.begin());
        stream = stream.subspan(count);
        framing.advance(count);
        std::span<const std::byte> packet;
        while (framing.next(packet)) {
            packets.emplace_back(packet.begin(), packet.end());
        }
    }
    return framing.fault();
}

void dispatch(const std::vector<std::byte>& packet) {
    if (packet.size() < headSize) {
        return;
    }
    try {
        lf_simDispatch(packet.data(), static_cast<std::uint32_t>(packet.size()), nullptr);
    } catch (const UserErrorException&) {
        // The user would be told.
    }
}

} // namespace

void fuzz(std::string_view input) {
    const std::size_t pieceLength = takeChoice(input) + 1;
    const auto stream = std::as_bytes(std::span(input));
    Packets whole;
    Packets split;
    require(cut(stream, stream.size(), whole) == cut(stream, pieceLength, split) && whole == split);
    timeFollowing = true;
    for (const auto& packet : whole) {
        dispatch(packet);
    }
    static std::vector<SimCommand> answers;
    takeSimCommands(answers);
    exitRequested = false;
    resetSimSession();
}

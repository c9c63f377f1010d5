// The byte stream of the simulator cut into packets, whatever the reads look like.

#include "simlink/framing.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

namespace kst {
namespace {

using Bytes = std::vector<std::byte>;

constexpr std::uint32_t usualLimit = 41088;

/// A packet of this size, with a content of its own.
Bytes packetOf(std::uint32_t size) {
    Bytes packet(size);
    for (std::size_t i = 4; i < size; ++i) {
        packet[i] = static_cast<std::byte>(size * 31 + i * 7);
    }
    std::memcpy(packet.data(), &size, 4);
    return packet;
}

void append(Bytes& stream, const Bytes& bytes) {
    stream.insert(stream.end(), bytes.begin(), bytes.end());
}

struct Outcome {
    std::vector<Bytes> packets;
    PacketFraming::Fault fault = PacketFraming::Fault::None;
    bool operator==(const Outcome&) const = default;
};

/// Feeds the stream in pieces of the lengths that `pieceLength` gives.
template <typename PieceLength>
Outcome feed(const Bytes& stream, std::uint32_t limit, PieceLength pieceLength) {
    PacketFraming framing(limit);
    Outcome outcome;
    std::size_t position = 0;
    std::size_t pieceEnd = 0;
    while (position < stream.size() && framing.fault() == PacketFraming::Fault::None) {
        if (position == pieceEnd) {
            pieceEnd += std::min<std::size_t>(pieceLength(position), stream.size() - position);
        }
        const std::span<std::byte> space = framing.freeSpace();
        const std::size_t count = std::min(space.size(), pieceEnd - position);
        std::copy_n(stream.begin() + static_cast<std::ptrdiff_t>(position), count, space.begin());
        framing.advance(count);
        position += count;
        std::span<const std::byte> packet;
        while (framing.next(packet)) {
            outcome.packets.emplace_back(packet.begin(), packet.end());
        }
    }
    outcome.fault = framing.fault();
    return outcome;
}

Outcome feedWhole(const Bytes& stream, std::uint32_t limit = usualLimit) {
    return feed(stream, limit, [&](std::size_t) { return stream.size(); });
}

TEST(Framing, EverySplitPointGivesTheSamePackets) {
    Bytes stream;
    Outcome whole;
    for (const std::uint32_t size :
         {12U, 96U, 4U, 308U, 17U, 24U, 3000U}) { // the last longer than the first buffer
        whole.packets.push_back(packetOf(size));
        append(stream, whole.packets.back());
        if (size == 96 || size == 17) {
            append(stream, Bytes(size == 96 ? 4 : 7)); // padding, of a size field and longer
        }
    }
    EXPECT_EQ(feedWhole(stream), whole);
    for (std::size_t split = 1; split < stream.size(); ++split) {
        ASSERT_EQ(
            feed(stream, usualLimit, [&](std::size_t at) { return at < split ? split - at : stream.size(); }),
            whole)
            << "split at " << split;
    }
    for (const std::size_t piece : {1U, 2U, 3U, 5U, 7U, 100U}) {
        EXPECT_EQ(feed(stream, usualLimit, [&](std::size_t) { return piece; }), whole)
            << "pieces of " << piece;
    }
}

TEST(Framing, SizesThatCannotBeEndTheStream) {
    using enum PacketFraming::Fault;
    const std::pair<std::uint32_t, PacketFraming::Fault> cases[] = {
        {1, BadPacketSize},           {2, BadPacketSize},
        {3, BadPacketSize},           {0x80000000U, BadPacketSize},
        {0xFFFFFFFFU, BadPacketSize}, {41089, PacketTooLong},
        {0x7FFFFFFFU, PacketTooLong}, {41088, None},
    };
    for (const auto& [size, fault] : cases) {
        Bytes stream = packetOf(16);
        const auto* first = reinterpret_cast<const std::byte*>(&size);
        stream.insert(stream.end(), first, first + 4);
        EXPECT_EQ(feedWhole(stream), (Outcome{{packetOf(16)}, fault})) << size;
    }
    EXPECT_EQ(feedWhole(packetOf(usualLimit)), (Outcome{{packetOf(usualLimit)}, None}));
}

TEST(Framing, APacketBeyondTheLargestBufferIsDroppedAndTheNextArrives) {
    constexpr auto largest = static_cast<std::uint32_t>(PacketFraming::largestBuffer);
    Bytes stream;
    for (const std::uint32_t size : {24U, largest + 100, largest, 32U}) {
        append(stream, packetOf(size));
    }
    EXPECT_EQ(feed(stream, 4U << 20, [](std::size_t) { return 4000; }),
              (Outcome{{packetOf(24), packetOf(largest), packetOf(32)}, PacketFraming::Fault::None}));
}

TEST(Framing, TheBufferGrowsOnlyAsFarAsAPacketNeeds) {
    PacketFraming framing(usualLimit);
    EXPECT_EQ(framing.freeSpace().size(), 2048U);
    const Bytes head = packetOf(3000);
    std::copy_n(head.begin(), 2048, framing.freeSpace().begin());
    framing.advance(2048);
    std::span<const std::byte> packet;
    EXPECT_FALSE(framing.next(packet));
    EXPECT_EQ(framing.freeSpace().size(), 2048U) << "as much again";
}

} // namespace
} // namespace kst

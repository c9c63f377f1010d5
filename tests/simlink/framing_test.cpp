// The byte stream of the simulator cut into packets, whatever the reads look like.

#include "simlink/framing.h"

#include <algorithm>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

namespace kst {
namespace {

using Bytes = std::vector<std::byte>;

constexpr std::uint32_t usualLimit = 41088;

/// A packet of this size whose content depends on `seed`.
Bytes packetOf(std::uint32_t size, unsigned seed = 1) {
    Bytes packet(size);
    for (std::size_t i = 4; i < size; ++i) {
        packet[i] = static_cast<std::byte>(seed * 31 + i * 7);
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
    for (std::size_t position = 0; position < stream.size();) {
        std::size_t piece = std::min<std::size_t>(pieceLength(position), stream.size() - position);
        while (piece > 0 && framing.fault() == PacketFraming::Fault::None) {
            const std::span<std::byte> space = framing.freeSpace();
            const std::size_t count = std::min(space.size(), piece);
            std::copy_n(stream.begin() + static_cast<std::ptrdiff_t>(position), count, space.begin());
            framing.advance(count);
            position += count;
            piece -= count;
            std::span<const std::byte> packet;
            while (framing.next(packet)) {
                outcome.packets.emplace_back(packet.begin(), packet.end());
            }
        }
        if (framing.fault() != PacketFraming::Fault::None) {
            break;
        }
    }
    outcome.fault = framing.fault();
    return outcome;
}

Outcome feedWhole(const Bytes& stream, std::uint32_t limit = usualLimit) {
    return feed(stream, limit, [&](std::size_t) { return stream.size(); });
}

/// The naive twin: the same rules over the whole stream at once.
Outcome naive(const Bytes& stream, std::uint32_t limit) {
    Outcome outcome;
    for (std::size_t at = 0; at + 4 <= stream.size();) {
        std::int32_t size = 0;
        std::memcpy(&size, stream.data() + at, 4);
        if (size == 0) {
            while (at < stream.size() && stream[at] == std::byte{0}) {
                ++at;
            }
        } else if (size < 4) {
            outcome.fault = PacketFraming::Fault::BadPacketSize;
            break;
        } else if (static_cast<std::uint32_t>(size) > limit) {
            outcome.fault = PacketFraming::Fault::PacketTooLong;
            break;
        } else if (at + static_cast<std::size_t>(size) > stream.size()) {
            break;
        } else {
            const auto first = stream.begin() + static_cast<std::ptrdiff_t>(at);
            outcome.packets.emplace_back(first, first + size);
            at += static_cast<std::size_t>(size);
        }
    }
    return outcome;
}

TEST(Framing, EverySplitPointGivesTheSamePackets) {
    Bytes stream;
    for (const std::uint32_t size : {12U, 96U, 4U, 308U, 17U}) {
        append(stream, packetOf(size, size));
    }
    stream.insert(stream.end(), 7, std::byte{0}); // padding, longer than a size field
    append(stream, packetOf(24, 9));
    append(stream, packetOf(3000, 3)); // longer than the first buffer
    const Outcome whole = feedWhole(stream);
    ASSERT_EQ(whole.packets.size(), 7U);
    ASSERT_EQ(whole, naive(stream, usualLimit));
    for (std::size_t split = 1; split < stream.size(); ++split) {
        const Outcome outcome =
            feed(stream, usualLimit, [&](std::size_t at) { return at < split ? split - at : stream.size(); });
        ASSERT_EQ(outcome, whole) << "split at " << split;
    }
    EXPECT_EQ(feed(stream, usualLimit, [](std::size_t) { return 1; }), whole) << "byte by byte";
}

TEST(Framing, RandomStreamsAgreeWithTheNaiveTwin) {
    constexpr unsigned seed = 20240304;
    std::mt19937 random(seed);
    const auto below = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
    std::size_t packets = 0;
    std::size_t faults = 0;
    for (int round = 0; round < 400; ++round) {
        Bytes stream;
        for (std::uint32_t i = 0; i < 1 + below(20); ++i) {
            switch (below(12)) {
            case 0:
                stream.insert(stream.end(), 4 + below(9), std::byte{0});
                break;
            case 1:
                stream.insert(stream.end(), 4, static_cast<std::byte>(below(256)));
                break;
            default:
                append(stream, packetOf(4 + below(round % 7 == 0 ? 5000 : 200), below(1000)));
            }
        }
        const Outcome expected = naive(stream, 4096);
        const Outcome outcome =
            feed(stream, 4096, [&](std::size_t) { return std::size_t{1} + below(round % 3 == 0 ? 9 : 700); });
        ASSERT_EQ(outcome, expected) << "seed " << seed << ", round " << round;
        packets += outcome.packets.size();
        faults += outcome.fault != PacketFraming::Fault::None ? 1 : 0;
    }
    EXPECT_GT(packets, 1000U);
    EXPECT_GT(faults, 20U);
}

TEST(Framing, SizesThatCannotBeEndTheStream) {
    struct Case {
        std::uint32_t size;
        PacketFraming::Fault fault;
    };
    using enum PacketFraming::Fault;
    const Case cases[] = {
        {1, BadPacketSize},           {2, BadPacketSize},
        {3, BadPacketSize},           {0x80000000U, BadPacketSize},
        {0xFFFFFFFFU, BadPacketSize}, {41089, PacketTooLong},
        {0x7FFFFFFFU, PacketTooLong}, {41088, None},
    };
    for (const Case& c : cases) {
        Bytes stream = packetOf(16);
        const auto* size = reinterpret_cast<const std::byte*>(&c.size);
        stream.insert(stream.end(), size, size + 4);
        const Outcome outcome = feedWhole(stream);
        EXPECT_EQ(outcome.fault, c.fault) << c.size;
        EXPECT_EQ(outcome.packets.size(), 1U) << "the packet before is still delivered, " << c.size;
    }
}

TEST(Framing, TheLimitItselfIsStillReceived) {
    const Bytes largest = packetOf(usualLimit);
    EXPECT_EQ(feedWhole(largest), (Outcome{{largest}, PacketFraming::Fault::None}));
}

TEST(Framing, APacketBeyondTheLargestBufferIsDroppedAndTheNextArrives) {
    constexpr std::uint32_t raisedLimit = 4U << 20;
    Bytes stream = packetOf(24, 1);
    append(stream, packetOf(static_cast<std::uint32_t>(PacketFraming::largestBuffer) + 100, 2));
    append(stream, packetOf(static_cast<std::uint32_t>(PacketFraming::largestBuffer), 3));
    append(stream, packetOf(32, 4));
    const Outcome outcome = feed(stream, raisedLimit, [](std::size_t) { return 4000; });
    EXPECT_EQ(outcome.fault, PacketFraming::Fault::None);
    ASSERT_EQ(outcome.packets.size(), 3U);
    EXPECT_EQ(outcome.packets[0], packetOf(24, 1));
    EXPECT_EQ(outcome.packets[1], packetOf(static_cast<std::uint32_t>(PacketFraming::largestBuffer), 3));
    EXPECT_EQ(outcome.packets[2], packetOf(32, 4));
}

TEST(Framing, TheBufferGrowsOnlyAsFarAsAPacketNeeds) {
    PacketFraming framing(usualLimit);
    EXPECT_EQ(framing.freeSpace().size(), 2048U);
    const Bytes packet = packetOf(3000);
    std::size_t position = 0;
    std::span<const std::byte> received;
    while (!framing.next(received)) {
        const std::span<std::byte> space = framing.freeSpace();
        const std::size_t count = std::min(space.size(), packet.size() - position);
        ASSERT_GT(count, 0U);
        std::copy_n(packet.begin() + static_cast<std::ptrdiff_t>(position), count, space.begin());
        framing.advance(count);
        position += count;
    }
    EXPECT_EQ(received.size(), 3000U);
    EXPECT_EQ(framing.freeSpace().size(), 4096U);
}

} // namespace
} // namespace kst

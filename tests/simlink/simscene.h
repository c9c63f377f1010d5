#pragma once

// A simulator of one test's own making: what the program sends is kept packet by packet, what the simulator
// says is written by the test, byte by byte.

#include "core/exit.h"
#include "simlink/session.h"
#include "support/memorytransport.h"
#include "support/tempfolder.h"
#include "support/virtualtime.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace kst::test {

using Packet = std::vector<std::byte>;

/// A packet written out field by field, after these 32-bit ones.
class PacketFields {
public:
    PacketFields(std::initializer_list<std::uint32_t> first = {});
    PacketFields& u32(std::uint32_t value) { return raw(&value, sizeof value); }
    PacketFields& i64(std::int64_t value) { return raw(&value, sizeof value); }
    PacketFields& f32(float value) { return raw(&value, sizeof value); }
    PacketFields& f64(double value) { return raw(&value, sizeof value); }
    /// A text in a field of fixed length.
    PacketFields& text(std::string_view value, std::size_t field);
    PacketFields& raw(const void* data, std::size_t size);
    PacketFields& append(const PacketFields& more) { return raw(more.bytes_.data(), more.bytes_.size()); }
    /// Its size stands in the first field.
    Packet bytes() const;

private:
    Packet bytes_;
};

// Messages of the simulator that tests need again and again.
/// The head; what belongs to the kind follows.
PacketFields recvMessage(std::uint32_t id);
Packet openMessage(std::string_view name);
Packet eventMessage(std::uint32_t event, std::uint32_t data);
Packet fileMessage();
Packet quitMessage();
Packet addRemoveMessage(std::uint32_t event, std::uint32_t objectId, std::uint32_t type = 2);
Packet frameMessage(float rate);
Packet exceptionMessage(std::uint32_t exception, std::uint32_t sendId = 0, std::uint32_t index = 0);
/// The head of an answer with data; the data follow.
PacketFields dataMessage(std::uint32_t request, std::uint32_t objectId, std::uint32_t id = 8);
Packet scanMessage(std::uint32_t objectId, double heightAglFt, std::string_view atcId, bool onGround = true);
struct UserAnswer {
    double latitude = 47.458;
    double longitude = 8.548;
    double altitudeFt = 1400.0;
    std::int64_t zuluSeconds = 36000;
    std::int64_t zuluDay = 64;
    std::int64_t zuluYear = 2024;
    std::uint32_t objectId = 1;
};
Packet userMessage(const UserAnswer& answer = {});

std::uint32_t operationOf(const Packet& packet);
std::uint32_t fieldOf(const Packet& packet, std::size_t offset);
std::string textOf(const Packet& packet, std::size_t offset);
/// The doubles from there to the end.
std::vector<double> doublesOf(const Packet& packet, std::size_t offset);

using Texts = std::vector<std::string>;
using Fields = std::vector<std::vector<std::uint32_t>>;

/// One at a time: fresh folder, log and virtual time, parameters at their defaults, no session.
class SimScene {
public:
    SimScene();
    ~SimScene();
    SimScene(const SimScene&) = delete;
    SimScene& operator=(const SimScene&) = delete;

    TempFolder folder;
    VirtualTime time;
    std::vector<Packet> sent; ///< packets of the program since `open`
    MemoryConnection connection;
    int exitSeconds = -1; ///< of the exit that the program asked for

    /// Opens the session; the packets of its set-up are forgotten unless they are kept.
    void open(bool keepSetup = false);
    void say(const Packet& message);
    /// Says it and lets the program dispatch. What the pump returns.
    bool tell(const Packet& message);
    /// Packets of this operation since `open`.
    std::vector<Packet> sentOf(std::uint32_t operation) const;
    /// All packets since `open`: operation and at most so many 32-bit fields behind the head.
    Fields sentFields(std::size_t count = 2) const;
    std::string log() const;
    bool logged(std::string_view text) const { return log().find(text) != std::string::npos; }
    /// What waits for the worker, taken out: "Kind object id counter value1 value2".
    Texts answers() const;
};

} // namespace kst::test

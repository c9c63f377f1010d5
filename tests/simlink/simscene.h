#pragma once

// A simulator of one test's own making: what the program sends is kept packet by packet, what the simulator
// says is written by the test, byte by byte.

#include "core/exit.h"
#include "model/simobjects.h"
#include "simlink/session.h"
#include "support/memorytransport.h"
#include "support/tempfolder.h"
#include "support/virtualtime.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kst::test {

using Packet = std::vector<std::byte>;

/// One message of the simulator, field by field. Its size field is right unless the test cuts it.
class RecvMessage {
public:
    explicit RecvMessage(std::uint32_t id);
    RecvMessage& u32(std::uint32_t value) { return add(&value, sizeof value); }
    RecvMessage& i64(std::int64_t value) { return add(&value, sizeof value); }
    RecvMessage& f32(float value) { return add(&value, sizeof value); }
    RecvMessage& f64(double value) { return add(&value, sizeof value); }
    /// A text in a field of fixed length.
    RecvMessage& text(std::string_view value, std::size_t field);
    Packet bytes() const;

private:
    RecvMessage& add(const void* data, std::size_t size);
    Packet bytes_;
};

// The messages that tests need again and again.
Packet openMessage(std::string_view name, std::uint32_t major = 5);
Packet eventMessage(std::uint32_t event, std::uint32_t data);
Packet addRemoveMessage(std::uint32_t event, std::uint32_t objectId, std::uint32_t type = 2);
Packet frameMessage(float rate);
Packet exceptionMessage(std::uint32_t exception, std::uint32_t sendId = 0, std::uint32_t index = 0);
/// The head of an answer with data; the data follow.
RecvMessage dataMessage(std::uint32_t request, std::uint32_t objectId, std::uint32_t id = 8);
Packet scanMessage(std::uint32_t objectId, double heightAglFt, double groundFt, bool onGround,
                   std::string_view atcId);
struct UserAnswer {
    double latitude = 47.458;
    double longitude = 8.548;
    double altitudeFt = 1400.0;
    std::int64_t zuluSeconds = 36000;
    std::int64_t zuluDay = 64;
    std::int64_t zuluYear = 2024;
    std::uint32_t objectId = 1;
};
Packet userMessage(const UserAnswer& answer);

/// Operation number, and a 32-bit field, of a packet of the program.
std::uint32_t operationOf(const Packet& packet);
std::uint32_t fieldOf(const Packet& packet, std::size_t offset);
std::string textOf(const Packet& packet, std::size_t offset);

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
    /// Makes the user's position known, at the scene's airport.
    void knowUser();
    /// Packets of this operation since `open`.
    std::vector<Packet> sentOf(std::uint32_t operation) const;
    std::string log() const;
    bool logged(std::string_view text) const { return log().find(text) != std::string::npos; }
    /// What waits for the worker, taken out.
    std::vector<SimCommand> answers() const;
};

} // namespace kst::test

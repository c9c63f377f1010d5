#pragma once

// A client of the stand-in simulator, packet by packet, for its own tests.

#include "model/simconnect.h"
#include "standins/simulator/session.h"

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace kst::test {

/// One message that the client received, cut into its head and a reader of the rest.
struct Received {
    std::uint32_t id = 0;
    standin::Bytes bytes;

    /// What stands behind the head and as many further words.
    standin::PacketReader body(std::size_t wordsBefore = 0) const {
        return standin::PacketReader(standin::ByteView(bytes).subspan(12 + 4 * wordsBefore));
    }
    /// The first words behind the head.
    std::vector<std::uint32_t> words(std::size_t count) const {
        standin::PacketReader reader = body();
        std::vector<std::uint32_t> all(count);
        for (std::uint32_t& word : all)
            word = reader.u32();
        return all;
    }
};

class Client {
public:
    explicit Client(standin::World& world) : world_(world), session(world) {}

    /// Sends one packet and gives its send id. `body` is all behind the 16 bytes of the header.
    std::uint32_t send(std::uint32_t operation, standin::PacketWriter& body) {
        standin::PacketWriter packet;
        packet.u32(static_cast<std::uint32_t>(16 + body.data().size()))
            .u32(simconnect::protocolVersion)
            .u32(simconnect::operationMark + operation)
            .u32(++sendId_)
            .bytes(body.data());
        session.receive(packet.data());
        return sendId_;
    }
    std::uint32_t send(std::uint32_t operation, std::initializer_list<std::uint32_t> words) {
        standin::PacketWriter body;
        for (const std::uint32_t word : words)
            body.u32(word);
        return send(operation, body);
    }
    /// Number and text: event names, subscriptions.
    std::uint32_t send(std::uint32_t operation, std::uint32_t id, std::string_view name,
                       std::size_t length = 256) {
        standin::PacketWriter body;
        body.u32(id).text(name, length);
        return send(operation, body);
    }

    std::uint32_t open(std::string_view name = "Tester") {
        standin::PacketWriter body;
        body.text(name, 256).u32(0).u32(0x50334400).u32(5).u32(3).u32(0).u32(0);
        return send(simconnect::OpOpen, body);
    }
    std::uint32_t define(std::uint32_t definition, std::string_view name, std::string_view unit,
                         std::uint32_t type) {
        standin::PacketWriter body;
        body.u32(definition).text(name, 256).text(unit, 256).u32(type).f32(0.0F).u32(simconnect::unused);
        return send(simconnect::OpAddToDataDefinition, body);
    }
    std::uint32_t request(std::uint32_t request, std::uint32_t definition, std::uint32_t object,
                          std::uint32_t period) {
        return send(simconnect::OpRequestDataOnSimObject, {request, definition, object, period, 0, 0, 0, 0});
    }
    std::uint32_t create(std::string_view title, std::string_view tailNumber, const standin::Placement& place,
                         bool onGround = false) {
        standin::PacketWriter body;
        body.text(title, 256).text(tailNumber, 12);
        body.f64(place.lat).f64(place.lon).f64(place.altFt);
        body.f64(place.pitchRad / standin::radPerDeg)
            .f64(place.bankRad / standin::radPerDeg)
            .f64(place.headingRad / standin::radPerDeg);
        body.u32(onGround ? 1 : 0).u32(0).u32(simconnect::RequestCreate);
        return send(simconnect::OpAICreateNonATCAircraft, body);
    }
    /// Sets the fields of a definition, each as a double.
    std::uint32_t set(std::uint32_t definition, std::uint32_t object, std::initializer_list<double> values) {
        standin::PacketWriter body;
        body.u32(definition).u32(object).u32(0).u32(1).u32(static_cast<std::uint32_t>(values.size() * 8));
        for (const double value : values)
            body.f64(value);
        return send(simconnect::OpSetDataOnSimObject, body);
    }
    std::uint32_t transmit(std::uint32_t object, std::uint32_t event, std::uint32_t value) {
        return send(simconnect::OpTransmitClientEvent,
                    {object, event, value, simconnect::notificationGroup, 0});
    }

    /// All that has arrived since the last call.
    std::vector<Received> take() {
        std::vector<Received> all;
        for (standin::Bytes packet; session.take(packet);) {
            standin::PacketReader head(packet);
            const std::uint32_t size = head.u32();
            head.skip(4);
            const std::uint32_t id = head.u32();
            // A length that is not the packet's own would put the client's stream out of step.
            if (size == packet.size())
                all.push_back({id, packet});
        }
        return all;
    }
    /// All of that kind since the last call.
    std::vector<Received> takeAll(std::uint32_t id) {
        std::vector<Received> all = take();
        std::erase_if(all, [&](const Received& received) { return received.id != id; });
        return all;
    }
    /// The only message of that kind since the last call. Throws when there is none or more than one.
    Received takeOne(std::uint32_t id) {
        std::vector<Received> all = takeAll(id);
        if (all.size() != 1)
            throw std::runtime_error("not one message of the kind " + std::to_string(id));
        return all[0];
    }
    /// Number of the exception that answers the packet with that send id; 0 without one.
    std::uint32_t exceptionOf(std::uint32_t sendId) {
        for (const Received& received : takeAll(simconnect::RecvException)) {
            if (received.words(2)[1] == sendId)
                return received.words(1)[0];
        }
        return 0;
    }

    /// The object ids that a scan names.
    std::vector<std::uint32_t> scan(std::uint32_t radiusM, std::uint32_t type = simconnect::ObjectAircraft);
    /// All that the program declares when it has connected.
    void declareAll();
    /// Creates an aircraft and gives its object id.
    std::uint32_t created(std::string_view title, std::string_view tailNumber,
                          const standin::Placement& place, bool onGround = false);
    /// Releases and freezes an object, as the program does with each of its own.
    void freeze(std::uint32_t object);

private:
    standin::World& world_;
    std::uint32_t sendId_ = 0;

public:
    standin::Session session;
};

/// A world with one client that has declared all that the program declares.
class Declared : public ::testing::Test {
protected:
    Declared() { client.declareAll(); }

    standin::World world;
    Client client{world};
};

} // namespace kst::test

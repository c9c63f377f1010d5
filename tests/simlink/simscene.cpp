#include "simlink/simscene.h"

#include "core/display.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/reasoncounts.h"
#include "core/workerinbox.h"
#include "model/simconnect.h"
#include "simlink/objectcommands.h"

#include <algorithm>
#include <cstring>

#include <fmt/format.h>

namespace kst::test {

PacketFields::PacketFields(std::initializer_list<std::uint32_t> first) {
    raw(first.begin(), first.size() * sizeof(std::uint32_t));
}

PacketFields& PacketFields::text(std::string_view value, std::size_t field) {
    std::string padded(value);
    padded.resize(field, '\0');
    return raw(padded.data(), field);
}

PacketFields& PacketFields::raw(const void* data, std::size_t size) {
    const auto* first = static_cast<const std::byte*>(data);
    bytes_.insert(bytes_.end(), first, first + size);
    return *this;
}

Packet PacketFields::bytes() const {
    Packet whole = bytes_;
    const auto size = static_cast<std::uint32_t>(whole.size());
    std::memcpy(whole.data(), &size, sizeof size);
    return whole;
}

PacketFields recvMessage(std::uint32_t id) {
    return {0, 4, id};
}

Packet openMessage(std::string_view name) {
    constexpr std::uint32_t versions[10] = {5, 3, 17, 28160};
    return recvMessage(2).text(name, 256).raw(versions, sizeof versions).bytes();
}

Packet eventMessage(std::uint32_t event, std::uint32_t data) {
    return recvMessage(4).u32(0xFFFFFFFFU).u32(event).u32(data).bytes();
}

Packet fileMessage() {
    return recvMessage(6).u32(0xFFFFFFFFU).u32(206).u32(0).text("a.fxml", 260).u32(0).bytes();
}

Packet quitMessage() {
    return recvMessage(3).bytes();
}

Packet addRemoveMessage(std::uint32_t event, std::uint32_t objectId, std::uint32_t type) {
    return recvMessage(5).u32(0xFFFFFFFFU).u32(event).u32(objectId).u32(type).bytes();
}

Packet frameMessage(float rate) {
    return recvMessage(7).u32(0xFFFFFFFFU).u32(204).u32(0).f32(rate).f32(1.0F).bytes();
}

Packet exceptionMessage(std::uint32_t exception, std::uint32_t sendId, std::uint32_t index) {
    return recvMessage(1).u32(exception).u32(sendId).u32(index).bytes();
}

PacketFields dataMessage(std::uint32_t request, std::uint32_t objectId, std::uint32_t id) {
    return recvMessage(id).u32(request).u32(objectId).u32(0).u32(0).u32(1).u32(1).u32(1);
}

Packet scanMessage(std::uint32_t objectId, double heightAglFt, std::string_view atcId, bool onGround) {
    return dataMessage(101, objectId, 9)
        .f64(heightAglFt)
        .f64(1400.6)
        .i64(onGround ? 1 : 0)
        .text(atcId, 32)
        .bytes();
}

Packet userMessage(const UserAnswer& answer) {
    PacketFields message = dataMessage(109, answer.objectId);
    for (const double value :
         {answer.latitude, answer.longitude, 0.01, 0.02, 1.5, answer.altitudeFt, 12.0, 3.5}) {
        message.f64(value);
    }
    for (const std::int64_t value :
         {answer.zuluSeconds, answer.zuluDay, answer.zuluYear, std::int64_t{0x11}}) {
        message.i64(value);
    }
    return message.bytes();
}

std::uint32_t operationOf(const Packet& packet) {
    return fieldOf(packet, 8) - 0xF0000000U;
}

std::uint32_t fieldOf(const Packet& packet, std::size_t offset) {
    std::uint32_t value = 0;
    std::memcpy(&value, packet.data() + offset, sizeof value);
    return value;
}

std::string textOf(const Packet& packet, std::size_t offset) {
    return reinterpret_cast<const char*>(packet.data() + offset);
}

std::vector<double> doublesOf(const Packet& packet, std::size_t offset) {
    std::vector<double> values((packet.size() - offset) / sizeof(double));
    std::memcpy(values.data(), packet.data() + offset, values.size() * sizeof(double));
    return values;
}

SimScene::SimScene()
    : connection(
          [this](std::span<const std::byte> packet) { sent.emplace_back(packet.begin(), packet.end()); }) {
    resetRunState();
    exitRequested = false;
    exitReason = ExitReason::NotYetSet;
    for (Parameter* parameter : allParameters()) {
        parameter->setDefault();
    }
    resetDisplay();
    resetCounts();
    std::vector<WorkerRequest> forgotten;
    takeWorkerRequests(forgotten);
    resetSimSession();
    resetObjectCommands();
    lf_resetSimTables(5);
    setExitHandler([this](int seconds) { exitSeconds = seconds; });
    openLog();
}

SimScene::~SimScene() {
    resetSimSession();
    resetObjectCommands();
    closeLog();
    setExitHandler({});
    exitRequested = false;
    exitReason = ExitReason::NotYetSet;
    resetRunState();
}

void SimScene::open(bool keepSetup) {
    if (!lf_openSimSession()) {
        throw std::runtime_error("the session does not open");
    }
    if (!keepSetup) {
        sent.clear();
    }
}

void SimScene::say(const Packet& message) {
    connection.transport()->toProgram(message);
}

bool SimScene::tell(const Packet& message) {
    say(message);
    return lf_pumpSimMessages();
}

std::vector<Packet> SimScene::sentOf(std::uint32_t operation) const {
    std::vector<Packet> found;
    std::copy_if(sent.begin(), sent.end(), std::back_inserter(found),
                 [&](const Packet& packet) { return operationOf(packet) == operation; });
    return found;
}

Fields SimScene::sentFields(std::size_t count) const {
    Fields all;
    for (const Packet& packet : sent) {
        all.push_back({operationOf(packet)});
        for (std::size_t at = 16; at < std::min(packet.size(), 16 + 4 * count); at += 4) {
            all.back().push_back(fieldOf(packet, at));
        }
    }
    return all;
}

std::string SimScene::log() const {
    flushLog();
    return folder.read("Log.txt").value_or("");
}

Texts SimScene::answers() const {
    constexpr std::string_view kinds[] = {
        "LiveCreated", "StaticCreated", "Removed", "HeightReport", "Sizes", "", "CreationRefused"};
    std::vector<SimCommand> commands;
    takeSimCommands(commands);
    Texts texts;
    for (const SimCommand& c : commands) {
        texts.push_back(fmt::format("{} {} {} {} {} {}", kinds[static_cast<std::size_t>(c.kind)], c.objectId,
                                    c.id, c.counter, c.value1, c.value2));
    }
    return texts;
}

} // namespace kst::test

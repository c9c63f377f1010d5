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

namespace kst::test {

RecvMessage::RecvMessage(std::uint32_t id) {
    u32(0).u32(4).u32(id);
}

RecvMessage& RecvMessage::text(std::string_view value, std::size_t field) {
    std::string padded(value);
    padded.resize(field, '\0');
    return add(padded.data(), field);
}

Packet RecvMessage::bytes() const {
    Packet whole = bytes_;
    const auto size = static_cast<std::uint32_t>(whole.size());
    std::memcpy(whole.data(), &size, sizeof size);
    return whole;
}

RecvMessage& RecvMessage::add(const void* data, std::size_t size) {
    const auto* first = static_cast<const std::byte*>(data);
    bytes_.insert(bytes_.end(), first, first + size);
    return *this;
}

Packet openMessage(std::string_view name, std::uint32_t major) {
    RecvMessage message(2);
    message.text(name, 256).u32(major).u32(3).u32(17).u32(28160);
    for (int i = 0; i < 6; ++i) {
        message.u32(0);
    }
    return message.bytes();
}

Packet eventMessage(std::uint32_t event, std::uint32_t data) {
    return RecvMessage(4).u32(0xFFFFFFFFU).u32(event).u32(data).bytes();
}

Packet addRemoveMessage(std::uint32_t event, std::uint32_t objectId, std::uint32_t type) {
    return RecvMessage(5).u32(0xFFFFFFFFU).u32(event).u32(objectId).u32(type).bytes();
}

Packet frameMessage(float rate) {
    return RecvMessage(7).u32(0xFFFFFFFFU).u32(204).u32(0).f32(rate).f32(1.0F).bytes();
}

Packet exceptionMessage(std::uint32_t exception, std::uint32_t sendId, std::uint32_t index) {
    return RecvMessage(1).u32(exception).u32(sendId).u32(index).bytes();
}

RecvMessage dataMessage(std::uint32_t request, std::uint32_t objectId, std::uint32_t id) {
    RecvMessage message(id);
    message.u32(request).u32(objectId).u32(0).u32(0).u32(1).u32(1).u32(1);
    return message;
}

Packet scanMessage(std::uint32_t objectId, double heightAglFt, double groundFt, bool onGround,
                   std::string_view atcId) {
    return dataMessage(101, objectId, 9)
        .f64(heightAglFt)
        .f64(groundFt)
        .i64(onGround ? 1 : 0)
        .text(atcId, 32)
        .bytes();
}

Packet userMessage(const UserAnswer& answer) {
    return dataMessage(109, answer.objectId)
        .f64(answer.latitude)
        .f64(answer.longitude)
        .f64(0.01)
        .f64(0.02)
        .f64(1.5)
        .f64(answer.altitudeFt)
        .f64(12.0)
        .f64(3.5)
        .i64(answer.zuluSeconds)
        .i64(answer.zuluDay)
        .i64(answer.zuluYear)
        .i64(0x11)
        .bytes();
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

void SimScene::knowUser() {
    tell(userMessage({}));
}

std::vector<Packet> SimScene::sentOf(std::uint32_t operation) const {
    std::vector<Packet> found;
    std::copy_if(sent.begin(), sent.end(), std::back_inserter(found),
                 [&](const Packet& packet) { return operationOf(packet) == operation; });
    return found;
}

std::string SimScene::log() const {
    flushLog();
    return folder.read("Log.txt").value_or("");
}

std::vector<SimCommand> SimScene::answers() const {
    std::vector<SimCommand> commands;
    takeSimCommands(commands);
    return commands;
}

} // namespace kst::test

#include "simlink/transport.h"

#include <new>

namespace kst {

namespace {

std::atomic<int> transports{0};
std::atomic<std::uint32_t> sessionCounter{0};

std::uint32_t newSessionNumber() {
    std::uint32_t number = 0;
    while (number == 0) {
        number = ++sessionCounter;
    }
    return number;
}

/// False when the list may not or cannot grow.
bool append(PacketFifo& list, std::span<const std::byte> packet) {
    if (list.byteCount() + packet.size() > SimTransport::mostWaitingBytes) {
        return false;
    }
    try {
        list.push(packet);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

} // namespace

SimTransport::SimTransport(std::uint32_t maxReceiveSize) : framing_(maxReceiveSize) {
    ++transports;
}

SimTransport::~SimTransport() {
    --transports;
}

int SimTransport::count() {
    return transports.load();
}

void SimTransport::onConnected() {
    sessionNumber_ = newSessionNumber();
    framing_.reset();
    {
        const std::lock_guard lock(sendListLock_);
        sendList_.clear();
        sending_ = false;
    }
    dropReceived();
    error_ = simFailed;
    state_ = State::Running;
    startReceiving();
}

void SimTransport::disconnect(DisconnectCode code, std::uint32_t detail) {
    // The error stands before the state shows that there is one.
    State running = State::Running;
    if (code != DisconnectCode::Closed && state_.load() == State::Running) {
        error_ = static_cast<SimResult>(detail);
    }
    if (state_.compare_exchange_strong(running, State::Closed)) {
        closeStream();
    }
}

SimResult SimTransport::send(std::span<const std::byte> packet) {
    if (const SimResult error = storedError(); error != simOk) {
        return error;
    }
    bool begin = false;
    bool queued = false;
    {
        const std::lock_guard lock(sendListLock_);
        queued = append(sendList_, packet);
        begin = queued && !sending_;
        sending_ = sending_ || queued;
    }
    if (!queued) {
        disconnect(DisconnectCode::OutOfMemory, disconnectdetail::outOfMemory);
        return storedError();
    }
    if (begin) {
        startSending();
    }
    return simOk;
}

bool SimTransport::nextToSend(std::span<const std::byte>& packet) {
    if (writing_.pop(packet)) {
        return true;
    }
    writing_.clear();
    const std::lock_guard lock(sendListLock_);
    writing_.swap(sendList_);
    sending_ = writing_.pop(packet);
    return sending_;
}

bool SimTransport::takeReceived(PacketFifo& empty) {
    const std::lock_guard lock(receiveListLock_);
    receiveList_.swap(empty);
    return !empty.empty();
}

void SimTransport::dropReceived() {
    const std::lock_guard lock(receiveListLock_);
    receiveList_.clear();
}

SimResult SimTransport::storedError() const {
    return state_.load() == State::Running ? simOk : error_.load();
}

void SimTransport::deliver(std::span<const std::byte> packet) {
    bool queued = false;
    {
        const std::lock_guard lock(receiveListLock_);
        queued = append(receiveList_, packet);
    }
    if (!queued) {
        disconnect(DisconnectCode::OutOfMemory, disconnectdetail::outOfMemory);
    }
}

bool SimTransport::onReceived(std::size_t count) {
    framing_.advance(count);
    std::span<const std::byte> packet;
    while (state_.load() == State::Running && framing_.next(packet)) {
        deliver(packet);
    }
    if (framing_.fault() != PacketFraming::Fault::None) {
        const bool memory = framing_.fault() == PacketFraming::Fault::OutOfMemory;
        disconnect(static_cast<DisconnectCode>(framing_.fault()),
                   memory ? disconnectdetail::outOfMemory : disconnectdetail::aborted);
    }
    return state_.load() == State::Running;
}

} // namespace kst

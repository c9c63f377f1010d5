#include "support/memorytransport.h"

#include "simlink/simconnect.h"

#include <algorithm>
#include <utility>

namespace kst::test {

MemoryTransport::MemoryTransport(FromProgram fromProgram, std::uint32_t maxReceiveSize)
    : SimTransport(maxReceiveSize), fromProgram_(std::move(fromProgram)) {}

void MemoryTransport::toProgram(std::span<const std::byte> bytes) {
    while (!bytes.empty() && state() == State::Running) {
        const std::span<std::byte> space = framing_.freeSpace();
        const std::size_t count = std::min(space.size(), bytes.size());
        std::copy_n(bytes.begin(), count, space.begin());
        bytes = bytes.subspan(count);
        onReceived(count);
    }
}

void MemoryTransport::breakConnection() {
    disconnect(DisconnectCode::ConnectionGone, disconnectdetail::remoteDisconnect);
}

void MemoryTransport::startSending() {
    std::span<const std::byte> packet;
    while (nextToSend(packet)) {
        fromProgram_(packet);
    }
}

void MemoryTransport::closeStream() {
    if (closed_) {
        closed_();
    }
}

MemoryConnection::MemoryConnection(MemoryTransport::FromProgram fromProgram)
    : fromProgram_(std::move(fromProgram)) {
    setTransportForTest([this](const TransportTarget& target) {
        transport_ =
            refused_ ? nullptr : std::make_shared<MemoryTransport>(fromProgram_, target.maxReceiveSize);
        return transport_;
    });
}

MemoryConnection::~MemoryConnection() {
    setTransportForTest({});
}

} // namespace kst::test

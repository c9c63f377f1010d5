#pragma once

// A connection of the SimConnect client that lives in memory: what the program sends arrives at a function,
// what a simulator answers is handed in, all on the caller's thread.

#include "simlink/transport.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <utility>

namespace kst::test {

class MemoryTransport : public SimTransport {
public:
    /// Receives one whole packet of the program, valid during the call. It must not call the client.
    using FromProgram = std::function<void(std::span<const std::byte> packet)>;

    explicit MemoryTransport(FromProgram fromProgram, std::uint32_t maxReceiveSize = 41088);

    /// Bytes of the simulator, cut as one pleases. They are dispatched at the program's next pump.
    void toProgram(std::span<const std::byte> bytes);
    /// The connection breaks from the simulator's side.
    void breakConnection();
    /// Called once when the connection ends, from whichever side.
    void onClosed(std::function<void()> closed) { closed_ = std::move(closed); }

private:
    void startReceiving() override {}
    void startSending() override;
    void closeStream() override;

    FromProgram fromProgram_;
    std::function<void()> closed_;
};

/// Lets every connection that the program opens from now on be a MemoryTransport to `fromProgram`; gives the
/// one that it opened last. The destructor puts sockets and pipes back.
class MemoryConnection {
public:
    explicit MemoryConnection(MemoryTransport::FromProgram fromProgram);
    ~MemoryConnection();
    MemoryConnection(const MemoryConnection&) = delete;
    MemoryConnection& operator=(const MemoryConnection&) = delete;

    /// Null until the program has opened a connection.
    MemoryTransport* transport() const { return transport_.get(); }
    /// Another receiver, for connections opened from now on.
    void onPacket(MemoryTransport::FromProgram fromProgram) { fromProgram_ = std::move(fromProgram); }
    /// No simulator from now on: attempts to connect fail.
    void refuse(bool refused) { refused_ = refused; }

private:
    MemoryTransport::FromProgram fromProgram_;
    std::shared_ptr<MemoryTransport> transport_;
    bool refused_ = false;
};

} // namespace kst::test

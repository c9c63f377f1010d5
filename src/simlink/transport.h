#pragma once

// A connection to the simulator, whatever carries its bytes: packets out in order, packets in through the
// framing into the receive list. Derived classes move the bytes (streamtransport.cpp).

#include "simlink/framing.h"
#include "simlink/packetfifo.h"
#include "simlink/simresult.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>

namespace kst {

/// Shared by its owner and by each asynchronous operation under way, so a late completion finds it alive.
/// `send`, `takeReceived` and `disconnect` may be called on any thread.
class SimTransport : public std::enable_shared_from_this<SimTransport> {
public:
    enum class State { Closed, Running };
    /// A simulator that does not read, or a program that does not dispatch, may leave this many bytes
    /// waiting; beyond that the connection ends.
    static constexpr std::size_t mostWaitingBytes = std::size_t{64} << 20;

    explicit SimTransport(std::uint32_t maxReceiveSize);
    virtual ~SimTransport();
    SimTransport(const SimTransport&) = delete;
    SimTransport& operator=(const SimTransport&) = delete;

    /// The connection stands: takes a new session number, empties the lists and begins to receive.
    virtual void onConnected();
    /// Ends the connection, once; whoever comes first. With a code other than `Closed` the detail becomes the
    /// result of every further operation.
    virtual void disconnect(DisconnectCode code, std::uint32_t detail);

    /// Queues one packet behind those that wait. Returns the stored error after the end of the connection.
    SimResult send(std::span<const std::byte> packet);
    /// Exchanges the received packets for `empty`, which must be empty. False when there are none.
    bool takeReceived(PacketFifo& empty);
    void dropReceived();

    State state() const { return state_.load(); }
    /// `simOk` while the connection stands.
    SimResult storedError() const;
    /// Unlike any other connection's in this process, never 0.
    std::uint32_t sessionNumber() const { return sessionNumber_; }
    /// Connections of this process that exist in memory, operations under way included.
    static int count();

protected:
    /// Appends one whole packet to the receive list.
    virtual void deliver(std::span<const std::byte> packet);
    /// `count` bytes have arrived in `framing_.freeSpace()`: delivers every packet that is now whole, and
    /// disconnects on a fault. False when the connection no longer stands.
    bool onReceived(std::size_t count);
    /// The next packet to write, valid until the next call. False ends the sending; the next `send` begins it
    /// anew.
    bool nextToSend(std::span<const std::byte>& packet);

    /// Begins to receive. Called once.
    virtual void startReceiving() = 0;
    /// Begins to write what `nextToSend` gives. Called only while no write is under way, by `send`.
    virtual void startSending() = 0;
    /// Ends the stream. Called once.
    virtual void closeStream() = 0;

    PacketFraming framing_;

private:
    std::atomic<State> state_{State::Closed};
    std::atomic<SimResult> error_{simFailed};
    std::uint32_t sessionNumber_ = 0;

    std::mutex sendListLock_;
    PacketFifo sendList_;
    bool sending_ = false;
    PacketFifo writing_; ///< taken from the send list; belongs to the one writer

    std::mutex receiveListLock_;
    PacketFifo receiveList_;
};

} // namespace kst

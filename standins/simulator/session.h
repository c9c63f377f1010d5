#pragma once

// One client of the stand-in simulator. How to drive it stands in world.h.

#include "model/simconnect.h"
#include "standins/simulator/wire.h"
#include "standins/simulator/world.h"

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kst::standin {

class Session {
public:
    /// A client has connected. The world must outlive the session.
    explicit Session(World& world);
    /// The client is gone; the objects that it created leave the world.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Bytes from the client, cut anywhere. Packets are acted on in order. A length that cannot be a packet
    /// breaks the connection; any other mistake is answered with an exception.
    void receive(ByteView bytes);
    /// The next whole message for the client, if one is due.
    bool take(Bytes& packet);
    /// The simulator has closed the connection and everything due has been taken.
    bool closed() const { return closing_ && outgoing_.empty(); }
    /// The name that the client gave; empty before its Open packet.
    const std::string& clientName() const { return clientName_; }

    /// What went wrong with the client's packets so far.
    struct Complaint {
        std::uint32_t exception;
        std::uint32_t sendId;
        std::uint32_t index; ///< of the wrong argument, from 1
    };
    const std::vector<Complaint>& complaints() const { return complaints_; }
    /// Packets received so far by operation number.
    const std::map<std::uint32_t, std::uint64_t>& received() const { return received_; }

private:
    friend class World;

    using Definition = std::vector<DefinedField>;

    struct PeriodicRequest {
        std::uint32_t request = 0;
        std::uint32_t definition = 0;
        std::uint32_t object = 0;
        std::uint32_t period = 0;
        std::uint32_t flags = 0;
        std::uint32_t toSkip = 0; ///< periods until the next answer
        std::uint32_t interval = 0;
        std::uint32_t left = 0; ///< answers until it ends; 0 is without end
        Bytes last;             ///< data of the last answer
    };

    struct Outgoing {
        double dueAt;
        Bytes packet;
    };

    /// A packet at a time, its header read.
    struct Call {
        std::uint32_t operation = 0;
        std::uint32_t sendId = 0;
        PacketReader body;
    };
    struct Operation;
    static const Operation* findOperation(std::uint32_t number);

    // What the world tells.
    void tellEvent(std::string_view systemEvent, std::uint32_t data);
    void tellObject(std::string_view systemEvent, std::uint32_t object);
    void tellFile(std::string_view systemEvent, std::string_view file);
    void tellFrame(float rate);
    void tellQuit();
    void answerPeriod(std::uint32_t period);
    void forgetObject(std::uint32_t object);
    void breakOff();

    void handle(ByteView packet);
    void open(Call& call);
    void mapEvent(Call& call);
    void transmitEvent(Call& call);
    void addToGroup(Call& call);
    void setGroupPriority(Call& call);
    void addToDefinition(Call& call);
    void clearDefinition(Call& call);
    void requestData(Call& call);
    void requestByType(Call& call);
    void setData(Call& call);
    void subscribe(Call& call);
    void unsubscribe(Call& call);
    void createAircraft(Call& call);
    void releaseControl(Call& call);
    void removeObject(Call& call);
    void setFlightPlan(Call& call);

    void complain(const Call& call, std::uint32_t exception, std::uint32_t index = simconnect::unused);
    Aircraft* ownObject(const Call& call, std::uint32_t object);
    void send(std::uint32_t id, PacketWriter& body);
    Bytes valuesOf(const Definition& definition, const Aircraft& aircraft) const;
    void sendData(std::uint32_t message, const PeriodicRequest& request, const Aircraft& aircraft,
                  ByteView values, std::uint32_t entry, std::uint32_t outOf);
    bool answer(PeriodicRequest& request);
    const std::uint32_t* subscribed(std::string_view systemEvent) const;

    World& world_;
    Bytes pending_;
    std::deque<Outgoing> outgoing_;
    std::size_t outgoingBytes_ = 0;
    bool opened_ = false;
    bool closing_ = false;
    std::string clientName_;
    std::map<std::uint32_t, std::string> eventNames_;
    std::map<std::uint32_t, std::set<std::uint32_t>> groups_;
    std::map<std::uint32_t, Definition> definitions_;
    std::vector<PeriodicRequest> requests_;
    std::map<std::string, std::uint32_t, std::less<>> subscriptions_; ///< lower-case name to the client's id
    std::set<std::uint32_t> created_;
    std::vector<Complaint> complaints_;
    std::map<std::uint32_t, std::uint64_t> received_;
};

} // namespace kst::standin

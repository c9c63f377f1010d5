#pragma once

// The stand-in for the flight simulator: its world. A world holds the user's aircraft, the ground and the AI
// objects; each client has a Session (session.h) in it.
//
// Nothing here has a clock, a thread or a socket. The owner drives it, all from one thread:
//
//     World world;
//     world.placeUser(47.458, 8.548, 0.0, true);
//     Session session(world);          // a client connects
//     session.receive(bytes);          // what the client sent, in any pieces
//     world.frame(0.01);               // time passes, one picture is drawn: frame events
//     world.second();                  // a simulated second is full: SECOND requests are answered
//     for (Bytes packet; session.take(packet);)
//         ...                          // what the client is to receive, one whole message each
//     if (session.closed()) ...        // the simulator has closed the connection
//
// `frame` moves the world on by the seconds it is given (not while it is paused); call `second` once for each
// full second of them. The same calls give the same bytes each time. Destroying the Session is the client's
// disconnect: its objects leave the world.

#include "standins/simulator/aircraft.h"
#include "standins/simulator/terrain.h"
#include "standins/simulator/usermotion.h"
#include "standins/simulator/variables.h"

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kst::standin {

class Session;

struct WorldSettings {
    std::string applicationName = "Lockheed Martin(R) Prepar3D(R) v5";
    std::array<std::uint32_t, 4> applicationVersion{5, 3, 17, 28160};
    std::array<std::uint32_t, 4> simConnectVersion{5, 3, 0, 0};
    std::uint32_t userObjectId = 1; ///< AI objects get ids above it, from 3 on
    std::size_t objectLimit = 1000; ///< AI objects; one more is refused with exception 11
    bool framesWhilePaused = true;
    double historyIntervalSeconds = 1.0; ///< between points of an object's history; 0 is every frame
    std::size_t historyLimit = 7200;     ///< points kept per object, the latest ones
    std::size_t goneLimit = 2000;        ///< removed objects that are kept to be looked at
};

class World {
public:
    explicit World(WorldSettings settings = {});
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    // --- time, from outside ---

    /// Time passes: the user's aircraft and all that is not frozen move, and every client that asked for it
    /// gets a frame event with the rate 1 / seconds.
    void frame(double seconds);
    /// A second is full: periodic requests are answered, unless paused.
    void second();
    /// Simulated seconds since the world began; stands still while paused.
    double seconds() const { return seconds_; }
    /// Seconds since the world began, pauses included.
    double runSeconds() const { return runSeconds_; }
    /// Simulated time, seconds since 1970.
    void setUtc(double epochSeconds);
    double utc() const { return utcAtStart_ + seconds_; }
    const ZuluDate& date() const { return date_; }

    // --- the user ---

    /// Puts the user's aircraft somewhere without telling anybody.
    void placeUser(double lat, double lon, double altFt, bool onGround);
    /// Puts it there and sends "PositionChanged".
    void teleportUser(double lat, double lon, double altFt, bool onGround);
    /// The title also decides the sizes.
    void setUserAircraft(std::string title, std::string atcModel, std::string tailNumber = "N172SP");
    Aircraft& user() { return user_; }
    const Aircraft& user() const { return user_; }
    UserMotion& userMotion() { return userMotion_; }

    // --- the ground ---

    Terrain& terrain() { return terrain_; }
    const Terrain& terrain() const { return terrain_; }

    // --- what a user or a fault does to the simulator ---

    /// Simulated time stands: no SECOND answers. With `sendSimEvent` clients get "Sim" 0.
    void pause(bool sendSimEvent = true);
    void resume();
    bool paused() const { return paused_; }
    /// The flight stops or starts: "Sim" 0 or 1, and no SECOND answers in between.
    void setFlightRunning(bool running);
    bool flightRunning() const { return simState_; }
    /// Sends "FlightLoaded": with the file's name as the simulator does, or as a bare event.
    void loadFlight(std::string_view file, bool withName = true);
    /// The simulator closes: QUIT to every client, then the end of its connection.
    void quit();
    bool hasQuit() const { return quit_; }
    /// All connections break without a word.
    void dropConnections();
    /// The next creations fail with exception 22.
    void refuseNextCreations(unsigned count) { refusals_ = count; }
    unsigned refusalsLeft() const { return refusals_; }
    /// Titles that exist. Without any, each title that is not empty does.
    void setTitles(std::set<std::string> titles) { titles_ = std::move(titles); }
    void setObjectLimit(std::size_t limit) { settings_.objectLimit = limit; }
    /// What is sent from now on reaches the clients this much later (seconds of `frame`).
    void setAnswerDelay(double seconds) { answerDelay_ = seconds; }
    double answerDelay() const { return answerDelay_; }
    /// Takes an object away that the simulator itself lost; clients get "ObjectRemoved".
    bool loseObject(std::uint32_t id);
    /// An object of somebody else: traffic that no client asked for.
    std::uint32_t addForeignObject(std::string title, std::string tailNumber, const Placement& place);
    /// An object's sizes, in place of those that its title gives; for those created later.
    void setSizes(std::string title, StandingSizes sizes);

    // --- what there is to see ---

    /// AI objects by id.
    const std::map<std::uint32_t, Aircraft>& objects() const { return objects_; }
    /// An object, the user's aircraft (its id or 0), or null.
    const Aircraft* find(std::uint32_t id) const;
    /// The object with the tail number, the latest one; null without.
    const Aircraft* findTail(std::string_view tailNumber) const;
    /// Removed objects, oldest first.
    const std::deque<Aircraft>& gone() const { return gone_; }
    std::uint64_t created() const { return created_; }
    std::size_t clients() const { return sessions_.size(); }
    double frameRate() const { return frameRate_; }
    bool onGround(const Aircraft& aircraft) const { return standin::onGround(aircraft, terrain_); }
    const WorldSettings& settings() const { return settings_; }
    /// Is told each point that joins a history.
    std::function<void(const Aircraft&, const HistoryPoint&)> onHistory;

private:
    friend class Session;

    struct Creation {
        std::string title;
        std::string tailNumber;
        Placement place;
        bool onGround = false;
        double airspeedKt = 0.0;
    };
    /// Gives 0 and the exception's number when the simulator refuses.
    std::uint32_t create(Creation creation, std::uint32_t& exception);
    /// Says "ObjectAdded" to all.
    void announce(std::uint32_t id);
    bool remove(std::uint32_t id);
    Aircraft* findMutable(std::uint32_t id);
    void join(Session& session) { sessions_.push_back(&session); }
    void leave(Session& session);
    void recordHistory(Aircraft& aircraft);
    void measureSpeeds();
    void tellSim();

    WorldSettings settings_;
    Terrain terrain_;
    Aircraft user_;
    UserMotion userMotion_;
    std::map<std::uint32_t, Aircraft> objects_;
    std::deque<Aircraft> gone_;
    std::map<std::string, StandingSizes> sizes_;
    std::set<std::string> titles_;
    std::vector<Session*> sessions_;
    std::uint32_t nextId_;
    std::uint64_t created_ = 0;
    unsigned refusals_ = 0;
    bool paused_ = false;
    bool simState_ = true; ///< what "Sim" last told
    bool stoppedByPause_ = false;
    bool quit_ = false;
    double answerDelay_ = 0.0;
    double seconds_ = 0.0;
    double runSeconds_ = 0.0;
    double measuredAt_ = 0.0;
    double utcAtStart_ = 0.0;
    double frameRate_ = 0.0;
    ZuluDate date_;
};

} // namespace kst::standin

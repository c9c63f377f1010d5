#include "standins/simulator/world.h"

#include "standins/simulator/session.h"

#include <algorithm>
#include <utility>

namespace kst::standin {

namespace {

constexpr std::uint32_t firstObjectId = 3; ///< below it clients see no AI object
constexpr double smallestFrame = 1e-4;     ///< seconds; bounds the frame rate that is told

} // namespace

World::World(WorldSettings settings)
    : settings_(std::move(settings)), nextId_(std::max(settings_.userObjectId + 1, firstObjectId)) {
    user_.id = settings_.userObjectId;
    setUserAircraft("Mooney Bravo", "M20T");
    user_.lights = LightNav | LightBeacon;
    user_.engineRunning = true;
    setUtc(0.0);
    placeUser(0.0, 0.0, 0.0, true);
}

World::~World() = default;

void World::frame(double seconds) {
    runSeconds_ += seconds;
    frameRate_ = 1.0 / std::max(seconds, smallestFrame);
    if (!paused_ && simState_) {
        seconds_ += seconds;
        date_ = zuluDateOf(utc());
        userMotion_.advance(user_, terrain_, seconds);
        for (auto& [id, object] : objects_) {
            if (!object.frozen())
                moveUnfrozen(object, terrain_, seconds);
            recordHistory(object);
        }
        for (Session* session : sessions_) {
            session->answerPeriod(simconnect::PeriodVisualFrame);
            session->answerPeriod(simconnect::PeriodSimFrame);
        }
    } else if (!settings_.framesWhilePaused) {
        return;
    }
    for (Session* session : sessions_)
        session->tellFrame(static_cast<float>(frameRate_));
}

void World::second() {
    if (paused_ || !simState_)
        return;
    measureSpeeds();
    for (Session* session : sessions_)
        session->answerPeriod(simconnect::PeriodSecond);
}

void World::measureSpeeds() {
    const double elapsed = seconds_ - measuredAt_;
    if (elapsed <= 0.0)
        return;
    measuredAt_ = seconds_;
    for (auto& [id, object] : objects_) {
        const double metres = groundDistanceM(object.measuredFrom.lat, object.measuredFrom.lon,
                                              object.place.lat, object.place.lon);
        object.groundSpeedKt = metres / metresPerNm / elapsed * secondsPerHour;
        object.measuredFrom = object.place;
    }
}

void World::recordHistory(Aircraft& aircraft) {
    if (!aircraft.history.empty() &&
        seconds_ - aircraft.history.back().atSeconds < settings_.historyIntervalSeconds)
        return;
    aircraft.history.push_back({seconds_, aircraft.place, aboveGroundFt(aircraft, terrain_),
                                aircraft.airspeedKt, aircraft.vsFps, onGround(aircraft)});
    if (aircraft.history.size() > settings_.historyLimit)
        aircraft.history.pop_front();
    if (onHistory)
        onHistory(aircraft, aircraft.history.back());
}

void World::setUtc(double epochSeconds) {
    utcAtStart_ = epochSeconds - seconds_;
    date_ = zuluDateOf(utc());
}

void World::placeUser(double lat, double lon, double altFt, bool isOnGround) {
    user_.place.lat = lat;
    user_.place.lon = lon;
    user_.place.altFt = isOnGround ? terrain_.heightFt(lat, lon) + user_.sizes.cgToGroundFt : altFt;
    userMotion_.setOnGround(isOnGround);
}

void World::teleportUser(double lat, double lon, double altFt, bool isOnGround) {
    placeUser(lat, lon, altFt, isOnGround);
    for (Session* session : sessions_)
        session->tellEvent("positionchanged", 0);
}

void World::setUserAircraft(std::string title, std::string atcModel, std::string tailNumber) {
    user_.sizes = standingSizesOf(title);
    user_.title = std::move(title);
    user_.model = std::move(atcModel);
    user_.tailNumber = std::move(tailNumber);
}

void World::tellSim() {
    for (Session* session : sessions_)
        session->tellEvent("sim", simState_ ? 1 : 0);
}

void World::pause(bool sendSimEvent) {
    paused_ = true;
    if (sendSimEvent && simState_) {
        stoppedByPause_ = true;
        setFlightRunning(false);
    }
}

void World::resume() {
    paused_ = false;
    if (std::exchange(stoppedByPause_, false))
        setFlightRunning(true);
}

void World::setFlightRunning(bool running) {
    if (running == simState_)
        return;
    simState_ = running;
    tellSim();
}

void World::loadFlight(std::string_view file, bool withName) {
    for (Session* session : sessions_) {
        if (withName)
            session->tellFile("flightloaded", file);
        else
            session->tellEvent("flightloaded", 0);
    }
}

void World::quit() {
    quit_ = true;
    for (Session* session : sessions_)
        session->tellQuit();
}

void World::dropConnections() {
    for (Session* session : sessions_)
        session->breakOff();
}

bool World::loseObject(std::uint32_t id) {
    return remove(id);
}

std::uint32_t World::addForeignObject(std::string title, std::string tailNumber, const Placement& place) {
    std::uint32_t exception = 0;
    const std::uint32_t id = create({std::move(title), std::move(tailNumber), place, false, 0.0}, exception);
    if (id == 0)
        return 0;
    Aircraft& object = objects_.at(id);
    object.released = object.frozenPosition = object.frozenAltitude = object.frozenAttitude = true;
    announce(id);
    return id;
}

void World::setSizes(std::string title, StandingSizes sizes) {
    sizes_[std::move(title)] = sizes;
}

Aircraft* World::findMutable(std::uint32_t id) {
    if (id == simconnect::objectIdUser || id == user_.id)
        return &user_;
    const auto found = objects_.find(id);
    return found == objects_.end() ? nullptr : &found->second;
}

const Aircraft* World::find(std::uint32_t id) const {
    return const_cast<World*>(this)->findMutable(id);
}

const Aircraft* World::findTail(std::string_view tailNumber) const {
    const auto found = std::find_if(objects_.rbegin(), objects_.rend(),
                                    [&](const auto& entry) { return entry.second.tailNumber == tailNumber; });
    return found == objects_.rend() ? nullptr : &found->second;
}

std::uint32_t World::create(Creation creation, std::uint32_t& exception) {
    if (refusals_ > 0) {
        --refusals_;
        exception = simconnect::ExceptionCreateObjectFailed;
        return 0;
    }
    if (creation.title.empty() || (!titles_.empty() && !titles_.contains(creation.title))) {
        exception = simconnect::ExceptionCreateObjectFailed;
        return 0;
    }
    if (objects_.size() >= settings_.objectLimit) {
        exception = simconnect::ExceptionTooManyObjects;
        return 0;
    }
    const std::uint32_t id = nextId_++;
    Aircraft& object = objects_[id];
    object.id = id;
    const auto sizes = sizes_.find(creation.title);
    object.sizes = sizes == sizes_.end() ? standingSizesOf(creation.title) : sizes->second;
    object.title = std::move(creation.title);
    object.tailNumber = std::move(creation.tailNumber);
    object.place = creation.place;
    if (creation.onGround)
        object.place.altFt =
            terrain_.heightFt(object.place.lat, object.place.lon) + object.sizes.cgToGroundFt;
    object.airspeedKt = creation.airspeedKt;
    object.measuredFrom = object.place;
    object.createdAt = seconds_;
    ++created_;
    recordHistory(object);
    return id;
}

void World::announce(std::uint32_t id) {
    for (Session* session : sessions_)
        session->tellObject("objectadded", id);
}

bool World::remove(std::uint32_t id) {
    const auto found = objects_.find(id);
    if (found == objects_.end())
        return false;
    found->second.removedAt = seconds_;
    gone_.push_back(std::move(found->second));
    objects_.erase(found);
    if (gone_.size() > settings_.goneLimit)
        gone_.pop_front();
    for (Session* session : sessions_) {
        session->forgetObject(id);
        session->tellObject("objectremoved", id);
    }
    return true;
}

void World::leave(Session& session) {
    std::erase(sessions_, &session);
}

} // namespace kst::standin

#include "standins/simulator/radarjson.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kst::standin {

namespace {

using nlohmann::json;

constexpr double secondsPerMinute = 60.0;
constexpr std::size_t trailPoints = 60;
constexpr double trailSeconds = 300.0;

double rounded(double value, double perUnit) {
    return std::round(value * perUnit) / perUnit;
}

constexpr double placePerUnit = 1e6;
constexpr double tenths = 10.0;

json aircraftJson(const World& world, const Aircraft& aircraft) {
    const Placement& place = aircraft.place;
    return {{"id", aircraft.id},
            {"title", aircraft.title},
            {"tail", aircraft.tailNumber},
            {"lat", rounded(place.lat, placePerUnit)},
            {"lon", rounded(place.lon, placePerUnit)},
            {"alt", rounded(place.altFt, tenths)},
            {"agl", rounded(aboveGroundFt(aircraft, world.terrain()), tenths)},
            {"heading", rounded(place.headingRad / radPerDeg, tenths)},
            {"pitch", rounded(place.pitchRad / radPerDeg, tenths)},
            {"bank", rounded(place.bankRad / radPerDeg, tenths)},
            {"kt", rounded(aircraft.groundSpeedKt, tenths)},
            {"tas", rounded(aircraft.airspeedKt, tenths)},
            {"vs", std::round(aircraft.vsFps * secondsPerMinute)},
            {"ground", world.onGround(aircraft)},
            {"lights", aircraft.lights},
            {"gear", aircraft.gearDown},
            {"flaps", rounded(aircraft.flapsPercent, 1.0)},
            {"spoilers", rounded(aircraft.spoilersPercent, 1.0)},
            {"throttle", rounded(aircraft.throttlePercent[0], 1.0)},
            {"engine", aircraft.engineRunning},
            {"frozen", aircraft.frozen()},
            {"plan", !aircraft.flightPlan.empty()},
            {"age", std::round(world.seconds() - aircraft.createdAt)}};
}

/// Texts come from clients and need not be UTF-8.
std::string dumped(const json& document) {
    return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

const Aircraft* findEver(const World& world, std::uint32_t id) {
    if (const auto found = world.objects().find(id); found != world.objects().end())
        return &found->second;
    const auto gone = std::find_if(world.gone().begin(), world.gone().end(),
                                   [&](const Aircraft& aircraft) { return aircraft.id == id; });
    return gone == world.gone().end() ? nullptr : &*gone;
}

std::string teleport(World& world, const json& control) {
    const double lat = control.at("lat").get<double>();
    const double lon = control.at("lon").get<double>();
    if (std::abs(lat) > 90.0 || std::abs(lon) > 180.0)
        return "no place on earth";
    const double alt = control.value("alt", 0.0);
    const bool ground = control.value("onGround", false);
    if (control.value("silent", false))
        world.placeUser(lat, lon, alt, ground);
    else
        world.teleportUser(lat, lon, alt, ground);
    return {};
}

std::string fly(World& world, const json& control) {
    world.userMotion().setOnGround(control.value("onGround", world.userMotion().onGround()));
    world.userMotion().straight(control.value("kt", 0.0), control.value("vs", 0.0));
    if (control.contains("heading"))
        world.user().place.headingRad = wrapHeading(control.at("heading").get<double>() * radPerDeg);
    return {};
}

std::string carryOut(World& world, const json& control) {
    const std::string action = control.at("action").get<std::string>();
    if (action == "pause")
        world.pause(control.value("sim", true));
    else if (action == "resume")
        world.resume();
    else if (action == "quit")
        world.quit();
    else if (action == "drop")
        world.dropConnections();
    else if (action == "teleport")
        return teleport(world, control);
    else if (action == "fly")
        return fly(world, control);
    else if (action == "load-flight")
        world.loadFlight(control.value("file", "flight.fxml"));
    else if (action == "refuse-next")
        world.refuseNextCreations(control.value("count", 1U));
    else if (action == "limit")
        world.setObjectLimit(control.at("count").get<std::size_t>());
    else if (action == "delay")
        world.setAnswerDelay(std::clamp(control.at("seconds").get<double>(), 0.0, secondsPerMinute));
    else
        return fmt::format("unknown action \"{}\"", action);
    return {};
}

} // namespace

std::string stateJson(const World& world, const std::vector<std::string>& clientNames) {
    json objects = json::array();
    for (const auto& [id, object] : world.objects())
        objects.push_back(aircraftJson(world, object));
    json airports = json::array();
    for (const Terrain::Airport& airport : world.terrain().airports())
        airports.push_back({{"lat", airport.lat}, {"lon", airport.lon}, {"elevation", airport.elevationFt}});
    return dumped({{"seconds", rounded(world.seconds(), tenths)},
                   {"utc", std::floor(world.utc())},
                   {"paused", world.paused()},
                   {"running", world.flightRunning()},
                   {"frameRate", std::round(world.frameRate())},
                   {"clients", clientNames},
                   {"created", world.created()},
                   {"limit", world.settings().objectLimit},
                   {"user", aircraftJson(world, world.user())},
                   {"airports", airports},
                   {"objects", objects}});
}

std::string historyJson(const World& world, std::uint32_t id) {
    json points = json::array();
    if (const Aircraft* aircraft = findEver(world, id)) {
        for (const HistoryPoint& point : aircraft->history)
            points.push_back({rounded(point.atSeconds, 1000.0), rounded(point.place.lat, placePerUnit),
                              rounded(point.place.lon, placePerUnit), rounded(point.place.altFt, tenths),
                              rounded(point.aboveGroundFt, tenths),
                              rounded(point.place.headingRad / radPerDeg, tenths),
                              rounded(point.airspeedKt, tenths), point.onGround});
    }
    return dumped(points);
}

std::string trailsJson(const World& world) {
    json trails = json::object();
    for (const auto& [id, object] : world.objects()) {
        json points = json::array();
        double next = world.seconds() - trailSeconds;
        for (const HistoryPoint& point : object.history) {
            if (point.atSeconds < next)
                continue;
            next = point.atSeconds + trailSeconds / trailPoints;
            points.push_back({rounded(point.place.lat, placePerUnit), rounded(point.place.lon, placePerUnit),
                              std::round(point.place.altFt), point.onGround});
        }
        trails[std::to_string(id)] = std::move(points);
    }
    return dumped(trails);
}

std::string applyControl(World& world, std::string_view text) {
    try {
        return carryOut(world, json::parse(text));
    } catch (const json::exception& error) {
        return error.what();
    }
}

} // namespace kst::standin

#include "bench/realism/apronpage.h"

#include "tools/measureflights/measure.h"
#include "tools/measureflights/page.h"

namespace kst::bench {

namespace {

/// A recorded way is drawn as far as it is on the ground; one that never says so as a whole.
std::vector<tool::TrackPoint> groundPart(const std::vector<tool::TrackPoint>& line) {
    std::vector<tool::TrackPoint> part;
    for (const tool::TrackPoint& point : line) {
        if (point.onGround) {
            part.push_back(point);
        }
    }
    return part.empty() ? line : part;
}

} // namespace

std::string pageOf(const ApronScene& scene, const PlayedApron& played) {
    tool::Flights flights;
    for (const PlayedAircraft& aircraft : played.aircraft) {
        if (aircraft.samples.empty()) {
            continue;
        }
        flights.targets.push_back(
            {aircraft.hexid, aircraft.callsign, "", aircraft.type, groundPart(aircraft.line)});
        tool::ShownObject object{aircraft.hexid, aircraft.callsign, aircraft.type, {}};
        for (const ApronSample& sample : aircraft.samples) {
            object.points.push_back({sample.at, sample.position, 0.0, 0.0, true});
        }
        flights.objects.push_back(std::move(object));
    }
    std::vector<tool::DrawnStand> stands;
    for (const ParkPos& stand : played.stands) {
        stands.push_back({stand.id, stand.position(), stand.radius * metresPerNm, stand.heading});
    }
    ApronFigures figures;
    figures.add(scene, played);
    return tool::apronPageOf(tool::measure(flights), stands, scene.name, tableOf(figures));
}

} // namespace kst::bench

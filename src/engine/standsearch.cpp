// The stand that a live aircraft has reached, and the stand under the user.

#include "engine/standfit.h"
#include "engine/standselection.h"

#include "core/geodesy.h"
#include "parking/learning.h"
#include "parking/stands.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace kst {

namespace {

constexpr double wingToleranceNm = 1.8 * nmPerMetre;
constexpr double sureStandNm = 20.0 * nmPerMetre;
constexpr double nearStandNm = 55.0 * nmPerMetre;
constexpr double optionStandNm = 85.0 * nmPerMetre;
/// A stand that grows stays this much below the half span of the aircraft that was found on it.
constexpr double grownBelowSpanNm = 1.0 * nmPerMetre;
constexpr double fartherThanAny = 900.0;

/// The stand under the user, kept while the user stands still.
struct UserStand {
    std::optional<LatLon> position;
    std::string id;
};
UserStand userStand;

/// The degrees within which a stand can lie at all: that spares nearly all of them the trigonometry. Drawn a
/// little wide, so that no stand within range is lost.
class Reach {
public:
    Reach(LatLon centre, double rangeNm) : centre_(centre), latDeg_(rangeNm / leastNmPerDegree) {
        constexpr double nearPole = 0.01;
        const double narrowing = std::cos(centre.lat * radPerDeg);
        lonDeg_ = narrowing > nearPole ? latDeg_ / narrowing : fullCircleDeg;
    }

    bool contains(const ParkPos& stand) const {
        const double lonDeg = std::abs(stand.longitude - centre_.lon);
        return std::abs(stand.latitude - centre_.lat) <= latDeg_ &&
               std::min(lonDeg, fullCircleDeg - lonDeg) <= lonDeg_;
    }

private:
    static constexpr double leastNmPerDegree = 59.0;
    static constexpr double fullCircleDeg = 360.0;
    LatLon centre_;
    double latDeg_;
    double lonDeg_;
};

struct NearestStand {
    ParkPos* stand = nullptr;
    double distanceNm = fartherThanAny;

    void take(ParkPos& other, double otherNm) {
        stand = &other;
        distanceNm = otherNm;
    }
};

} // namespace

bool fitsStand(const LiveAc& ac, const ParkPos& stand) {
    return ac.halfSpanNm - stand.radius <= wingToleranceNm;
}

bool wasSeenOn(const ParkPos& stand, const LiveAc& ac) {
    const std::string_view callsign = withoutGhostMark(ac.callsign);
    return !callsign.empty() && std::ranges::any_of(stand.options, [&](const ParkOption& option) {
        return option.seq != 0 && option.real &&
               (option.cs == callsign || option.cs2 == callsign ||
                (option.airl == ac.airline && option.type == ac.acType));
    });
}

ParkPos* lf_searchStandNearby(LatLon position, const LiveAc& ac, double maxDistanceNm, bool useOptions) {
    NearestStand best;
    NearestStand seenBefore;
    const ParkPos* grown = nullptr;
    const Reach reach(position, useOptions ? std::max(maxDistanceNm, optionStandNm) : maxDistanceNm);
    for (ParkPos& stand : parkPositions()) {
        if (stand.liveParked || !reach.contains(stand)) {
            continue;
        }
        const double distanceNm = gf_distanceNm(position, stand.position());
        const bool fits = fitsStand(ac, stand);
        if (distanceNm <= maxDistanceNm && distanceNm < best.distanceNm) {
            if (fits || distanceNm <= sureStandNm) {
                best.take(stand, distanceNm);
                grown = fits ? grown : &stand;
            }
        } else if (useOptions && best.stand == nullptr && fits && distanceNm <= optionStandNm &&
                   distanceNm < seenBefore.distanceNm && wasSeenOn(stand, ac)) {
            seenBefore.take(stand, distanceNm);
        }
    }
    ParkPos* result = best.stand != nullptr ? best.stand : seenBefore.stand;
    if (result == nullptr || result->heli != (ac.category == Category::Rotorcraft)) {
        return nullptr;
    }
    if (result == grown) {
        result->radius = ac.halfSpanNm - grownBelowSpanNm;
        result->radius_change = true;
        noteStandChange();
    }
    return result;
}

const std::string& lf_userStand(LatLon position) {
    if (parkPositions().empty()) {
        forgetUserStand();
    } else if (userStand.position != position) {
        const Reach reach(position, nearStandNm);
        NearestStand nearest;
        for (ParkPos& stand : parkPositions()) {
            if (!reach.contains(stand)) {
                continue;
            }
            const double distanceNm = gf_distanceNm(position, stand.position());
            if (distanceNm <= nearStandNm && distanceNm < nearest.distanceNm) {
                nearest.take(stand, distanceNm);
            }
        }
        userStand.position = position;
        userStand.id = nearest.stand != nullptr ? nearest.stand->id : std::string();
    }
    return userStand.id;
}

void forgetUserStand() {
    userStand = {};
}

} // namespace kst

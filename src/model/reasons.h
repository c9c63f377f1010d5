#pragma once

// Why an aircraft is not there: one reason for each rule that drops a feed line, refuses a target or removes
// an aircraft. People ask about missing traffic above all, so every rule counts (core/reasoncounts.h) and
// every record keeps its last one.

#include <cstddef>

namespace kst {

enum class Reason : int {
    None,
    // The Traffic Reader drops the line.
    LineTooLong,
    LineRepeated,
    GroundVehicle,
    MalformedLine,
    NoRegistrationFromF,
    OutOfRange,
    CategoryNotAircraft,
    TypeUnusable,
    IdentityReserved,
    NoCallsignNoRegistration,
    BlockedCallsign,
    TooHighForAirportMode,
    GroundWithoutParkAirport,
    FeedClosed,
    FeedQueueFull,
    // The live tables ignore the record.
    TypeUnknown,
    CategorySwitchedOff,
    DuplicateIdentity,
    AircraftLeaving,
    RecordTooSoon,
    SpeedImplausible,
    PlaceImplausible,
    StraightTrackThinned,
    AltitudeGate,
    GhostOfPresentTarget,
    RespawnForIdentity,
    PositionRejected,
    // The buffer refuses the target or holds it back.
    FellSilentInBuffer,
    GhostReplaced,
    MixedGroundAndAir,
    HeldForUser,
    CreationQueueFull,
    FarthestAtLimit,
    BlockedByUser,
    InvalidCallsign,
    NoLivery,
    NoFreeStand,
    StandTaken,
    NeighbourStandTaken,
    // The simulator or the engine removes the aircraft.
    CreationRefused,
    TrackEnded,
    TooManyPoints,
    HoldingLeftBehind,
    HeldTooLong,
    TaxiNeighbourClose,
    LeftStandFar,
    StandTakenOnArrival,
    LiveLimit,
    ParkingLimit,
    ParkingRenewal,
    ParkingClosed,
    ConflictWithUser,
    ConflictWithLive,
    ConflictWithStatic,
    EmptyTrack,
    NoObjectId,
    RemovedBySimulator,
    FlushedByUser,
    LinkLost,
    RunEnded,
    Count
};

inline constexpr std::size_t reasonCount = static_cast<std::size_t>(Reason::Count);

} // namespace kst

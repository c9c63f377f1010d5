#pragma once

// Numbers of the published SimConnect interface, and the ids that this program chose for its session.
// The stand-in simulator uses them too; nothing here encodes or decodes.

#include <cstdint>

namespace kst::simconnect {

inline constexpr std::uint32_t protocolVersion = 35;
inline constexpr std::uint32_t operationMark = 0xF0000000U;
inline constexpr std::uint32_t objectIdUser = 0;
inline constexpr std::uint32_t unused = 0xFFFFFFFFU;

/// Operation numbers of packets to the simulator.
enum Operation : std::uint32_t {
    OpOpen = 0x01,
    OpMapClientEventToSimEvent = 0x04,
    OpTransmitClientEvent = 0x05,
    OpAddClientEventToNotificationGroup = 0x07,
    OpSetNotificationGroupPriority = 0x09,
    OpAddToDataDefinition = 0x0C,
    OpClearDataDefinition = 0x0D,
    OpRequestDataOnSimObject = 0x0E,
    OpRequestDataOnSimObjectType = 0x0F,
    OpSetDataOnSimObject = 0x10,
    OpSubscribeToSystemEvent = 0x17,
    OpUnsubscribeFromSystemEvent = 0x18,
    OpAICreateNonATCAircraft = 0x29,
    OpAIReleaseControl = 0x2B,
    OpAIRemoveObject = 0x2C,
    OpAISetAircraftFlightPlan = 0x2D
};

/// `dwID` of received messages.
enum RecvId : std::uint32_t {
    RecvException = 1,
    RecvOpen = 2,
    RecvQuit = 3,
    RecvEvent = 4,
    RecvEventObjectAddRemove = 5,
    RecvEventFilename = 6,
    RecvEventFrame = 7,
    RecvSimobjectData = 8,
    RecvSimobjectDataByType = 9,
    RecvAssignedObjectId = 12,
    RecvClientData = 16
};

enum DataType : std::uint32_t {
    TypeInt32 = 1,
    TypeInt64 = 2,
    TypeFloat32 = 3,
    TypeFloat64 = 4,
    TypeString8 = 5,
    TypeString32 = 6,
    TypeString64 = 7,
    TypeString128 = 8,
    TypeString256 = 9,
    TypeString260 = 10,
    TypeStringV = 11,
    TypeInitPosition = 12
};

enum Period : std::uint32_t {
    PeriodNever = 0,
    PeriodOnce = 1,
    PeriodVisualFrame = 2,
    PeriodSimFrame = 3,
    PeriodSecond = 4
};

enum SimObjectType : std::uint32_t {
    ObjectUser = 0,
    ObjectAll = 1,
    ObjectAircraft = 2,
    ObjectHelicopter = 3,
    ObjectBoat = 4,
    ObjectGround = 5
};

enum Exception : std::uint32_t {
    ExceptionNone = 0,
    ExceptionError = 1,
    ExceptionSizeMismatch = 2,
    ExceptionUnrecognizedId = 3,
    ExceptionUnopened = 4,
    ExceptionVersionMismatch = 5,
    ExceptionTooManyGroups = 6,
    ExceptionNameUnrecognized = 7,
    ExceptionTooManyObjects = 11,
    ExceptionTooManyRequests = 12,
    ExceptionInvalidDataType = 18,
    ExceptionInvalidDataSize = 19,
    ExceptionDataError = 20,
    ExceptionInvalidArray = 21,
    ExceptionCreateObjectFailed = 22,
    ExceptionLoadFlightplanFailed = 23,
    ExceptionOperationInvalidForObjectType = 24,
    ExceptionIllegalOperation = 25,
    ExceptionAlreadySubscribed = 26,
    ExceptionInvalidEnum = 27,
    ExceptionDefinitionError = 28,
    ExceptionDuplicateId = 29,
    ExceptionDatumId = 30,
    ExceptionOutOfBounds = 31
};

/// System events of the session.
enum SystemEvent : std::uint32_t {
    EventSim = 201,
    EventObjectAdded = 202,
    EventObjectRemoved = 203,
    EventFrame = 204,
    EventPositionChanged = 205,
    EventFlightLoaded = 206
};

/// Client events of the session.
enum ClientEvent : std::uint32_t {
    BeaconLightsSet = 207,
    NavLightsSet = 208,
    TaxiLightsSet = 209,
    StrobesSet = 210,
    LandingLightsSet = 211,
    CabinLightsSet = 212,
    LogoLightsSet = 213,
    AllLightsToggle = 214,
    FreezeLatitudeLongitudeSet = 215,
    FreezeAltitudeSet = 216,
    FreezeAttitudeSet = 217,
    FlapsSet = 218,
    SpoilersSet = 219,
    GearSet = 220,
    EngineAutoStart = 221,
    EngineAutoShutdown = 222,
    ThrottleSet = 223
};

enum Request : std::uint32_t {
    RequestAircraftScan = 101,
    RequestStaticCg = 102,
    RequestReleaseControl = 103,
    RequestCreate = 104,
    RequestRemove = 105,
    RequestUserTitle = 106,
    RequestUserModel = 107,
    RequestUserOnGround = 108,
    RequestUserPosition = 109,
    RequestFlightPlan = 110
};

enum Definition : std::uint32_t {
    DefinitionControls = 401,
    DefinitionPosition = 402,
    DefinitionUser = 403,
    DefinitionScan = 404,
    DefinitionSizes = 405,
    DefinitionTitle = 407,
    DefinitionModel = 408,
    DefinitionOnGround = 409
};

inline constexpr std::uint32_t notificationGroup = 301;

} // namespace kst::simconnect

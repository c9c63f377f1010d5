#pragma once

namespace kst::control {

// The controls' numbers in the window.
inline constexpr int none = 0;
inline constexpr int AllInstallPath = 32788;
inline constexpr int ScanLiveries = 32797;
inline constexpr int LigAutomatic = 32798;
inline constexpr int LigPrioritize = 32799;
inline constexpr int SuppressStub = 32801;
inline constexpr int Log = 32779;
inline constexpr int AlwaysOnTop = 32771;
inline constexpr int ScanAirports = 32802;
inline constexpr int AfgAutomatic = 32803;
inline constexpr int NavLightsWhileParked = 32778;
inline constexpr int LearnSoft = 32777;
inline constexpr int MatchingDepth = 32808;
inline constexpr int LightAircraft = 32809;
inline constexpr int Helicopters = 32810;
inline constexpr int HighPerfAircraft = 32811;
inline constexpr int Aerowinx = 32775;
inline constexpr int GuidChanges = 32773;
inline constexpr int LateralRange = 32818;
inline constexpr int AutoRange = 32819;
inline constexpr int AutoRangeAboveHeight = 32820;
inline constexpr int BlockCallsign = 32828;
inline constexpr int Unblock = 32829;
inline constexpr int CollisionUserGnd = 32834;
inline constexpr int CollisionUserAir = 32833;
inline constexpr int CollisionLiveParkedGnd = 32835;
inline constexpr int CustomMaxPark = 32865;
inline constexpr int MaxLive = 32821;
inline constexpr int StraightPbsOnly = 32856;
inline constexpr int Destination = 32840;
inline constexpr int AirportRange = 32841;
inline constexpr int AirportHeight = 32842;
inline constexpr int ReRead = 32838;
inline constexpr int ParkFake = 32852;
inline constexpr int Week = 32854;
inline constexpr int ParkSoft = 32851;
inline constexpr int ParkingPercentage = 32848;
inline constexpr int InitialLoadOnly = 32850;
inline constexpr int MaxFitFl = 32855;
inline constexpr int FlushStatic = 32858;

} // namespace kst::control

#include "core/run/startup.h"

#include "catalogue/reference.h"
#include "core/controlids.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "core/files.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/runstate.h"
#include "core/timeofweek.h"
#include "feed/realtrafficlink.h"
#include "install/services.h"
#include "platform/paths.h"
#include "scanner/airportdirectory.h"
#include "simlink/session.h"

#include <algorithm>

#include <fmt/format.h>

namespace kst {

namespace {

constexpr int startParkingPercentage = 30;
constexpr const char* noInstallPath =
    "No P3D install path detected, type full Install Path above, and press Enter";

bool anyFolderParameterSet() {
    const auto set = [](const TextParameter& parameter) { return !parameter.empty(); };
    return std::any_of(lfolder.begin(), lfolder.end(), set) ||
           std::any_of(afolder.begin(), afolder.end(), set);
}

void takeInstallPath(const std::string& path) {
    SIM_INSTALL_PATH.set(path);
    saveParameter(SIM_INSTALL_PATH);
    ALL_INSTALL_PATH.set(path);
    showParameter(ALL_INSTALL_PATH);
}

/// Asks the registry which simulator is installed and takes its path.
void lf_detectSimInstall() {
    const bool v5 = lf_simInstalled(5);
    const bool v6 = lf_simInstalled(6);
    if (v5 && v6) {
        throw UserErrorException(99, "More than one P3D version detected, type full Install Path to wanted "
                                     "version above and press Enter");
    }
    if (v5 || v6) {
        logLine(fmt::format("{}detected", v5 ? "P3Dv5" : "P3Dv6"));
        const std::string path = lf_simInstallPath(v5 ? 5 : 6);
        if (path.empty()) {
            blankParameter(ALL_INSTALL_PATH);
            throw UserErrorException(99, noInstallPath);
        }
        takeInstallPath(path);
        return;
    }
    showMessage("P3D not detected?", true);
    if (!anyFolderParameterSet()) {
        blankParameter(ALL_INSTALL_PATH);
        throw UserErrorException(99, noInstallPath);
    }
}

void setControlsForStart() {
    for (const int id :
         {control::CustomMaxPark, control::AutoRange, control::CollisionUserAir,
          control::CollisionLiveParkedGnd, control::GuidChanges, control::BlockCallsign, control::MaxLive}) {
        enableControl(id, true);
    }
    parking_percentage.set(startParkingPercentage);
    showParameter(parking_percentage);
    enableControl(control::LearnSoft, false);
    enableControl(control::LateralRange, !AUTO_RANGE);
    enableControl(control::AutoRangeAboveHeight, AUTO_RANGE);
    enableControl(control::Unblock, !BLOCK_CALLSIGN.empty());
}

void takeProgramPath() {
    std::error_code error;
    const auto folder = std::filesystem::current_path(error);
    if (error) {
        throw std::filesystem::filesystem_error("current_path()", error);
    }
    PROGRAM_INSTALL_PATH.set(platform::utf8FromPath(folder));
    saveParameter(PROGRAM_INSTALL_PATH);
}

void readReferenceOnce() {
    static bool read = false;
    if (!read) {
        // Set whatever the outcome: a second start in this process does not read again.
        read = true;
        gf_readDbase();
    }
}

void enableControlsForRun() {
    enableControl(control::LigPrioritize, true);
    enableControl(control::ParkingPercentage, false);
    blankParameter(parking_percentage);
    MAX_FIT_FL.set(static_cast<float>(MAX_FIT.get()) * 0.5F + 0.5F);
    enableControl(control::MaxFitFl, false);
    blankParameter(MAX_FIT_FL);
    enableControl(control::Destination, false);
    enableControl(control::FlushStatic, false);
    rememberedRangeNm = LATERAL_RANGE.get();
    for (const int id : {control::AllInstallPath,
                         control::ScanLiveries,
                         control::LigAutomatic,
                         control::SuppressStub,
                         control::Log,
                         control::AlwaysOnTop,
                         control::ScanAirports,
                         control::AfgAutomatic,
                         control::NavLightsWhileParked,
                         control::MatchingDepth,
                         control::LightAircraft,
                         control::Helicopters,
                         control::HighPerfAircraft,
                         control::Aerowinx,
                         control::CollisionUserGnd,
                         control::StraightPbsOnly,
                         control::AirportRange,
                         control::AirportHeight,
                         control::ReRead,
                         control::ParkFake,
                         control::Week,
                         control::ParkSoft,
                         control::InitialLoadOnly}) {
        enableControl(id, true);
    }
}

} // namespace

void lf_takeEnteredRange() {
    LATERAL_RANGE.set(LATERAL_RANGE.get());
    workingRangeNm = LATERAL_RANGE.get();
    requestRangeM = LATERAL_RANGE.get() * metresPerNm;
}

void lf_initialise() {
    readParameters();
    lf_migrateVersion();
    lf_takeEnteredRange();
    repaint(Band::Control);
    lf_createFolders();
    if (!restartPending) {
        gf_checkNewVersion();
    }
    setControlsForStart();
    takeProgramPath();
    stampNow();
    readReferenceOnce();
    ALL_INSTALL_PATH.set(SIM_INSTALL_PATH.get());
    showParameter(ALL_INSTALL_PATH);
    if (SIM_INSTALL_PATH.empty()) {
        // Whoever is asked for the path must be able to type it.
        enableControl(control::AllInstallPath, true);
        lf_detectSimInstall();
    }
    lf_detectRealTraffic();
    enableControlsForRun();
    lf_readAirports();
}

} // namespace kst

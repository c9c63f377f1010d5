#pragma once

// Where everything of the window stands: bands, lines, lamps, controls, labels and the places of the painted
// fields. Layout pixels of the client area, x to the right, y down. Tables only; painting.cpp draws them.

#include "core/controlids.h"
#include "core/display.h"
#include "platform/ui.h"

#include <array>
#include <string_view>

namespace kst::layout {

using platform::Colour;
using platform::ControlKind;
using platform::Rect;

inline constexpr int windowWidth = 880;
/// With the caption and the frame round it the window is 516 high.
inline constexpr int windowHeight = 476;

inline constexpr Colour black{0, 0, 0};
inline constexpr Colour white{255, 255, 255};
inline constexpr Colour lime{50, 205, 50};
inline constexpr Colour yellow{255, 255, 0};
inline constexpr Colour red{255, 0, 0};
inline constexpr Colour grey{160, 160, 160};
inline constexpr Colour lightBlue = platform::textBoxColour;

// Yellow letters on a light fill need a dark shadow to be readable.
inline constexpr Colour controlShadow{40, 60, 90};
inline constexpr Colour messageShadow{0, 70, 0};
inline constexpr Colour errorShadow{90, 0, 0};
inline constexpr int shadowOffset = 1;

/// A band as it lies in the window.
constexpr Rect bandArea(Band band) {
    switch (band) {
    case Band::Header:
        return {0, 0, windowWidth, 28};
    case Band::Status:
        return {0, 28, windowWidth, 112};
    case Band::Control:
        return {0, 112, windowWidth, 392};
    case Band::Park:
        return {0, 392, windowWidth, 448};
    case Band::Message:
        return {0, 448, windowWidth, windowHeight};
    }
    return {};
}

/// White lines over the whole width.
inline constexpr std::array<int, 4> whiteLines{28, 113, 392, 449};

/// Black lines of the control band, from the left edge to `right`.
struct ControlLine {
    int y;
    int right;
};
/// The vertical line that parts the last two columns from the rest.
inline constexpr int columnLineX = 642;
inline constexpr int columnLineTop = 140;
inline constexpr int columnLineBottom = 308;
inline constexpr auto controlLines = std::to_array<ControlLine>({{140, windowWidth},
                                                                 {168, columnLineX},
                                                                 {196, columnLineX},
                                                                 {224, columnLineX},
                                                                 {252, columnLineX},
                                                                 {280, columnLineX},
                                                                 {308, windowWidth}});

inline constexpr Rect simLamp{397, 30, 425, 112};
inline constexpr Rect realTrafficLamp{425, 30, 453, 112};
inline constexpr int lampLineTop = 29;

/// A share of the message band's lower edge, drawn while a scan or a download runs.
inline constexpr Rect progressBar{0, 473, windowWidth, windowHeight};

// --- controls ---

struct Control {
    int id;
    ControlKind kind;
    int x;
    int row; ///< y of its line
    int width = 0;
};

inline constexpr int checkBoxSize = 12;
inline constexpr int checkBoxInset = 2; ///< of the row
inline constexpr int textBoxHeight = 16;
inline constexpr int pushButtonHeight = 20;
inline constexpr int textBoxLimit = 511;      ///< UTF-16 code units that a text box takes
inline constexpr int installPathLimit = 2047; ///< the same of the install path

/// In the order of creation, which is the order in which the keyboard goes through them.
inline constexpr auto controls = std::to_array<Control>({
    {control::AllInstallPath, ControlKind::TextBox, 111, 119, 1200},
    {control::ScanLiveries, ControlKind::CheckBox, 5, 147},
    {control::LigAutomatic, ControlKind::CheckBox, 217, 147},
    {control::LigPrioritize, ControlKind::CheckBox, 430, 147},
    {control::SuppressStub, ControlKind::CheckBox, 536, 147},
    {control::Log, ControlKind::CheckBox, 652, 147},
    {control::AlwaysOnTop, ControlKind::CheckBox, 748, 147},
    {control::ScanAirports, ControlKind::CheckBox, 5, 175},
    {control::AfgAutomatic, ControlKind::CheckBox, 217, 175},
    {control::NavLightsWhileParked, ControlKind::CheckBox, 652, 175},
    {control::LearnSoft, ControlKind::CheckBox, 748, 175},
    {control::MatchingDepth, ControlKind::TextBox, 217, 203, 24},
    {control::LightAircraft, ControlKind::CheckBox, 323, 203},
    {control::Helicopters, ControlKind::CheckBox, 430, 203},
    {control::HighPerfAircraft, ControlKind::CheckBox, 536, 203},
    {control::Aerowinx, ControlKind::CheckBox, 652, 203},
    {control::GuidChanges, ControlKind::CheckBox, 748, 203},
    {control::LateralRange, ControlKind::TextBox, 217, 231, 34},
    {control::AutoRange, ControlKind::CheckBox, 323, 231},
    {control::AutoRangeAboveHeight, ControlKind::TextBox, 455, 231, 50},
    {control::BlockCallsign, ControlKind::TextBox, 217, 259, 100},
    {control::Unblock, ControlKind::PushButton, 323, 257, 70},
    {control::CollisionUserGnd, ControlKind::CheckBox, 217, 287},
    {control::CollisionUserAir, ControlKind::CheckBox, 323, 287},
    {control::CollisionLiveParkedGnd, ControlKind::CheckBox, 430, 287},
    {control::CustomMaxPark, ControlKind::TextBox, 353, 315, 34},
    {control::MaxLive, ControlKind::TextBox, 601, 315, 34},
    {control::StraightPbsOnly, ControlKind::CheckBox, 652, 315},
    {control::Destination, ControlKind::TextBox, 217, 343, 50},
    {control::AirportRange, ControlKind::TextBox, 353, 343, 34},
    {control::AirportHeight, ControlKind::TextBox, 566, 343, 50},
    {control::ReRead, ControlKind::PushButton, 758, 341, 90},
    {control::ParkFake, ControlKind::CheckBox, 5, 371},
    {control::Week, ControlKind::CheckBox, 71, 371},
    {control::ParkSoft, ControlKind::CheckBox, 151, 371},
    {control::ParkingPercentage, ControlKind::TextBox, 323, 371, 34},
    {control::InitialLoadOnly, ControlKind::CheckBox, 430, 371},
    {control::MaxFitFl, ControlKind::TextBox, 566, 371, 24},
    {control::FlushStatic, ControlKind::PushButton, 758, 369, 90},
});

/// The rectangle of a control, cut off at the window's edge.
constexpr Rect controlArea(const Control& control) {
    int top = control.row;
    int width = control.width;
    int height = textBoxHeight;
    switch (control.kind) {
    case ControlKind::CheckBox:
        top += checkBoxInset;
        width = height = checkBoxSize;
        break;
    case ControlKind::PushButton:
        height = pushButtonHeight;
        break;
    case ControlKind::TextBox:
        break;
    }
    const int right = control.x + width < windowWidth ? control.x + width : windowWidth;
    return {control.x, top, right, top + height};
}

/// Place in `controls`, or its size when no control has this number.
constexpr std::size_t controlIndex(int id) {
    std::size_t index = 0;
    while (index < controls.size() && controls[index].id != id) {
        ++index;
    }
    return index;
}

// --- labels ---

enum class LabelRule {
    Black,
    YellowWhileOn,  ///< black while the parameter is off
    YellowWhileOff, ///< black while the parameter is on
    GreyWhileOff,   ///< black while the parameter is on
    GreyDisabled,   ///< black while the control is enabled
    GreyAtDefault,  ///< yellow while the value differs from the default
    OfflineAirports,
    ParkingActive,
    NextRenewal
};

struct Label {
    std::string_view text; ///< with placeholders for the last three rules
    int x;
    int row;
    LabelRule rule = LabelRule::Black;
    int controlId = control::none; ///< whose state the rule asks for
};

inline constexpr auto labels = std::to_array<Label>({
    {"Install path:", 5, 119},
    {"Scan for liveries", 25, 147, LabelRule::YellowWhileOn, control::ScanLiveries},
    {"Automatic", 237, 147},
    {"Prioritize", 450, 147},
    {"Stub", 556, 147},
    {"Log", 672, 147},
    {"Stay on top", 768, 147, LabelRule::YellowWhileOn, control::AlwaysOnTop},
    {"Scan for addon airports", 25, 175, LabelRule::YellowWhileOn, control::ScanAirports},
    {"Automatic", 237, 175},
    {"{} airport{} in {} folder", 323, 175, LabelRule::OfflineAirports},
    {"Nav lights", 672, 175},
    {"Learn Soft", 768, 175},
    {"Max aircraft matching depth", 5, 203},
    {"Optional:", 253, 203},
    {"Light aircraft", 343, 203, LabelRule::GreyDisabled, control::LightAircraft},
    {"Helicopters", 450, 203, LabelRule::GreyDisabled, control::Helicopters},
    {"FighterJets", 556, 203, LabelRule::GreyDisabled, control::HighPerfAircraft},
    {"Aerowinx", 672, 203, LabelRule::YellowWhileOn, control::Aerowinx},
    {"GUID changes", 768, 203, LabelRule::YellowWhileOff, control::GuidChanges},
    {"Traffic injection", 5, 231},
    {"radius:", 167, 231},
    {"nm,  or", 260, 231},
    {"auto range", 343, 231},
    {"ah:", 430, 231, LabelRule::GreyWhileOff, control::AutoRange},
    {"ft", 510, 231, LabelRule::GreyWhileOff, control::AutoRange},
    {"Callsigns", 5, 259},
    {"block:", 172, 259},
    {"Collision avoidance", 5, 287},
    {"User ground", 237, 287},
    {"User air", 343, 287},
    {"Live X parked", 450, 287},
    {"Airport parking{}", 5, 315, LabelRule::ParkingActive},
    {"generic max park:", 217, 315, LabelRule::GreyAtDefault, control::CustomMaxPark},
    {"max live:", 536, 315, LabelRule::GreyAtDefault, control::MaxLive},
    {"Straight push backs only", 672, 315, LabelRule::GreyWhileOff, control::StraightPbsOnly},
    {"(next in {} min)", 5, 343, LabelRule::NextRenewal},
    {"destination:", 139, 343},
    {"range:", 303, 343},
    {"nm", 393, 343},
    {"height above gnd:", 440, 343},
    {"ft", 621, 343},
    {"Fake", 25, 371},
    {"Week", 91, 371},
    {"Soft", 171, 371},
    {"wanted: ", 264, 371},
    {"%", 363, 371},
    {"ILO", 450, 371, LabelRule::YellowWhileOn, control::InitialLoadOnly},
    {"Max fit:", 506, 371},
});

/// Minutes to the next renewal that the label tells.
inline constexpr unsigned fewestRenewalMinutes = 1;
inline constexpr unsigned mostRenewalMinutes = 19;

// --- painted fields ---

/// Where a painted text begins, and the x at which its room ends.
struct Field {
    int x;
    int y;
    int right;
};

inline constexpr int fieldGap = 4; ///< kept free in front of what follows

namespace field {
inline constexpr Field version{3, 7, 390 - fieldGap};
inline constexpr Field programName{390, 7, 632 - fieldGap};
inline constexpr Field copyright{632, 7, windowWidth - fieldGap};

inline constexpr Field simulator{5, 35, 397 - fieldGap};
inline constexpr Field userAircraft{5, 63, 397 - fieldGap};
inline constexpr Field liveries{5, 91, 141 - fieldGap};
inline constexpr Field simaddon{141, 91, 278 - fieldGap};
inline constexpr Field thirdparty{278, 91, 397 - fieldGap};
inline constexpr Field simLampLabel{398, 63, 425};
inline constexpr Field realTrafficLampLabel{430, 63, 453};
inline constexpr Field edition{458, 35, windowWidth - fieldGap};
inline constexpr Field weather{458, 63, 642 - fieldGap};
inline constexpr Field traffic{458, 91, 642 - fieldGap};
inline constexpr Field pressure{642, 63, windowWidth - fieldGap};
inline constexpr Field liveAircraft{642, 91, windowWidth - fieldGap};

inline constexpr Field airportCode{5, 399, 370 - fieldGap};
inline constexpr Field airportName{85, 399, 370 - fieldGap};
inline constexpr Field staticBusy{370, 399, 430 - fieldGap};
inline constexpr Field quality{430, 399, 571 - fieldGap};
inline constexpr Field reservedStand{571, 399, 748 - fieldGap};
inline constexpr Field updates{748, 399, windowWidth - fieldGap};
inline constexpr Field stands{5, 427, 111 - fieldGap};
inline constexpr Field parkedLive{111, 427, 249 - fieldGap};
inline constexpr Field liveFit{249, 427, 430 - fieldGap};
inline constexpr Field parkedStatic{430, 427, 571 - fieldGap};
inline constexpr Field staticFit{571, 427, 708 - fieldGap};
inline constexpr Field maxPark{708, 427, windowWidth - fieldGap};

inline constexpr Field message{3, 455, windowWidth - fieldGap};
} // namespace field

/// Where the room of a label ends: at the next label or control of its row, at the column line or at the
/// window's edge.
int labelRight(const Label& label);

} // namespace kst::layout

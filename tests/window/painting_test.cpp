#include "core/log.h"
#include "support/tempfolder.h"
#include "window/fieldtext.h"
#include "window/painting.h"
#include "window/recordingpainter.h"

#include <array>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

using layout::black;
using layout::grey;
using layout::lime;
using layout::red;
using layout::yellow;
using platform::Colour;
using platform::Rect;
using test::painted;
using test::PaintedText;
using test::RecordingPainter;
using test::runningView;
using test::startView;

constexpr int simLampX = 410;
constexpr int realTrafficLampX = 440;
constexpr int lampY = 100;
constexpr int messageY = 470;

struct ExpectedText {
    int x;
    int y;
    std::string words;
    Colour colour;
};

void expectTexts(const RecordingPainter& painter, const std::vector<ExpectedText>& expected) {
    for (const ExpectedText& each : expected) {
        const auto found = painter.textAt(each.x, each.y);
        ASSERT_TRUE(found) << each.words << " is missing at " << each.x << "," << each.y;
        EXPECT_EQ(found->text, each.words);
        EXPECT_EQ(found->colour, each.colour) << each.words;
    }
}

Colour colourOf(const RecordingPainter& painter, const std::string& words) {
    const auto found = painter.find(words);
    EXPECT_TRUE(found) << words;
    return found ? found->colour : Colour{};
}

TEST(Painting, TextsOfTheSimulatorDoNotOutliveItsSession) {
    WindowView view = runningView();
    view.status.simConnected = false;
    const RecordingPainter painter = painted(view);
    EXPECT_EQ(painter.wordsAt(5, 35), "");
    EXPECT_EQ(painter.wordsAt(5, 63), "");
    EXPECT_EQ(painter.wordsAt(5, 91), "# liveries: 48211");
}

TEST(Painting, SimLampTellsConnectedRunningAndAircraft) {
    struct Case {
        bool connected;
        bool running;
        const char* aircraft;
        Colour lamp;
    };
    for (const Case& each :
         {Case{false, false, "", red}, Case{false, true, "A320", red}, Case{true, false, "A320", yellow},
          Case{true, true, "", yellow}, Case{true, true, "A320", lime}}) {
        WindowView view = startView();
        view.status.simConnected = each.connected;
        view.status.simRunningShown = each.running;
        view.status.userAircraftText = each.aircraft;
        view.status.simText = "Prepar3D";
        const RecordingPainter painter = painted(view);
        EXPECT_EQ(painter.colourAt(simLampX, lampY), each.lamp) << each.connected << each.running;
        if (each.connected) {
            EXPECT_EQ(painter.textAt(5, 35)->colour, each.lamp);
        }
    }
}

TEST(Painting, UnknownWingSpanTurnsTheAircraftYellow) {
    WindowView view = runningView();
    view.status.wingSpanKnown = false;
    expectTexts(painted(view), {{5, 35, "Prepar3D v5 (5.4.9.28482), user stand B 35", lime},
                                {5, 63, "A320 Swiss HB-JLT", yellow}});
}

TEST(Painting, RealTrafficLampTellsDarkGoneSilentAndFlowing) {
    struct Case {
        bool dark;
        bool connected;
        int traffic;
        Colour lamp;
    };
    for (const Case& each :
         {Case{true, false, 3, black}, Case{true, true, 1, black}, Case{false, false, 1, red},
          Case{false, true, 3, yellow}, Case{false, true, 2, yellow}, Case{false, true, 1, lime}}) {
        WindowView view = startView();
        view.status.rtLampDark = each.dark;
        view.status.rtConnected = each.connected;
        view.status.trafficStatus = each.traffic;
        EXPECT_EQ(painted(view).colourAt(realTrafficLampX, lampY), each.lamp)
            << each.dark << each.connected << each.traffic;
    }
}

TEST(Painting, ReadersThatDoNotRunLeaveTheirFieldsEmpty) {
    WindowView view = runningView();
    view.status.weatherStatus = 3;
    view.status.trafficStatus = 2;
    const RecordingPainter painter = painted(view);
    EXPECT_EQ(painter.wordsAt(458, 63), "");
    EXPECT_EQ(painter.wordsAt(642, 63), "");
    expectTexts(painter, {{458, 91, "Traffic", yellow}, {642, 91, "live:  43", lime}});
}

TEST(Painting, RealTrafficGoneTakesItsTextsAlong) {
    WindowView view = runningView();
    view.status.rtConnected = false;
    const RecordingPainter painter = painted(view);
    for (const auto& [x, y] : {std::pair(458, 35), {458, 63}, {458, 91}, {642, 63}, {642, 91}}) {
        EXPECT_EQ(painter.wordsAt(x, y), "");
    }
}

TEST(Painting, PressureThatIsNotKnownIsBlank) {
    WindowView view = runningView();
    view.status.qnhShown = 0;
    EXPECT_EQ(painted(view).wordsAt(642, 63), "qnh:");
    view.status.qnhShown = 1013;
    EXPECT_EQ(painted(view).wordsAt(642, 63), "qnh: 1013");
}

TEST(Painting, NameOfTheAirportStandsInItsPlaceBehindAShortCode) {
    WindowView view = runningView();
    view.status.headStand.clear();
    view.status.handmadeShown = false;
    expectTexts(painted(view), {{5, 399, "LSZH", lime}, {85, 399, " Zurich, OpenStreetMap, wk=12", lime}});
}

TEST(Painting, FailedAirportFileShowsItsCodeAlone) {
    WindowView view = runningView();
    view.status.parkFileOk = false;
    int textsInBand = 0;
    const RecordingPainter painter = painted(view);
    for (const PaintedText& text : painter.texts()) {
        textsInBand += test::overlap(text.area(), layout::bandArea(Band::Park)) ? 1 : 0;
    }
    EXPECT_EQ(textsInBand, 1);
    expectTexts(painter, {{5, 399, "LSZH (B 35)", yellow}});
}

TEST(Painting, StaticFieldsFollowTheMaximumTheWeekAndTheFit) {
    WindowView view = runningView();
    view.status.maxParkShown = 0;
    RecordingPainter painter = painted(view);
    EXPECT_EQ(painter.wordsAt(430, 427), "");
    EXPECT_EQ(painter.wordsAt(571, 427), "");
    EXPECT_EQ(painter.wordsAt(708, 427), "no max park live");

    view = runningView();
    view.control(control::Week).on = true;
    view.status.liveFitShown = -1.0F;
    painter = painted(view);
    EXPECT_EQ(painter.wordsAt(571, 427), "");
    EXPECT_EQ(painter.wordsAt(249, 427), "");
    EXPECT_EQ(painter.wordsAt(430, 427), "parked static:  31");

    view = runningView();
    view.status.reservedStandOk = false;
    EXPECT_EQ(colourOf(painted(view), "reserved stand: B 35"), red);
    view.status.reservedStand.clear();
    EXPECT_EQ(painted(view).wordsAt(571, 399), "");
}

TEST(Painting, RenewalIsAnnouncedInItsLastNineteenMinutesOnly) {
    struct Case {
        unsigned minutes;
        bool airport;
        bool running;
        bool once;
        const char* words;
    };
    for (const Case& each : {Case{0, true, false, false, ""}, Case{1, true, false, false, "(next in 1 min)"},
                             Case{19, true, false, false, "(next in 19 min)"},
                             Case{20, true, false, false, ""}, Case{12, false, false, false, ""},
                             Case{12, true, true, false, ""}, Case{12, true, false, true, ""}}) {
        WindowView view = runningView();
        view.status.nextRenewalMinutes = each.minutes;
        view.parkingRunning = each.running;
        view.control(control::InitialLoadOnly).on = each.once;
        if (!each.airport) {
            view.status.airportCode.clear();
        }
        EXPECT_EQ(painted(view).wordsAt(5, 343), each.words) << each.minutes;
    }
}

TEST(Painting, ErrorHidesTheMessageOnRed) {
    WindowView view = runningView();
    view.line.message = "Waiting";
    RecordingPainter painter = painted(view);
    EXPECT_EQ(painter.colourAt(400, messageY), lime);
    expectTexts(painter, {{3, 455, "Waiting", yellow}});

    view.line.error = "No P3D install path detected";
    painter = painted(view);
    EXPECT_EQ(painter.colourAt(400, messageY), red);
    expectTexts(painter, {{3, 455, "No P3D install path detected", yellow}});
    EXPECT_FALSE(painter.find("Waiting"));
}

TEST(Painting, ProgressStandsAtTheLowerEdge) {
    constexpr int barY = 475;
    WindowView view = startView();
    EXPECT_EQ(painted(view).colourAt(0, barY), lime);
    view.status.progress = {0.0, 0.25};
    EXPECT_EQ(painted(view).colourAt(0, barY), black);
    EXPECT_EQ(painted(view).colourAt(219, barY), black);
    EXPECT_EQ(painted(view).colourAt(220, barY), lime);
    EXPECT_EQ(painted(view).colourAt(219, 472), lime);
    view.status.progress = {0.875, 1.0};
    EXPECT_EQ(painted(view).colourAt(769, barY), lime);
    EXPECT_EQ(painted(view).colourAt(770, barY), black);
    EXPECT_EQ(painted(view).colourAt(879, barY), black);
    EXPECT_TRUE(painted(view).staysWithin({0, 0, layout::windowWidth, layout::windowHeight}));
}

TEST(Painting, LabelsFollowTheirParameters) {
    struct Case {
        const char* label;
        int id;
        Colour off;
        Colour on;
    };
    for (const Case& each :
         {Case{"Scan for liveries", control::ScanLiveries, black, yellow},
          Case{"Stay on top", control::AlwaysOnTop, black, yellow},
          Case{"Scan for addon airports", control::ScanAirports, black, yellow},
          Case{"Aerowinx", control::Aerowinx, black, yellow},
          Case{"GUID changes", control::GuidChanges, yellow, black},
          Case{"ILO", control::InitialLoadOnly, black, yellow}, Case{"ah:", control::AutoRange, grey, black},
          Case{"Straight push backs only", control::StraightPbsOnly, grey, black},
          Case{"Nav lights", control::NavLightsWhileParked, black, black}}) {
        WindowView view = startView();
        EXPECT_EQ(colourOf(painted(view), each.label), each.off) << each.label;
        view.control(each.id).on = true;
        EXPECT_EQ(colourOf(painted(view), each.label), each.on) << each.label;
    }
}

TEST(Painting, LabelsFollowTheirControls) {
    for (const auto& [label, id] : {std::pair("Light aircraft", control::LightAircraft),
                                    {"Helicopters", control::Helicopters},
                                    {"FighterJets", control::HighPerfAircraft}}) {
        WindowView view = startView();
        EXPECT_EQ(colourOf(painted(view), label), black);
        view.control(id).enabled = false;
        EXPECT_EQ(colourOf(painted(view), label), grey);
    }
    for (const auto& [label, id] :
         {std::pair("generic max park:", control::CustomMaxPark), {"max live:", control::MaxLive}}) {
        WindowView view = startView();
        EXPECT_EQ(colourOf(painted(view), label), grey);
        view.control(id).atDefault = false;
        EXPECT_EQ(colourOf(painted(view), label), yellow);
    }
}

TEST(Painting, AirportsCopiedForOffLineLearning) {
    WindowView view = startView();
    view.status.offlineFolder = "TBLO";
    EXPECT_EQ(painted(view).wordsAt(323, 175), "");
    view.status.offlineAirports = 1;
    expectTexts(painted(view), {{323, 175, "1 airport in TBLO folder", yellow}});
    view.status.offlineAirports = 12;
    expectTexts(painted(view), {{323, 175, "12 airports in TBLO folder", yellow}});
}

TEST(Painting, IncompleteAddonScanIsYellow) {
    WindowView view = runningView();
    view.status.simaddonComplete = false;
    expectTexts(painted(view), {{141, 91, "# simaddon: 212", yellow}});
}

TEST(Painting, OnlyTheBandThatChangedIsPainted) {
    WindowView view = runningView();
    view.line.message = "Waiting";
    view.status.progress = {0.0, 0.5};
    for (const Band band : {Band::Header, Band::Status, Band::Control, Band::Park, Band::Message}) {
        RecordingPainter painter;
        paintWindow(painter, view, layout::bandArea(band));
        EXPECT_TRUE(painter.staysWithin(layout::bandArea(band))) << static_cast<int>(band);
        EXPECT_FALSE(painter.texts().empty()) << static_cast<int>(band);
    }
}

// --- texts of any kind ---

constexpr std::array finenesses{96, 120, 144, 192}; ///< dots per inch: 100 % to 200 %

bool liesInOneBand(const Rect& area) {
    for (const Band band : {Band::Header, Band::Status, Band::Control, Band::Park, Band::Message}) {
        const Rect place = layout::bandArea(band);
        if (area.top >= place.top && area.bottom <= place.bottom) {
            return area.left >= place.left && area.right <= place.right;
        }
    }
    return false;
}

/// Every painted text against its band, every other text, the controls, the lamps and the vertical line.
void expectNothingOverlaps(const RecordingPainter& painter) {
    const std::vector<PaintedText>& texts = painter.texts();
    for (std::size_t one = 0; one < texts.size(); ++one) {
        const Rect area = texts[one].area();
        EXPECT_TRUE(liesInOneBand(area)) << texts[one].text;
        EXPECT_FALSE(test::overlap(area, {layout::columnLineX, layout::columnLineTop, layout::columnLineX + 1,
                                          layout::columnLineBottom}))
            << texts[one].text;
        for (std::size_t other = one + 1; other < texts.size(); ++other) {
            EXPECT_FALSE(test::overlap(area, texts[other].area()))
                << texts[one].text << " runs into " << texts[other].text;
        }
        for (const layout::Control& control : layout::controls) {
            EXPECT_FALSE(test::overlap(area, layout::controlArea(control)))
                << texts[one].text << " runs into control " << control.id;
        }
        if (texts[one].text != "Sim" && texts[one].text != "RT") {
            EXPECT_FALSE(test::overlap(area, layout::simLamp)) << texts[one].text;
            EXPECT_FALSE(test::overlap(area, layout::realTrafficLamp)) << texts[one].text;
        }
    }
}

void expectNothingOverlaps(const WindowView& view) {
    for (const int dotsPerInch : finenesses) {
        SCOPED_TRACE(dotsPerInch);
        expectNothingOverlaps(painted(view, dotsPerInch));
    }
}

/// The largest numbers and longest words that really occur.
WindowView widestView() {
    WindowView view = runningView();
    StatusValues& status = view.status;
    status.simText = "Prepar3D v6 (6.1.11.28482)";
    status.userAircraftText = std::string(48, 'W');
    status.userStandText = "GATE HEAVY 888";
    status.liveryCount = 888888;
    status.simaddonCount = 8888;
    status.thirdpCount = 8888;
    status.rtEditionText = "RT10 edition: Professional";
    status.qnhShown = 1088;
    status.liveShown = 888;
    status.airportCode = "WWWW";
    status.headStand = "GATE HEAVY 888";
    status.reservedStand = "GATE HEAVY 888";
    status.airportName = "Washington Dulles International";
    status.publisherText = "OpenStreetMap contributors";
    status.trafficWeek = 52;
    status.qualityText = "44/44";
    status.updatesShown = 8888;
    status.standsShown = 888;
    status.parkedLiveShown = 888;
    status.parkedStaticShown = 888;
    status.liveFitShown = 23.5F;
    status.staticFitShown = 23.5F;
    status.maxParkShown = 500;
    status.maxParkPercentShown = 100;
    status.staticBusyShown = true;
    status.offlineAirports = 888;
    status.offlineFolder = "TBLO";
    status.nextRenewalMinutes = 19;
    view.line.message = std::string(200, 'm');
    return view;
}

TEST(Painting, WidestContentKeepsItsDistance) {
    expectNothingOverlaps(widestView());
    WindowView active = widestView();
    active.parkingRunning = true;
    expectNothingOverlaps(active);
}

TEST(Painting, WidestCountsAreShownInFull) {
    for (const int dotsPerInch : finenesses) {
        const RecordingPainter painter = painted(widestView(), dotsPerInch);
        for (const PaintedText& text : painter.texts()) {
            const bool fromOutside = text.y == 35 || text.y == 63 || text.y == 455 ||
                                     text.text.starts_with("reserved stand") ||
                                     text.text.find("Washington") != std::string::npos;
            EXPECT_TRUE(fromOutside || text.text.find("\u2026") == std::string::npos)
                << text.text << " at " << dotsPerInch;
        }
    }
}

TEST(Painting, StandUnderTheUserSurvivesALongSimulatorName) {
    WindowView view = runningView();
    view.status.simText = "A simulator with a name that goes on and on and on (5.4.9.28482)";
    const std::string words = painted(view).wordsAt(5, 35);
    EXPECT_TRUE(words.ends_with(", user stand B 35")) << words;
    EXPECT_TRUE(words.starts_with("A simulator")) << words;
    EXPECT_NE(words.find("\u2026"), std::string::npos) << words;
}

void setEveryText(WindowView& view, const std::string& text) {
    StatusValues& status = view.status;
    for (std::string* each :
         {&status.simText, &status.userAircraftText, &status.userStandText, &status.rtEditionText,
          &status.airportCode, &status.airportName, &status.publisherText, &status.qualityText,
          &status.headStand, &status.reservedStand, &status.offlineFolder, &view.line.message}) {
        *each = text;
    }
    status.offlineAirports = 3;
}

TEST(Painting, TextsOfTenThousandCharactersStayInTheirPlace) {
    std::string emojis;
    for (int count = 0; count < 10000; ++count) {
        emojis += "\U0001F6EC";
    }
    for (const std::string& text : {std::string(10000, 'W'), std::string(10000, ' '), emojis}) {
        WindowView view = runningView();
        setEveryText(view, text);
        expectNothingOverlaps(view);
    }
    WindowView view = runningView();
    view.line.message = std::string(10000, 'W');
    EXPECT_TRUE(painted(view).wordsAt(3, 455).ends_with("W\u2026"));
}

TEST(Painting, ControlCharactersBecomeBlanks) {
    WindowView view = runningView();
    view.line.message = "one\r\ntwo\tthree\x01\x7f!";
    view.line.message.push_back('\0');
    EXPECT_EQ(painted(view).wordsAt(3, 455), "one  two three  ! ");
}

TEST(Painting, OtherScriptsAndEmojisAreShown) {
    WindowView view = runningView();
    view.line.message = "Z\u00fcrich \u6771\u4eac \U0001F6EC";
    EXPECT_EQ(painted(view).wordsAt(3, 455), view.line.message);
}

TEST(Painting, TextThatIsNotUtf8IsLoggedAndThePaintGoesOn) {
    const test::TempFolder folder;
    openLog();
    WindowView view = runningView();
    view.status.userAircraftText = "Fokker \xff\xfe 50";
    const RecordingPainter painter = painted(view);
    closeLog();
    EXPECT_EQ(painter.wordsAt(5, 63), "");
    EXPECT_EQ(painter.wordsAt(5, 91), "# liveries: 48211");
    EXPECT_EQ(painter.wordsAt(5, 399), "LSZH (B 35)");
    const std::string log = folder.read("Log.txt").value_or("");
    EXPECT_NE(log.find("50 conversion exception "), std::string::npos) << log;
    EXPECT_NE(log.find(", error code: "), std::string::npos) << log;
}

TEST(FittedText, EndsBetweenCharactersAndWithinItsWidth) {
    const auto painter = platform::createMeasuringPainter();
    const std::string text = "\u00e4\u6771\U0001F6ECabc\u00e4\u6771\U0001F6EC";
    for (int width = 0; width <= painter->textWidth(text); ++width) {
        const std::string fitted = fittedText(*painter, text, width);
        EXPECT_LE(painter->textWidth(fitted), width);
    }
    EXPECT_EQ(fittedText(*painter, text, painter->textWidth(text)), text);
}

} // namespace
} // namespace kst

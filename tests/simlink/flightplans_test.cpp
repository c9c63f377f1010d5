// The flight plan files that the simulator's own pilots are given.

#include "core/files.h"
#include "core/log.h"
#include "platform/paths.h"
#include "simlink/flightplans.h"
#include "simlink/simscene.h"
#include "support/thrown.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

LiveAc flight(std::string_view origin, std::string_view destination, Category category = Category::Large) {
    LiveAc ac;
    ac.callsign = "SWR100";
    ac.origin = origin;
    ac.destination = destination;
    ac.category = category;
    ac.objectId = 77;
    ac.hexid = 20001;
    return ac;
}

TEST(FlightPlan, IsWrittenLineByLine) {
    const std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<SimBase.Document Type=\"AceXML\" version=\"4,3\">\"\n"
                             "<FlightPlan.FlightPlan>\n"
                             "<FPType>{}</FPType>\n"
                             "<DepartureID>&lt;A&gt;&amp;</DepartureID>\n" // what the feed says is no markup
                             "<DestinationID>EGLL</DestinationID>\n"
                             "</FlightPlan.FlightPlan>\n"
                             "</SimBase.Document>\n";
    const std::pair<Category, const char*> cases[] = {
        {Category::Light, "VFR"}, {Category::Buzjets, "IFR"},  {Category::Large, "IFR"},
        {Category::Heavy, "IFR"}, {Category::HighPerf, "VFR"}, {Category::Rotorcraft, "VFR"}};
    for (const auto& [category, type] : cases) {
        EXPECT_EQ(flightPlanText(flight("<A>&", "EGLL", category)), fmt::format(fmt::runtime(text), type));
    }
}

TEST(FlightPlan, IsHandedOverWithItsWholePathAndDeletedAfterwards) {
    SimScene scene;
    scene.open();
    ASSERT_TRUE(lf_prepareFlightPlanFolder());
    LiveAc ac = flight("LSZH", "EGLL");
    lf_setFlightPlan(ac);
    EXPECT_TRUE(ac.flightPlanLoaded);
    const auto sent = scene.sentOf(0x2D);
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(fieldOf(sent[0], 16), 77U);
    EXPECT_EQ(fieldOf(sent[0], 280), 110U);
    const std::filesystem::path path = platform::pathFromUtf8(textOf(sent[0], 20));
    EXPECT_TRUE(path.is_absolute()) << "the simulator has another working directory";
    EXPECT_TRUE(std::filesystem::equivalent(path, scene.folder.path() / "output" / "orig_dest" / "77.pln"));
    EXPECT_EQ(scene.folder.read("output/orig_dest/77.pln"), flightPlanText(ac));
    lf_deleteFlightPlan(ac);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(FlightPlan, NeedsBothEnds) {
    SimScene scene;
    scene.open();
    lf_prepareFlightPlanFolder();
    for (LiveAc ac : {flight("LSZH", ""), flight("", "EGLL"), flight("", "")}) {
        lf_setFlightPlan(ac);
        EXPECT_FALSE(ac.flightPlanLoaded);
    }
    EXPECT_TRUE(scene.sent.empty());
    EXPECT_TRUE(std::filesystem::is_empty("output/orig_dest"));
}

TEST(FlightPlan, AFailureIsLoggedAndTheFileIsNotDeletedLater) {
    SimScene scene;
    scene.open();
    LiveAc ac = flight("LSZH", "EGLL");
    lf_setFlightPlan(ac); // no folder to write to
    EXPECT_FALSE(ac.flightPlanLoaded);
    EXPECT_TRUE(scene.logged("SWR100   - - - (20001) creating a flight plan failed\n"));
    EXPECT_TRUE(scene.sent.empty());
    lf_prepareFlightPlanFolder();
    scene.connection.transport()->breakConnection();
    lf_setFlightPlan(ac); // nobody to send it to
    EXPECT_FALSE(ac.flightPlanLoaded);
    lf_deleteFlightPlan(ac);
    EXPECT_TRUE(scene.folder.read("output/orig_dest/77.pln"));
}

TEST(FlightPlan, TheFolderIsMadeAndRemovedWithWhatIsInIt) {
    const TempFolder folder;
    gf_removeFlightPlanFolder(); // nothing there: nothing happens
    EXPECT_TRUE(lf_prepareFlightPlanFolder());
    EXPECT_TRUE(lf_prepareFlightPlanFolder()) << "again";
    folder.write("output/orig_dest/5.pln", "x");
    gf_removeFlightPlanFolder();
    EXPECT_FALSE(std::filesystem::exists("output/orig_dest"));
    EXPECT_TRUE(std::filesystem::exists("output"));

    std::filesystem::remove("output");
    folder.write("output", "a file is in the way");
    EXPECT_NE(thrown<std::filesystem::filesystem_error>(lf_prepareFlightPlanFolder).find("create_directory"),
              std::string::npos);
}

} // namespace
} // namespace kst::test

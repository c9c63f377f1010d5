#include "catalogue/addonpackages.h"
#include "core/log.h"
#include "core/parameters.h"
#include "platform/paths.h"
#include "support/tempfolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

namespace kst {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class AddOnPackages : public testing::Test {
protected:
    AddOnPackages() {
        SIM_INSTALL_PATH.set("sim v6");
        openLog();
    }
    ~AddOnPackages() override {
        closeLog();
        SIM_INSTALL_PATH.setDefault();
    }
    std::vector<std::string> addOns(const std::string& text) const {
        folder.write(folder.roaming() / "Lockheed Martin/Prepar3D v6/Add-Ons.cfg", text);
        std::vector<std::string> folders;
        lf_readP3DAddOnsAircraft(folders);
        return folders;
    }
    std::vector<std::string> simObjects(const std::string& text) const {
        folder.write(folder.programData() / "Lockheed Martin/Prepar3D v6/simobjects.cfg", text);
        std::vector<std::string> folders;
        lf_readP3DSimObjects(folders);
        return folders;
    }
    std::string log() const { return folder.read("Log.txt").value_or(""); }

    test::TempFolder folder;
};

TEST_F(AddOnPackages, AircraftComponentsOfEachPackageInTheirOrder) {
    folder.write("one/Add-On.xml", "<AddOn.Component>\n<Category>SimObjects</Category>\n<Path>first</Path>\n"
                                   "<Category>Effects</Category>\n<Path>not this</Path>\n"
                                   "<Category>simobjects</Category>\n  <Path>C:\\AI\\second</Path>\n"
                                   "<Category>SimObjects</Category>\n<Path>x\\Lights Reborn\\y</Path>\n"
                                   "<Category>SimObjects</Category>\n<Name>no path here</Name>\n");
    folder.write("last/add-on.xml", "<Category>SimObjects</Category>\n<Path>third</Path>\n");
    EXPECT_THAT(
        addOns("PATH=last\n[Package.0]\nPATH=one\nREQUIRED=path=no\nTITLE=x\n[Package.1]\nPATH=missing\n"
               "[Package.2]\nActive=1\nPath = last \n"),
        ElementsAre("first", "C:\\AI\\second", "third"));
    EXPECT_THAT(log(), HasSubstr("path found:last\n"));
    EXPECT_THAT(log(), HasSubstr("   exploring one"));
    EXPECT_THAT(log(), HasSubstr("      Simobjects found:C:\\AI\\second\n"));
    EXPECT_THAT(log(), HasSubstr("\n3 AI add-on packages found\n"));
    EXPECT_THAT(log(), Not(HasSubstr("exploring missing")));
}

TEST_F(AddOnPackages, FoldersOfSimObjectsButTheSimulatorsOwn) {
    const std::string relative =
        platform::utf8FromPath(platform::pathFromUtf8("sim v6") / "SimObjects" / "MyTraffic");
    EXPECT_THAT(
        simObjects("Path=before\n[Entry.0]\nTitle=Path=x\nPath=SimObjects\\Airplanes\n[Entry.1]\n"
                   "Path=SimObjects\\MyTraffic\n[Entry.2]\nPath=D:\\Traffic\\Aircraft\nRequired=Path=y\n"),
        ElementsAre(relative, "D:\\Traffic\\Aircraft"));
    EXPECT_THAT(log(), HasSubstr("\n2 AI add-on packages found\n"));
}

TEST_F(AddOnPackages, MissingFilesGiveNone) {
    std::vector<std::string> folders;
    lf_readP3DAddOnsAircraft(folders);
    lf_readP3DSimObjects(folders);
    EXPECT_THAT(folders, IsEmpty());
    EXPECT_THAT(log(), HasSubstr("add-ons.cfg not found!\n0 AI add-on packages found\n"));
    EXPECT_THAT(log(), Not(HasSubstr("simobjects")));
}

} // namespace
} // namespace kst

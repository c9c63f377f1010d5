#include "core/exceptions.h"
#include "core/log.h"
#include "core/parameters.h"
#include "platform/paths.h"
#include "scanner/scenerydiscovery.h"
#include "scanner/stockscenery.h"
#include "support/tempfolder.h"
#include "support/thrown.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace kst {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SceneryDiscovery : public testing::Test {
protected:
    SceneryDiscovery() {
        SIM_INSTALL_PATH.set("sim v5");
        lf_setStockAirportsPath();
        openLog();
    }
    ~SceneryDiscovery() override {
        closeLog();
        for (Parameter* parameter : allParameters()) {
            parameter->setDefault();
        }
        lf_setStockAirportsPath();
    }
    std::vector<std::string> foundIn(const char* name, const std::string& text,
                                     void (*read)(std::vector<std::string>&)) const {
        folder.write(folder.programData() / "Lockheed Martin/Prepar3D v5" / name, text);
        std::vector<std::string> folders;
        read(folders);
        return folders;
    }
    std::vector<std::string> cfg(const std::string& text) const {
        return foundIn("scenery.cfg", text, lf_readSceneryCfg);
    }
    std::string log() const { return folder.read("Log.txt").value_or(""); }
    /// A path below the install folder as it comes out.
    static std::string inSim(const char* name) {
        return platform::utf8FromPath((std::filesystem::path("sim v5") / name).make_preferred());
    }

    test::TempFolder folder;
};

TEST_F(SceneryDiscovery, WhichLinesOfSceneryCfgGiveFolders) {
    struct Case {
        const char* text;
        std::vector<std::string> folders;
    };
    const Case cases[] = {
        {"[Area.001]\nLocal=Addon Scenery\\MyAirport\nActive=TRUE\n", {inSim("Addon Scenery/MyAirport")}},
        {"[Area.001]\nLocal=D:\\Scenery\\MyAirport\nActive=TRUE\n", {"D:\\Scenery\\MyAirport"}},
        {"[Area.001]\n Local = D:\\X \nACTIVE=True\n", {"D:\\X"}},
        {"[Area.001]\nLocal=D:\\X\nActive=FALSE\n", {}},
        {"[Area.001]\nLocal=D:\\X\n", {}},
        {"[Area.001]\nActive=TRUE\nLocal=\nLocal\n", {}},
        {"[Area.001]\nLocal=Scenery\\0107\nActive=TRUE\n", {}},
        {"[Area.001]\nLocal=Scenery\\Cities\\Paris\nActive=TRUE\n", {}},
        {"[Area.001]\nLocal=Scenery\\Mine\nActive=TRUE\n", {}},
        {"[Area.001]\nTitle=\\World\nLocal=D:\\X\nActive=TRUE\nLayer=1\n", {"D:\\X"}},
        {"[Area.001]\nTitle=Active, true\nLocal=D:\\X\n", {}},
        {"Local=D:\\Before\nActive=TRUE\n[Area.001]\nLocal=D:\\X\nActive=TRUE\n", {"D:\\X"}},
        // A folder with "area" in its name begins a section of its own and is lost.
        {"[Area.001]\nActive=TRUE\nLocal=D:\\Bay area\n[Area.002]\nActive=TRUE\nLocal=D:\\X\n", {"D:\\X"}},
        {"[AREA.001]\nACTIVE=TRUE\nLOCAL=D:\\X\n[area.002]\nactive=true\nlocal=D:\\X\n", {"D:\\X", "D:\\X"}},
        {"", {}},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(cfg(row.text), row.folders) << row.text;
    }
    EXPECT_THAT(log(), HasSubstr("      found:D:\\Scenery\\MyAirport\n"));
    EXPECT_THAT(log(), HasSubstr("2 scenery add-on paths found\n\n"));
}

TEST_F(SceneryDiscovery, AddOnPathsStandBetweenTheirTags) {
    EXPECT_THAT(foundIn("scenery_add-ons.xml",
                        "<a>\n  <Path>D:\\One</Path> <Name>x</Name>\n<Path></Path>\n<Path>open\n"
                        "</Path>D:\\Wrong<Path>\n<Path>relative</Path>\n</a>\n",
                        lf_readSceneryAddOns),
                ElementsAre("D:\\One", "relative"));
    EXPECT_THAT(log(), HasSubstr("found path:D:\\One\n"));
}

TEST_F(SceneryDiscovery, AMissingFileIsToldAndGivesNothing) {
    std::vector<std::string> folders;
    lf_readSceneryCfg(folders);
    lf_readSceneryAddOns(folders);
    EXPECT_THAT(folders, IsEmpty());
    EXPECT_THAT(log(), HasSubstr("scenery.cfg not found!\n0 scenery add-on paths found\n"));
    EXPECT_THAT(log(), HasSubstr("scenery_add-ons.xml not found!\n0 scenery add-on paths found\n"));
}

TEST_F(SceneryDiscovery, TheUsersFoldersMayNotBeTheStockAirports) {
    afolder[7].set("D:\\Mine");
    afolder[2].set("also mine");
    std::vector<std::string> folders;
    lf_collectAfolders(folders);
    EXPECT_THAT(folders, ElementsAre("also mine", "D:\\Mine"));

    afolder[3].set("sim v5\\Scenery\\World");
    EXPECT_EQ(test::thrown<UserErrorException>([&] { lf_collectAfolders(folders); }),
              "42: parameter afolder3 points to stock airports instead of add-on airports!");
    // Without a simulator there are no stock airports that a folder could lie in.
    SIM_INSTALL_PATH.set("");
    lf_setStockAirportsPath();
    EXPECT_NO_THROW(lf_collectAfolders(folders));
}

} // namespace
} // namespace kst

#include "platform/paths.h"
#include "support/tempfolder.h"

#include <gtest/gtest.h>

namespace kst {
namespace {

using platform::caseInsensitivePath;
using platform::pathFromUtf8;

TEST(CaseInsensitivePathTest, FindsWhatDiffersInCaseAlone) {
    const test::TempFolder folder;
    folder.write("SimObjects/Airplanes/B738/Model.Winglet/B738.AIR", "");
    folder.write("SimObjects/Airplanes/B738/model.plain/b738.air", "");
    folder.write("M\xC3\x9CNCHEN/a.bgl", "");
    const std::pair<const char*, const char*> cases[] = {
        {"simobjects/AIRPLANES/b738/model.WINGLET/b738.air",
         "SimObjects/Airplanes/B738/Model.Winglet/B738.AIR"},
        {"SimObjects/Airplanes/B738/MODEL.plain", "SimObjects/Airplanes/B738/model.plain"},
        {"./simobjects/../docs", "./SimObjects/../docs"},
        {"m\xC3\xBCnchen/A.BGL", "M\xC3\x9CNCHEN/a.bgl"},
        {"simobjects/missing/b738", "simobjects/missing/b738"},
        {"docs/x", "docs/x"},
        {"", ""},
    };
    for (const auto& [asked, found] : cases) {
        EXPECT_EQ(caseInsensitivePath(pathFromUtf8(asked)), pathFromUtf8(found)) << asked;
    }
    const auto absolute = folder.path() / "simobjects" / "airplanes";
    EXPECT_EQ(caseInsensitivePath(absolute), folder.path() / "SimObjects" / "Airplanes");
}

TEST(CaseInsensitivePathTest, ALetterForLetterNameWinsAndADeadEndIsLeft) {
    const test::TempFolder folder;
    folder.write("texture/A.dds", "");
    folder.write("Texture/a.dds", "");
    folder.write("TEXTURE/only here.dds", "");
    EXPECT_EQ(caseInsensitivePath("texture/a.dds"), "texture/A.dds") << "the folder is there to the letter";
    EXPECT_EQ(caseInsensitivePath("Texture/a.dds"), "Texture/a.dds");
    EXPECT_EQ(caseInsensitivePath("texture/ONLY here.dds"), "TEXTURE/only here.dds");
    EXPECT_EQ(caseInsensitivePath("tEXTURE/x.dds"), "tEXTURE/x.dds");
}

TEST(CaseInsensitivePathTest, NamesThatAreNoTextAreNoTrap) {
    const test::TempFolder folder;
    folder.write("bad\xFF\xFEname/A.cfg", "");
    EXPECT_EQ(caseInsensitivePath("BAD\xFF\xFENAME/a.cfg"), "bad\xFF\xFEname/A.cfg");
    EXPECT_EQ(caseInsensitivePath("bad\xFF"), "bad\xFF");
}

} // namespace
} // namespace kst

#include "core/parameters.h"
#include "window/controltexts.h"
#include "window/layout.h"
#include "window/recordingpainter.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace kst {
namespace {

using layout::controlArea;
using platform::ControlKind;
using platform::Rect;

std::vector<const Parameter*> parametersWithControl() {
    std::vector<const Parameter*> found{&MAX_FIT_FL};
    for (const Parameter* parameter : allParameters()) {
        if (parameter->controlId() != control::none && parameter != &MAX_FIT_FL) {
            found.push_back(parameter);
        }
    }
    return found;
}

TEST(Layout, NoControlIsMissingOrOfTheWrongKind) {
    for (const Parameter* parameter : parametersWithControl()) {
        const std::size_t index = layout::controlIndex(parameter->controlId());
        ASSERT_LT(index, layout::controls.size()) << parameter->name();
        const bool flag = dynamic_cast<const BoolParameter*>(parameter) != nullptr;
        EXPECT_EQ(layout::controls[index].kind, flag ? ControlKind::CheckBox : ControlKind::TextBox)
            << parameter->name();
    }
    for (const int button : {control::Unblock, control::ReRead, control::FlushStatic}) {
        const std::size_t index = layout::controlIndex(button);
        ASSERT_LT(index, layout::controls.size()) << button;
        EXPECT_EQ(layout::controls[index].kind, ControlKind::PushButton) << button;
    }
    EXPECT_EQ(layout::controls.size(), parametersWithControl().size() + 3);
}

TEST(Layout, NoTwoControlsShareANumber) {
    std::set<int> ids;
    for (const layout::Control& each : layout::controls) {
        EXPECT_TRUE(ids.insert(each.id).second) << each.id;
    }
}

TEST(Layout, ControlsLieInTheirBandClearOfEachOtherAndOfTheLines) {
    const Rect band = layout::bandArea(Band::Control);
    for (const layout::Control& each : layout::controls) {
        const Rect area = controlArea(each);
        EXPECT_GE(area.left, band.left) << each.id;
        EXPECT_LE(area.right, band.right) << each.id;
        EXPECT_GE(area.top, band.top) << each.id;
        EXPECT_LE(area.bottom, band.bottom) << each.id;
        for (const layout::Control& other : layout::controls) {
            EXPECT_TRUE(each.id == other.id || !test::overlap(area, controlArea(other)))
                << each.id << " " << other.id;
        }
        for (const layout::ControlLine& line : layout::controlLines) {
            EXPECT_FALSE(test::overlap(area, {0, line.y, line.right, line.y + 1}))
                << each.id << " " << line.y;
        }
        EXPECT_FALSE(test::overlap(area, {layout::columnLineX, layout::columnLineTop, layout::columnLineX + 1,
                                          layout::columnLineBottom}))
            << each.id;
    }
}

TEST(Layout, TheKeyboardNeverGoesBackUpOrLeftWithinARow) {
    // Push buttons stand two pixels above their row.
    const auto readingOrder = [](const layout::Control& each) {
        const int row = each.kind == ControlKind::PushButton ? each.row + 2 : each.row;
        return std::pair(row, each.x);
    };
    EXPECT_TRUE(std::is_sorted(layout::controls.begin(), layout::controls.end(),
                               [&](const layout::Control& one, const layout::Control& other) {
                                   return readingOrder(one) < readingOrder(other);
                               }));
}

TEST(Layout, BandsFillTheWindowWithoutAGap) {
    int y = 0;
    for (const Band band : {Band::Header, Band::Status, Band::Control, Band::Park, Band::Message}) {
        EXPECT_EQ(layout::bandArea(band).top, y);
        EXPECT_EQ(layout::bandArea(band).right, layout::windowWidth);
        y = layout::bandArea(band).bottom;
    }
    EXPECT_EQ(y, layout::windowHeight);
}

TEST(ControlTexts, EachControlSaysWhatItIsAndDoes) {
    std::set<std::string> names;
    std::set<std::string> tips;
    for (const layout::Control& each : layout::controls) {
        EXPECT_TRUE(names.insert(accessibleName(each.id)).second) << each.id;
        EXPECT_TRUE(tips.insert(toolTip(each.id)).second) << each.id;
        EXPECT_GT(accessibleName(each.id).size(), 2U) << each.id;
        EXPECT_GT(toolTip(each.id).size(), 15U) << each.id;
        EXPECT_EQ(buttonCaption(each.id).empty(), each.kind != ControlKind::PushButton) << each.id;
    }
    for (const Parameter* parameter : parametersWithControl()) {
        EXPECT_NE(toolTip(parameter->controlId()).find(parameter->name()), std::string::npos)
            << parameter->name();
    }
    EXPECT_NE(toolTip(control::AirportHeight).find("2000 to 45000, normally 18000"), std::string::npos);
    EXPECT_NE(toolTip(control::MaxFitFl).find("0.5 to 24, normally 24"), std::string::npos);
}

} // namespace
} // namespace kst

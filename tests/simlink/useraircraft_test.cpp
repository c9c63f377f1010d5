// What the program takes the user's aircraft to be.

#include "catalogue/reference.h"
#include "core/display.h"
#include "core/exceptions.h"
#include "model/units.h"
#include "simlink/session.h"
#include "simlink/simscene.h"
#include "support/thrown.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst::test {
namespace {

class UserAircraftSaid : public testing::Test {
protected:
    UserAircraftSaid() {
        setReferenceForTest({{"A20N", Category::Large, 35.8},
                             {"A319", Category::Large, 34.1},
                             {"A320", Category::Large, 34.1},
                             {"E190", Category::Large, 28.7},
                             {"A388", Category::Heavy, 79.8},
                             {"C172", Category::Light, 11.0}});
        scene.open();
    }
    void sayTitle(std::string_view title) {
        scene.tell(dataMessage(106, 1).text(title, title.size() + 1).bytes());
    }
    void sayModel(std::string_view model) { scene.tell(dataMessage(107, 1).text(model, 32).bytes()); }

    SimScene scene;
};

TEST_F(UserAircraftSaid, TheTitleIsShownOnceAndCutTo48Characters) {
    const std::string longTitle(49, 't');
    sayTitle(longTitle);
    EXPECT_EQ(statusValues().userAircraftText, longTitle.substr(0, 48));
    EXPECT_TRUE(scene.logged("SimConnect: User aircraft title: " + longTitle.substr(0, 48) + "\n"));
    const std::string once = scene.log();
    sayTitle(longTitle);
    EXPECT_EQ(scene.log(), once) << "an unchanged title is not reported again";
    sayTitle("");
    EXPECT_TRUE(scene.logged("! title of your ac is empty?\n"));
    EXPECT_EQ(statusValues().userAircraftText, longTitle.substr(0, 48));
}

TEST_F(UserAircraftSaid, ACutTitleEndsWithAWholeCharacter) {
    sayTitle(std::string(47, 'x') + "\xC3\xBC" + "rich"); // the 48th byte begins a character of two
    EXPECT_EQ(statusValues().userAircraftText, std::string(47, 'x'));
    sayTitle(std::string(60, '\xBC')); // no text at all is cut by bytes
    EXPECT_EQ(statusValues().userAircraftText, std::string(48, '\xBC'));
    scene.tell(dataMessage(106, 1).text("Endless", 7).bytes());
    EXPECT_EQ(statusValues().userAircraftText, "Endless") << "without an ending zero, to the message's end";
}

TEST_F(UserAircraftSaid, WingSpanAndCategoryFollowModelAndTitle) {
    struct Case {
        std::string_view title;
        std::string_view model;
        double spanMetres;
        Category category;
        bool known;
        std::string log;
    };
    const std::string unknown = "SimConnect: User aircraft model: AIRBUS, category: Light\n";
    const std::string deduced = "SimConnect: User aircraft model deduced from title: ";
    const Case cases[] = {
        {"My A20N", "A20N", 35.8, Category::Large, true,
         "SimConnect: User aircraft model: A20N, half wing span: 17.9 meter, category: Large\n"},
        {"Some A320", "AIRBUS", 79.8, Category::Light, false, unknown}, // a title of no maker
        {"Aerosoft A320 Professional", "AIRBUS", 34.1, Category::Large, true,
         deduced + "A320, half wing span: 17.1 meter, category: Large\n"},
        {"Aerosoft A319", "AIRBUS", 34.1, Category::Large, true,
         deduced + "A319, half wing span: 17.1 meter, category: Large\n"},
        {"Aerosoft A31", "AIRBUS", 79.8, Category::Light, false, unknown},
        {"Aerosoft A320", "C172", 11.0, Category::Light, true, // a known model keeps its span
         "SimConnect: User aircraft model: C172, half wing span: 5.5 meter, category: Light\n"},
        {"Any", "camerapod", 28.7, Category::Light, true, "model raw: camerapod \n"},
        {"Any", "my camerapod 2", 28.7, Category::Light, true, "model raw: my camerapod 2 \n"},
        {"Any", "Crew Vessel", 28.7, Category::Light, true, "model raw: Crew Vessel \n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(fmt::format("{} of {}", c.model, c.title));
        sayTitle("Any");
        sayModel("A388");
        EXPECT_EQ(userCategory(), Category::Heavy);
        clearMessage();
        sayTitle(c.title);
        sayModel(c.model);
        ASSERT_TRUE(userHalfSpanNm());
        EXPECT_NEAR(*userHalfSpanNm() * metresPerNm * 2.0, c.spanMetres, 0.01);
        EXPECT_EQ(userCategory(), c.category);
        EXPECT_EQ(statusValues().wingSpanKnown, c.known);
        EXPECT_EQ(messageLine().message,
                  c.known
                      ? ""
                      : "User aircraft wing span unknown, max is taken instead, please report in my Forum!");
        EXPECT_TRUE(scene.logged(fmt::format("model raw: {} \n", c.model)));
        EXPECT_TRUE(scene.logged(c.log)) << scene.log();
    }
    EXPECT_EQ(thrown<UserErrorException>([&] { sayModel(""); }),
              "71: atc_model= in [General] section of your aircraft.cfg is empty or missing");
}

} // namespace
} // namespace kst::test

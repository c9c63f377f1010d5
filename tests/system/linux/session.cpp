#include "system/linux/session.h"

#include "system/linux/host.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kst::test {

using namespace std::chrono_literals;
using nlohmann::json;
using platform::Rect;

namespace {

/// By the fill beside the mark or the text, as the Qt controls have it.
bool looksEnabled(const Picture& picture, int controlId) {
    constexpr platform::Colour disabledBox{176, 204, 232};
    constexpr platform::Colour disabledCheckBox{190, 212, 234};
    const Rect area = areaOf(controlId);
    const bool checkBox = area.bottom - area.top == layout::checkBoxSize;
    const platform::Colour fill = picture.at(checkBox ? area.left + 3 : area.right - 4, area.top + 3);
    return fill != (checkBox ? disabledCheckBox : disabledBox);
}

} // namespace

Rect areaOf(int controlId) {
    return layout::controlArea(layout::controls[layout::controlIndex(controlId)]);
}

std::string Session::stored(const std::string& parameter) const {
    const std::string content = contentOf(world.parametersFile());
    const std::string head = fmt::format("name=\"{}\" value=\"", parameter);
    const std::size_t found = content.find(head);
    if (found == std::string::npos) {
        return "no such parameter";
    }
    const std::size_t begin = found + head.size();
    return content.substr(begin, content.find('"', begin) - begin);
}

bool Session::holds(const std::string& parameter, const std::string& value) const {
    return waitFor([&] { return stored(parameter) == value; }, 10s);
}

void Session::expectBox(int controlId, const char* parameter, const std::string& value,
                        const std::string& shown, std::chrono::seconds limit) const {
    EXPECT_TRUE(holds(parameter, value)) << parameter << " is " << stored(parameter);
    std::string text;
    EXPECT_TRUE(waitFor(
        [&] {
            const auto state = host::windowState(world.folder());
            text = state ? state->controls.at(controlId).text : shown;
            return text == shown;
        },
        limit))
        << parameter << ": the box shows " << text;
}

void Session::expectEnabled(int controlId, bool enabled, std::chrono::seconds limit) {
    EXPECT_TRUE(waitFor(
        [&] {
            const auto state = host::windowState(world.folder());
            return (state ? state->controls.at(controlId).enabled : looksEnabled(hand.look(), controlId)) ==
                   enabled;
        },
        limit))
        << "control " << controlId;
}

void Session::expectLogged(const std::string& text, const std::function<void()>& during,
                           std::chrono::seconds limit) const {
    const std::size_t before = world.log().size();
    during();
    EXPECT_TRUE(waitFor([&] { return world.log().find(text, before) != std::string::npos; }, limit)) << text;
}

std::vector<json> Session::objects(bool parked) const {
    std::vector<json> found;
    const json state = json::parse(world.simulatorState(), nullptr, false);
    if (!state.is_object()) {
        return found;
    }
    for (const json& object : state.at("objects")) {
        if (object.at("tail").get<std::string>().ends_with('*') == parked) {
            found.push_back(object);
        }
    }
    return found;
}

bool Session::messageShown(const Picture& picture) const {
    return picture.count(layout::bandArea(Band::Message), layout::yellow) > 0;
}

} // namespace kst::test

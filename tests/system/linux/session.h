#pragma once

// The program between the stand-ins, and a person at its window who sees what comes of what he does.

#include "system/linux/display.h"
#include "system/linux/systemworld.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace kst::test {

class Session {
public:
    Session() : hand(world) {}

    /// What parameters.xml holds of the parameter.
    std::string stored(const std::string& parameter) const;
    bool holds(const std::string& parameter, const std::string& value) const;
    /// The parameter's value, and where the system tells it, the text of its box.
    void expectBox(int controlId, const char* parameter, const std::string& value, const std::string& shown,
                   std::chrono::seconds limit = std::chrono::seconds{10}) const;
    void expectEnabled(int controlId, bool enabled, std::chrono::seconds limit = std::chrono::seconds{30});
    /// The log says the text once more than before `during`.
    void expectLogged(const std::string& text, const std::function<void()>& during,
                      std::chrono::seconds limit = std::chrono::seconds{30}) const;
    /// Objects of the feed, or parked ones, as the simulator shows them.
    std::vector<nlohmann::json> objects(bool parked) const;
    bool messageShown(const Picture& picture) const;

    SystemWorld world;
    Hand hand;
};

/// A control's area in layout pixels.
platform::Rect areaOf(int controlId);

} // namespace kst::test

#pragma once

// A real browser without a window, steered through the WebDriver protocol.

#include "support/linux/childprocess.h"

#include <filesystem>
#include <httplib.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace kst::test {

/// Waits until a program has printed a line with the text to its output file, and gives the line; empty when
/// it has not after a minute.
std::string printedLine(const std::filesystem::path& output, const std::string& text);

class Browser {
public:
    /// Starts it with a fresh profile below the folder. Throws std::runtime_error.
    explicit Browser(const std::filesystem::path& folder);
    ~Browser();
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    void open(const std::string& address);
    /// Clicks on the first element that the CSS selector names, as a user does.
    void click(const std::string& selector);
    /// Runs a script's function body in the page and gives what it returns.
    nlohmann::json run(const std::string& script);
    /// Waits in the page, picture by picture, until the JavaScript expression is true; false after a minute.
    bool waitFor(const std::string& expression);
    /// The text that the element shows.
    std::string text(const std::string& selector);
    /// Errors that the page's console shows.
    std::vector<std::string> consoleErrors();

private:
    nlohmann::json call(const std::string& method, const std::string& path, const nlohmann::json& body = {});
    std::string element(const std::string& selector);

    std::unique_ptr<ChildProcess> driver_;
    std::unique_ptr<httplib::Client> http_;
    std::string session_;
};

} // namespace kst::test

#include "tests/browser/linux/browser.h"

#include <chrono>
#include <fmt/format.h>
#include <map>
#include <regex>
#include <stdexcept>

namespace kst::test {

namespace {

using nlohmann::json;

constexpr int patienceSeconds = 90;
constexpr int scriptPatienceMs = 60'000;
/// Under this key WebDriver names an element.
constexpr const char* elementKey = "element-6066-11e4-a52e-4f735466cecf";

} // namespace

std::string printedLine(const std::filesystem::path& output, const std::string& text) {
    std::string line;
    waitFor(
        [&] {
            const std::string content = contentOf(output);
            const std::size_t found = content.find(text);
            const std::size_t end = content.find('\n', found);
            if (found == std::string::npos || end == std::string::npos)
                return false;
            line = content.substr(found, end - found);
            return true;
        },
        std::chrono::seconds(60));
    return line;
}

Browser::Browser(const std::filesystem::path& folder) {
    const std::filesystem::path output = folder / "chromedriver.txt";
    // Through env, which finds the program as a shell does.
    driver_ =
        std::make_unique<ChildProcess>(std::vector<std::string>{"/usr/bin/env", "chromedriver", "--port=0"},
                                       std::map<std::string, std::string>{}, folder, output);
    const std::string line = printedLine(output, "started successfully on port");
    std::smatch match;
    if (!std::regex_search(line, match, std::regex("port ([0-9]+)")))
        throw std::runtime_error("chromedriver does not start");
    http_ = std::make_unique<httplib::Client>("127.0.0.1", std::stoi(match[1].str()));
    http_->set_keep_alive(true);
    http_->set_read_timeout(patienceSeconds, 0);
    const json options = {{"args",
                           {"--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                            "--disable-background-networking", "--disable-component-update", "--disable-sync",
                            "--disable-dev-shm-usage", "--window-size=1280,800",
                            "--user-data-dir=" + (folder / "profile").string()}}};
    const json wanted = {{"browserName", "chrome"},
                         {"goog:loggingPrefs", {{"browser", "ALL"}}},
                         {"timeouts", {{"script", scriptPatienceMs}}},
                         {"goog:chromeOptions", options}};
    const json started = call("POST", "/session", {{"capabilities", {{"alwaysMatch", wanted}}}});
    session_ = "/session/" + started.at("sessionId").get<std::string>();
}

Browser::~Browser() {
    // Without this the driver, killed, would leave the browser behind.
    http_->Delete(session_);
}

json Browser::call(const std::string& method, const std::string& path, const json& body) {
    const std::string text = body.is_null() ? "{}" : body.dump();
    const auto answer =
        method == "GET" ? http_->Get(path) : http_->Post(path, text, "application/json; charset=utf-8");
    if (!answer)
        throw std::runtime_error(fmt::format("{}: {}", path, httplib::to_string(answer.error())));
    const json document = json::parse(answer->body);
    if (answer->status != 200)
        throw std::runtime_error(
            fmt::format("{}: {}", path, document.at("value").value("message", answer->body)));
    return document.at("value");
}

void Browser::open(const std::string& address) {
    call("POST", session_ + "/url", {{"url", address}});
}

std::string Browser::element(const std::string& selector) {
    const json found = call("POST", session_ + "/element", {{"using", "css selector"}, {"value", selector}});
    return session_ + "/element/" + found.at(elementKey).get<std::string>();
}

void Browser::click(const std::string& selector) {
    call("POST", element(selector) + "/click");
}

std::string Browser::text(const std::string& selector) {
    return call("GET", element(selector) + "/text").get<std::string>();
}

json Browser::run(const std::string& script) {
    return call("POST", session_ + "/execute/sync", {{"script", script}, {"args", json::array()}});
}

bool Browser::waitFor(const std::string& expression) {
    const std::string script = fmt::format(
        "const done = arguments[0], end = performance.now() + {};"
        "const look = () => {{ let met = false; try {{ met = Boolean({}); }} catch (error) {{}}"
        "  if (met || performance.now() > end) done(met); else requestAnimationFrame(look); }}; look();",
        scriptPatienceMs / 2, expression);
    return call("POST", session_ + "/execute/async", {{"script", script}, {"args", json::array()}})
        .get<bool>();
}

std::vector<std::string> Browser::consoleErrors() {
    std::vector<std::string> errors;
    for (const json& entry : call("POST", session_ + "/se/log", {{"type", "browser"}}))
        if (entry.at("level") == "SEVERE")
            errors.push_back(entry.at("message").get<std::string>());
    return errors;
}

} // namespace kst::test

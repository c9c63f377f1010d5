#include "system/linux/host.h"

#include "support/linux/childprocess.h"
#include "support/places.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <unistd.h>

#include <fmt/format.h>

namespace kst::test::host {

namespace {

/// A display that nobody sees, for as long as the test program runs.
class Display {
public:
    Display()
        : output_(std::filesystem::temp_directory_path() / fmt::format("kst-display-{}.txt", getpid())),
          server_({"/usr/bin/Xvfb", "-displayfd", "1", "-noreset", "-screen", "0", "1920x1200x24"}, {},
                  std::filesystem::temp_directory_path(), output_) {
        waitFor(
            [&] {
                // Between its complaints about displays that others have.
                std::istringstream lines(contentOf(output_));
                for (std::string line; name_.empty() && std::getline(lines, line);) {
                    if (!lines.eof() && line.find_first_not_of("0123456789") == std::string::npos) {
                        name_ = ":" + line;
                    }
                }
                return !name_.empty();
            },
            std::chrono::seconds{20});
    }
    ~Display() { std::filesystem::remove(output_); }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;
    const std::string& name() const { return name_; }

private:
    std::filesystem::path output_;
    ChildProcess server_;
    std::string name_;
};

const std::string& displayName() {
    static const Display display;
    return display.name();
}

} // namespace

std::filesystem::path roamingBelow(const std::filesystem::path& folder) {
    return folder / "config";
}

std::map<std::string, std::string> prepare(const std::filesystem::path& folder) {
    for (const char* sub : {"config", "runtime", "documents", "public", "share"}) {
        std::filesystem::create_directories(folder / sub);
    }
    std::map<std::string, std::string> environment = {{"XDG_CONFIG_HOME", (folder / "config").string()},
                                                      {"XDG_RUNTIME_DIR", (folder / "runtime").string()},
                                                      {"XDG_DATA_HOME", (folder / "share").string()},
                                                      {"XDG_DOCUMENTS_DIR", (folder / "documents").string()},
                                                      {"XDG_PUBLICSHARE_DIR", (folder / "public").string()}};
    // The sanitizers find fault with the libraries of a real display.
    if (std::getenv("KESTRANE_TEST_WITHOUT_DISPLAY") != nullptr) {
        environment["QT_QPA_PLATFORM"] = "offscreen";
    } else {
        environment["DISPLAY"] = displayName();
        environment["QT_QPA_PLATFORM"] = "xcb";
    }
    return environment;
}

std::string urlOf(const std::filesystem::path& path) {
    return "file://" + path.string();
}

std::map<std::string, std::string> parameters() {
    return {{"SIM_INSTALL_PATH", "/opt/Prepar3D v5"}};
}

std::vector<std::string> program() {
    return {(buildFolder() / "Kestrane_P3D").string()};
}

std::vector<std::string> simulatorArguments(const std::filesystem::path&) {
    return {"--pipe", R"(\\.\pipe\Lockheed Martin Prepar3D v5\SimConnect)"};
}

std::string pathText(const std::filesystem::path& path) {
    return path.string();
}

void setDotsPerInch(std::map<std::string, std::string>& environment, int dotsPerInch) {
    environment["QT_SCALE_FACTOR"] =
        fmt::format("{}", static_cast<double>(dotsPerInch) / platform::plainDotsPerInch);
}

std::vector<std::string> onDisplay() {
    return {"/usr/bin/env", "DISPLAY=" + displayName()};
}

std::optional<WindowState> windowState(const std::filesystem::path&) {
    return std::nullopt;
}

bool setClipboard(const std::filesystem::path& folder, const std::string& text) {
    const std::vector<std::string> xclip = {"/usr/bin/xclip", "-display", displayName(), "-selection",
                                            "clipboard"};
    const auto with = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), xclip.begin(), xclip.end());
        return arguments;
    };
    const auto file = folder / "clipboard.txt";
    std::ofstream(file, std::ios::binary) << text;
    // A text is on the clipboard for as long as the process that offers it lives: to the next one, or to the
    // end of the tests.
    static std::unique_ptr<ChildProcess> owner;
    owner = std::make_unique<ChildProcess>(with({"-quiet", file.string()}),
                                           std::map<std::string, std::string>{}, folder, "/dev/null");
    const auto seen = folder / "seen.txt";
    return waitFor(
        [&] {
            std::filesystem::remove(seen);
            ChildProcess reader(with({"-o"}), {}, folder, seen);
            return reader.wait(std::chrono::seconds{5}) == 0 && contentOf(seen) == text;
        },
        std::chrono::seconds{10});
}

void askToClose(ChildProcess& program) {
    program.signal(SIGTERM);
}

} // namespace kst::test::host

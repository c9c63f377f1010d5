#include "system_windows/linux/wine.h"

#include "support/linux/childprocess.h"
#include "support/places.h"

#include <algorithm>
#include <fstream>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <utf8.h>

namespace kst::test::wine {

namespace {

namespace fs = std::filesystem;

fs::path script(const std::string& name) {
    return sourceFolder() / "scripts" / name;
}

void runScript(const std::vector<std::string>& words) {
    ChildProcess process(words, {}, fs::temp_directory_path(), "/dev/null");
    ASSERT_EQ(process.wait(std::chrono::seconds{120}), 0) << fmt::format("{}", fmt::join(words, " "));
}

/// As a .reg file has it.
std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '\\' || c == '"') {
            result += '\\';
        }
        result += c;
    }
    return result + '"';
}

/// The session lasts as long as the test program.
class Session : public testing::Environment {
public:
    void SetUp() override {
        if (!fs::exists(wine::buildFolder() / "Kestrane_P3D.exe")) {
            GTEST_SKIP() << "no Windows program: ./scripts/build-windows makes it";
        }
        runScript({script("wine-session").string(), "start"});
    }
    void TearDown() override { runScript({script("wine-session").string(), "stop"}); }
};

const auto* const session = testing::AddGlobalTestEnvironment(new Session);

} // namespace

fs::path buildFolder() {
    return sourceFolder() / "build" / "windows";
}

std::vector<std::string> program(const std::string& name) {
    return words(wine::buildFolder() / name, {});
}

std::vector<std::string> words(const fs::path& file, const std::vector<std::string>& arguments) {
    std::vector<std::string> all = {script("wine-run").string(), file.string()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

std::string pathText(const fs::path& path) {
    std::string text = "Z:" + path.string();
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

void run(const std::vector<std::string>& words) {
    runScript(wine::words(words.front(), {words.begin() + 1, words.end()}));
}

void setRegistry(const fs::path& folder, const std::vector<RegistryValue>& values) {
    std::string text = "\uFEFFWindows Registry Editor Version 5.00\n";
    for (const RegistryValue& value : values) {
        text += fmt::format("\n[{}]\n{}={}\n", value.key, quoted(value.name), quoted(value.text));
    }
    const std::u16string units = utf8::utf8to16(text);
    const fs::path file = folder / "settings.reg";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(units.data()), static_cast<std::streamsize>(units.size() * 2));
    run({"regedit", "/S", pathText(file)});
}

} // namespace kst::test::wine

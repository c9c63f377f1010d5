#include "system/linux/systemworld.h"
#include "support/places.h"
#include "system/linux/host.h"

#include <cstdlib>
#include <fstream>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

namespace kst::test {

namespace {

namespace fs = std::filesystem;

const fs::path binaries = buildFolder();
const fs::path source = sourceFolder();

void runTool(const std::vector<std::string>& words, const fs::path& folder) {
    ChildProcess tool(words, {}, folder, folder / "tool.txt");
    const auto status = tool.wait(std::chrono::seconds{60});
    ASSERT_EQ(status, 0) << words[1] << ": " << contentOf(folder / "tool.txt");
}

/// One title for every type that the stand-in's traffic may have.
void writeLiveries(const fs::path& path) {
    std::ifstream types(source / "data" / "types.csv");
    std::ofstream store(path);
    store << "<?xml version=\"1.0\"?>\n<liveries>\n";
    std::string line;
    while (std::getline(types, line)) {
        const std::string type = line.substr(0, line.find(','));
        if (type.size() >= 2 && type.size() <= 4) {
            store << fmt::format("<liv airl=\"ZZZ\" type=\"{0}\" title=\"Test {0}\"/>\n", type);
        }
    }
    store << "</liveries>\n";
}

} // namespace

SystemWorld::SystemWorld() : linkPort_(freeTcpPort()), pagePort_(freeTcpPort()) {
    std::string name = (fs::temp_directory_path() / "kst-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    for (const char* sub : {"docs", "input", "output", "airports", "downloads/release"}) {
        fs::create_directories(folder_ / sub);
    }
    environment_ = host::prepare(folder_);
    environment_["KESTRANE_DOWNLOAD_ROOT"] = host::urlOf(folder_ / "downloads") + "/";
    fs::create_directories(host::roamingBelow(folder_) / "InsideSystems");
    fs::create_directories(parametersFile().parent_path());
    std::ofstream(host::roamingBelow(folder_) / "InsideSystems/RealTraffic.jar") << "present";
    std::ofstream(folder_ / "downloads/release/version_P3D.json") << "1.0.0\n";
    writeLiveries(folder_ / "output/LiveriesScanned.xml");
    const std::string tool = (binaries / "tools/kestrane-data").string();
    runTool({tool, "reference", (source / "data").string(), "reference.xml"}, folder_);
    runTool({tool, "dbase", "reference.xml", "downloads/dbase.zip"}, folder_);
    runTool({tool, "airports", (source / "data").string(), "airports/airports_p3d.xml"}, folder_);
    writeParameters({});
}

SystemWorld::~SystemWorld() {
    program_.reset();
    realTraffic_.reset();
    simulator_.reset();
    if (testing::Test::HasFailure()) {
        std::cerr << "--- Log.txt\n" << log() << "--- program\n" << contentOf(folder_ / "program.txt");
    }
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void SystemWorld::makeScenery(const fs::path& folder) const {
    runTool(
        {(binaries / "tools/bglscenery").string(), "airports", (source / "data").string(), folder.string()},
        folder_);
}

void SystemWorld::writeParameters(const std::map<std::string, std::string>& values) {
    std::map<std::string, std::string> all = {{"SCAN_LIVERIES", "0"},
                                              {"SCAN_AIRPORTS", "0"},
                                              {"AUTO_RANGE", "0"},
                                              {"LATERAL_RANGE", "100"},
                                              {"PORT_NUMBER", std::to_string(linkPort_)}};
    for (const auto& more : {host::parameters(), values}) {
        for (const auto& [key, value] : more) {
            all[key] = value;
        }
    }
    std::ofstream file(parametersFile());
    file << "<?xml version=\"1.0\"?>\n<parameters>\n";
    for (const auto& [key, value] : all) {
        file << fmt::format("<parameter name=\"{}\" value=\"{}\"/>\n", key, value);
    }
    file << "</parameters>\n";
}

void SystemWorld::startSimulator(std::vector<std::string> arguments, std::vector<std::string> program) {
    std::vector<std::string> words = std::move(program);
    if (words.empty()) {
        words = {(binaries / "standins/simulator-standin").string()};
    }
    words.insert(words.end(), {"--http", std::to_string(pagePort_), "--user", "47.46,8.55,12000,90,250"});
    if (arguments.empty()) {
        arguments = host::simulatorArguments(folder_);
    }
    words.insert(words.end(), arguments.begin(), arguments.end());
    simulator_ = std::make_unique<ChildProcess>(words, environment_, folder_, folder_ / "simulator.txt");
}

void SystemWorld::startRealTraffic(std::vector<std::string> arguments) {
    std::vector<std::string> words = {(binaries / "standins/realtraffic-standin").string(), "--tcp",
                                      fmt::format("127.0.0.1:{}", linkPort_)};
    if (arguments.empty()) {
        arguments = {"--generator", "100", "--seed", "7"};
    }
    words.insert(words.end(), arguments.begin(), arguments.end());
    realTraffic_ = std::make_unique<ChildProcess>(words, environment_, folder_, folder_ / "realtraffic.txt");
}

void SystemWorld::startProgram() {
    program_ =
        std::make_unique<ChildProcess>(host::program(), environment_, folder_, folder_ / "program.txt");
}

std::filesystem::path SystemWorld::parametersFile() const {
    return host::roamingBelow(folder_) / "Kestrane_P3D" / "parameters.xml";
}

std::string SystemWorld::log() const {
    return contentOf(folder_ / "Log.txt");
}

bool SystemWorld::logSays(const std::string& text, std::chrono::seconds limit) {
    return waitFor([&] { return log().find(text) != std::string::npos; }, limit);
}

std::string SystemWorld::simulatorState() const {
    httplib::Client client("127.0.0.1", pagePort_);
    const auto reply = client.Get("/state.json");
    return reply ? reply->body : std::string();
}

int SystemWorld::objectCount() const {
    const auto state = nlohmann::json::parse(simulatorState(), nullptr, false);
    return state.is_object() && state.contains("objects") ? static_cast<int>(state["objects"].size()) : -1;
}

bool SystemWorld::control(const std::string& json) {
    httplib::Client client("127.0.0.1", pagePort_);
    const auto reply = client.Post("/control", json, "application/json");
    return reply && reply->status == 200;
}

} // namespace kst::test

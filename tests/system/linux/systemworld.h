#pragma once

// The real program between the real stand-ins, each a process of its own with real sockets, pipes and files,
// in a fresh install folder.

#include "support/linux/childprocess.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace kst::test {

class SystemWorld {
public:
    SystemWorld();
    ~SystemWorld();
    SystemWorld(const SystemWorld&) = delete;
    SystemWorld& operator=(const SystemWorld&) = delete;

    /// Starts the stand-in simulator with the user in the air over Zurich, with these further arguments if
    /// told (without: where the program looks first), and by these words if told (without: the native one).
    void startSimulator(std::vector<std::string> arguments = {}, std::vector<std::string> program = {});
    /// Starts the stand-in RealTraffic with a hundred generated targets round the user, or with these
    /// arguments.
    void startRealTraffic(std::vector<std::string> arguments = {});
    void startProgram();

    ChildProcess& program() { return *program_; }
    ChildProcess& simulator() { return *simulator_; }
    ChildProcess& realTraffic() { return *realTraffic_; }
    void stopRealTraffic() { realTraffic_.reset(); }

    /// Waits until Log.txt holds the text; false when it does not within `limit`.
    bool logSays(const std::string& text, std::chrono::seconds limit = std::chrono::seconds{30});
    std::string log() const;
    /// How many AI objects fly in the simulator; -1 when it does not answer.
    int objectCount() const;
    /// The simulator's own list of objects, as JSON text.
    std::string simulatorState() const;
    /// Sends a command to the simulator's control page.
    bool control(const std::string& json);

    const std::filesystem::path& folder() const { return folder_; }
    std::filesystem::path parametersFile() const;
    std::map<std::string, std::string>& environment() { return environment_; }
    /// Puts the scenery files of a few airports there.
    void makeScenery(const std::filesystem::path& folder) const;
    void writeParameters(const std::map<std::string, std::string>& values);

private:
    std::filesystem::path folder_;
    std::map<std::string, std::string> environment_;
    std::unique_ptr<ChildProcess> simulator_;
    std::unique_ptr<ChildProcess> realTraffic_;
    std::unique_ptr<ChildProcess> program_;
    int linkPort_;
    int pagePort_;
};

} // namespace kst::test

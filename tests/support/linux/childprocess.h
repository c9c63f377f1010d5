#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kst::test {

/// A program started as a user starts it, with its own working folder and environment. Killed by the
/// destructor if it still runs.
class ChildProcess {
public:
    /// `words` is the program and its arguments; `environment` is added to this process's own. What it prints
    /// goes to the file `output`.
    ChildProcess(const std::vector<std::string>& words, const std::map<std::string, std::string>& environment,
                 const std::filesystem::path& workingFolder, const std::filesystem::path& output);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool running();
    void signal(int number);
    /// Its exit status (128 + number for a signal), or nothing when it still runs after `limit`.
    std::optional<int> wait(std::chrono::seconds limit);

private:
    pid_t pid_;
    std::optional<int> status_;
};

/// Asks until the condition holds or the time is up. For what another process does in its own time.
bool waitFor(const std::function<bool()>& condition, std::chrono::seconds limit);

/// A TCP port that was free a moment ago.
int freeTcpPort();

/// The whole content of a file, empty when it cannot be read.
std::string contentOf(const std::filesystem::path& path);

} // namespace kst::test

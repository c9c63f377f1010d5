#include "support/linux/childprocess.h"

#include <csignal>
#include <fstream>
#include <thread>

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kst::test {

namespace {

constexpr int cannotStart = 127;
constexpr int signalStatus = 128;

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> mergedEnvironment(const std::map<std::string, std::string>& added) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!added.contains(text.substr(0, text.find('=')))) {
            result.push_back(text);
        }
    }
    for (const auto& [name, value] : added) {
        result.push_back(name + "=" + value);
    }
    return result;
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& words,
                           const std::map<std::string, std::string>& environment,
                           const std::filesystem::path& workingFolder, const std::filesystem::path& output) {
    // Everything that allocates is made before the fork: the child may only call what is safe in it.
    std::vector<std::string> wordTexts = words;
    std::vector<std::string> environmentTexts = mergedEnvironment(environment);
    const std::vector<char*> arguments = pointers(wordTexts);
    const std::vector<char*> variables = pointers(environmentTexts);
    const std::string folder = workingFolder.string();
    const std::string outputName = output.string();
    pid_ = fork();
    if (pid_ == 0) {
        const int file = open(outputName.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
        if (file < 0 || chdir(folder.c_str()) != 0) {
            _exit(cannotStart);
        }
        dup2(file, STDOUT_FILENO);
        dup2(file, STDERR_FILENO);
        execve(arguments[0], arguments.data(), variables.data());
        _exit(cannotStart);
    }
}

ChildProcess::~ChildProcess() {
    if (running()) {
        signal(SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}

bool ChildProcess::running() {
    if (status_) {
        return false;
    }
    int state = 0;
    if (waitpid(pid_, &state, WNOHANG) != pid_) {
        return true;
    }
    status_ = WIFEXITED(state) ? WEXITSTATUS(state) : signalStatus + WTERMSIG(state);
    return false;
}

void ChildProcess::signal(int number) {
    if (!status_) {
        kill(pid_, number);
    }
}

std::optional<int> ChildProcess::wait(std::chrono::seconds limit) {
    waitFor([this] { return !running(); }, limit);
    return status_;
}

bool waitFor(const std::function<bool()>& condition, std::chrono::seconds limit) {
    constexpr std::chrono::milliseconds pause{20};
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(pause);
    }
    return true;
}

int freeTcpPort() {
    const int file = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    bind(file, reinterpret_cast<sockaddr*>(&address), length);
    getsockname(file, reinterpret_cast<sockaddr*>(&address), &length);
    close(file);
    return ntohs(address.sin_port);
}

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace kst::test

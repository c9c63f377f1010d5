#include "platform/singleinstance.h"
#include "platform/linux/runtimefolder.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace kst::platform {

namespace {

/// The name as a file name: without the Windows prefix "Local\", and nothing in it that leads elsewhere.
std::string lockFileName(std::string name) {
    constexpr std::string_view sessionPrefix = "Local\\";
    if (name.starts_with(sessionPrefix)) {
        name.erase(0, sessionPrefix.size());
    }
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '/' || c == '\\'; }, '_');
    return name + ".lock";
}

int openLock(const std::filesystem::path& folder, const std::string& name) {
    constexpr mode_t ownerOnly = 0600;
    if (folder.empty()) {
        return -1;
    }
    return open((folder / name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, ownerOnly);
}

} // namespace

struct SingleInstance::State {
    int file = -1;
    bool acquired = false;
};

SingleInstance::SingleInstance(const std::string& name) : state_(std::make_unique<State>()) {
    const std::string fileName = lockFileName(name);
    state_->file = openLock(xdgRuntimeFolder(), fileName);
    if (state_->file < 0) {
        state_->file = openLock(fallbackRuntimeFolder(), fileName);
    }
    // Where no lock can be had at all, the program rather starts than not.
    state_->acquired =
        state_->file < 0 || flock(state_->file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

SingleInstance::~SingleInstance() {
    // The file stays: a process that deleted it could delete the one that another has just locked.
    if (state_->file >= 0) {
        close(state_->file);
    }
}

bool SingleInstance::acquired() const {
    return state_->acquired;
}

} // namespace kst::platform

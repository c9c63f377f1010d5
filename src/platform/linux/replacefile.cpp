#include "platform/paths.h"
#include "platform/replacement.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kst::platform {

namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

/// Closes a file at the end of its scope.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const { return number_; }

private:
    int number_;
};

std::error_code writeAll(int file, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = write(file, content.data(), content.size());
        if (written > 0) {
            content.remove_prefix(static_cast<std::size_t>(written));
        } else if (written < 0 && errno != EINTR) {
            return lastError();
        }
    }
    return {};
}

std::error_code writeTemporary(const std::filesystem::path& temporary, const std::filesystem::path& target,
                               std::string_view content) {
    constexpr mode_t newFileMode = 0666; // less what the user's mask takes away
    const Descriptor file(open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, newFileMode));
    if (file.number() < 0) {
        return lastError();
    }
    struct stat old {};
    if (stat(target.c_str(), &old) == 0) {
        // Who may read the file stays as it was. Without effect on file systems that know no modes.
        static_cast<void>(fchmod(file.number(), old.st_mode & 07777));
    }
    if (const std::error_code error = writeAll(file.number(), content)) {
        return error;
    }
    return fsync(file.number()) == 0 ? std::error_code{} : lastError();
}

/// The new name itself must reach the disk. A file system that cannot do that for a folder is no reason to
/// report a failure: the new content is in place.
void flushFolder(const std::filesystem::path& folder) {
    const Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.number() >= 0) {
        fsync(descriptor.number());
    }
}

bool processRuns(std::uint32_t process) {
    const auto id = static_cast<pid_t>(process);
    return id > 0 && (kill(id, 0) == 0 || errno == EPERM);
}

} // namespace

std::error_code replaceFileContent(const std::filesystem::path& path, std::string_view content) {
    std::error_code ignored;
    std::filesystem::path target = path;
    if (std::filesystem::is_symlink(path, ignored)) {
        // What the link names is replaced, not the link.
        std::filesystem::path linked = std::filesystem::canonical(path, ignored);
        if (!ignored) {
            target = std::move(linked);
        }
    }
    const std::filesystem::path temporary = replacementPath(target, static_cast<std::uint32_t>(getpid()));
    std::error_code error = writeTemporary(temporary, target, content);
    if (!error && rename(temporary.c_str(), target.c_str()) != 0) {
        error = lastError();
    }
    if (error) {
        if (error != std::errc::file_exists) {
            unlink(temporary.c_str());
        }
        return error;
    }
    const std::filesystem::path folder = target.parent_path();
    flushFolder(folder.empty() ? "." : folder);
    return {};
}

void removeLeftovers(const std::filesystem::path& folder) {
    removeReplacements(folder, processRuns);
}

} // namespace kst::platform

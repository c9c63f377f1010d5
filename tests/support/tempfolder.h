#pragma once

#include "support/userfolders.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kst::test {

/// A fresh working folder for one test, as an install folder looks before the first start: it is the working
/// directory, holds an empty docs/, and the user's folders (roaming, program data, documents, public
/// documents, runtime) lie in it. All is put back and deleted at the end. One at a time; no other thread may
/// run at its beginning and its end.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// The user's folder of application data.
    std::filesystem::path roaming() const { return path_ / "user" / "roaming"; }
    std::filesystem::path programData() const { return path_ / "user" / "programdata"; }
    std::filesystem::path documents() const { return path_ / "user" / "documents"; }
    std::filesystem::path publicDocuments() const { return path_ / "user" / "public"; }
    std::filesystem::path runtime() const { return path_ / "user" / "runtime"; }

    /// Writes a file below the folder, creating its folders, and returns its path.
    std::filesystem::path write(const std::filesystem::path& name, std::string_view content) const;
    /// The content of a file below the folder; nothing when it does not exist.
    std::optional<std::string> read(const std::filesystem::path& name) const;

private:
    std::filesystem::path path_;
    std::filesystem::path workingDirectoryBefore_;
    UserFolders userFolders_;
};

} // namespace kst::test

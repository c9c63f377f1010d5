#pragma once

#include <filesystem>
#include <memory>

namespace kst::test {

/// Lets the folders of the user that the system names be others for this process, each created empty below
/// `parent`: roaming, programdata, documents, public, and runtime where the system has such a folder. All is
/// put back by the destructor. One at a time; no other thread may run at its beginning and its end.
class UserFolders {
public:
    explicit UserFolders(const std::filesystem::path& parent);
    ~UserFolders();
    UserFolders(const UserFolders&) = delete;
    UserFolders& operator=(const UserFolders&) = delete;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace kst::test

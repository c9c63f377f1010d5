#include "support/userfolders.h"

#include "support/win32/privateregistry.h"

namespace kst::test {

struct UserFolders::State {
    PrivateRegistry registry;
};

UserFolders::UserFolders(const std::filesystem::path& parent) : state_(std::make_unique<State>()) {
    struct Folder {
        HKEY hive;
        const wchar_t* valueName;
        const wchar_t* folder;
    };
    const Folder folders[] = {{HKEY_CURRENT_USER, L"AppData", L"roaming"},
                              {HKEY_CURRENT_USER, L"Personal", L"documents"},
                              {HKEY_LOCAL_MACHINE, L"Common AppData", L"programdata"},
                              {HKEY_LOCAL_MACHINE, L"Common Documents", L"public"}};
    for (const Folder& folder : folders) {
        const std::filesystem::path path = parent / folder.folder;
        std::filesystem::create_directories(path);
        setRegistryText(folder.hive,
                        L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
                        folder.valueName, path.native());
    }
}

UserFolders::~UserFolders() = default;

} // namespace kst::test

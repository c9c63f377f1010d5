#include "platform/knownfolders.h"

#include <windows.h>

#include <combaseapi.h>
#include <shlobj.h>

namespace kst::platform {

namespace {

std::filesystem::path knownFolder(const KNOWNFOLDERID& id) {
    wchar_t* text = nullptr;
    const HRESULT result = SHGetKnownFolderPath(id, KF_FLAG_DONT_VERIFY, nullptr, &text);
    std::filesystem::path folder;
    if (SUCCEEDED(result) && text != nullptr) {
        folder = text;
    }
    CoTaskMemFree(text);
    return folder;
}

} // namespace

std::filesystem::path roamingAppData() {
    return knownFolder(FOLDERID_RoamingAppData);
}

std::filesystem::path programData() {
    return knownFolder(FOLDERID_ProgramData);
}

std::filesystem::path userDocuments() {
    return knownFolder(FOLDERID_Documents);
}

std::filesystem::path publicDocuments() {
    return knownFolder(FOLDERID_PublicDocuments);
}

} // namespace kst::platform

#include "support/userfolders.h"

#include "support/environment.h"

#include <cstdlib>
#include <map>
#include <optional>

namespace kst::test {

struct UserFolders::State {
    std::map<std::string, std::optional<std::string>> variablesBefore;
};

UserFolders::UserFolders(const std::filesystem::path& parent) : state_(std::make_unique<State>()) {
    const std::pair<const char*, const char*> variables[] = {{"XDG_CONFIG_HOME", "roaming"},
                                                             {"XDG_DATA_HOME", "programdata"},
                                                             {"XDG_DOCUMENTS_DIR", "documents"},
                                                             {"XDG_PUBLICSHARE_DIR", "public"},
                                                             {"XDG_RUNTIME_DIR", "runtime"}};
    for (const auto& [name, folder] : variables) {
        std::filesystem::create_directories(parent / folder);
        const char* before = std::getenv(name);
        state_->variablesBefore[name] = before != nullptr ? std::optional<std::string>(before) : std::nullopt;
        setEnvironment(name, (parent / folder).string());
    }
}

UserFolders::~UserFolders() {
    for (const auto& [name, value] : state_->variablesBefore) {
        setEnvironment(name, value);
    }
}

} // namespace kst::test

#pragma once

// Windows programs under Wine, in the prefix of scripts/wine-run.

#include <filesystem>
#include <string>
#include <vector>

namespace kst::test::wine {

/// The build of the Windows program.
std::filesystem::path buildFolder();

/// The words that start a program of that build.
std::vector<std::string> program(const std::string& name);

/// The words that start any Windows program with arguments.
std::vector<std::string> words(const std::filesystem::path& file, const std::vector<std::string>& arguments);

/// A path of this machine as a Windows program writes it.
std::string pathText(const std::filesystem::path& path);

/// Runs a program of Wine itself to its end.
void run(const std::vector<std::string>& words);

struct RegistryValue {
    std::string key; ///< with its hive
    std::string name;
    std::string text; ///< UTF-8
};

/// Writes text values. They stay; `folder` is for a file on the way.
void setRegistry(const std::filesystem::path& folder, const std::vector<RegistryValue>& values);

} // namespace kst::test::wine

#pragma once

#include <filesystem>

namespace kst::platform {

// Folders that the system keeps per user or for all users. Not created by the query; empty when the system
// cannot say. The table of what they are on each system is in docs/development.md.
std::filesystem::path roamingAppData();
std::filesystem::path programData();
std::filesystem::path userDocuments();
std::filesystem::path publicDocuments();

} // namespace kst::platform

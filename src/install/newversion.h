#pragma once

#include "install/download.h"
#include "install/version.h"

namespace kst {

/// The newest version that the server offers; 0.0.0 when it cannot be had.
ProgramVersion lf_fetchVersion(const DownloadHandle& handle, const std::string& url);

/// Fetches and unpacks the installer of this version to install_new_version.exe in the working folder.
bool lf_downloadInstaller(const ProgramVersion& version);

} // namespace kst

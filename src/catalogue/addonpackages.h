#pragma once

// Where the simulator itself keeps aircraft: the add-on packages that its configuration files name.

#include <string>
#include <vector>

namespace kst {

/// Appends the aircraft folders of the packages in the user's add-ons.cfg, in its order. A folder is not
/// looked at. A missing or broken file is logged and gives none. Worker.
void lf_readP3DAddOnsAircraft(std::vector<std::string>& folders);
/// The same for the machine's simobjects.cfg, without the simulator's own classes of objects.
void lf_readP3DSimObjects(std::vector<std::string>& folders);

/// What the lines of the three kinds of files name, as text: the folders of the packages in add-ons.cfg, the
/// aircraft folders in a package's add-on.xml, the folders in simobjects.cfg.
std::vector<std::string> packagesOfAddOns(std::vector<std::string> lines);
std::vector<std::string> foldersOfPackage(const std::vector<std::string>& lines);
std::vector<std::string> foldersOfSimObjects(std::vector<std::string> lines);

} // namespace kst

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

} // namespace kst

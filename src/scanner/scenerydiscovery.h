#pragma once

// Where add-on scenery lies: in the folders of the simulator's own configuration, or in those that the user
// names. Each function appends to `folders`, in the order found; the same folder may come twice. Worker.

#include <string>
#include <vector>

namespace kst {

/// The folders of the active areas of scenery.cfg that lie on this machine and are not the simulator's own.
void lf_readSceneryCfg(std::vector<std::string>& folders);

/// The folders of scenery_add-ons.xml.
void lf_readSceneryAddOns(std::vector<std::string>& folders);

/// The parameters `afolder0` to `afolder9` that are set. Throws UserErrorException 42 when one lies in the
/// stock airports.
void lf_collectAfolders(std::vector<std::string>& folders);

} // namespace kst

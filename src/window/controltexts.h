#pragma once

#include <string>

namespace kst {

/// What a screen reader says of the control with this number.
std::string accessibleName(int controlId);
/// What the control does, with the parameter it changes and, for a number, its limits and default.
std::string toolTip(int controlId);
/// The words on a push button, empty for any other control.
std::string buttonCaption(int controlId);

} // namespace kst

#pragma once

// What each control does. A change takes effect at once, in memory and in parameters.xml. All of it runs on
// the user interface thread; what concerns the tables of aircraft is handed to the worker.

#include "core/parameters.h"

#include <string_view>

namespace kst {

/// A click on a check box or push button. True when the id belongs to one. Never throws.
bool lf_HandleWMCOMMAND(int controlId);

/// Enter in a text box that holds `boxText` (UTF-8, as the operator left it). Never throws.
void lf_enterTextBox(int controlId, std::string_view boxText);

/// Takes a whole number from the text of the parameter's box; out of limits it is clamped. Tells the operator
/// what holds and writes it back into the box. True when the value changed.
bool lf_processTbInt(IntParameter& parameter, std::string_view boxText);
/// The same for `MAX_FIT_FL`, which moves to the nearest half hour and takes `MAX_FIT` along.
bool lf_processTbFloat(FloatParameter& parameter, std::string_view boxText);

/// Tells the operator when a change of the parking settings takes effect and schedules the renewal. Does
/// nothing without a park airport.
void lf_respondParkChange();

void lf_setBlockCallsign(std::string_view boxText);
void lf_unblock();
void lf_setDestinationText(std::string_view boxText);
void lf_setInstallPath(std::string_view boxText);

} // namespace kst

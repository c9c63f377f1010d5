#pragma once

// What each control does. User interface thread.

namespace kst {

/// A click on a check box or push button. True when the id belongs to one.
bool lf_HandleWMCOMMAND(int controlId);
/// Enter in a text box.
void lf_enterTextBox(int controlId);

} // namespace kst

#pragma once

// What a Win32 window needs of the message loop beyond the common interface.

namespace kst::platform {

/// Runs the message loop inside a message, until `quitMessageLoop` or the time is over. The loop outside then
/// ends as well.
void runNestedMessageLoop(unsigned limitMilliseconds);

} // namespace kst::platform

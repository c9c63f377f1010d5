#pragma once

namespace kst {

/// The program itself, called by the system's entry point (platform/<system>/entry.cpp) once the toolkit of
/// the window is ready. Returns the process's result. Defined in core/run.
int programMain();

} // namespace kst

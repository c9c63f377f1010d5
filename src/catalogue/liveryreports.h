#pragma once

#include "model/category.h"

namespace kst {

/// Logs the models that have a generic livery.
void gf_reportGenerics();

/// Logs what is installed of a size class, and remembers the models of the small classes for the last rung of
/// the ladder. The switch of a class that has no livery goes off and its check box is disabled. Worker.
void gf_reportCategory(Category category);

} // namespace kst

#pragma once

// What the user flies: title, model, wing span, size class. Dispatch thread.

#include <string_view>

namespace kst {

/// The title of the user's aircraft has come.
void lf_onTitle(std::string_view title);
/// The model has come: works out wing span and size class. Throws UserErrorException 71 for an empty one.
void lf_onModel(std::string_view model);

} // namespace kst

#pragma once

// Puts one text into its place, whatever the text is.

#include "platform/ui.h"
#include "window/layout.h"

#include <string>
#include <string_view>

namespace kst {

/// The text as one line that is not wider than `width` layout pixels: control characters become blanks, and a
/// text that is too wide ends in an ellipsis. Throws platform::TextConversionError when it is not UTF-8.
std::string fittedText(platform::Painter& painter, std::string_view text, int width);

/// Draws the text with `tail` behind it at the field's place, no further than its room; where both do not fit
/// the text is shortened before the tail is. What cannot be converted is logged and left out. Returns the x
/// at which the text ends.
int drawField(platform::Painter& painter, const layout::Field& field, std::string_view text,
              platform::Colour colour, std::string_view tail = {});

/// The same on a light band, where bright letters get a dark shadow to be readable.
void drawOnLight(platform::Painter& painter, const layout::Field& field, std::string_view text,
                 platform::Colour colour, platform::Colour shadow);

} // namespace kst

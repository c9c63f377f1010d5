#pragma once

// What a person does to the window, and what a person or a screen reader sees of it. Only the driver of each
// system knows its toolkit.

#include "platform/ui.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kst::test {

/// Lets the window serve all that waits.
void settle();

void clickControl(int controlId);
void pressSpace(int controlId);
void pressEnter(int controlId);
/// Types or pastes the text at the end of the box.
void typeText(int controlId, std::string_view text);
void pasteText(int controlId, std::string_view text);
/// The mark of a check box as shown.
bool isChecked(int controlId);
/// Toggles as assistive technology does, without a click.
void toggleAccessibly(int controlId);

/// Gives the window the keyboard and presses Tab; returns the control that has it then.
int pressTab();
void focusControl(int controlId);

void clickCloseButton();
bool windowIsVisible();
int windowWidth();
int windowHeight();
/// A change of the window's size by the user takes effect.
bool windowCanBeResized();
bool windowIsTopMost();

std::string shownToolTip(int controlId);
std::string spokenName(int controlId);
/// The system has a service that gives text boxes and buttons names of their own.
bool namesAreTaken();

/// The colour on the screen at a layout pixel.
platform::Colour pixelAt(int x, int y);
/// A number that changes when the look of the control does.
std::uint64_t lookOf(int controlId);

} // namespace kst::test

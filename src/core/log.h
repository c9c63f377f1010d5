#pragma once

// The log file of the program, and the file names of its reports. Any thread; one line at a time.

#include <filesystem>
#include <string>
#include <string_view>

namespace kst {

inline constexpr std::string_view programName = "Kestrane_P3D";

/// The program's version as major.minor.patch.
std::string_view programVersionText();

/// Rotates Log.txt to Log0.txt to Log00.txt in the working directory, opens a new Log.txt and writes its
/// first line. Throws SysErrorException 40 when the file cannot be written.
void openLog();
void closeLog();
void flushLog();

/// Writes the text and a line end. Does nothing while the log is not open. Lines of one kind (the same text
/// before its first digit, core/linelimiter.h) that come faster than 100 a second are counted, and the count
/// is logged once a second instead.
void logLine(std::string_view text);
/// As `logLine` with the prefix "===> ".
void logAlert(std::string_view text);
/// As `logLine` with ten blanks in front.
void logIndented(std::string_view text);

/// A line of stars round a title: with n = width + extra rounded up to an even number and a title shorter
/// than n - 2, n/2 - 1 stars, a blank, the title, a blank, n/2 - 1 stars; a longer title alone; without title
/// n stars.
std::string bannerLine(int width, int extra, bool newlineBefore, bool newlineAfter, std::string_view title);

/// UTC time as HH:MM:SS.
std::string timeOfDay();
/// Date and time as asctime gives them, UTC, without the line end.
std::string nowText();
/// "{:.0f}" of a whole number, else "{:.1F}".
std::string formatHours(double hours);

} // namespace kst

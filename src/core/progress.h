#pragma once

// How far a scan or a download is, for the operator: a text with its count on the message line, and the bar
// below it.

#include "core/pacer.h"

#include <optional>
#include <string>
#include <string_view>

namespace kst {

/// The progress of one long task, from its construction to its end, which takes bar and text away. A task
/// that is over within half a second shows nothing. One thread.
class Progress {
public:
    Progress() = default;
    ~Progress() { end(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// True when it is time to show how far the task is, at most twice a second.
    bool due() { return pacer_.due(); }
    /// Shows the text and the share done, 0 to 1. Without a share the bar only moves.
    void show(std::string_view text, std::optional<double> share);
    void end();

private:
    Pacer pacer_{std::chrono::milliseconds{500}};
    std::string shown_;
    int step_ = 0; ///< of a bar that only moves
};

} // namespace kst

#pragma once

// What comes over the link from the traffic program: text commands, each ended by carriage return and line
// feed.

#include "model/units.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kst::standin {

struct LinkCommand {
    enum class Kind { AskVersion, UserPosition, SimulatorTime, Exit, Unreadable };
    Kind kind = Kind::Unreadable;
    LatLon position;               ///< of a position
    double altFt = 0.0;            ///< of a position
    double gsKt = 0.0;             ///< of a position
    double headingDeg = 0.0;       ///< of a position, true
    std::int64_t milliseconds = 0; ///< of a time, since 1970
    std::string text;              ///< the command as it came
};

/// Cuts the byte stream into commands. One connection, one thread.
class LinkCommandReader {
public:
    /// Takes the next bytes and returns the commands that are complete with them. A command longer than 1024
    /// bytes is unreadable.
    std::vector<LinkCommand> take(std::string_view bytes);

private:
    std::string rest_;
};

/// The reply to the question for the version.
std::string versionReply(std::string_view version, int level);

} // namespace kst::standin

#pragma once

// The queue between the Traffic Reader and the worker: everything that crosses between them.

#include "model/feedmessage.h"

#include <cstddef>
#include <vector>

namespace kst {

/// How many records may wait, about eight minutes of what the worker takes at most. Beyond it each new record
/// pushes the oldest out, so that a feed can never fill the memory.
inline constexpr std::size_t feedQueueLimit = 100'000;

/// Opens or closes the queue for the reader. Worker, exit thread.
void setFeedOpen(bool open);
/// Adds the record at the back, with `expiry` set 30 seconds ahead, unless the queue is closed (then false,
/// the record is lost). Traffic Reader.
bool pushFeedMessage(FeedMessage&& message);
/// Takes at most `limit` records from the front into `out` (cleared first) and returns how many. The storage
/// of `out` is reused. The log tells once a minute when records wait for longer than five seconds. Worker.
std::size_t takeFeedMessages(std::vector<FeedMessage>& out, std::size_t limit);
/// Empties the queue and closes it.
void resetFeedQueue();

} // namespace kst

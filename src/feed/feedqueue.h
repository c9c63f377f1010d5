#pragma once

// The queue between the Traffic Reader and the worker: everything that crosses between them.

#include "model/feedmessage.h"

#include <cstddef>
#include <vector>

namespace kst {

/// Opens or closes the queue for the reader. Worker, exit thread.
void setFeedOpen(bool open);
/// Adds the record at the back, with `expiry` set 30 seconds ahead, unless the queue is closed (then false,
/// the record is lost). Traffic Reader.
bool pushFeedMessage(FeedMessage&& message);
/// Takes at most `limit` records from the front into `out` (cleared first) and returns how many. The storage
/// of `out` is reused. Worker.
std::size_t takeFeedMessages(std::vector<FeedMessage>& out, std::size_t limit);
/// Empties the queue and closes it.
void resetFeedQueue();

} // namespace kst

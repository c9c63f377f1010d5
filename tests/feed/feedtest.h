#pragma once

// What the tests of the feed share: a line of the feed with any field replaced, and a state with nothing left
// over from the test before.

#include "core/display.h"
#include "core/log.h"
#include "core/parkairport.h"
#include "core/reasoncounts.h"
#include "core/runstate.h"
#include "feed/feedqueue.h"
#include "feed/qnhreader.h"
#include "feed/readers.h"
#include "feed/trafficreader.h"

#include <array>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/tempfolder.h"

namespace kst::test {

using Changes = std::vector<std::pair<std::size_t, std::string>>;

/// A good line of an aircraft 10 nm north of the reference position, with the fields of `changes` replaced.
std::string trafficLine(const Changes& changes = {});

/// Waits until the condition holds; false after ten seconds.
bool waitUntil(const std::function<bool()>& condition);

class FeedTest : public ::testing::Test {
protected:
    FeedTest();
    ~FeedTest() override;

    /// Hands the line to the Traffic Reader as one datagram and takes what it queued.
    std::vector<FeedMessage> feed(std::string_view line);
    /// The one record that the line gives; fails the test and gives an empty record if it gives none.
    FeedMessage accepted(const std::string& line);
    /// How the log ends since the last call.
    std::string newLog();

    const TempFolder& folder() const { return folder_; }

    static constexpr LatLon reference{47.0, 8.0};
    /// A park airport 6 nm north of the reference position, 4 nm from the good line's aircraft.
    static ParkAirportFacts nearAirport();

private:
    TempFolder folder_;
    std::size_t logRead_ = 0;
};

/// Puts the text into the reader's buffer as a received datagram.
void giveDatagram(FeedReader& reader, std::string_view bytes);

} // namespace kst::test

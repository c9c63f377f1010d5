#pragma once

// The QNH Reader: takes the pressure at sea level out of the weather datagrams, each one JSON object with the
// key QNH: a number, or a text that begins with one. Above 1080 it is in hundredths of an inch of mercury,
// else in hectopascals.

#include "core/runstate.h"
#include "feed/feedreader.h"

namespace kst {

class QnhReader : public FeedReader {
public:
    QnhReader() : FeedReader(false) {}

    /// Reads the datagram and sets `qnh`. QNH Reader thread.
    void processLine() override;
    void stopped() override;

    std::atomic<int> lastQnh{standardQnh}; ///< hectopascals

private:
    void readWeather();
};

/// The one QNH Reader of the process.
extern QnhReader qnhReader;

} // namespace kst

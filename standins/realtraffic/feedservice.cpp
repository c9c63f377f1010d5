#include "feedservice.h"

#include "geometry.h"

#include <algorithm>
#include <fmt/format.h>

namespace kst::standin {

namespace {

using namespace std::chrono_literals;

constexpr auto stepTime = 20ms;
constexpr auto retryTime = 500ms;
constexpr double weatherEverySeconds = 10.0;
constexpr std::string_view versionTold = "10.0";
constexpr std::size_t longestGarbage = 1400;
constexpr std::string_view garbageAlphabet = "0123456789,,,,..--naif\"{}:eE \r\nABCXYZ";

double secondsOf(std::chrono::nanoseconds time) {
    return std::chrono::duration<double>(time).count();
}

void tell(const std::string& text) {
    fmt::print("{}\n", text);
    std::fflush(stdout);
}

} // namespace

FeedService::FeedService(asio::io_context& context, const ServiceOptions& options, SourceMaker makeSource,
                         SentLog* sent)
    : options_(options), makeSource_(std::move(makeSource)), sent_(sent), link_(context),
      udp_(context, asio::ip::udp::endpoint(asio::ip::udp::v4(), 0)),
      trafficTo_(asio::ip::make_address(options.sendTo), options.trafficPort),
      weatherTo_(asio::ip::make_address(options.sendTo), options.weatherPort), retry_(context),
      steps_(context), random_(options.seed) {}

void FeedService::start() {
    if (options_.withLink) {
        connect();
    } else {
        begin({});
    }
}

void FeedService::stop() {
    stopped_ = true;
    retry_.cancel();
    steps_.cancel();
    closeLink();
}

void FeedService::connect() {
    if (stopped_) {
        return;
    }
    asio::error_code failed;
    const auto address = asio::ip::make_address(options_.linkHost, failed);
    if (failed) {
        tell(fmt::format("no address: {}", options_.linkHost));
        return;
    }
    link_.async_connect({address, options_.linkPort}, [this](const asio::error_code& error) {
        if (stopped_) {
            return;
        }
        if (error) {
            asio::error_code ignored;
            link_.close(ignored);
            retryIn(retryTime);
            return;
        }
        linked_ = true;
        ++counts_.links;
        commands_ = LinkCommandReader();
        tell("link connected");
        readLink();
    });
}

void FeedService::retryIn(std::chrono::milliseconds wait) {
    retry_.expires_after(wait);
    retry_.async_wait([this](const asio::error_code& error) {
        if (!error) {
            connect();
        }
    });
}

void FeedService::readLink() {
    link_.async_read_some(asio::buffer(linkBuffer_), [this](const asio::error_code& error, std::size_t size) {
        if (stopped_ || !linked_) {
            return;
        }
        if (error) {
            tell("link closed by the program");
            closeLink();
            retryIn(retryTime);
            return;
        }
        for (const LinkCommand& command : commands_.take({linkBuffer_.data(), size})) {
            answer(command);
            if (!linked_) {
                return;
            }
        }
        readLink();
    });
}

void FeedService::answer(const LinkCommand& command) {
    switch (command.kind) {
    case LinkCommand::Kind::AskVersion: {
        const std::string reply = versionReply(versionTold, options_.level);
        asio::error_code ignored;
        asio::write(link_, asio::buffer(reply), ignored);
        return;
    }
    case LinkCommand::Kind::UserPosition:
        ++counts_.positions;
        user_ = command.position;
        if (source_ == nullptr) {
            begin(command.position);
        }
        return;
    case LinkCommand::Kind::SimulatorTime:
        ++counts_.times;
        simulatorTime_ = {static_cast<double>(command.milliseconds) / 1000.0, Clock::now()};
        return;
    case LinkCommand::Kind::Exit:
        tell("the program says exit");
        closeLink();
        retryIn(retryTime);
        return;
    case LinkCommand::Kind::Unreadable:
        ++counts_.unreadableCommands;
        tell(fmt::format("unreadable command: {}", command.text));
        return;
    }
}

void FeedService::closeLink() {
    linked_ = false;
    asio::error_code ignored;
    link_.close(ignored);
}

void FeedService::begin(LatLon user) {
    source_ = makeSource_(user);
    began_ = Clock::now();
    tell(fmt::format("traffic begins, user at {:.4f} {:.4f}", user.lat, user.lon));
    everyStep();
}

void FeedService::everyStep() {
    const double seconds = secondsOf(Clock::now() - began_);
    followLinkPlan(seconds);
    sendWeather(seconds);
    sendDue(seconds);
    sendGarbage(seconds);
    steps_.expires_after(stepTime);
    steps_.async_wait([this](const asio::error_code& error) {
        if (!error && !stopped_) {
            everyStep();
        }
    });
}

void FeedService::followLinkPlan(double seconds) {
    if (options_.dropLinkAfterSeconds <= 0.0) {
        return;
    }
    if (!linkDropped_ && seconds >= options_.dropLinkAfterSeconds) {
        linkDropped_ = true;
        tell("link dropped as planned");
        retry_.cancel();
        closeLink();
    }
    const double restoreAt = options_.dropLinkAfterSeconds + options_.restoreAfterSeconds;
    if (linkDropped_ && !linkRestored_ && seconds >= restoreAt) {
        linkRestored_ = true;
        connect();
    }
}

void FeedService::sendDue(double seconds) {
    due_.clear();
    source_->takeDue(seconds, due_);
    const double timestamp = feedTime();
    for (const TrafficReport& report : due_) {
        const bool silent = options_.withLink && !linked_;
        const bool farAway =
            options_.radiusNm > 0.0 && user_ && distanceNm(*user_, report.position) > options_.radiusNm;
        if (silent || farAway) {
            ++counts_.linesLeftOut;
            continue;
        }
        send(trafficTo_, trafficLine(report, timestamp));
        ++counts_.lines;
        if (sent_ != nullptr) {
            sent_->add(secondsOf(std::chrono::system_clock::now().time_since_epoch()), report);
        }
    }
}

void FeedService::sendWeather(double seconds) {
    if (seconds >= nextWeather_ && (linked_ || !options_.withLink)) {
        nextWeather_ = seconds + weatherEverySeconds;
        send(weatherTo_, weatherLine("LOCAL", options_.qnhHpa, feedTime()));
        ++counts_.weather;
    }
}

void FeedService::sendGarbage(double seconds) {
    const double begin = options_.garbageFromSeconds;
    const double end = begin + options_.garbageSeconds;
    const double share = std::clamp(seconds, begin, end) - std::clamp(lastGarbage_, begin, end);
    lastGarbage_ = seconds;
    garbageOwed_ += share * options_.garbagePerSecond;
    std::string text;
    for (; garbageOwed_ >= 1.0; garbageOwed_ -= 1.0) {
        text.resize(1 + random_() % longestGarbage);
        // Half of it raw bytes, half of it letters that a line of traffic is made of.
        const bool raw = random_() % 2 == 0;
        for (char& letter : text) {
            const auto draw = static_cast<std::uint32_t>(random_());
            letter = raw ? static_cast<char>(draw & 0xFFU) : garbageAlphabet[draw % garbageAlphabet.size()];
        }
        send(random_() % 8 == 0 ? weatherTo_ : trafficTo_, text);
        ++counts_.garbage;
    }
}

void FeedService::send(const asio::ip::udp::endpoint& to, const std::string& text) {
    asio::error_code error;
    udp_.send_to(asio::buffer(text), to, 0, error);
    if (error) {
        ++counts_.sendErrors;
    }
}

double FeedService::feedTime() const {
    if (simulatorTime_) {
        return simulatorTime_->first + secondsOf(Clock::now() - simulatorTime_->second);
    }
    return secondsOf(std::chrono::system_clock::now().time_since_epoch());
}

} // namespace kst::standin

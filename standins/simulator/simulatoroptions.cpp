#include "standins/simulator/simulatoroptions.h"

#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <stdexcept>

namespace kst::standin {

namespace {

constexpr std::string_view defaultPipe = R"(\\.\pipe\Lockheed Martin Prepar3D v5\SimConnect)";
constexpr double fewestFrames = 1.0;
constexpr double mostFrames = 200.0;
constexpr double longestInterval = 3600.0;

/// Walks through the arguments.
class ArgumentReader {
public:
    explicit ArgumentReader(const std::vector<std::string_view>& arguments) : arguments_(arguments) {}

    bool next() { return ++index_ < arguments_.size(); }
    std::string_view name() const { return arguments_[index_]; }
    std::string_view value() {
        if (index_ + 1 >= arguments_.size())
            throw std::invalid_argument(fmt::format("{} needs a value", name()));
        option_ = arguments_[index_];
        return arguments_[++index_];
    }
    double number(double least, double most) {
        const std::string_view text = value();
        return parse(text, least, most);
    }
    std::uint16_t port() {
        return static_cast<std::uint16_t>(number(0.0, std::numeric_limits<std::uint16_t>::max()));
    }
    /// `fewest` to `most` numbers with commas between.
    std::vector<double> numbers(std::size_t fewest, std::size_t most) {
        std::string_view text = value();
        std::vector<double> result;
        while (true) {
            const std::size_t comma = text.find(',');
            result.push_back(parse(text.substr(0, comma), -1e9, 1e9));
            if (comma == std::string_view::npos)
                break;
            text.remove_prefix(comma + 1);
        }
        if (result.size() < fewest || result.size() > most)
            throw std::invalid_argument(fmt::format("{} takes {} to {} numbers", option_, fewest, most));
        return result;
    }

private:
    double parse(std::string_view text, double least, double most) const {
        double result = 0.0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
        if (error != std::errc() || end != text.data() + text.size() || !(result >= least && result <= most))
            throw std::invalid_argument(
                fmt::format("{}: \"{}\" is not a number from {} to {}", option_, text, least, most));
        return result;
    }

    const std::vector<std::string_view>& arguments_;
    std::size_t index_ = static_cast<std::size_t>(-1);
    std::string_view option_;
};

void checkPlace(double lat, double lon) {
    if (std::abs(lat) > 90.0 || std::abs(lon) > 180.0)
        throw std::invalid_argument(fmt::format("{},{} is no place on earth", lat, lon));
}

void readUser(SimulatorOptions& options, const std::vector<double>& numbers) {
    checkPlace(numbers[0], numbers[1]);
    options.userLat = numbers[0];
    options.userLon = numbers[1];
    options.userAltFt = numbers[2];
    options.userHeadingDeg = numbers.size() > 3 ? numbers[3] : 0.0;
    options.userSpeedKt = numbers.size() > 4 ? numbers[4] : 0.0;
    options.userOnGround = false;
}

void readOption(SimulatorOptions& options, ArgumentReader& arguments, bool& onGround) {
    constexpr double lastSecond = 4102444800.0; // the year 2100
    constexpr double week = 7.0 * 86400.0;
    const std::string_view name = arguments.name();
    if (name == "--help") {
        options.help = true;
    } else if (name == "--pipe") {
        options.pipe = arguments.value();
    } else if (name == "--tcp") {
        options.tcpPort = arguments.port();
    } else if (name == "--http") {
        options.httpPort = arguments.port();
    } else if (name == "--user") {
        readUser(options, arguments.numbers(3, 5));
    } else if (name == "--on-ground") {
        onGround = true;
    } else if (name == "--title") {
        options.title = arguments.value();
    } else if (name == "--model") {
        options.model = arguments.value();
    } else if (name == "--time") {
        options.utcSeconds = arguments.number(0.0, lastSecond);
    } else if (name == "--frames") {
        options.framesPerSecond = arguments.number(fewestFrames, mostFrames);
    } else if (name == "--history") {
        options.historyFile = arguments.value();
    } else if (name == "--history-interval") {
        options.historyInterval = arguments.number(0.0, longestInterval);
    } else if (name == "--seconds") {
        options.runSeconds = arguments.number(0.0, week);
    } else if (name == "--airport") {
        const std::vector<double> numbers = arguments.numbers(3, 3);
        checkPlace(numbers[0], numbers[1]);
        options.airports.push_back({numbers[0], numbers[1], numbers[2]});
    } else {
        throw std::invalid_argument(fmt::format("{} is not an option; see --help", name));
    }
}

} // namespace

SimulatorOptions readSimulatorOptions(const std::vector<std::string_view>& arguments) {
    SimulatorOptions options;
    ArgumentReader reader(arguments);
    bool onGround = false;
    while (reader.next())
        readOption(options, reader, onGround);
    options.userOnGround = options.userOnGround || onGround;
    if (options.pipe.empty() && !options.tcpPort)
        options.pipe = defaultPipe;
    return options;
}

std::string_view simulatorOptionsHelp() {
    return R"(simulator-standin: stands in for the flight simulator on this PC.

  --pipe NAME        serve clients on this pipe, for example \\.\pipe\Test\SimConnect
  --tcp PORT         serve clients on 127.0.0.1; 0 is a free port, which is printed
                     (without either: the simulator's own pipe)
  --http PORT        radar page on 127.0.0.1; 0, the default, is a free port, which is printed
  --user LAT,LON,ALT[,HEADING[,KT]]
                     the user's aircraft: degrees, feet, degrees true, knots; it flies straight on
                     (without: it stands at Zurich)
  --on-ground        the user's aircraft is on the ground, whatever its altitude
  --title TEXT       the user's aircraft title
  --model TEXT       its ATC model
  --airport LAT,LON,ELEV
                     flat ground of that elevation in feet for 5 nm around; may be repeated
  --time SECONDS     simulated UTC time at the start, since 1970 (without: now)
  --frames N         frames a second, 1 to 200 (30)
  --history FILE     writes every object's history there, as CSV
  --history-interval SECONDS
                     between two points of one object (1)
  --seconds N        ends by itself after that time
  --help             this text
)";
}

} // namespace kst::standin

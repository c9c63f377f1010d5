// downloadserver-standin: serves a folder as the download server does. See --help.

#include "downloadserver.h"

#include <asio.hpp>
#include <charconv>
#include <csignal>
#include <exception>
#include <fmt/format.h>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace {

using namespace kst::standin;

constexpr std::string_view helpText =
    "Serves a folder below /downloads/ on 127.0.0.1.\n\n"
    "  --folder DIR         what to serve\n"
    "  --port N             where (0: any free port)\n"
    "  --https              with a certificate made at the start\n"
    "  --cert FILE          HTTPS with this certificate (PEM), together with --key\n"
    "  --key FILE           and its key (PEM)\n"
    "  --ca-out FILE        write the certificate to trust\n"
    "  --only TEXT          the faults hold only for paths that contain TEXT\n"
    "  --status CODE        fault: answer with this status\n"
    "  --redirect ADDRESS   fault: send the client elsewhere\n"
    "  --truncate BYTES     fault: close after so many bytes\n"
    "  --stall SECONDS      fault: say nothing for so long\n"
    "  --endless            fault: send a content that never ends\n"
    "  --help               this list\n";

template <typename T>
T number(std::string_view name, std::string_view text) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < T{}) {
        throw std::runtime_error(fmt::format("{} takes a number, not \"{}\"", name, text));
    }
    return value;
}

struct Arguments {
    DownloadOptions server;
    std::string certificateFile;
    std::string keyFile;
    std::string certificateOut;
    bool help = false;
};

/// Takes an option without a value; false when `name` is none.
bool readSwitch(Arguments& arguments, std::string_view name) {
    if (name == "--https") {
        arguments.server.https = true;
    } else if (name == "--endless") {
        arguments.server.faults.endless = true;
    } else if (name == "--help") {
        arguments.help = true;
    } else {
        return false;
    }
    return true;
}

void readValue(Arguments& arguments, std::string_view name, const std::string& value) {
    DownloadFaults& faults = arguments.server.faults;
    if (name == "--folder") {
        arguments.server.folder = value;
    } else if (name == "--port") {
        arguments.server.port = number<std::uint16_t>(name, value);
    } else if (name == "--cert") {
        arguments.certificateFile = value;
    } else if (name == "--key") {
        arguments.keyFile = value;
    } else if (name == "--ca-out") {
        arguments.certificateOut = value;
    } else if (name == "--only") {
        faults.onlyPath = value;
    } else if (name == "--status") {
        faults.status = number<int>(name, value);
    } else if (name == "--redirect") {
        faults.redirect = value;
    } else if (name == "--truncate") {
        faults.truncate = number<std::size_t>(name, value);
    } else if (name == "--stall") {
        faults.stallSeconds = number<double>(name, value);
    } else {
        throw std::runtime_error(fmt::format("unknown option {}, see --help", name));
    }
}

Arguments readArguments(int argc, char** argv) {
    Arguments arguments;
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        if (readSwitch(arguments, name)) {
            continue;
        }
        if (++i == argc) {
            throw std::runtime_error(fmt::format("{} takes a value, see --help", name));
        }
        readValue(arguments, name, argv[i]);
    }
    if (arguments.certificateFile.empty() != arguments.keyFile.empty()) {
        throw std::runtime_error("--cert and --key belong together");
    }
    if (!arguments.certificateFile.empty()) {
        arguments.server.https = true;
        arguments.server.certificate = readCertificate(arguments.certificateFile, arguments.keyFile);
    }
    return arguments;
}

int run(Arguments arguments) {
    arguments.server.tellRequests = true;
    asio::io_context context;
    asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([](const asio::error_code&, int) {});
    const DownloadServer server(std::move(arguments.server));
    if (!arguments.certificateOut.empty()) {
        std::ofstream(arguments.certificateOut, std::ios::binary) << server.certificate();
    }
    fmt::print("port {}\nroot {}\n", server.port(), server.root());
    std::fflush(stdout);
    context.run();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        Arguments arguments = readArguments(argc, argv);
        if (arguments.help) {
            fmt::print("{}", helpText);
            return 0;
        }
        return run(std::move(arguments));
    } catch (const std::exception& error) {
        fmt::print(stderr, "downloadserver-standin: {}\n", error.what());
        return 2;
    }
}

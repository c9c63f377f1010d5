#include "downloadserver.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <fmt/format.h>
#include <fstream>
#include <httplib.h>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace kst::standin {

namespace {

constexpr std::string_view rootPath = "/downloads/";
constexpr std::size_t endlessBlock = 65536;

std::optional<std::string> readFile(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return std::nullopt;
    }
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

/// The file below the folder that a request path names; nothing when it would lead out of it.
std::optional<std::filesystem::path> fileOf(const std::filesystem::path& folder, std::string_view requested) {
    if (!requested.starts_with(rootPath)) {
        return std::nullopt;
    }
    const std::filesystem::path below(requested.substr(rootPath.size()));
    const bool leadsOut = std::find(below.begin(), below.end(), "..") != below.end();
    if (below.is_absolute() || leadsOut) {
        return std::nullopt;
    }
    return folder / below;
}

} // namespace

struct DownloadServer::State {
    DownloadOptions options;
    std::unique_ptr<httplib::Server> server;
    int port = 0;
    std::thread thread;
    mutable std::mutex lock;
    std::condition_variable ended;
    bool ending = false;
    std::vector<std::string> requests;

    bool fails(const std::string& path) const {
        return options.faults.onlyPath.empty() || path.find(options.faults.onlyPath) != std::string::npos;
    }

    /// Waits out a stall; false when the server ends meanwhile.
    bool stall() {
        std::unique_lock guard(lock);
        const std::chrono::duration<double> time(options.faults.stallSeconds);
        return !ended.wait_for(guard, time, [this] { return ending; });
    }

    void answer(const httplib::Request& request, httplib::Response& response) {
        const DownloadFaults& faults = options.faults;
        const bool failing = fails(request.path);
        if (failing && faults.status) {
            response.status = *faults.status;
            return;
        }
        if (failing && !faults.redirect.empty()) {
            response.set_redirect(faults.redirect);
            return;
        }
        if (failing && faults.endless) {
            sendEndless(response);
            return;
        }
        const auto path = fileOf(options.folder, request.path);
        auto content = path ? readFile(*path) : std::nullopt;
        if (!content) {
            response.status = 404;
            return;
        }
        if (failing && (faults.truncate || faults.stallSeconds > 0.0)) {
            sendFailing(response, std::move(*content));
            return;
        }
        response.set_content(*content, "application/octet-stream");
    }

    void sendFailing(httplib::Response& response, std::string content) {
        const std::size_t whole = content.size();
        const std::size_t sent = std::min(whole, options.faults.truncate.value_or(whole));
        auto stalled = std::make_shared<bool>(options.faults.stallSeconds <= 0.0);
        response.set_content_provider(whole, "application/octet-stream",
                                      [this, sent, stalled, content = std::move(content)](
                                          std::size_t offset, std::size_t length, httplib::DataSink& sink) {
                                          if (!*stalled) {
                                              *stalled = true;
                                              if (!stall()) {
                                                  return false;
                                              }
                                          }
                                          if (offset >= sent) {
                                              return false;
                                          }
                                          return sink.write(content.data() + offset,
                                                            std::min(length, sent - offset));
                                      });
    }

    void sendEndless(httplib::Response& response) {
        response.set_chunked_content_provider("application/octet-stream",
                                              [this](std::size_t, httplib::DataSink& sink) {
                                                  {
                                                      const std::lock_guard guard(lock);
                                                      if (ending) {
                                                          return false;
                                                      }
                                                  }
                                                  const std::string block(endlessBlock, 'x');
                                                  return sink.write(block.data(), block.size());
                                              });
    }

    void note(const httplib::Request& request, const httplib::Response& response) {
        // The library turns an unset status into 200 only when it sends.
        const std::string text =
            fmt::format("{} {}", request.path, response.status < 0 ? 200 : response.status);
        const std::lock_guard guard(lock);
        requests.push_back(text);
        if (options.tellRequests) {
            fmt::print("{} {}\n", request.method, text);
            std::fflush(stdout);
        }
    }
};

DownloadServer::DownloadServer(DownloadOptions options) : state_(std::make_unique<State>()) {
    State& state = *state_;
    state.options = std::move(options);
    if (!std::filesystem::is_directory(state.options.folder)) {
        throw std::runtime_error(fmt::format("no such folder: {}", state.options.folder.string()));
    }
    if (state.options.https) {
        if (!state.options.certificate) {
            state.options.certificate = makeTestCertificate();
        }
        const TestCertificate& pair = *state.options.certificate;
        state.server = std::make_unique<httplib::SSLServer>(pair.certificate.get(), pair.key.get());
    } else {
        state.server = std::make_unique<httplib::Server>();
    }
    state.server->Get(".*", [&state](const httplib::Request& request, httplib::Response& response) {
        state.answer(request, response);
        state.note(request, response);
    });
    const std::string host = "127.0.0.1";
    if (state.options.port == 0) {
        state.port = state.server->bind_to_any_port(host);
    } else if (state.server->bind_to_port(host, state.options.port)) {
        state.port = state.options.port;
    }
    if (state.port <= 0) {
        throw std::runtime_error(fmt::format("cannot listen at port {}", state.options.port));
    }
    state.thread = std::thread([&state] { state.server->listen_after_bind(); });
    // Only a server that runs can be stopped.
    while (!state.server->is_running()) {
        std::this_thread::yield();
    }
}

DownloadServer::~DownloadServer() {
    {
        const std::lock_guard guard(state_->lock);
        state_->ending = true;
    }
    state_->ended.notify_all();
    state_->server->stop();
    state_->thread.join();
}

int DownloadServer::port() const {
    return state_->port;
}

std::string DownloadServer::root() const {
    return fmt::format("{}://127.0.0.1:{}{}", state_->options.https ? "https" : "http", state_->port,
                       rootPath);
}

std::string DownloadServer::certificate() const {
    return state_->options.https ? certificatePem(*state_->options.certificate) : "";
}

std::vector<std::string> DownloadServer::requests() const {
    const std::lock_guard guard(state_->lock);
    return state_->requests;
}

} // namespace kst::standin

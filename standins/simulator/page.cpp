#include "standins/simulator/page.h"

#include "standins/simulator/radarjson.h"

#include <asio/post.hpp>
#include <charconv>
#include <chrono>
#include <fmt/format.h>
#include <functional>
#include <future>
#include <httplib.h>
#include <stdexcept>
#include <string>
#include <thread>

namespace kst::standin {

namespace {

constexpr auto answerPatience = std::chrono::seconds(1);
constexpr time_t keepAliveSeconds = 1; // bounds how long the end of the server waits for idle browsers
constexpr std::size_t largestControl = 64 * 1024;
constexpr const char* jsonType = "application/json";
constexpr int unavailable = 503;
constexpr int badRequest = 400;

} // namespace

struct RadarPage::State {
    State(asio::io_context& itsContext, World& itsWorld, SimulatorServer& itsServer)
        : context(itsContext), world(itsWorld), server(itsServer) {}

    asio::io_context& context;
    World& world;
    SimulatorServer& server;
    httplib::Server http;
    std::uint16_t port = 0;
    std::thread thread;

    /// Runs `question` on the simulator's thread and answers with its text, unless that thread is ending.
    void ask(httplib::Response& response, std::function<std::string()> question) {
        auto promise = std::make_shared<std::promise<std::string>>();
        std::future<std::string> answer = promise->get_future();
        asio::post(context, [promise, question = std::move(question)] { promise->set_value(question()); });
        if (answer.wait_for(answerPatience) != std::future_status::ready) {
            response.status = unavailable;
            return;
        }
        response.set_header("Cache-Control", "no-store");
        response.set_content(answer.get(), jsonType);
    }

    void control(const httplib::Request& request, httplib::Response& response) {
        // A page of another origin cannot send this type without asking first.
        if (request.get_header_value("Content-Type").rfind(jsonType, 0) != 0) {
            response.status = badRequest;
            response.set_content("the body must be application/json\n", "text/plain");
            return;
        }
        ask(response, [this, body = request.body] { return applyControl(world, body); });
        if (response.status == unavailable)
            return;
        const std::string wrong = response.body;
        if (!wrong.empty())
            response.status = badRequest;
        response.set_content(wrong.empty() ? "{}" : wrong, wrong.empty() ? jsonType : "text/plain");
    }

    void routes() {
        using httplib::Request;
        using httplib::Response;
        const auto file = [this](const char* path, std::string_view content, const char* type) {
            http.Get(path, [content, type](const Request&, Response& response) {
                response.set_content(content.data(), content.size(), type);
            });
        };
        file("/", radarHtml(), "text/html; charset=utf-8");
        file("/radar.js", radarJs(), "text/javascript; charset=utf-8");
        file("/radar.css", radarCss(), "text/css; charset=utf-8");
        http.Get("/state.json", [this](const Request&, Response& response) {
            ask(response, [this] { return stateJson(world, server.clientNames()); });
        });
        http.Get("/trails.json", [this](const Request&, Response& response) {
            ask(response, [this] { return trailsJson(world); });
        });
        http.Get("/history.json", [this](const Request& request, Response& response) {
            const std::string text = request.get_param_value("id");
            std::uint32_t id = 0;
            std::from_chars(text.data(), text.data() + text.size(), id);
            ask(response, [this, id] { return historyJson(world, id); });
        });
        http.Post("/control",
                  [this](const Request& request, Response& response) { control(request, response); });
        http.Post("/quit", [this](const Request&, Response& response) {
            ask(response, [this] {
                server.quit();
                return std::string("{}");
            });
        });
    }
};

RadarPage::RadarPage(asio::io_context& context, World& world, SimulatorServer& server, std::uint16_t port)
    : state_(std::make_unique<State>(context, world, server)) {
    httplib::Server& http = state_->http;
    http.set_keep_alive_timeout(keepAliveSeconds);
    http.set_payload_max_length(largestControl);
    http.new_task_queue = [] { return new httplib::ThreadPool(4); };
    state_->routes();
    if (port == 0) {
        const int bound = http.bind_to_any_port("127.0.0.1");
        if (bound <= 0)
            throw std::runtime_error("no free port for the radar page");
        state_->port = static_cast<std::uint16_t>(bound);
    } else {
        if (!http.bind_to_port("127.0.0.1", port))
            throw std::runtime_error(fmt::format("port {} for the radar page is taken", port));
        state_->port = port;
    }
    state_->thread = std::thread([&http] { http.listen_after_bind(); });
}

RadarPage::~RadarPage() {
    // Stopping before the thread has begun to listen would be lost.
    while (!state_->http.is_running() && state_->thread.joinable())
        std::this_thread::yield();
    state_->http.stop();
    state_->thread.join();
}

std::uint16_t RadarPage::port() const {
    return state_->port;
}

} // namespace kst::standin

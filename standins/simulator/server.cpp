#include "standins/simulator/server.h"

#include "platform/pipe.h"
#include "standins/simulator/session.h"

#include <algorithm>
#include <array>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <optional>
#include <utility>

namespace kst::standin {

namespace {

using Clock = asio::steady_timer::clock_type;
using asio::ip::tcp;

constexpr std::size_t readSize = 64 * 1024;
constexpr std::size_t writeSize = 64 * 1024;
constexpr auto quitPatience = std::chrono::seconds(1);
/// A machine that slept does not make the world jump.
constexpr double longestFrame = 0.25;

/// One client's byte stream, of whichever kind.
class Connection {
public:
    explicit Connection(World& world) : session_(world) {}
    virtual ~Connection() = default;
    /// Sends what the session has for the client; closes when it has ended.
    virtual void pump() = 0;
    virtual void close() = 0;
    virtual bool open() const = 0;
    const Session& session() const { return session_; }

protected:
    Session session_;
};

template <typename Stream>
class StreamConnection : public Connection, public std::enable_shared_from_this<StreamConnection<Stream>> {
public:
    StreamConnection(World& world, Stream stream) : Connection(world), stream_(std::move(stream)) {}

    void read() {
        stream_.async_read_some(asio::buffer(input_),
                                [self = this->shared_from_this()](asio::error_code error, std::size_t size) {
                                    if (error) {
                                        self->close();
                                        return;
                                    }
                                    self->session_.receive(ByteView(self->input_.data(), size));
                                    self->pump();
                                    if (self->stream_.is_open())
                                        self->read();
                                });
    }

    void pump() override {
        if (writing_ || !stream_.is_open())
            return;
        output_.clear();
        for (Bytes packet; output_.size() < writeSize && session_.take(packet);)
            output_.insert(output_.end(), packet.begin(), packet.end());
        if (output_.empty()) {
            if (session_.closed())
                close();
            return;
        }
        writing_ = true;
        asio::async_write(stream_, asio::buffer(output_),
                          [self = this->shared_from_this()](asio::error_code error, std::size_t) {
                              self->writing_ = false;
                              if (error)
                                  self->close();
                              else
                                  self->pump();
                          });
    }

    void close() override {
        asio::error_code ignored;
        stream_.close(ignored);
    }

    bool open() const override { return stream_.is_open(); }

private:
    Stream stream_;
    std::array<std::uint8_t, readSize> input_{};
    Bytes output_;
    bool writing_ = false;
};

} // namespace

struct SimulatorServer::State : std::enable_shared_from_this<SimulatorServer::State> {
    State(SimulatorServer& owner, asio::io_context& itsContext, World& itsWorld, double framesPerSecond)
        : server(owner), context(itsContext), world(itsWorld), frameTime(1.0 / framesPerSecond),
          frameTimer(context) {}

    SimulatorServer& server;
    asio::io_context& context;
    World& world;
    double frameTime;
    asio::steady_timer frameTimer;
    Clock::time_point lastFrame;
    Clock::time_point quitAt;
    double secondsTold = 0.0;
    bool ended = false;
    std::optional<tcp::acceptor> acceptor;
    std::unique_ptr<platform::PipeListener> pipe;
    std::vector<std::shared_ptr<Connection>> connections;

    template <typename Stream>
    void add(Stream stream) {
        auto connection = std::make_shared<StreamConnection<Stream>>(world, std::move(stream));
        connections.push_back(connection);
        connection->read();
    }

    void acceptTcp() {
        acceptor->async_accept([self = shared_from_this()](asio::error_code error, tcp::socket socket) {
            if (self->ended || error == asio::error::operation_aborted)
                return;
            if (!error) {
                socket.set_option(tcp::no_delay(true), error);
                self->add(std::move(socket));
            }
            self->acceptTcp();
        });
    }

    void acceptPipe() {
        pipe->asyncAccept([self = shared_from_this()](asio::error_code error, platform::PipeStream stream) {
            if (self->ended || error == asio::error::operation_aborted)
                return;
            if (!error)
                self->add(std::move(stream));
            self->acceptPipe();
        });
    }

    void pumpAll() {
        // A copy: closing a connection ends its session, which may have something to say to the others.
        for (const auto& connection : std::vector(connections))
            connection->pump();
        std::erase_if(connections, [](const auto& connection) { return !connection->open(); });
    }

    void scheduleFrame(Clock::time_point due) {
        frameTimer.expires_at(due);
        frameTimer.async_wait([self = shared_from_this(), due](asio::error_code error) {
            if (!error && !self->ended)
                self->frame(due);
        });
    }

    void frame(Clock::time_point due) {
        const Clock::time_point now = Clock::now();
        world.frame(std::min(std::chrono::duration<double>(now - lastFrame).count(), longestFrame));
        lastFrame = now;
        while (world.seconds() >= secondsTold + 1.0) {
            secondsTold += 1.0;
            world.second();
            if (server.onSecond)
                server.onSecond();
        }
        pumpAll();
        if (world.hasQuit() && quitAt == Clock::time_point())
            quitAt = now + quitPatience;
        if (world.hasQuit() && (connections.empty() || now >= quitAt)) {
            end();
            return;
        }
        const auto step =
            std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(frameTime));
        scheduleFrame(std::max(due + step, now));
    }

    void end() {
        ended = true;
        asio::error_code ignored;
        frameTimer.cancel();
        if (acceptor)
            acceptor->close(ignored);
        if (pipe)
            pipe->cancel();
        for (const auto& connection : std::vector(connections))
            connection->close();
        connections.clear();
        if (server.ended)
            server.ended();
    }
};

SimulatorServer::SimulatorServer(asio::io_context& context, World& world, double framesPerSecond)
    : state_(std::make_shared<State>(*this, context, world, framesPerSecond)) {}

SimulatorServer::~SimulatorServer() = default;

std::uint16_t SimulatorServer::listenTcp(std::uint16_t port) {
    state_->acceptor.emplace(state_->context, tcp::endpoint(asio::ip::address_v4::loopback(), port));
    state_->acceptTcp();
    return state_->acceptor->local_endpoint().port();
}

void SimulatorServer::listenPipe(const std::string& name) {
    state_->pipe = std::make_unique<platform::PipeListener>(state_->context, name);
    state_->acceptPipe();
}

void SimulatorServer::start() {
    state_->lastFrame = Clock::now();
    state_->scheduleFrame(state_->lastFrame);
}

void SimulatorServer::quit() {
    if (!state_->world.hasQuit())
        state_->world.quit();
}

std::vector<std::string> SimulatorServer::clientNames() const {
    std::vector<std::string> names;
    for (const auto& connection : state_->connections)
        names.push_back(connection->session().clientName());
    return names;
}

} // namespace kst::standin

#include "simlink/iothread.h"

#include <mutex>

namespace kst {

std::shared_ptr<IoThread> IoThread::shared() {
    static std::mutex lock;
    static std::weak_ptr<IoThread> present;
    const std::lock_guard guard(lock);
    std::shared_ptr<IoThread> thread = present.lock();
    if (!thread) {
        thread = std::make_shared<IoThread>();
        present = thread;
    }
    return thread;
}

IoThread::IoThread()
    : context_(std::make_shared<asio::io_context>(1)), work_(context_->get_executor()),
      thread_([context = context_] { context->run(); }) {}

IoThread::~IoThread() {
    work_.reset();
    context_->stop();
    // The last holder may be a completion, on the thread itself.
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
    } else {
        thread_.join();
    }
}

} // namespace kst

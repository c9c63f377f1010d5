#pragma once

// Work for several processors whose results come back in the order in which the work was given, so that the
// outcome does not depend on which thread was faster.

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace kst {

/// How many tasks of a scan run at a time: the hardware threads of this machine.
inline unsigned scanThreadCount() {
    static const unsigned count = std::max(1U, std::thread::hardware_concurrency());
    return count;
}

/// A few threads that work tasks off, first given first begun. Owned and used by one thread; the tasks run on
/// others. The destructor drops what has not begun and waits for what has.
template <class Result>
class OrderedTasks {
public:
    explicit OrderedTasks(unsigned threadCount) {
        for (unsigned i = 0; i < threadCount; ++i) {
            threads_.emplace_back([this] { work(); });
        }
    }
    ~OrderedTasks() {
        {
            const std::lock_guard guard(lock_);
            closed_ = true;
            waiting_.clear();
        }
        changed_.notify_all();
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }
    OrderedTasks(const OrderedTasks&) = delete;
    OrderedTasks& operator=(const OrderedTasks&) = delete;

    void add(std::function<Result()> task) {
        slots_.emplace_back().task = std::move(task);
        {
            const std::lock_guard guard(lock_);
            waiting_.push_back(&slots_.back());
        }
        changed_.notify_one();
    }

    /// Tasks whose results have not been taken yet.
    std::size_t pending() const { return slots_.size(); }
    /// Whether the result of the oldest of them is there.
    bool ready() const {
        const std::lock_guard guard(lock_);
        return !slots_.empty() && slots_.front().done;
    }
    /// Takes the result of the oldest, waiting for it; rethrows what its task threw. Needs one pending.
    Result take() {
        {
            std::unique_lock guard(lock_);
            finished_.wait(guard, [this] { return slots_.front().done; });
        }
        Slot slot = std::move(slots_.front());
        slots_.pop_front();
        if (slot.thrown) {
            std::rethrow_exception(slot.thrown);
        }
        if constexpr (!std::is_void_v<Result>) {
            return std::move(*slot.value);
        }
    }

private:
    /// A task and what came of it. The thread that runs it lets go of all of it before it is done.
    struct Slot {
        std::function<Result()> task;
        std::optional<std::conditional_t<std::is_void_v<Result>, std::monostate, Result>> value;
        std::exception_ptr thrown;
        bool done = false; ///< guarded by the lock
    };

    static void run(Slot& slot) {
        try {
            if constexpr (std::is_void_v<Result>) {
                slot.task();
            } else {
                slot.value.emplace(slot.task());
            }
        } catch (...) {
            slot.thrown = std::current_exception();
        }
        slot.task = nullptr;
    }

    void work() {
        std::unique_lock guard(lock_);
        while (true) {
            changed_.wait(guard, [this] { return closed_ || !waiting_.empty(); });
            if (closed_) {
                return;
            }
            Slot& slot = *waiting_.front();
            waiting_.pop_front();
            guard.unlock();
            run(slot);
            guard.lock();
            slot.done = true;
            finished_.notify_one();
        }
    }

    std::deque<Slot> slots_;  ///< the owner's, but for those that run
    mutable std::mutex lock_; ///< guards what follows
    std::condition_variable changed_;
    std::condition_variable finished_;
    std::deque<Slot*> waiting_;
    bool closed_ = false;
    std::vector<std::thread> threads_;
};

} // namespace kst

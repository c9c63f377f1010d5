#pragma once

// Work for several processors whose results come back in the order in which the work was given, so that the
// outcome does not depend on which thread was faster.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <thread>
#include <utility>
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
        std::packaged_task<Result()> packaged(std::move(task));
        results_.push_back(packaged.get_future());
        {
            const std::lock_guard guard(lock_);
            waiting_.push_back(std::move(packaged));
        }
        changed_.notify_one();
    }

    /// Tasks whose results have not been taken yet.
    std::size_t pending() const { return results_.size(); }
    /// Whether the result of the oldest of them is there.
    bool ready() const {
        return !results_.empty() &&
               results_.front().wait_for(std::chrono::seconds{0}) == std::future_status::ready;
    }
    /// Takes the result of the oldest, waiting for it; rethrows what its task threw. Needs one pending.
    Result take() {
        std::future<Result> result = std::move(results_.front());
        results_.pop_front();
        return result.get();
    }

private:
    void work() {
        while (true) {
            std::unique_lock guard(lock_);
            changed_.wait(guard, [this] { return closed_ || !waiting_.empty(); });
            if (closed_) {
                return;
            }
            std::packaged_task<Result()> task = std::move(waiting_.front());
            waiting_.pop_front();
            guard.unlock();
            task();
        }
    }

    std::deque<std::future<Result>> results_; ///< the owner's
    std::mutex lock_;                         ///< guards what follows
    std::condition_variable changed_;
    std::deque<std::packaged_task<Result()>> waiting_;
    bool closed_ = false;
    std::vector<std::thread> threads_;
};

} // namespace kst

#pragma once

// The one thread on which the completions of all connections run, and the memory of their handlers.

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>

namespace kst {

/// One context with its thread, for as long as somebody holds it. Any thread.
class IoThread {
public:
    /// The process's one; starts it when nobody holds it yet.
    static std::shared_ptr<IoThread> shared();

    IoThread();
    ~IoThread();
    IoThread(const IoThread&) = delete;
    IoThread& operator=(const IoThread&) = delete;

    asio::io_context& context() { return *context_; }

private:
    std::shared_ptr<asio::io_context> context_; ///< the thread holds it too, until it has left `run`
    asio::executor_work_guard<asio::io_context::executor_type> work_;
    std::thread thread_;
};

/// Memory for the handler of the one operation of a chain that is under way, so that a chain of reads or
/// writes allocates nothing. What does not fit comes from the heap.
class HandlerMemory {
public:
    void* allocate(std::size_t size) {
        if (!taken_ && size <= block_.size()) {
            taken_ = true;
            return block_.data();
        }
        return ::operator new(size);
    }
    void release(void* memory) {
        if (memory == block_.data()) {
            taken_ = false;
        } else {
            ::operator delete(memory);
        }
    }

private:
    alignas(std::max_align_t) std::array<std::byte, 1024> block_;
    bool taken_ = false;
};

/// The standard allocator form of the above.
template <typename T>
struct HandlerAllocator {
    using value_type = T;
    explicit HandlerAllocator(HandlerMemory& from) : memory(&from) {}
    template <typename U>
    explicit HandlerAllocator(const HandlerAllocator<U>& other) noexcept : memory(other.memory) {}
    template <typename U>
    bool operator==(const HandlerAllocator<U>& other) const noexcept {
        return memory == other.memory;
    }
    T* allocate(std::size_t count) { return static_cast<T*>(memory->allocate(count * sizeof(T))); }
    void deallocate(T* place, std::size_t) { memory->release(place); }
    HandlerMemory* memory;
};

/// A handler whose operation lives in that memory.
template <typename Function>
struct MemoryHandler {
    using allocator_type = HandlerAllocator<Function>;
    allocator_type get_allocator() const noexcept { return allocator_type(*memory); }
    template <typename... Arguments>
    void operator()(Arguments&&... arguments) {
        function(std::forward<Arguments>(arguments)...);
    }
    HandlerMemory* memory;
    Function function;
};

template <typename Function>
MemoryHandler<Function> inMemory(HandlerMemory& memory, Function function) {
    return {&memory, std::move(function)};
}

} // namespace kst

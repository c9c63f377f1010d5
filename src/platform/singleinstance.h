#pragma once

#include <memory>
#include <string>

namespace kst::platform {

/// A mark that one process at a time can hold for this user. Released by the destructor, or by the process's
/// end.
class SingleInstance {
public:
    explicit SingleInstance(const std::string& name);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;
    /// False when another process holds the mark.
    bool acquired() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace kst::platform

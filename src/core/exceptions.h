#pragma once

#include <stdexcept>
#include <string>

namespace kst {

/// The user must act; the worker ends and the window stays. Text: "{code}: {message}", with code 99 the
/// message alone.
class UserErrorException : public std::runtime_error {
public:
    UserErrorException(int code, const std::string& message)
        : std::runtime_error(code == 99 ? message : std::to_string(code) + ": " + message), code_(code) {}
    int code() const { return code_; }

private:
    int code_;
};

/// A failure of the system or of its data. Text: "sys error {code}: {message}".
class SysErrorException : public std::runtime_error {
public:
    SysErrorException(int code, const std::string& message)
        : std::runtime_error("sys error " + std::to_string(code) + ": " + message), code_(code) {}
    int code() const { return code_; }

private:
    int code_;
};

} // namespace kst

#pragma once

#include "core/exceptions.h"

#include <exception>
#include <stdexcept>
#include <string_view>

#include <fmt/format.h>

namespace kst {

/// Runs a step of the schedule. An exception that is not the user's to act on leaves with the step's name in
/// front of its text, so that the log shows which step failed.
template <typename Step>
void runNamed(std::string_view name, Step&& step) {
    try {
        step();
    } catch (const UserErrorException&) {
        throw;
    } catch (const fmt::format_error&) {
        throw;
    } catch (const std::exception& error) {
        throw std::runtime_error(fmt::format("{}: {}", name, error.what()));
    }
}

/// The top-level handler of the worker and the exit thread: shows the exception, and ends the run (reason 5)
/// unless it is the user who has to act. Any thread.
void lf_reportException(std::string_view function, const std::exception_ptr& exception);

} // namespace kst

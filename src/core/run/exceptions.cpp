#include "core/run/exceptions.h"

#include "core/display.h"
#include "core/exit.h"

namespace kst {

void lf_reportException(std::string_view function, const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const UserErrorException& error) {
        showError(error.what());
    } catch (const fmt::format_error& error) {
        showError(fmt::format("std::format error: {}", error.what()));
    } catch (const std::exception& error) {
        showError(fmt::format("{}: {}", function, error.what()));
        gf_requestExit(ExitReason::SystemError, 0);
    } catch (...) {
        showError("Unknown exception");
    }
}

} // namespace kst

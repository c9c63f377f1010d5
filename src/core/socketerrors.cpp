#include "core/socketerrors.h"

#include "platform/socketnumbers.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include <fmt/format.h>

namespace kst {

namespace {

struct Words {
    int number;
    std::string_view text;
};

/// In the order of their numbers, which the search needs.
constexpr Words words[] = {
    {10004, "Interrupted system call"},
    {10009, "Bad file number"},
    {10013, "Permission denied"},
    {10014, "Bad address"},
    {10022, "Invalid argument"},
    {10024, "Too many open sockets"},
    {10035, "Operation would block"},
    {10036, "Operation now in progress"},
    {10037, "Operation already in progress"},
    {10038, "Socket operation on non-socket"},
    {10039, "Destination address required"},
    {10040, "Messenger too long"},
    {10041, "Protocol wrong type for socket"},
    {10042, "Bad protocol option"},
    {10043, "Protocol not supported"},
    {10044, "Socket type not supported"},
    {10045, "Operation not supported on socket"},
    {10046, "Protocol family not supported"},
    {10047, "Address family not supported"},
    {10048, "Address already in use"},
    {10049, "Can't assign requested address"},
    {10050, "Network is down"},
    {10051, "Network is unreachable"},
    {10052, "Net connection reset"},
    {10053, "Software caused connection abort"},
    {10054, "Connection reset by peer"},
    {10055, "No buffer space available"},
    {10056, "Socket is already connected"},
    {10057, "Socket is not connected"},
    {10058, "Can't send numLines socket shutdown"},
    {10059, "Too many references, can't splice"},
    {10060, "Connection timed out"},
    {10061, "Connection refused"},
    {10062, "Too many levels of symbolic links"},
    {10063, "File name too long"},
    {10064, "Host is down"},
    {10065, "No route to host"},
    {10066, "Directory not empty"},
    {10067, "Too many processes"},
    {10068, "Too many users"},
    {10069, "Disc quota exceeded"},
    {10070, "Stale NFS file handle"},
    {10071, "Too many levels of remote in path"},
    {10091, "Network system is unavailable"},
    {10092, "Winsock version out of range"},
    {10093, "WSAStartup not yet called"},
    {10101, "Graceful shutdown in progress"},
    {11001, "Host not found"},
    {11004, "No host data of that type was found"},
};

static_assert(std::is_sorted(std::begin(words), std::end(words),
                             [](const Words& a, const Words& b) { return a.number < b.number; }));

} // namespace

std::string socketErrorText(int winsockNumber) {
    const Words* const found =
        std::lower_bound(std::begin(words), std::end(words), winsockNumber,
                         [](const Words& entry, int number) { return entry.number < number; });
    const bool known = found != std::end(words) && found->number == winsockNumber;
    return fmt::format("{} {}", winsockNumber, known ? found->text : "Unknown errror code");
}

std::string socketErrorText(const std::error_code& error) {
    return socketErrorText(platform::winsockNumber(error));
}

} // namespace kst

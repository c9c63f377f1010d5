#include "platform/socketnumbers.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <asio/error.hpp>

namespace kst::platform {

namespace {

struct Pair {
    int local;
    int winsock;
};

constexpr Pair systemErrors[] = {
    {EINTR, 10004},
    {EBADF, 10009},
    {EACCES, 10013},
    {EPERM, 10013},
    {EFAULT, 10014},
    {EINVAL, 10022},
    {EMFILE, 10024},
    {ENFILE, 10024},
    {EWOULDBLOCK, 10035},
    {EINPROGRESS, 10036},
    {EALREADY, 10037},
    {ENOTSOCK, 10038},
    {EDESTADDRREQ, 10039},
    {EMSGSIZE, 10040},
    {EPROTOTYPE, 10041},
    {ENOPROTOOPT, 10042},
    {EPROTONOSUPPORT, 10043},
    {ESOCKTNOSUPPORT, 10044},
    {EOPNOTSUPP, 10045},
    {EPFNOSUPPORT, 10046},
    {EAFNOSUPPORT, 10047},
    {EADDRINUSE, 10048},
    {EADDRNOTAVAIL, 10049},
    {ENETDOWN, 10050},
    {ENETUNREACH, 10051},
    {ENETRESET, 10052},
    {ECONNABORTED, 10053},
    // Sending on a connection that was closed on this side or reset before.
    {EPIPE, 10053},
    {ECONNRESET, 10054},
    {ENOBUFS, 10055},
    {ENOMEM, 10055},
    {EISCONN, 10056},
    {ENOTCONN, 10057},
    {ESHUTDOWN, 10058},
    {ETOOMANYREFS, 10059},
    {ETIMEDOUT, 10060},
    {ECONNREFUSED, 10061},
    {ELOOP, 10062},
    {ENAMETOOLONG, 10063},
    {EHOSTDOWN, 10064},
    {EHOSTUNREACH, 10065},
    {ENOTEMPTY, 10066},
    {EUSERS, 10068},
    {EDQUOT, 10069},
    {ESTALE, 10070},
    {EREMOTE, 10071},
    {ECANCELED, 995}, // WSA_OPERATION_ABORTED
};

constexpr Pair nameErrors[] = {
    {asio::error::host_not_found, 11001},
    {asio::error::host_not_found_try_again, 11002},
    {asio::error::no_recovery, 11003},
    {asio::error::no_data, 11004},
};

constexpr Pair addressErrors[] = {
    {asio::error::service_not_found, 10109}, // WSATYPE_NOT_FOUND
    {asio::error::socket_type_not_supported, 10044},
};

template <std::size_t N>
int mapped(const Pair (&table)[N], int value) {
    const Pair* const found = std::find_if(std::begin(table), std::end(table),
                                           [&](const Pair& pair) { return pair.local == value; });
    return found != std::end(table) ? found->winsock : value;
}

} // namespace

int winsockNumber(const std::error_code& error) {
    // Asio's category of the system's errors is an object of its own.
    if (error.category() == asio::error::get_system_category() ||
        error.category() == std::system_category() || error.category() == std::generic_category()) {
        return mapped(systemErrors, error.value());
    }
    if (error.category() == asio::error::get_netdb_category()) {
        return mapped(nameErrors, error.value());
    }
    if (error.category() == asio::error::get_addrinfo_category()) {
        return mapped(addressErrors, error.value());
    }
    return error.value();
}

} // namespace kst::platform

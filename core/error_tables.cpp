// The translation tables of platform error numbers. No other place switches on errno.
#include "core/error_tables.h"

#include <array>
#include <cerrno>

#include "wexelxi/core.h"

namespace wexelxi {
namespace {

struct ErrorRow {
    int error;
    uint32_t code;
};

// errno 1 to 40; what is not listed, and every number beyond, is ERROR_GEN_FAILURE.
constexpr ErrorRow kLastErrors[] = {
    {EPERM, ERROR_WRITE_PROTECT},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EACCES, ERROR_ACCESS_DENIED},
    {EFAULT, 115},
    {EBUSY, ERROR_PATH_BUSY},
    {EEXIST, ERROR_FILE_EXISTS},
    {EXDEV, ERROR_NOT_SAME_DEVICE},
    {ENOTDIR, ERROR_INVALID_NAME},
    {EISDIR, ERROR_INVALID_NAME},
    {EINVAL, ERROR_INVALID_ACCESS},
    {EROFS, ERROR_WRITE_PROTECT},
    {ENAMETOOLONG, ERROR_LABEL_TOO_LONG},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
};

// errno 1 to 122; what is not listed, and every number beyond, is 0.
constexpr ErrorRow kSocketErrors[] = {
    {ENOENT, 11001},          {EAGAIN, 10035},          {ENAMETOOLONG, 10063},
    {ENOTEMPTY, 10066},       {ELOOP, 10062},           {EREMOTE, 10071},
    {EUSERS, 10068},          {ENOTSOCK, 10038},        {EDESTADDRREQ, 10039},
    {EMSGSIZE, 10040},        {EPROTOTYPE, 10041},      {ENOPROTOOPT, 10042},
    {EPROTONOSUPPORT, 10043}, {ESOCKTNOSUPPORT, 10044}, {EOPNOTSUPP, 10045},
    {EPFNOSUPPORT, 10046},    {EAFNOSUPPORT, 10047},    {EADDRINUSE, 10048},
    {EADDRNOTAVAIL, 10049},   {ENETDOWN, 10050},        {ENETUNREACH, 10051},
    {ENETRESET, 10052},       {ECONNABORTED, 10053},    {ECONNRESET, 10054},
    {ENOBUFS, 10055},         {EISCONN, 10056},         {ENOTCONN, 10057},
    {ESHUTDOWN, 10058},       {ETOOMANYREFS, 10059},    {ETIMEDOUT, 10060},
    {ECONNREFUSED, 10061},    {EHOSTDOWN, 10064},       {EHOSTUNREACH, 10065},
    {EALREADY, 10037},        {EINPROGRESS, 10036},     {ESTALE, 10070},
    {EDQUOT, 10069},
};

template <size_t Count>
constexpr uint32_t Find(const ErrorRow (&rows)[Count], int error, uint32_t otherwise)
{
    for (const ErrorRow &row : rows) {
        if (row.error == error)
            return row.code;
    }
    return otherwise;
}

} // namespace

uint32_t LastErrorFromErrno(int error)
{
    return Find(kLastErrors, error, ERROR_GEN_FAILURE);
}

uint32_t SocketErrorFromErrno(int error, int resolverError)
{
    if (error != 0)
        return Find(kSocketErrors, error, 0);
    if (resolverError >= 1 && resolverError <= 4)
        return 11000u + static_cast<uint32_t>(resolverError);
    return 0;
}

} // namespace wexelxi

// SPDX-License-Identifier: Apache-2.0
// The status for each errno of a device.
#include "core/status.h"

#include <cerrno>

#include <algorithm>
#include <array>

namespace qvs {
namespace {

struct ErrnoRow {
    int errnoValue;
    HYP_ReturnStatus status;
};

// Sorted by errno. EINVAL deliberately maps to HYP_FAILURE, the status of a kernel that rejects a record.
constexpr auto kRows = std::to_array<ErrnoRow>({
    {EPERM, 0xbad005b},        {ENOENT, 0xbad0003},
    {ESRCH, 0xbad0062},        {EINTR, 0xbad0032},
    {EIO, 0xbad0008},          {ENXIO, 0xbad0011},
    {E2BIG, 0xbad00b4},        {ENOEXEC, 0xbad009b},
    {EBADF, 0xbad000e},        {ECHILD, 0xbad0061},
    {EAGAIN, 0xbad0002},       {ENOMEM, 0xbad0014},
    {EACCES, 0xbad005a},       {EFAULT, 0xbad0013},
    {EBUSY, 0xbad0004},        {EEXIST, 0xbad0005},
    {EXDEV, 0xbad0064},        {ENODEV, 0xbad000f},
    {ENOTDIR, 0xbad0054},      {EISDIR, 0xbad0055},
    {EINVAL, 0xbad0001},       {ENFILE, 0xbad0019},
    {EMFILE, 0xbad0018},       {ENOTTY, 0xbad0086},
    {ETXTBSY, 0xbad010d},      {EFBIG, 0xbad0006},
    {ENOSPC, 0xbad001a},       {ESPIPE, 0xbad0066},
    {EROFS, 0xbad0022},        {EPIPE, 0xbad0053},
    {ERANGE, 0xbad005d},       {EDEADLK, 0xbad00a9},
    {ENAMETOOLONG, 0xbad000d}, {ENOLCK, 0xbad00e7},
    {ENOSYS, 0xbad0020},       {ENOTEMPTY, 0xbad0056},
    {ELOOP, 0xbad0063},        {EOVERFLOW, 0xbad0113},
    {EUSERS, 0xbad00a7},       {ENOTSOCK, 0xbad0065},
    {EDESTADDRREQ, 0xbad00fd}, {EMSGSIZE, 0xbad0129},
    {EPROTOTYPE, 0xbad0144},   {EPROTONOSUPPORT, 0xbad0104},
    {EOPNOTSUPP, 0xbad003c},   {EAFNOSUPPORT, 0xbad0067},
    {EADDRINUSE, 0xbad0024},   {EADDRNOTAVAIL, 0xbad00fc},
    {ENETDOWN, 0xbad0047},     {ENETUNREACH, 0xbad0048},
    {ENETRESET, 0xbad0049},    {ECONNABORTED, 0xbad004a},
    {ECONNRESET, 0xbad004b},   {ENOBUFS, 0xbad0125},
    {EISCONN, 0xbad0068},      {ENOTCONN, 0xbad002e},
    {ESHUTDOWN, 0xbad004d},    {ETOOMANYREFS, 0xbad004e},
    {ETIMEDOUT, 0xbad0021},    {ECONNREFUSED, 0xbad004f},
    {EHOSTDOWN, 0xbad0050},    {EHOSTUNREACH, 0xbad0051},
    {EALREADY, 0xbad00da},     {EINPROGRESS, 0xbad0088},
    {ESTALE, 0xbad0147},       {EDQUOT, 0xbad0164},
    {ECANCELED, 0xbad0038},
});
static_assert(std::ranges::is_sorted(kRows, {}, &ErrnoRow::errnoValue));

}  // namespace

HYP_ReturnStatus ErrnoToReturnStatus(int errnoValue) {
    if (errnoValue == 0) return HYP_OK;
    const auto *row = std::ranges::lower_bound(kRows, errnoValue, {}, &ErrnoRow::errnoValue);
    return row != kRows.end() && row->errnoValue == errnoValue ? row->status : HYP_FAILURE;
}

}  // namespace qvs

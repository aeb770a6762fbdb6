// SPDX-License-Identifier: Apache-2.0
// Points in time as text.
#pragma once

#include <fmt/format.h>

#include <ctime>
#include <string>

namespace qvs {

// Returns the current time in the format of RFC 3339: "2026-11-22T05:40:00Z", or with milliseconds before the
// Z.
inline std::string utcTime(bool milliseconds = false) {
    struct timespec now {};
    struct tm parts {};
    clock_gettime(CLOCK_REALTIME, &now);
    gmtime_r(&now.tv_sec, &parts);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}{}Z", parts.tm_year + 1900, parts.tm_mon + 1,
                       parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                       milliseconds ? fmt::format(".{:03}", now.tv_nsec / 1'000'000) : "");
}

}  // namespace qvs

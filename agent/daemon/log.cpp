// SPDX-License-Identifier: Apache-2.0
#include "agent/daemon/log.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

#include "agent/rollout/records.h"
#include "config/document/quoting.h"
#include "config/library/clock.h"

namespace qvs::fleet {

void logLine(Level level, std::string_view text) {
    // journald reads a syslog priority in front of each line.
    struct Words {
        const char *name;
        int number;
    };
    constexpr std::array<Words, 3> kLevels = {{{"info", 6}, {"warning", 4}, {"error", 3}}};
    const Words &words = kLevels[static_cast<size_t>(level)];
    std::string line;
    if (logsJson) {
        line = fmt::format("{{\"time\":\"{}\",\"level\":\"{}\",\"message\":{}}}\n", utcTime(), words.name,
                           config::quotedForJson(text));
    } else if (std::getenv("JOURNAL_STREAM") != nullptr) {
        line = fmt::format("<{}>{}\n", words.number, text);
    } else {
        line = fmt::format("{} {}: {}\n", utcTime(), words.name, text);
    }
    // The agent continues if the log cannot be written.
    if (::write(STDERR_FILENO, line.data(), line.size()) < 0) return;
}

void notify(std::string_view state) {
    const char *path = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path == nullptr || std::strlen(path) >= sizeof address.sun_path) return;
    std::copy_n(path, std::strlen(path), std::begin(address.sun_path));
    // An abstract name begins with NUL.
    if (address.sun_path[0] == '@') address.sun_path[0] = '\0';
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + std::strlen(path));
    if (descriptor < 0) return;
    sendto(descriptor, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr *>(&address),
           size);
    close(descriptor);
}

}  // namespace qvs::fleet

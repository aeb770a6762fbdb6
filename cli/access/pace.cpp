// SPDX-License-Identifier: Apache-2.0
#include "access/pace.h"

#include <poll.h>
#include <unistd.h>

#include <charconv>
#include <csignal>
#include <string>
#include <system_error>

#include "base/text.h"
#include "tool/failure.h"

namespace qvs::cli {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds kLeastInterval(10);
constexpr milliseconds kMostInterval(3'600'000);

// Ends the program at once. All output has been written and no lock is held. A normal end could wait for a
// host that does not answer.
void end(int) {
    _exit(0);
}

milliseconds parseInterval(std::string_view name, const std::string &text) {
    double seconds = 0;
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
    const auto least = std::chrono::duration<double>(kLeastInterval).count();
    const auto most = std::chrono::duration<double>(kMostInterval).count();
    if (error != std::errc() || rest != end || !(seconds >= least && seconds <= most))
        fail(Exit::Usage, "{}: {} is not a number of seconds from {} to {}", name, inQuotes(text), least,
             most);
    return milliseconds(static_cast<long>(seconds * 1000));
}

}  // namespace

void checkInterval(std::string_view name, const std::string &text) {
    (void)parseInterval(name, text);
}

milliseconds intervalGiven(const Arguments &arguments, milliseconds absent) {
    return arguments.given("--interval") ? parseInterval("--interval", arguments.text("--interval")) : absent;
}

void endOnSignals() {
    struct sigaction action {};
    action.sa_handler = end;
    for (int signal : {SIGINT, SIGTERM})
        sigaction(signal, &action, nullptr);
}

void pause(milliseconds time) {
    struct pollfd reader {
        STDOUT_FILENO, 0, 0
    };
    const auto deadline = std::chrono::steady_clock::now() + time;
    const int ready = poll(&reader, 1, static_cast<int>(time.count()));
    if (ready > 0 && (reader.revents & (POLLERR | POLLHUP)) != 0) {
        std::signal(SIGPIPE, SIG_DFL);
        std::raise(SIGPIPE);
    }
    // A descriptor that poll does not take, such as a closed one, must not make the loop spin.
    const auto left = deadline - std::chrono::steady_clock::now();
    if (ready > 0) poll(nullptr, 0, static_cast<int>(std::chrono::duration_cast<milliseconds>(left).count()));
}

}  // namespace qvs::cli

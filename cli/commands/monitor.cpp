// SPDX-License-Identifier: Apache-2.0
// qvs monitor: the changes of the host as they happen.
#include <poll.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <csignal>

#include "access/changes.h"
#include "commands/nouns.h"
#include "config/document/watch.h"
#include "config/library/clock.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

using config::Change;
using config::Watch;
using std::chrono::milliseconds;

constexpr milliseconds kInterval(200);
constexpr milliseconds kLeastInterval(10);
constexpr milliseconds kMostInterval(3'600'000);

milliseconds interval(const Arguments &arguments) {
    if (!arguments.given("--interval")) return kInterval;
    const std::string &text = arguments.text("--interval");
    double seconds = 0;
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
    const auto least = std::chrono::duration<double>(kLeastInterval).count();
    const auto most = std::chrono::duration<double>(kMostInterval).count();
    if (error != std::errc() || rest != end || !(seconds >= least && seconds <= most))
        fail(Exit::Usage, "--interval: {} is not a number of seconds from {} to {}", inQuotes(text), least,
             most);
    return milliseconds(static_cast<long>(seconds * 1000));
}

// Ends the program at once. All output has been written and no lock is held. A normal end could wait for a
// host that does not answer.
void end(int) {
    _exit(0);
}

void endOnSignals() {
    struct sigaction action {};
    action.sa_handler = end;
    for (int signal : {SIGINT, SIGTERM})
        sigaction(signal, &action, nullptr);
}

// Waits. Ends the program when the reader of its output is gone, because without a change it writes nothing
// and would not notice.
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

// Writes one line at once: the time, and what the function appends as text or as members of a JSON object.
template <typename Text, typename Members>
void printLine(Output &out, Text text, Members members) {
    const std::string time = utcTime(true);
    if (out.json()) {
        out.write("{\"time\":\"" + time + "\",");
        members(out.buffer());
        out.write("}\n");
    } else {
        out.write(time + " ");
        text(out.buffer());
        out.write("\n");
    }
    out.flush();
}

void printHost(Output &out, std::string_view word, std::string_view text) {
    printLine(
        out, [&](fmt::memory_buffer &buffer) { buffer.append(text); },
        [&](fmt::memory_buffer &buffer) { appendNoChangeMembers(buffer, word); });
}

void print(Output &out, const Change &change) {
    printLine(
        out, [&](fmt::memory_buffer &buffer) { appendChange(buffer, change); },
        [&](fmt::memory_buffer &buffer) { appendChangeMembers(buffer, change); });
}

void monitor(const Arguments &arguments, Output &out) {
    const milliseconds time = interval(arguments);
    Watch watch(arguments.given("SWITCH") ? arguments.all("SWITCH") : std::vector<std::string>());
    endOnSignals();
    printHost(out, "watching",
              fmt::format("watching {} switch{}", watch.switches(), watch.switches() == 1 ? "" : "es"));
    for (bool gone = false;;) {
        pause(time);
        const HYP_ReturnStatus status = watch.look();
        if (status == HYP_OK && gone) printHost(out, "back", "the host is back");
        if (status != HYP_OK && !gone)
            printHost(out, "gone", fmt::format("the host is gone: {}", ReturnStatusToString(status)));
        gone = status != HYP_OK;
        for (const Change &change : watch.changes())
            print(out, change);
    }
}

const Command kRows[] = {
    {.words = "monitor",
     .summary = "print changes of the configuration and of link states as they happen",
     .arguments = {{"SWITCH", "aliases of the switches to watch; all without one", Kind::Switch, true, true}},
     .options = {{"--interval", "SECONDS", "look at the host so often; a fraction is allowed (0.2)"}},
     .details =
         "Each line has the time (UTC), the place in the document (qvs export), and the value before and "
         "after. The link state of a port is its member link. The command compares the state of the host "
         "with the state of its last look: a change that is shorter than the "
         "interval is not seen. When the host ends, a line says so, and the command goes on when it is back. "
         "It ends with SIGINT or SIGTERM, with exit status 0, or when nobody reads its output any more.",
     .example = "qvs monitor sw1 --interval 1",
     .run = reads(monitor)},
};

}  // namespace

const std::span<const Command> kMonitorCommands = kRows;

}  // namespace qvs::cli

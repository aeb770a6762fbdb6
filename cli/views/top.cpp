// SPDX-License-Identifier: Apache-2.0
// qvs top: ports by rate, on a screen of their own or once as text.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "access/library.h"
#include "access/overview.h"
#include "access/pace.h"
#include "config/library/host.h"
#include "tool/output.h"
#include "tool/values.h"
#include "top/sample.h"
#include "views/nouns.h"
#include "views/port_words.h"
#include "views/rates.h"

namespace qvs::cli {
namespace {

constexpr std::chrono::milliseconds kInterval(1000);

// --- looks ---

std::string localTime() {
    const std::time_t now = std::time(nullptr);
    struct tm parts {};
    localtime_r(&now, &parts);
    return fmt::format("{:02}:{:02}:{:02}", parts.tm_hour, parts.tm_min, parts.tm_sec);
}

top::Port portOf(const SwitchFacts &facts, const PortFacts &port, const Rates &rates) {
    constexpr double kBits = 8;
    top::Port made;
    made.owner = facts.name();
    made.id = port.id;
    made.client = port.client.value_or("");
    made.vlan = port.vlan;
    made.state = portState(port);
    if (const auto growth = rates.rateOf(facts.id, port.id)) {
        const auto sums = trafficOf(*growth);
        made.rates = {sums.bytesIn * kBits, sums.bytesOut * kBits, sums.packetsIn, sums.packetsOut,
                      sums.droppedIn + sums.droppedOut};
    }
    return made;
}

// The ports of the snapshot. A switch that is named and not there has none: it may come back.
top::Sample look(const Arguments &arguments, Rates &rates) {
    std::vector<SwitchFacts> all = gatherSwitches(Ask::NumbersAlone);
    if (arguments.given("SWITCH"))
        std::erase_if(all, [&](const SwitchFacts &facts) { return facts.alias != arguments.text("SWITCH"); });
    rates.look(all, snapshotTime);
    top::Sample sample;
    sample.time = localTime();
    for (const SwitchFacts &facts : all)
        for (const PortFacts &port : facts.ports)
            sample.ports.push_back(portOf(facts, port, rates));
    return sample;
}

// --- once ---

void printOnce(const Arguments &arguments, Output &out, std::chrono::milliseconds time) {
    Rates rates;
    look(arguments, rates);
    out.flush();
    pause(time);
    requireState(loadSnapshot());
    if (arguments.given("SWITCH")) findSwitch(arguments.text("SWITCH"));
    top::Sample sample = look(arguments, rates);
    std::ranges::stable_sort(sample.ports, std::ranges::greater(), &top::Port::total);
    if (!arguments.given("--all"))
        std::erase_if(sample.ports, [](const top::Port &port) { return port.idle(); });
    const size_t most = arguments.number("--limit", UINT32_MAX);
    // Of a narrow terminal the names and the bits have the most.
    Listing listing(out, {{"switch", arguments.given("SWITCH") ? nullptr : "SWITCH"},
                          {"port", "PORT"},
                          {"client", "CLIENT", true},
                          {"vlan", "VLAN", true},
                          {"state", "STATE"},
                          {"bitsIn", "IN b/s"},
                          {"bitsOut", "OUT b/s"},
                          {"packetsIn", "IN p/s", true},
                          {"packetsOut", "OUT p/s", true},
                          {"dropped", "DROP/s", true}});
    const auto unlessEmpty = [](const std::string &text) {
        return text.empty() ? std::optional<std::string_view>() : text;
    };
    for (size_t i = 0; i < std::min(sample.ports.size(), most); i++) {
        const top::Port &port = sample.ports[i];
        const auto rate = [&](top::RateKind kind) { return port.rates ? Rate{(*port.rates)[kind]} : Rate{}; };
        listing.row(std::string_view(port.owner), std::string_view(port.id), unlessEmpty(port.client),
                    unlessEmpty(port.vlan), std::string_view(port.state), rate(top::BitsIn),
                    rate(top::BitsOut), rate(top::PacketsIn), rate(top::PacketsOut), rate(top::Dropped));
    }
    listing.finish();
}

// --- the screen, a program of its own ---

constexpr int kPipe = 3;  // its descriptor there

volatile pid_t screen = 0;

[[noreturn]] void endWith(int status) {
    _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 1);
}

// The screen has ended, and with it everything: a host that hangs may be waited for at the moment.
void onChild(int) {
    int status = 0;
    if (screen > 0 && waitpid(screen, &status, WNOHANG) == screen) endWith(status);
}

// The screen gives the terminal back before this program ends.
void onEnding(int) {
    int status = 0;
    if (screen <= 0) _exit(0);
    kill(screen, SIGTERM);
    while (waitpid(screen, &status, 0) < 0)
        if (errno != EINTR) _exit(1);
    endWith(status);
}

void handle(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART | SA_NOCLDSTOP;
    sigfillset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

std::string screenProgram() {
    std::error_code error;
    std::filesystem::path prefix = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for ([[maybe_unused]] const auto &step : std::filesystem::path(QVS_BINDIR))
        prefix = prefix.parent_path();
    std::filesystem::path program = prefix / QVS_LIBEXECDIR / "qvs-top";
    if (error || !std::filesystem::exists(program, error))
        fail(Exit::Failed, "{} is missing, the program that draws the screen; 'qvs top --once' prints text",
             inQuotes(program.string()));
    return program.string();
}

// Starts the screen and returns the end of the pipe to write to.
int startScreen() {
    std::string program = screenProgram();
    std::string number = fmt::to_string(kPipe);
    char *argv[] = {program.data(), number.data(), nullptr};
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) fail(Exit::Failed, "pipe: {}", std::strerror(errno));

    // What happens to the screen from here on is seen once its number is known.
    sigset_t held;
    sigset_t before;
    sigemptyset(&held);
    constexpr int kEndings[] = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};
    sigaddset(&held, SIGCHLD);
    for (const int signal : kEndings)
        sigaddset(&held, signal);
    sigprocmask(SIG_BLOCK, &held, &before);
    handle(SIGCHLD, onChild);
    for (const int signal : kEndings)
        handle(signal, onEnding);

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigfillset(&defaults);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setsigmask(&attributes, &before);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[0], kPipe);
    pid_t child = 0;
    const int failure = posix_spawn(&child, program.c_str(), &actions, &attributes, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    close(ends[0]);
    if (failure != 0) fail(Exit::Failed, "{}: {}", inQuotes(program), std::strerror(failure));
    screen = child;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return ends[1];
}

// A screen that has ended takes no more; its end is noticed elsewhere.
void writeSample(int to, const top::Sample &sample) {
    std::string text;
    appendSample(text, sample);
    std::string_view rest = text;
    while (!rest.empty()) {
        const ssize_t written = ::write(to, rest.data(), rest.size());
        if (written < 0 && errno != EINTR) return;
        if (written > 0) rest.remove_prefix(static_cast<size_t>(written));
    }
}

void sleepUntil(std::chrono::steady_clock::time_point time) {
    const auto since = std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
    struct timespec at {};
    at.tv_sec = since / 1'000'000'000;
    at.tv_nsec = since % 1'000'000'000;
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr) == EINTR) {
    }
}

[[noreturn]] void feed(const Arguments &arguments, std::chrono::milliseconds time) {
    const int to = startScreen();
    // What it says on standard error would stand in the screen.
    onWarning = nullptr;
    onCall = nullptr;
    Rates rates;
    HYP_ReturnStatus status = HYP_OK;
    for (;;) {
        const auto next = std::chrono::steady_clock::now() + time;
        top::Sample sample;
        if (status == HYP_OK) {
            sample = look(arguments, rates);
        } else {
            sample.gone = ReturnStatusToString(status);
        }
        writeSample(to, sample);
        sleepUntil(next);
        status = loadSnapshot();
    }
}

void requireScreen(const Arguments &arguments) {
    if (arguments.given("--once")) return;
    if (arguments.given("--json")) fail(Exit::Usage, "--json needs --once");
    if (isatty(STDIN_FILENO) != 1 || isatty(STDOUT_FILENO) != 1)
        fail(Exit::Usage, "the screen needs a terminal; 'qvs top --once' prints text");
}

void run(const Arguments &arguments, Output &out) {
    const std::chrono::milliseconds time = intervalGiven(arguments, kInterval);
    if (arguments.given("SWITCH")) findSwitch(arguments.text("SWITCH"));
    if (arguments.given("--once")) return printOnce(arguments, out, time);
    feed(arguments, time);
}

const Command kRows[] = {
    {.words = "top",
     .summary = "watch the ports with the most traffic",
     .arguments = {{"SWITCH", "alias of the only switch to watch", Kind::Switch, true}},
     .options = {intervalOption("look at the host so often; a fraction is allowed (1)"),
                 {"--once", nullptr, "print the rates between two looks as text, and end"},
                 {.name = "--all",
                  .value = nullptr,
                  .summary = "print the ports without traffic, too",
                  .needs = "--once"},
                 {.name = "--limit",
                  .value = "N",
                  .summary = "print at most N ports",
                  .needs = "--once",
                  .check = checkNumber<1, UINT32_MAX>}},
     .details =
         "The ports with the most bits per second come first. The key h on the screen shows what other keys "
         "do: they choose the order, filter the ports, pause and leave. When the host ends, the last line "
         "says so, and the screen goes on when it is back. Rates are known from the second look on, and not "
         "for a port of which a counter was set back.",
     .example = "qvs top --once --limit 5",
     .run = reads(run),
     .agrees = requireScreen},
};

}  // namespace

const std::span<const Command> kTopCommands = kRows;

}  // namespace qvs::cli

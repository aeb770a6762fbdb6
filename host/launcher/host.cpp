// SPDX-License-Identifier: Apache-2.0
// Starts, joins and leaves daemons.
#include "launcher/host.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "launcher/error.h"
#include "launcher/process.h"
#include "wire/host_files.h"
#include "wire/json.h"

namespace qvs::launcher {

namespace {

using namespace std::chrono_literals;
using nlohmann::json;

constexpr auto kAgainAfter = 20ms;

constexpr int kReadyDescriptor = 3;

struct ServedAlready : Error {
    using Error::Error;
};

// Executes the daemon in the child process. The daemon gets no open files of the launcher and no terminal.
[[noreturn]] void becomeDaemon(const std::vector<std::string> &words, int ready) {
    setsid();
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    if (ready != kReadyDescriptor) dup2(ready, kReadyDescriptor);
    close_range(kReadyDescriptor + 1, ~0u, 0);
    unsetenv("LD_PRELOAD");
    if (chdir("/") != 0) _exit(1);
    const std::vector<char *> arguments = argumentsOf(words);
    execv(arguments[0], arguments.data());
    dprintf(kReadyDescriptor, "cannot run %s: %s", arguments[0], strerror(errno));
    _exit(1);
}

using Clock = std::chrono::steady_clock;

// Returns the report of the daemon about its start, or nothing if there is none in time.
std::optional<std::string> readAll(int descriptor, Clock::time_point deadline) {
    std::string text;
    char buffer[512];
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd wait = {descriptor, POLLIN, 0};
        const int ready = poll(&wait, 1, static_cast<int>(std::max<int64_t>(left.count(), 0)));
        if (ready == 0) return std::nullopt;
        const ssize_t length = ready < 0 ? -1 : read(descriptor, buffer, sizeof buffer);
        if (length < 0 && errno == EINTR) continue;
        if (length <= 0) return text;
        text.append(buffer, static_cast<size_t>(length));
    }
}

// Waits until a process ends. Returns its status, or nothing if it does not end in time.
std::optional<int> waitWithin(std::chrono::seconds within, pid_t process) {
    const auto deadline = Clock::now() + within;
    int status = 0;
    while (waitpid(process, &status, WNOHANG) == 0) {
        if (Clock::now() > deadline) return std::nullopt;
        std::this_thread::sleep_for(1ms);
    }
    return status;
}

int killProcess(pid_t process) {
    kill(process, SIGKILL);
    return waitForProcess(process);
}

std::string endOf(int status) {
    return WIFSIGNALED(status) ? fmt::format("was killed by signal {}", WTERMSIG(status))
                               : fmt::format("ended with status {}", WEXITSTATUS(status));
}

// Starts a daemon, waits until it serves and returns its process. Throws ServedAlready if another daemon
// serves the directory.
pid_t startDaemon(const std::string &program, const HostOptions &options) {
    std::vector<std::string> words = {program, "--state", options.directory, "--ready-fd",
                                      std::to_string(kReadyDescriptor)};
    if (!options.lab.empty()) words.insert(words.end(), {"--lab", options.lab});
    if (!options.trace.empty()) words.insert(words.end(), {"--trace", options.trace});
    if (options.maxStateMib != 0) {
        words.insert(words.end(), {"--max-state-mib", std::to_string(options.maxStateMib)});
    }
    if (options.network) words.emplace_back("--network");
    if (options.whileLeased) words.emplace_back("--while-leased");
    if (options.isPrivate) words.emplace_back("--private");

    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0) throw Error(fmt::format("cannot create a pipe: {}", strerror(errno)));
    const pid_t process = fork();
    if (process == 0) {
        // exec must keep this descriptor. dup2 clears the flag only for other descriptors.
        if (ready[1] == kReadyDescriptor) fcntl(ready[1], F_SETFD, 0);
        becomeDaemon(words, ready[1]);
    }
    close(ready[1]);
    if (process < 0) {
        close(ready[0]);
        throw Error(fmt::format("cannot create a process: {}", strerror(errno)));
    }
    const auto said = readAll(ready[0], Clock::now() + kBeginsWithin);
    close(ready[0]);
    if (said == "R") return process;
    if (!said) {
        killProcess(process);
        throw Error(fmt::format("the daemon {} (process {}) did not serve within {} s and was killed; see {}",
                                program, process, kBeginsWithin.count(), wire::logFile(options.directory)));
    }

    const int status = waitForProcess(process);
    const std::string message = said->empty()
                                    ? fmt::format("the daemon {} {} before it served; see {}", program,
                                                  endOf(status), wire::logFile(options.directory))
                                    : *said;
    if (WIFEXITED(status) && WEXITSTATUS(status) == wire::kServedAlready) throw ServedAlready(message);
    throw Error(message);
}

// Starts a daemon, and tries again while another daemon has the directory, because that one may be starting
// or ending. Returns 0 when `isJoined` returns true, because the other daemon serves.
template <typename IsJoined>
pid_t startOrJoin(const std::string &program, const HostOptions &options, const IsJoined &isJoined) {
    const auto deadline = Clock::now() + kEndsWithin;
    for (;;) {
        try {
            return startDaemon(program, options);
        } catch (const ServedAlready &error) {
            if (isJoined(error)) return 0;
            if (Clock::now() > deadline) {
                qvs::fail(qvs::Exit::Failed, "{}, which does not answer; end that process and try again",
                          error.message);
            }
            std::this_thread::sleep_for(kAgainAfter);
        }
    }
}

}  // namespace

pid_t startAlone(const std::string &program, const HostOptions &options) {
    const std::string socket = wire::socketFile(options.directory);
    return startOrJoin(program, options, [&](const ServedAlready &error) -> bool {
        wire::Client client;
        wire::Writer request(wire::Kind::Control);
        request.text(R"({"op":"fault.list"})");
        std::string answer;
        if (!client.connect(socket.c_str())) return false;
        const std::string who = processBehind(client);
        if (client.call(request, &answer)) throw error;
        if (errno == ETIMEDOUT) throw noAnswer(socket, who);
        return false;
    });
}

Host::Host(const std::string &program, const HostOptions &options)
    : socket_(wire::socketFile(options.directory)), isPrivate_(options.isPrivate) {
    while (!join()) {
        const pid_t started = startOrJoin(program, options, [this](const ServedAlready &) { return join(); });
        if (started == 0) break;
        daemon_ = started;
    }
    if (daemon_ != 0) return;
    if (!options.lab.empty())
        control(socket_, {{"op", "seed"}, {"lab", readJson(options.lab)}}, kChangesWithin);
    if (options.network) control(socket_, {{"op", "network"}, {"enabled", true}}, kChangesWithin);
    if (!options.trace.empty()) control(socket_, {{"op", "trace.file"}, {"path", options.trace}});
    if (options.maxStateMib != 0) {
        complain("{} is served already: --max-state-mib has no effect", qvs::shown(options.directory));
    }
}

bool Host::join() {
    wire::Writer request(wire::Kind::Lease);
    std::string nothing;
    if (lease_.connect(socket_.c_str())) {
        who_ = processBehind(lease_);
        if (lease_.call(request, &nothing)) return true;
    }
    if (errno == ETIMEDOUT) throw noAnswer(socket_, who_);
    if (errno == ENAMETOOLONG) throw Error(wire::pathTooLong(socket_));
    if (errno == EACCES || errno == EPERM)
        throw Error(fmt::format("the host at {} belongs to another user: {}", socket_, strerror(errno)));
    return false;
}

void Host::leave() {
    // The daemon answers if it stays. Otherwise it closes the connection when it ends.
    std::string nothing;
    lease_.setTimeout(millisecondsOf(kEndsWithin));
    const bool sent = shutdown(lease_.socket(), SHUT_WR) == 0;
    const bool stays = sent && lease_.receive(wire::Kind::Reply, &nothing);
    const bool silent = sent && !stays && errno == ETIMEDOUT;
    lease_.close();
    if (silent) complain("the host at {}{} does not stop", qvs::shown(socket_), who_);
    if (stays || daemon_ == 0 || (silent && !isPrivate_)) return;
    const std::optional<int> status = silent ? killProcess(daemon_) : waitWithin(kEndsWithin, daemon_);
    if (!status) {
        complain("the host at {}{} does not stop", qvs::shown(socket_), who_);
    } else if (*status != 0) {
        complain("the host {}", endOf(*status));
    }
}

std::string processBehind(const wire::Client &client) {
    ucred peer{};
    socklen_t size = sizeof peer;
    const bool known =
        getsockopt(client.socket(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.pid != 0;
    return known ? fmt::format(" (process {})", peer.pid) : "";
}

Error noAnswer(const std::string &socket, const std::string &who) {
    if (errno != ETIMEDOUT)
        return Error(fmt::format("the host at {}{} did not answer: {}", socket, who, strerror(errno)));
    return Error(
        fmt::format("the host at {}{} does not answer; look at that process, or end it with \"kill -KILL\"",
                    socket, who));
}

HostClient::HostClient(const std::string &socket) : socket_(socket) {
    if (client.connect(socket.c_str())) {
        who = processBehind(client);
        return;
    }
    const bool isThere = errno != ENOENT && errno != ECONNREFUSED;
    throw Error(fmt::format("no host answers at {} ({}){}", socket, strerror(errno),
                            isThere ? "" : "; start one with \"qvs-host start --state DIR\""));
}

std::string HostClient::call(wire::Writer &request) {
    std::string payload;
    if (!client.call(request, &payload)) throw noAnswer(socket_, who);
    return payload;
}

json control(const std::string &socket, const json &request, std::chrono::milliseconds within) {
    // An answer nests the contents of earlier requests deeper.
    constexpr size_t kDeepest = wire::kMaxJsonDepth + 8;
    HostClient host(socket);
    host.client.setTimeout(millisecondsOf(within));
    wire::Writer message(wire::Kind::Control);
    message.text(request.dump());
    const std::string payload = host.call(message);
    json answer;
    try {
        answer = wire::parseJson(wire::Reader(payload).text(), kDeepest);
    } catch (const std::exception &) {
        // The answer is not an object in this case.
    }
    if (!answer.is_object())
        throw Error(
            "the host sent an invalid answer; check that qvs-host and qvs-hostd have the same version");
    if (!answer.value("ok", false)) throw Error(answer.value("error", "the host refused"));
    return answer;
}

json readJson(const std::string &path) {
    const auto text = wire::readFile(path);
    if (!text) throw Error(fmt::format("cannot read {}: {}", path, strerror(errno)));
    try {
        return wire::parseJson(*text);
    } catch (const std::exception &error) {
        throw Error(fmt::format("{}: {}", path, error.what()));
    }
}

}  // namespace qvs::launcher

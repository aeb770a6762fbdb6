// SPDX-License-Identifier: Apache-2.0
// Starting, joining and leaving a daemon.
#include "launcher/host.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "launcher/error.h"
#include "wire/fault.h"
#include "wire/json.h"

namespace qvs::launcher {

namespace {

using namespace std::chrono_literals;
using nlohmann::json;

// The daemon's exit code when another one has the directory.
constexpr int kServedAlready = 3;
constexpr auto kAgainAfter = 20ms;

constexpr int kReadyDescriptor = 3;

struct ServedAlready : Error {
    using Error::Error;
};

// In the child: nothing of the launcher's remains open, and the terminal is not the daemon's.
[[noreturn]] void becomeDaemon(const std::vector<std::string> &words, int ready) {
    setsid();
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    if (ready != kReadyDescriptor) dup2(ready, kReadyDescriptor);
    close_range(kReadyDescriptor + 1, ~0u, 0);
    unsetenv("LD_PRELOAD");
    if (chdir("/") != 0) _exit(1);
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string &word : words)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    dprintf(kReadyDescriptor, "cannot run %s: %s", arguments[0], strerror(errno));
    _exit(1);
}

using Clock = std::chrono::steady_clock;

// What the daemon says of its start, or nothing when it does not say it in time.
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

int waitForProcess(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

// Its status, or nothing when it does not end in time.
std::optional<int> waitForProcess(pid_t process, std::chrono::seconds within) {
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

}  // namespace

namespace {

// Starts a daemon and waits until it serves; its process. Throws ServedAlready when another one has the
// directory.
pid_t startDaemon(const std::string &program, const HostOptions &options) {
    std::vector<std::string> words = {program, "--state", options.directory, "--ready-fd",
                                      std::to_string(kReadyDescriptor)};
    if (!options.lab.empty()) words.insert(words.end(), {"--lab", options.lab});
    if (!options.trace.empty()) words.insert(words.end(), {"--trace", options.trace});
    if (options.maxStateMib != 0) {
        words.insert(words.end(), {"--max-state-mib", std::to_string(options.maxStateMib)});
    }
    if (options.whileLeased) words.emplace_back("--while-leased");
    if (options.isPrivate) words.emplace_back("--private");

    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0) throw Error(fmt::format("no pipe: {}", strerror(errno)));
    const pid_t process = fork();
    if (process == 0) {
        // The duplicate that exec is to keep; descriptor 3 itself may be the pipe's end.
        if (ready[1] == kReadyDescriptor) fcntl(ready[1], F_SETFD, 0);
        becomeDaemon(words, ready[1]);
    }
    close(ready[1]);
    if (process < 0) {
        close(ready[0]);
        throw Error(fmt::format("no process can be made: {}", strerror(errno)));
    }
    const auto said = readAll(ready[0], Clock::now() + kBeginsWithin);
    close(ready[0]);
    if (said == "R") return process;
    if (!said) {
        killProcess(process);
        throw Error(
            fmt::format("the daemon {} (process {}) did not serve within {} s and was killed; see {}/log",
                        program, process, kBeginsWithin.count(), options.directory));
    }

    const int status = waitForProcess(process);
    const std::string message = said->empty() ? fmt::format("the daemon {} {} before it served; see {}/log",
                                                            program, endOf(status), options.directory)
                                              : *said;
    if (WIFEXITED(status) && WEXITSTATUS(status) == kServedAlready) throw ServedAlready(message);
    throw Error(message);
}

// Tries until it is there. A daemon that has the directory may be one that begins, one that ends, or one that
// was killed and has not been cleared away: `isJoined` says when it serves instead.
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
    const std::string socket = options.directory + "/socket";
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
    : socket_(options.directory + "/socket"), isPrivate_(options.isPrivate) {
    while (!join()) {
        const pid_t started = startOrJoin(program, options, [this](const ServedAlready &) { return join(); });
        if (started == 0) break;
        daemon_ = started;
    }
    if (daemon_ != 0) return;
    if (!options.lab.empty())
        control(socket_, {{"op", "seed"}, {"lab", readJson(options.lab)}}, kChangesWithin);
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
    if (errno == ENAMETOOLONG) {
        throw Error(
            fmt::format("{}: the path is longer than the 107 bytes a socket may have; use a shorter state "
                        "directory",
                        socket_));
    }
    if (errno == EACCES || errno == EPERM)
        throw Error(fmt::format("the host at {} is another user's: {}", socket_, strerror(errno)));
    return false;
}

void Host::leave() {
    // The daemon answers when it stays, for other leases or for good, and else keeps silent until it is gone.
    std::string nothing;
    lease_.setTimeout(millisecondsOf(kEndsWithin));
    const bool sent = shutdown(lease_.socket(), SHUT_WR) == 0;
    const bool stays = sent && lease_.receive(wire::Kind::Reply, &nothing);
    const bool silent = sent && !stays && errno == ETIMEDOUT;
    lease_.close();
    if (silent) complain("the host at {}{} does not end", qvs::shown(socket_), who_);
    if (stays || daemon_ == 0 || (silent && !isPrivate_)) return;
    const std::optional<int> status = silent ? killProcess(daemon_) : waitForProcess(daemon_, kEndsWithin);
    if (!status) {
        complain("the host at {}{} does not end", qvs::shown(socket_), who_);
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

void connectTo(wire::Client *client, const std::string &socket) {
    if (client->connect(socket.c_str())) return;
    const bool isThere = errno != ENOENT && errno != ECONNREFUSED;
    throw Error(fmt::format("no host answers at {} ({}){}", socket, strerror(errno),
                            isThere ? "" : "; start one with \"qvs-host start --state DIR\""));
}

json control(const std::string &socket, const json &request, std::chrono::milliseconds within) {
    // What was written into a request stands deeper in an answer that gives it back.
    constexpr size_t kDeepest = wire::kMaxJsonDepth + 8;
    wire::Client client;
    connectTo(&client, socket);
    client.setTimeout(millisecondsOf(within));
    const std::string who = processBehind(client);
    wire::Writer message(wire::Kind::Control);
    message.text(request.dump());
    std::string payload;
    if (!client.call(message, &payload)) throw noAnswer(socket, who);
    json answer;
    try {
        answer = wire::parseJson(wire::Reader(payload).text(), kDeepest);
    } catch (const std::exception &) {
        // It is no object then.
    }
    if (!answer.is_object()) throw Error("the host's answer makes no sense; are both of one version?");
    if (!answer.value("ok", false)) throw Error(answer.value("error", "the host refused"));
    return answer;
}

json readJson(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw Error(fmt::format("cannot read {}: {}", path, strerror(errno)));
    std::stringstream text;
    text << file.rdbuf();
    try {
        return wire::parseJson(text.str());
    } catch (const std::exception &error) {
        throw Error(fmt::format("{}: {}", path, error.what()));
    }
}

}  // namespace qvs::launcher

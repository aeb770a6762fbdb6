// Starting, joining and leaving a daemon.
#include "launcher/host.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "launcher/error.h"
#include "wire/json.h"

namespace qvs::launcher {

namespace {

using namespace std::chrono_literals;
using nlohmann::json;

// The daemon's exit code when another one has the directory.
constexpr int kServedAlready = 3;
// A daemon that is about to start or to end does so well within this time.
constexpr auto kPatience = 30s;
constexpr auto kAgainAfter = 20ms;

constexpr int kReadyDescriptor = 3;

struct ServedAlready : Error {
    using Error::Error;
};

// In the child: nothing of the launcher's remains open, and the terminal is not the daemon's.
[[noreturn]] void becomeDaemon(const std::vector<std::string> &words, int ready, const std::string &log) {
    setsid();
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(open(log.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0666), STDOUT_FILENO);
    dup2(STDOUT_FILENO, STDERR_FILENO);
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

std::string readAll(int descriptor) {
    std::string text;
    char buffer[512];
    ssize_t length = 0;
    while ((length = read(descriptor, buffer, sizeof buffer)) != 0) {
        if (length > 0) text.append(buffer, static_cast<size_t>(length));
        if (length < 0 && errno != EINTR) break;
    }
    return text;
}

int waitForProcess(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

std::string endOf(int status) {
    return WIFSIGNALED(status) ? fmt::format("was killed by signal {}", WTERMSIG(status))
                               : fmt::format("ended with status {}", WEXITSTATUS(status));
}

}  // namespace

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

    std::error_code failure;
    std::filesystem::create_directories(options.directory, failure);
    if (failure) {
        throw Error(
            fmt::format("cannot make the state directory {}: {}", options.directory, failure.message()));
    }
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0) throw Error(fmt::format("no pipe: {}", strerror(errno)));
    const pid_t process = fork();
    if (process == 0) {
        // The duplicate that exec is to keep; descriptor 3 itself may be the pipe's end.
        if (ready[1] == kReadyDescriptor) fcntl(ready[1], F_SETFD, 0);
        becomeDaemon(words, ready[1], options.directory + "/log");
    }
    close(ready[1]);
    if (process < 0) {
        close(ready[0]);
        throw Error(fmt::format("no process can be made: {}", strerror(errno)));
    }
    const std::string said = readAll(ready[0]);
    close(ready[0]);
    if (said == "R") return process;

    const int status = waitForProcess(process);
    const std::string message = said.empty() ? fmt::format("the daemon {} {} before it served; see {}/log",
                                                           program, endOf(status), options.directory)
                                             : said;
    if (WIFEXITED(status) && WEXITSTATUS(status) == kServedAlready) throw ServedAlready(message);
    throw Error(message);
}

Host::Host(const std::string &program, const HostOptions &options) : socket_(options.directory + "/socket") {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    // One daemon may be ending and another one, of a launcher started at the same time, beginning.
    while (!join()) {
        try {
            daemon_ = startDaemon(program, options);
        } catch (const ServedAlready &error) {
            if (std::chrono::steady_clock::now() > deadline) {
                throw Error(
                    fmt::format("{}, which does not answer; end that process and try again", error.what()));
            }
            std::this_thread::sleep_for(kAgainAfter);
        }
    }
    if (daemon_ != 0) return;
    if (!options.lab.empty()) control(socket_, {{"op", "seed"}, {"lab", readJson(options.lab)}});
    if (!options.trace.empty()) control(socket_, {{"op", "trace.file"}, {"path", options.trace}});
    if (options.maxStateMib != 0) {
        complain("{} is served already: --max-state-mib has no effect", options.directory);
    }
}

bool Host::join() {
    wire::Writer request(wire::Kind::Lease);
    std::string nothing;
    if (lease_.connect(socket_.c_str()) && lease_.call(request, &nothing)) return true;
    if (errno == ETIMEDOUT) throw Error(fmt::format("the host at {} does not answer", socket_));
    if (errno == ENAMETOOLONG) {
        throw Error(
            fmt::format("{}: the path is longer than the 107 bytes a socket may have; use a shorter state "
                        "directory",
                        socket_));
    }
    return false;
}

void Host::leave() {
    // The daemon answers when it stays, for other leases or for good, and else keeps silent until it is gone.
    std::string nothing;
    const bool ended =
        shutdown(lease_.socket(), SHUT_WR) != 0 || !lease_.receive(wire::Kind::Reply, &nothing);
    lease_.close();
    if (!ended || daemon_ == 0) return;
    const int status = waitForProcess(daemon_);
    if (status != 0) complain("the host {}", endOf(status));
}

void connectTo(wire::Client *client, const std::string &socket, int timeoutSeconds) {
    if (client->connect(socket.c_str(), timeoutSeconds)) return;
    const bool isThere = errno != ENOENT && errno != ECONNREFUSED;
    throw Error(fmt::format("no host answers at {} ({}){}", socket, strerror(errno),
                            isThere ? "" : "; start one with \"qvs-host start --state DIR\""));
}

json control(const std::string &socket, const json &request) {
    wire::Client client;
    connectTo(&client, socket);
    wire::Writer message(wire::Kind::Control);
    message.text(request.dump());
    std::string payload;
    if (!client.call(message, &payload)) {
        throw Error(fmt::format("the host at {} did not answer: {}", socket, strerror(errno)));
    }
    json answer = json::parse(wire::Reader(payload).text(), nullptr, false);
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

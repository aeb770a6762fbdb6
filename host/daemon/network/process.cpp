// SPDX-License-Identifier: Apache-2.0
// Starts the process with its socket as descriptor 3, copies its messages to the log, and starts it again.
#include "daemon/network/process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <thread>
#include <utility>

#include <fmt/format.h>

#include "daemon/model/log.h"

namespace qvs::kernel {

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

constexpr int kSocket = 3;
constexpr auto kFirstDelay = 100ms;
constexpr auto kLongestDelay = 5000ms;
// A process that ran so long did not fail because of its start.
constexpr auto kLongRun = 10s;
constexpr auto kExitsWithin = 50ms;
constexpr auto kEndsWithin = 2000ms;
constexpr int kCannotRun = 127;

// The child between fork and exec.
[[noreturn]] void become(const char *program, int socket, int log, pid_t parent) {
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    if (socket == kSocket) {
        fcntl(socket, F_SETFD, 0);
    } else {
        dup2(socket, kSocket);
    }
    close_range(kSocket + 1, ~0u, 0);
    signal(SIGPIPE, SIG_DFL);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The parent may have ended before.
    if (getppid() == parent) execl(program, program, nullptr);
    dprintf(STDERR_FILENO, "cannot run %s: %s\n", program, std::strerror(errno));
    _exit(kCannotRun);
}

std::string endOf(int status) {
    if (WIFSIGNALED(status)) return fmt::format("was killed by signal {}", WTERMSIG(status));
    return fmt::format("ended with status {}", WEXITSTATUS(status));
}

}  // namespace

Process::Process(asio::io_context &io, std::string program, Events events)
    : io_(io), program_(std::move(program)), events_(std::move(events)), log_(io), again_(io) {}

Process::~Process() {
    stop();
}

void Process::start() {
    wanted_ = true;
    if (pid_ > 0) return;
    if (spawn()) {
        events_.started();
    } else {
        startAgain();
    }
}

bool Process::spawn() {
    int sockets[2] = {-1, -1};
    int log[2] = {-1, -1};
    pid_t child = -1;
    const pid_t parent = getpid();
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) == 0 &&
        pipe2(log, O_CLOEXEC | O_NONBLOCK) == 0) {
        // The data path writes without non-blocking mode, as to a file.
        fcntl(log[1], F_SETFL, 0);
        child = fork();
    }
    const int error = errno;
    if (child == 0) become(program_.c_str(), sockets[1], log[1], parent);
    for (const int file : {sockets[1], log[1]})
        if (file >= 0) close(file);
    if (child < 0) {
        for (const int file : {sockets[0], log[0]})
            if (file >= 0) close(file);
        logLine(Level::Error, "cannot start the data path: {}", std::strerror(error));
        return false;
    }
    pid_ = child;
    started_ = steady_clock::now();
    log_.assign(log[0]);
    readLog();
    pipe_ = std::make_shared<Pipe>(io_, sockets[0],
                                   Pipe::Events{[this](uint32_t kind, std::string_view payload, int file) {
                                                    events_.received(kind, payload, file);
                                                },
                                                [this](const std::string &reason) { end(reason); }});
    pipe_->start();
    logLine(Level::Info, "the data path is process {}", pid_);
    return true;
}

void Process::send(std::string_view message, int file) {
    if (pipe_ != nullptr) pipe_->send(message, file);
}

void Process::readLog() {
    log_.async_read_some(asio::buffer(piece_),
                         [this, process = pid_](const asio::error_code &error, size_t size) {
                             if (error || process != pid_) return;
                             logged_.append(piece_, size);
                             logLines(false);
                             readLog();
                         });
}

void Process::drainLog() {
    for (ssize_t size = 0; (size = read(log_.native_handle(), piece_, sizeof piece_)) > 0;)
        logged_.append(piece_, static_cast<size_t>(size));
    logLines(true);
}

// Logs the complete lines, or everything. A line of the log begins with its level. Other lines are what a
// dying process printed.
void Process::logLines(bool all) {
    constexpr std::string_view kInfo = "info ";
    constexpr std::string_view kWarning = "warning ";
    constexpr size_t kLongest = 4096;
    if (all && !logged_.empty() && logged_.back() != '\n') logged_ += '\n';
    for (size_t end = 0; (end = logged_.find('\n')) != std::string::npos || logged_.size() > kLongest;) {
        const std::string line = logged_.substr(0, end);
        logged_.erase(0, end == std::string::npos ? end : end + 1);
        if (line.starts_with(kInfo)) {
            logLine(Level::Info, "{}", line.substr(kInfo.size()));
        } else {
            const bool known = line.starts_with(kWarning);
            logLine(Level::Warning, "{}{}",
                    known ? "" : "data path: ", line.substr(known ? kWarning.size() : 0));
        }
    }
}

// Waits for the end of the process, which is killed after this time. Returns its status.
int Process::reap(std::chrono::milliseconds within) {
    int status = 0;
    const auto deadline = steady_clock::now() + within;
    while (waitpid(pid_, &status, WNOHANG) == 0) {
        if (steady_clock::now() > deadline) {
            ::kill(pid_, SIGKILL);
            waitpid(pid_, &status, 0);
            break;
        }
        std::this_thread::sleep_for(1ms);
    }
    pid_ = 0;
    return status;
}

void Process::kill(std::string_view why) {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    end(why);
}

void Process::end(std::string_view reason) {
    // The pipe may be calling this function.
    const std::shared_ptr<Pipe> pipe = std::exchange(pipe_, nullptr);
    pipe->close();
    const pid_t pid = pid_;
    const int status = reap(kExitsWithin);
    drainLog();
    log_.close();
    logLine(Level::Warning, "the data path (process {}) {}: {}; it is started again", pid, endOf(status),
            reason);
    events_.ended();
    startAgain();
}

void Process::startAgain() {
    if (!wanted_) return;
    ++restarts_;
    const bool failed = steady_clock::now() - started_ < kLongRun;
    delay_ =
        failed ? std::clamp<std::chrono::milliseconds>(delay_ * 2, kFirstDelay, kLongestDelay) : kFirstDelay;
    again_.expires_after(delay_);
    again_.async_wait([this](const asio::error_code &error) {
        if (!error && wanted_) start();
    });
}

void Process::stop() {
    wanted_ = false;
    again_.cancel();
    if (pid_ <= 0) return;
    const std::shared_ptr<Pipe> pipe = std::exchange(pipe_, nullptr);
    pipe->close();
    reap(kEndsWithin);
    drainLog();
    log_.close();
    logLine(Level::Info, "the data path ended");
}

}  // namespace qvs::kernel

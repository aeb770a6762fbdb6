// SPDX-License-Identifier: Apache-2.0
// Runs a command on a host: private directory, environment, child process, signals.
#include "launcher/run.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <sstream>

#include <fmt/format.h>

#include "launcher/error.h"
#include "launcher/layout.h"
#include "launcher/process.h"
#include "launcher/program.h"
#include "wire/host_files.h"
#include "wire/noncopyable.h"
#include "wire/protocol.h"

namespace qvs::launcher {

namespace {

constexpr int kNotFound = 127;
constexpr int kNotExecutable = 126;
constexpr int kSignalled = 128;

// The terminal also sends these signals to the command, which handles them.
constexpr int kFromTerminal[] = {SIGINT, SIGQUIT};
// These signals are sent only to the launcher and forwarded to the command.
constexpr int kForwarded[] = {SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGALRM};

std::atomic<pid_t> forwardTo{0};

void forward(int signal) {
    const int saved = errno;
    if (const pid_t child = forwardTo; child != 0) kill(child, signal);
    errno = saved;
}

// Forwards signals to the command. An object exists from before the start of the command until after its end.
class Signals : private wire::Noncopyable {
  public:
    Signals() {
        sigemptyset(&defaults_);
        sigset_t blocked;
        sigemptyset(&blocked);
        for (const int signal : kForwarded)
            sigaddset(&blocked, signal);
        sigprocmask(SIG_BLOCK, &blocked, &original_);
        for (const int signal : kFromTerminal)
            set(signal, SIG_IGN);
        for (const int signal : kForwarded)
            set(signal, forward);
    }

    // Makes the command start with the signal dispositions of the launcher at its start.
    void prepare(posix_spawnattr_t *attributes) const {
        posix_spawnattr_setflags(attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
        posix_spawnattr_setsigdefault(attributes, &defaults_);
        posix_spawnattr_setsigmask(attributes, &original_);
    }

    void started(pid_t child) const {
        forwardTo = child;
        sigprocmask(SIG_SETMASK, &original_, nullptr);
    }

    // Restores the dispositions, so that signals end the waits of the launcher.
    ~Signals() {
        forwardTo = 0;
        for (const int signal : kFromTerminal)
            restore(signal);
        for (const int signal : kForwarded)
            restore(signal);
        sigprocmask(SIG_SETMASK, &original_, nullptr);
    }

  private:
    void set(int signal, void (*handler)(int)) {
        struct sigaction before {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler == SIG_IGN) return;
        struct sigaction action {};
        action.sa_handler = handler;
        sigaction(signal, &action, nullptr);
        sigaddset(&defaults_, signal);
    }

    void restore(int signal) const {
        if (sigismember(&defaults_, signal) == 1) ::signal(signal, SIG_DFL);
    }

    sigset_t original_;
    sigset_t defaults_;
};

// Adds a value to a list that is separated by colons.
void addTo(const char *variable, const std::string &value, bool inFront = true) {
    const char *before = getenv(variable);
    const bool isSet = before != nullptr && before[0] != '\0';
    const std::string list = !isSet ? value : inFront ? value + ':' + before : before + (':' + value);
    setenv(variable, list.c_str(), 1);
}

// Sets the environment of the command. The runtime of the address sanitizer requires to be the first library,
// but it also works after the interposer, which does not allocate memory. Preloading the runtime would load
// it into every program that the command starts.
void setEnvironment(const Layout &layout, const std::string &directory) {
    addTo("LD_PRELOAD", layout.preload);
    addTo("LD_LIBRARY_PATH", layout.lib);
    addTo("PATH", layout.toolPath + ':' + layout.bin);
    setenv(wire::kSocketVariable, wire::socketFile(directory).c_str(), 1);
    setenv(wire::kTreeshVariable, layout.treesh.c_str(), 1);
    setenv("QVS_HOST_STATE", directory.c_str(), 1);
    // The user may name another file, or none. An installation without the file is complete all the same.
    if (std::filesystem::exists(layout.records)) setenv("QVS_LAYOUT", layout.records.c_str(), 0);
    unsetenv(std::string(wire::kLostEntry, strcspn(wire::kLostEntry, "=")).c_str());
    addTo("ASAN_OPTIONS", "verify_asan_link_order=0", false);
}

int runChild(const std::vector<std::string> &command) {
    const Signals signals;
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    signals.prepare(&attributes);
    const std::vector<char *> words = argumentsOf(command);
    pid_t child = 0;
    const int failure = posix_spawnp(&child, words[0], nullptr, &attributes, words.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (failure != 0) {
        complain("cannot run {}: {}", qvs::shown(command[0]), strerror(failure));
        return failure == ENOENT ? kNotFound : kNotExecutable;
    }
    signals.started(child);
    const int status = waitForProcess(child);
    return WIFSIGNALED(status) ? kSignalled + WTERMSIG(status) : WEXITSTATUS(status);
}

// A state directory for one command. The daemon removes it at its end, even if the launcher was killed. The
// launcher removes it if the daemon was killed.
class PrivateDirectory : private wire::Noncopyable {
  public:
    PrivateDirectory() {
        const char *parent = getenv("TMPDIR");
        path_ = std::string(parent != nullptr && parent[0] != '\0' ? parent : "/tmp") + "/qvs-host.XXXXXX";
        if (mkdtemp(path_.data()) == nullptr) {
            throw Error(
                fmt::format("cannot make a private directory like {}: {}; set TMPDIR to a directory that can "
                            "be written",
                            path_, strerror(errno)));
        }
        // The open descriptor allows reading the log after the file is removed.
        log_ = open(wire::logFile(path_).c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0666);
    }
    ~PrivateDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
        if (log_ >= 0) close(log_);
    }

    const std::string &path() const { return path_; }

    void printWarnings() const {
        std::istringstream log(wire::readFile(fmt::format("/proc/self/fd/{}", log_)).value_or(""));
        for (std::string line; std::getline(log, line);) {
            if (!line.starts_with("info ")) complain("the host's log: {}", qvs::shown(line));
        }
    }

  private:
    std::string path_;
    int log_ = -1;
};

}  // namespace

int runCommand(HostOptions options, const std::vector<std::string> &command) {
    const Layout layout = findLayout();
    std::optional<PrivateDirectory> own;
    if (options.directory.empty()) {
        own.emplace();
        options.directory = own->path();
        options.isPrivate = true;
    }
    options.whileLeased = true;
    Host host(layout.daemon, options);
    setEnvironment(layout, options.directory);
    if (const std::string why = whyNotOnHost(command[0], layout); !why.empty())
        complain("warning: {}", qvs::shown(why));
    std::vector<std::string> words = command;
    if (words[0] == "/bin/treesh") words[0] = layout.treesh;
    const int status = runChild(words);
    host.leave();
    if (own) own->printWarnings();
    return status;
}

}  // namespace qvs::launcher

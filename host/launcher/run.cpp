// SPDX-License-Identifier: Apache-2.0
// Running a command on a host: private directory, environment, child, signals.
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

#include <fmt/format.h>

#include "launcher/error.h"
#include "launcher/layout.h"
#include "launcher/program.h"
#include "wire/protocol.h"

namespace qvs::launcher {

namespace {

constexpr int kNotFound = 127;
constexpr int kNotExecutable = 126;
constexpr int kSignalled = 128;

// The terminal sends these to the command as well, which decides what they mean.
constexpr int kFromTerminal[] = {SIGINT, SIGQUIT};
// These are sent to the launcher alone and meant for the command.
constexpr int kForwarded[] = {SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGALRM};

std::atomic<pid_t> forwardTo{0};

void forward(int signal) {
    const int saved = errno;
    if (const pid_t child = forwardTo; child != 0) kill(child, signal);
    errno = saved;
}

// Signals on their way to the command, from before it exists until after it ended.
class Signals {
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

    // The command starts with the dispositions the launcher itself was started with.
    void prepare(posix_spawnattr_t *attributes) const {
        posix_spawnattr_setflags(attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
        posix_spawnattr_setsigdefault(attributes, &defaults_);
        posix_spawnattr_setsigmask(attributes, &original_);
    }

    void started(pid_t child) const {
        forwardTo = child;
        sigprocmask(SIG_SETMASK, &original_, nullptr);
    }

    // Without the command they are meant for the launcher again, and end what it then waits for.
    ~Signals() {
        forwardTo = 0;
        for (const int signal : kFromTerminal)
            restore(signal);
        for (const int signal : kForwarded)
            restore(signal);
        sigprocmask(SIG_SETMASK, &original_, nullptr);
    }
    Signals(const Signals &) = delete;
    Signals &operator=(const Signals &) = delete;

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

void prepend(const char *variable, const std::string &value) {
    const char *before = getenv(variable);
    const bool isSet = before != nullptr && before[0] != '\0';
    setenv(variable, (isSet ? value + ':' + before : value).c_str(), 1);
}

void append(const char *variable, const std::string &value) {
    const char *before = getenv(variable);
    const bool isSet = before != nullptr && before[0] != '\0';
    setenv(variable, (isSet ? before + (':' + value) : value).c_str(), 1);
}

// The runtime of an address-sanitized program wants to be the first library, and the interposer is; it does
// as well behind the interposer, which allocates nothing. Preloading the runtime would force it on every
// program that the command starts.
void setEnvironment(const Layout &layout, const std::string &directory) {
    prepend("LD_PRELOAD", layout.preload);
    prepend("LD_LIBRARY_PATH", layout.lib);
    prepend("PATH", layout.toolPath + ':' + layout.bin);
    setenv(wire::kSocketVariable, (directory + "/socket").c_str(), 1);
    setenv(wire::kTreeshVariable, layout.treesh.c_str(), 1);
    setenv("QVS_HOST_STATE", directory.c_str(), 1);
    unsetenv(std::string(wire::kLostEntry, strcspn(wire::kLostEntry, "=")).c_str());
    append("ASAN_OPTIONS", "verify_asan_link_order=0");
}

int runChild(const std::vector<std::string> &command) {
    const Signals signals;
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    signals.prepare(&attributes);
    std::vector<char *> words;
    words.reserve(command.size() + 1);
    for (const std::string &word : command)
        words.push_back(const_cast<char *>(word.c_str()));
    words.push_back(nullptr);
    pid_t child = 0;
    const int failure = posix_spawnp(&child, words[0], nullptr, &attributes, words.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (failure != 0) {
        complain("cannot run {}: {}", qvs::shown(command[0]), strerror(failure));
        return failure == ENOENT ? kNotFound : kNotExecutable;
    }
    signals.started(child);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? kSignalled + WTERMSIG(status) : WEXITSTATUS(status);
}

// A state directory for one command. The daemon removes it when it ends, even when the launcher is gone by
// then; the launcher removes it when the daemon was killed.
class PrivateDirectory {
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
        // Held open, the log can still be read when its file is gone.
        log_ = open((path_ + "/log").c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0666);
    }
    PrivateDirectory(const PrivateDirectory &) = delete;
    PrivateDirectory &operator=(const PrivateDirectory &) = delete;
    ~PrivateDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
        if (log_ >= 0) close(log_);
    }

    const std::string &path() const { return path_; }

    void printWarnings() const {
        FILE *log = fdopen(dup(log_), "r");
        if (log == nullptr) return;
        char *line = nullptr;
        size_t size = 0;
        while (getline(&line, &size, log) > 0) {
            if (std::string_view(line).starts_with("info ")) continue;
            line[strcspn(line, "\n")] = '\0';
            complain("the host's log: {}", qvs::shown(line));
        }
        free(line);
        fclose(log);
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

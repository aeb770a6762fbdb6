// SPDX-License-Identifier: Apache-2.0
// qvs-hostd: the emulated kernel. It serves one state directory.
#include <fcntl.h>
#include <getopt.h>
#include <malloc.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

#include <fmt/format.h>

#include "daemon/devices/attachments.h"
#include "daemon/front/server.h"
#include "daemon/model/log.h"
#include "daemon/model/state_directory.h"
#include "daemon/network/network.h"
#include "wire/escape.h"
#include "wire/host_files.h"
#include "wire/json.h"
#include "wire/stream.h"

#include <asio/signal_set.hpp>

namespace qvs::kernel {

namespace {

constexpr int kFailed = 1;

struct Options {
    std::string directory;
    std::string lab;
    std::string trace;
    uint32_t maxStateMib = 0;
    int readyDescriptor = -1;
    bool whileLeased = false;
    bool isPrivate = false;
    bool network = false;
    std::string switchd;
};

// The options are those of the launcher, which starts the daemon.
bool readOptions(int count, char **words, Options *options) {
    enum { State, Lab, Trace, MaxState, Ready, WhileLeased, Private, WithNetwork, Switchd };
    static constexpr option kOptions[] = {
        {"state", required_argument, nullptr, State},
        {"lab", required_argument, nullptr, Lab},
        {"trace", required_argument, nullptr, Trace},
        {"max-state-mib", required_argument, nullptr, MaxState},
        {"ready-fd", required_argument, nullptr, Ready},
        {"while-leased", no_argument, nullptr, WhileLeased},
        {"private", no_argument, nullptr, Private},
        {"network", no_argument, nullptr, WithNetwork},
        {"switchd", required_argument, nullptr, Switchd},
        {},
    };
    for (int found = 0; (found = getopt_long(count, words, "", kOptions, nullptr)) != -1;) {
        switch (found) {
            case State:
                options->directory = optarg;
                break;
            case Lab:
                options->lab = optarg;
                break;
            case Trace:
                options->trace = optarg;
                break;
            case MaxState:
                options->maxStateMib = static_cast<uint32_t>(std::strtoul(optarg, nullptr, 10));
                break;
            case Ready:
                options->readyDescriptor = static_cast<int>(std::strtol(optarg, nullptr, 10));
                break;
            case WhileLeased:
                options->whileLeased = true;
                break;
            case Private:
                options->isPrivate = true;
                break;
            case WithNetwork:
                options->network = true;
                break;
            case Switchd:
                options->switchd = optarg;
                break;
            default:
                return false;
        }
    }
    if (optind == count && !options->directory.empty()) return true;
    std::fputs("qvs-hostd: this program is started by qvs-host, with --state DIR\n", stderr);
    return false;
}

// Reports why the daemon does not start, with its exit code.
class StartError : public std::runtime_error {
  public:
    explicit StartError(const std::string &message, int exitCode = kFailed)
        : std::runtime_error(message), exitCode_(exitCode) {}
    int exitCode() const { return exitCode_; }

  private:
    int exitCode_;
};

std::string reason() {
    return std::strerror(errno);
}

// Takes the lock of the directory, so that only one daemon serves it. The lock file contains the process id
// for the error of a second daemon.
int takeLock(const std::string &directory) {
    const std::string path = directory + "/lock";
    const int lock = openOwnFile(path, O_RDWR);
    if (flock(lock, LOCK_EX | LOCK_NB) != 0) {
        std::string pid;
        std::ifstream(path) >> pid;
        throw StartError(
            fmt::format("{} is served already, by process {}", directory, pid.empty() ? "?" : pid),
            wire::kServedAlready);
    }
    const std::string pid = fmt::format("{}\n", getpid());
    if (ftruncate(lock, 0) != 0 || write(lock, pid.data(), pid.size()) != static_cast<ssize_t>(pid.size())) {
        throw StartError(fmt::format("cannot write {}: {}", path, reason()));
    }
    return lock;
}

// Listens on a new socket. An existing socket belongs to a daemon that has ended, because this process holds
// the lock.
int listenOn(const std::string &path) {
    sockaddr_un address;
    if (!wire::socketAddress(path.c_str(), &address)) throw StartError(wire::pathTooLong(path));
    if (unlink(path.c_str()) != 0 && errno != ENOENT)
        throw StartError(fmt::format("cannot replace {}: {}", path, reason()));
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const mode_t before = umask(0177);
    const bool bound =
        listener >= 0 && bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    const std::string problem = reason();
    umask(before);
    if (!bound) throw StartError(fmt::format("cannot create {}: {}", path, problem));
    if (listen(listener, SOMAXCONN) != 0)
        throw StartError(fmt::format("cannot listen on {}: {}", path, reason()));
    return listener;
}

void applyLabFile(const std::string &path, Kernel &kernel) {
    const auto text = wire::readFile(path);
    if (!text) throw StartError(fmt::format("cannot read the lab {}: {}", path, reason()));
    try {
        applyLab(parseLab(wire::parseJson(*text)), kernel.model, kernel.store);
    } catch (const std::exception &error) {
        throw StartError(fmt::format("the lab {} cannot be used: {}", path, error.what()));
    }
}

std::unique_ptr<Kernel> makeKernel(const Options &options) {
    auto kernel = std::make_unique<Kernel>(options.directory + "/hypercore.db");
    kernel->store.limitTo(options.maxStateMib);
    kernel->model.identity = identityOf(options.directory);
    if (!options.lab.empty()) applyLabFile(options.lab, *kernel);
    if (options.network) enableNetwork(kernel->model, true);
    if (options.trace.empty()) return kernel;
    if (const auto problem = kernel->trace.openFile(options.trace))
        throw StartError(fmt::format("cannot open the trace {}: {}", options.trace, *problem));
    return kernel;
}

// Opens the log. It is also the standard output and standard error of a daemon that a launcher started.
void openLog(const std::string &path, bool isStarted) {
    const int file = openOwnFile(path, O_WRONLY | O_APPEND);
    if (isStarted) {
        dup2(file, STDOUT_FILENO);
        dup2(file, STDERR_FILENO);
    }
    logTo(file);
}

// Raises the limit of descriptors, because each client needs one.
void raiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

// Keeps freed memory for the next snapshot. Allocating it from the system again would take most of the time.
void keepMemory() {
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
}

// Reports the result of the start to the launcher: 'R', or an error message. Returns false if the launcher
// has ended.
bool report(int descriptor, std::string_view text) {
    if (descriptor < 0) return true;
    const ssize_t written = write(descriptor, text.data(), text.size());
    close(descriptor);
    return written == static_cast<ssize_t>(text.size());
}

// Reports an error to the launcher, or on standard error if there is none.
void reportFailure(int descriptor, const std::exception &error) {
    if (descriptor >= 0) {
        report(descriptor, error.what());
        return;
    }
    std::fputs(("qvs-hostd: " + wire::escaped(error.what()) + '\n').c_str(), stderr);
}

// Runs the event loop. An error outside of requests must not end the host.
void serve(asio::io_context &io) {
    for (;;) {
        try {
            io.run();
            return;
        } catch (const std::exception &error) {
            logLine(Level::Error, "the host failed: {}", error.what());
        }
    }
}

// The data path is installed where the daemon is.
std::string dataPathProgram(const std::string &given) {
    if (!given.empty()) return given;
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "qvs-switchd";
}

// Attachments are open before the first command runs on the host. The host serves without them, too.
void startNetwork(asio::io_context &io, Network &network) {
    if (network.publish() == 0) return;
    while (network.settling() && !io.stopped())
        io.run_one();
}

void run(const Options &options) {
    prepareDirectory(options.directory);
    const int lock = takeLock(options.directory);
    openLog(wire::logFile(options.directory), options.readyDescriptor >= 0);
    const std::string socketPath = wire::socketFile(options.directory);
    const int listener = listenOn(socketPath);
    std::unique_ptr<Kernel> whole;
    try {
        whole = makeKernel(options);
    } catch (...) {
        unlink(socketPath.c_str());
        throw;
    }

    Kernel &kernel = *whole;
    asio::io_context io(1);
    Server server(io, kernel, listener,
                  {options.directory, options.whileLeased, dataPathProgram(options.switchd)});
    asio::signal_set signals(io, SIGTERM, SIGINT);
    signals.async_wait([&](const asio::error_code &error, int) {
        if (!error) server.stop();
    });
    logLine(Level::Info, "serving {} as process {}: {} switches, {} ports", options.directory, getpid(),
            kernel.model.inventory.switches().size(), kernel.model.inventory.portCount());
    startNetwork(io, server.network());
    if (report(options.readyDescriptor, "R")) serve(io);

    logLine(Level::Info, "ending");
    server.network().stop();
    unlink(socketPath.c_str());
    kernel.store.close();
    if (options.isPrivate) std::filesystem::remove_all(options.directory);
    close(lock);
    // The end of the process frees the memory faster. The pointer shows that it is not lost.
    [[maybe_unused]] static Kernel *const kept = whole.release();
}

}  // namespace

}  // namespace qvs::kernel

int main(int argc, char **argv) {
    using namespace qvs::kernel;
    Options options;
    if (!readOptions(argc, argv, &options)) return kFailed;

    signal(SIGPIPE, SIG_IGN);
    // Other users must not be able to write the files of the host.
    umask(umask(0) | 022);
    raiseDescriptorLimit();
    keepMemory();
    try {
        run(options);
        return 0;
    } catch (const StartError &error) {
        reportFailure(options.readyDescriptor, error);
        return error.exitCode();
    } catch (const std::exception &error) {
        reportFailure(options.readyDescriptor, error);
        return kFailed;
    }
}

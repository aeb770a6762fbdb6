// SPDX-License-Identifier: Apache-2.0
// qvs-hostd: the emulated kernel. Serves one state directory.
#include <fcntl.h>
#include <malloc.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include <fmt/format.h>
#include <spdlog/details/null_mutex.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "daemon/front/server.h"
#include "daemon/model/state_directory.h"
#include "wire/escape.h"
#include "wire/json.h"
#include "wire/stream.h"

#include <asio/signal_set.hpp>

namespace qvs::kernel {

void logStoreFailure(const Store &store, const StoreError &error) {
    const bool wanted = store.limited() && error.full();
    spdlog::log(wanted ? spdlog::level::info : spdlog::level::warn, "a change was not stored: {}",
                error.what());
}

namespace {

constexpr int kFailed = 1;
constexpr int kServedAlready = 3;

struct Options {
    std::string directory;
    std::string lab;
    std::string trace;
    uint32_t maxStateMib = 0;
    int readyDescriptor = -1;
    bool whileLeased = false;
    bool isPrivate = false;
};

// Why the daemon does not start, and the exit code that says so.
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

// The lock that makes this the one daemon of the directory; its pid is inside for whoever comes second.
int takeLock(const std::string &directory) {
    const std::string path = directory + "/lock";
    const int lock = openOwnFile(path, O_RDWR);
    if (flock(lock, LOCK_EX | LOCK_NB) != 0) {
        std::string pid;
        std::ifstream(path) >> pid;
        throw StartError(
            fmt::format("{} is served already, by process {}", directory, pid.empty() ? "?" : pid),
            kServedAlready);
    }
    const std::string pid = fmt::format("{}\n", getpid());
    if (ftruncate(lock, 0) != 0 || write(lock, pid.data(), pid.size()) != static_cast<ssize_t>(pid.size())) {
        throw StartError(fmt::format("cannot write {}: {}", path, reason()));
    }
    return lock;
}

// A socket file that is there belongs to a daemon that is gone: the lock is ours.
int listenOn(const std::string &path) {
    sockaddr_un address;
    if (!wire::socketAddress(path.c_str(), &address)) {
        throw StartError(
            fmt::format("{}: the path is longer than the {} bytes a socket may have; use a shorter "
                        "state directory",
                        path, sizeof address.sun_path - 1));
    }
    if (unlink(path.c_str()) != 0 && errno != ENOENT)
        throw StartError(fmt::format("cannot replace {}: {}", path, reason()));
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const mode_t before = umask(0177);
    const bool bound =
        listener >= 0 && bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    const std::string problem = reason();
    umask(before);
    if (!bound) throw StartError(fmt::format("cannot make {}: {}", path, problem));
    if (listen(listener, SOMAXCONN) != 0)
        throw StartError(fmt::format("cannot listen on {}: {}", path, reason()));
    return listener;
}

void applyLabFile(const std::string &path, Kernel &kernel) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw StartError(fmt::format("cannot read the lab {}: {}", path, reason()));
    std::stringstream text;
    text << file.rdbuf();
    try {
        applyLab(parseLab(wire::parseJson(text.str())), kernel.model, kernel.store);
    } catch (const std::exception &error) {
        throw StartError(fmt::format("the lab {} cannot be used: {}", path, error.what()));
    }
}

std::unique_ptr<Kernel> makeKernel(const Options &options) {
    auto kernel = std::make_unique<Kernel>(options.directory + "/hypercore.db");
    kernel->store.limitTo(options.maxStateMib);
    if (!options.lab.empty()) applyLabFile(options.lab, *kernel);
    if (options.trace.empty()) return kernel;
    if (const auto problem = kernel->trace.openFile(options.trace))
        throw StartError(fmt::format("cannot open the trace {}: {}", options.trace, *problem));
    return kernel;
}

// A line is one line, whatever names are in it.
class LogFile : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
  public:
    explicit LogFile(int file) : file_(file) {}

  protected:
    void sink_it_(const spdlog::details::log_msg &message) override {
        const auto level = spdlog::level::to_string_view(message.level);
        const std::string line = fmt::format("{} {}\n", std::string_view(level.data(), level.size()),
                                             wire::escaped({message.payload.data(), message.payload.size()}));
        [[maybe_unused]] const ssize_t written = write(file_, line.data(), line.size());
    }
    void flush_() override {}

  private:
    int file_;
};

// The log is also standard output and standard error of a daemon that a launcher has started.
void openLog(const std::string &path, bool isStarted) {
    const int file = openOwnFile(path, O_WRONLY | O_APPEND);
    if (isStarted) {
        dup2(file, STDOUT_FILENO);
        dup2(file, STDERR_FILENO);
    }
    auto logger = std::make_shared<spdlog::logger>("hostd", std::make_shared<LogFile>(file));
    logger->flush_on(spdlog::level::info);
    spdlog::set_default_logger(std::move(logger));
}

// Each client is a descriptor.
void raiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

// Each snapshot needs again what the last one gave back; fetching it from the system anew costs more than the
// rest.
void keepMemory() {
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
}

// Tells the launcher how the start went: one 'R', or the message. False when it is no longer there.
bool report(int descriptor, std::string_view text) {
    if (descriptor < 0) return true;
    const ssize_t written = write(descriptor, text.data(), text.size());
    close(descriptor);
    return written == static_cast<ssize_t>(text.size());
}

// Why there is no host: to who waits for one, or on standard error.
void reportFailure(int descriptor, const std::exception &error) {
    if (descriptor >= 0) {
        report(descriptor, error.what());
        return;
    }
    std::fputs(("qvs-hostd: " + wire::escaped(error.what()) + '\n').c_str(), stderr);
}

// What fails beside all requests must not cost anybody the host.
void serve(asio::io_context &io) {
    for (;;) {
        try {
            io.run();
            return;
        } catch (const std::exception &error) {
            spdlog::error("the host failed: {}", error.what());
        }
    }
}

void run(const Options &options) {
    prepareDirectory(options.directory);
    const int lock = takeLock(options.directory);
    openLog(options.directory + "/log", options.readyDescriptor >= 0);
    const std::string socketPath = options.directory + "/socket";
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
    Server server(io, kernel, listener, {options.directory, options.whileLeased});
    asio::signal_set signals(io, SIGTERM, SIGINT);
    signals.async_wait([&](const asio::error_code &error, int) {
        if (!error) server.stop();
    });
    spdlog::info("serving {} as process {}: {} switches, {} ports", options.directory, getpid(),
                 kernel.model.inventory.switches().size(), kernel.model.inventory.portCount());
    if (report(options.readyDescriptor, "R")) serve(io);

    spdlog::info("ending");
    unlink(socketPath.c_str());
    kernel.store.close();
    if (options.isPrivate) std::filesystem::remove_all(options.directory);
    close(lock);
}

}  // namespace

}  // namespace qvs::kernel

int main(int argc, char **argv) {
    using namespace qvs::kernel;
    Options options;
    CLI::App app("The emulated kernel of qvs-host; started by it.", "qvs-hostd");
    app.add_option("--state", options.directory, "The directory that holds the state")->required();
    app.add_option("--lab", options.lab, "A lab to apply at the start");
    app.add_option("--trace", options.trace, "A file to append the trace to");
    app.add_option("--max-state-mib", options.maxStateMib, "Cap on the size of the database");
    app.add_option("--ready-fd", options.readyDescriptor, "Where to say that the daemon serves");
    app.add_flag("--while-leased", options.whileLeased, "End with the last lease");
    app.add_flag("--private", options.isPrivate, "Remove the directory at the end");
    CLI11_PARSE(app, argc, argv);

    signal(SIGPIPE, SIG_IGN);
    // What others may read here, they may never write.
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

// SPDX-License-Identifier: Apache-2.0
// What a device request costs: HYPIoctl beside the bare open, ioctl and close, and beside the least that the
// host could take.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <qvs/hyp.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr char kDevice[] = "/dev/vswitch";
constexpr int kGetSwitches = 0x1026;

// The frame of the device with a request that answers the number of switches.
struct Request {
    uint32_t selector = 1;
    uint32_t count[2] = {1, 0};
    struct {
        uint32_t inLength = sizeof(uint32_t);
        uint32_t outLength = sizeof(uint32_t[2]);
        uint64_t in = 0;
        uint64_t out = 0;
    } frame;

    Request() {
        frame.in = reinterpret_cast<uintptr_t>(&selector);
        frame.out = reinterpret_cast<uintptr_t>(count);
    }
};

// A process that returns what it receives, one connection after the other.
class Echo {
  public:
    Echo() {
        address_.sun_family = AF_UNIX;
        // In the abstract namespace, under the name of this process.
        snprintf(address_.sun_path + 1, sizeof address_.sun_path - 1, "bench-device-%d", getpid());
        const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (bind(listener, address(), sizeof address_) != 0 || listen(listener, 8) != 0) abort();
        process_ = fork();
        if (process_ == 0) serve(listener);
        close(listener);
    }
    ~Echo() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    Echo(const Echo &) = delete;
    Echo &operator=(const Echo &) = delete;

    bool connectAndAskTwice() const {
        char bytes[64] = {};
        const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        bool good = connect(connection, address(), sizeof address_) == 0;
        for (int i = 0; i < 2; ++i) {
            good = good && write(connection, bytes, sizeof bytes) == sizeof bytes &&
                   read(connection, bytes, sizeof bytes) == sizeof bytes;
        }
        close(connection);
        return good;
    }

  private:
    const sockaddr *address() const { return reinterpret_cast<const sockaddr *>(&address_); }

    [[noreturn]] static void serve(int listener) {
        for (;;) {
            const int connection = accept(listener, nullptr, nullptr);
            char bytes[64];
            for (ssize_t size = 1; size > 0;) {
                size = read(connection, bytes, sizeof bytes);
                if (size > 0) size = write(connection, bytes, static_cast<size_t>(size));
            }
            close(connection);
        }
    }

    sockaddr_un address_ = {};
    pid_t process_ = 0;
};

void hypIoctl(benchmark::State &state) {
    Request request;
    for (auto _ : state) {
        if (HYPIoctl(kDevice, kGetSwitches, &request.frame) != HYP_OK) {
            state.SkipWithError("HYPIoctl failed");
            break;
        }
    }
}
BENCHMARK(hypIoctl)->Name("device/HYPIoctl");

// A device that costs nothing: what is left are the library, the interposer and three system calls.
void nullIoctl(benchmark::State &state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(HYPIoctl("/dev/null", kGetSwitches, nullptr));
}
BENCHMARK(nullIoctl)->Name("device/null");

// The least that a request on a device of the host can cost: a connection and two round trips.
void leastIoctl(benchmark::State &state) {
    const Echo echo;
    for (auto _ : state) {
        if (!echo.connectAndAskTwice()) {
            state.SkipWithError("no echo");
            break;
        }
    }
}
BENCHMARK(leastIoctl)->Name("device/least");

void bareIoctl(benchmark::State &state) {
    Request request;
    for (auto _ : state) {
        const int device = open(kDevice, O_RDWR | O_CLOEXEC);
        const int result = ioctl(device, kGetSwitches, &request.frame);
        close(device);
        if (result < 0) {
            state.SkipWithError("the request failed");
            break;
        }
    }
}
BENCHMARK(bareIoctl)->Name("device/bare");

}  // namespace

BENCHMARK_MAIN();

// SPDX-License-Identifier: Apache-2.0
// What the library adds to a device request: HYPIoctl beside the bare open, ioctl and close.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <qvs/hyp.h>
#include <sys/ioctl.h>
#include <unistd.h>

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

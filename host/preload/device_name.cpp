// SPDX-License-Identifier: Apache-2.0
// Sets and reads the names of connections.
#include "preload/device_name.h"

#include <sys/random.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <iterator>

#include "wire/kept_errno.h"
#include "wire/protocol.h"

namespace qvs::preload {
namespace {

// Identifies this process and the program in it.
std::atomic<uint64_t> known;

// Returns the identifier. The process id in it changes with a fork, and the rest changes with the program.
uint64_t thisProgram() {
    const auto process = static_cast<uint64_t>(getpid());
    uint64_t program = known.load(std::memory_order_relaxed);
    while (program >> 32 != process) {
        uint32_t random = 0;
        if (getrandom(&random, sizeof random, GRND_NONBLOCK) != sizeof random) {
            timespec now;
            clock_gettime(CLOCK_MONOTONIC, &now);
            random = static_cast<uint32_t>(now.tv_nsec);
        }
        const uint64_t made = process << 32 | random;
        if (known.compare_exchange_weak(program, made, std::memory_order_relaxed)) program = made;
    }
    return program;
}

void spell(char (&letters)[16], uint64_t number) {
    for (char &letter : letters) {
        letter = static_cast<char>('a' + number % 16);
        number /= 16;
    }
}

}  // namespace

bool nameDevice(int connection, int device) {
    static std::atomic<uint64_t> counter;
    DeviceName name;
    memcpy(name.mark, kDeviceMark, sizeof kDeviceMark);
    name.device = static_cast<char>('0' + device);
    spell(name.program, thisProgram());
    for (int attempts = 0; attempts < 100; ++attempts) {
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        spell(name.number,
              counter.fetch_add(1, std::memory_order_relaxed) << 32 ^ static_cast<uint64_t>(now.tv_nsec));
        if (bind(connection, reinterpret_cast<const sockaddr *>(&name), sizeof name) == 0) return true;
        if (errno != EADDRINUSE) return false;
    }
    return false;
}

bool readName(int descriptor, DeviceName *name) {
    const wire::KeptErrno kept;
    sockaddr_un own;
    socklen_t length = sizeof own;
    const bool named = getsockname(descriptor, reinterpret_cast<sockaddr *>(&own), &length) == 0;
    if (!named || length != sizeof *name || own.sun_family != AF_UNIX) return false;
    memcpy(static_cast<void *>(name), &own, sizeof *name);
    const int device = name->device - '0';
    return memcmp(name->mark, kDeviceMark, sizeof kDeviceMark) == 0 && device >= 0 &&
           device < static_cast<int>(std::size(wire::kDevices));
}

bool belongsHere(const DeviceName &name) {
    char here[sizeof name.program];
    spell(here, thisProgram());
    return memcmp(here, name.program, sizeof here) == 0;
}

}  // namespace qvs::preload

// SPDX-License-Identifier: Apache-2.0
#include "config/library/host.h"

#include <fcntl.h>
#include <qvs/qvs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "config/library/call.h"
#include "config/library/snapshot.h"

namespace qvs {
namespace {

// What qvs-host tells the programs that it starts is there even when the host is not any more.
const char *noHost() {
    const char *emulated = std::getenv("QVS_HOST_SOCKET");
    if (emulated != nullptr && *emulated != '\0')
        return "no hypercore on this machine: the emulated host that this shell belongs to has ended";
    if (std::getenv("QVS_HOST_LOST") != nullptr)
        return "no hypercore on this machine: the emulated host was lost on the way, by a program that does "
               "not pass its environment on (env -i, sudo)";
    return "no hypercore on this machine: the kernel's switch device does not answer\n"
           "an emulated host to try this on: qvs-host run -- qvs ...";
}

const char *remedy(int error) {
    switch (error) {
        case EACCES:
        case EPERM:
            return "; it answers root, and the user whom it belongs to";
        case ETIMEDOUT:
            return "; --timeout SECONDS waits longer";
        default:
            return "";
    }
}

// Throws what keeps the device from being opened; absent says that nothing else answers either.
void requireDevice(int error, bool absent, std::string_view before) {
    if (isAbsence(error) && absent) throw Failure{Exit::NoHost, fmt::format("{}{}", before, noHost())};
    if (error == 0 || isAbsence(error)) return;
    throw Failure{Exit::NoAnswer, fmt::format("{}the host does not answer: {}: {}{}", before, kSwitchDevice,
                                              std::strerror(error), remedy(error))};
}

}  // namespace

int openError(const char *path) {
    const int device = open(path, O_RDWR | O_CLOEXEC);
    if (device < 0) return errno;
    close(device);
    return 0;
}

bool isAbsence(int error) {
    return error == ENOENT || error == ENXIO || error == ENODEV;
}

void requireState(HYP_ReturnStatus status) {
    if (status == HYP_OK) return;
    // A host that let this one wait is not asked again.
    int error = status == kTimedOut ? ETIMEDOUT : openError(kSwitchDevice);
    if (status != kTimedOut) requireDevice(error, true, "");
    throw Failure{Exit::NoAnswer, fmt::format("the host does not answer: switch state: {} (0x{:x}){}",
                                              ReturnStatusToString(status), status, remedy(error))};
}

void requireHost() {
    static bool found = false;
    if (found) return;
    // An empty snapshot is one that is not loaded yet, an empty host, no host, or a host whose state could
    // not be loaded. Loading it says which.
    if (snapshotEmpty()) requireState(loadSnapshot());
    requireDevice(openError(kSwitchDevice), snapshotEmpty(), "");
    found = true;
}

void blameHost(const std::string &message) {
    requireDevice(openError(kSwitchDevice), true, message.empty() ? "" : message + "\n");
}

}  // namespace qvs

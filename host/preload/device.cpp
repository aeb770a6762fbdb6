// SPDX-License-Identifier: Apache-2.0
// Devices of the emulated kernel. These functions run inside arbitrary programs, in forked and vforked
// children and in signal handlers. They do not allocate memory, and change errno only on failure.
#include "preload/device.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "preload/device_name.h"
#include "preload/dialogue.h"
#include "wire/noncopyable.h"
#include "wire/protocol.h"
#include "wire/silence.h"
#include "wire/stream.h"

#pragma GCC visibility push(default)
extern "C" {
constinit qvs::wire::Silence qvsHostSilence;
}
#pragma GCC visibility pop

namespace qvs::preload {
namespace {

// Threads that share a descriptor use it one after the other. A mutex of the C library is initialised by
// zeros.
pthread_mutex_t turns[64];

void resetTurns() {
    for (pthread_mutex_t &turn : turns)
        turn = PTHREAD_MUTEX_INITIALIZER;
}

__attribute__((constructor)) void prepareTurns() {
    // A thread that held a mutex does not exist in the child.
    pthread_atfork(nullptr, nullptr, resetTurns);
}

class Turn : private wire::Noncopyable {
  public:
    explicit Turn(int descriptor) : mutex_(&turns[static_cast<unsigned>(descriptor) % 64]) {
        // A real ioctl is not a cancellation point.
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState_);
        pthread_mutex_lock(mutex_);
    }
    ~Turn() {
        pthread_mutex_unlock(mutex_);
        pthread_setcancelstate(cancelState_, nullptr);
    }

  private:
    pthread_mutex_t *mutex_;
    int cancelState_ = 0;
};

int finish(int result, int savedErrno) {
    if (result >= 0) errno = savedErrno;
    return result;
}

int fail(int reason) {
    errno = reason;
    return -1;
}

// Fails with the error that a program gets if the kernel ends, does not answer or cannot be reached.
int failLost() {
    switch (errno) {
        case ETIMEDOUT:
        case EACCES:
        case EPERM:
        case EMFILE:
        case ENFILE:
            return -1;
        default:
            return fail(EIO);
    }
}

bool sendOpen(int connection, const char *path) {
    const auto length = static_cast<uint32_t>(strlen(path));
    struct {
        Head head;
        uint32_t length;
    } message = {{length + 4, static_cast<uint32_t>(Kind::DeviceOpen)}, length};
    iovec parts[] = {{&message, sizeof message}, {const_cast<char *>(path), length}};
    return sendAll(connection, parts, 2);
}

// Receives the answer to DeviceOpen. Returns false after an invalid answer, or with ETIMEDOUT if there is
// none in time.
bool receiveOpened(int connection, uint32_t *error) {
    Head head;
    wire::LongerWait wait(&connection);
    if (!receiveHead(connection, &head, &wait)) return false;
    if (head.kind == static_cast<uint32_t>(Kind::Reply) && head.length == sizeof *error) {
        return receiveAll(connection, error, sizeof *error);
    }
    errno = EPROTO;
    return false;
}

// Returns a connection on which the daemon at `socket` has opened the device, or -1.
int connectDevice(const char *socket, int device, int flags) {
    if (qvsHostSilence.lasts(socket)) return fail(ETIMEDOUT);
    const int connection = wire::connectTo(socket, flags, wire::hostTimeout());
    if (connection < 0) {
        if (errno == ETIMEDOUT) qvsHostSilence.begin(socket);
        // Without a daemon, the machine does not have this device.
        const bool nobody = errno == ECONNREFUSED || errno == ENAMETOOLONG || errno == ENOTDIR;
        return nobody ? fail(ENOENT) : -1;
    }
    uint32_t error = 0;
    const bool answered = nameDevice(connection, device) &&
                          sendOpen(connection, wire::kDevices[device].path) &&
                          receiveOpened(connection, &error);
    if (answered && error == 0) return connection;
    const int reason = answered ? static_cast<int>(error) : errno == ETIMEDOUT ? ETIMEDOUT : EIO;
    close(connection);
    if (!answered && reason == ETIMEDOUT) qvsHostSilence.begin(socket);
    return fail(reason);
}

// Finds the daemon of a connection. The environment can name another one by now.
bool daemonOf(int connection, sockaddr_un *daemon, const char **path) {
    memset(daemon, 0, sizeof *daemon);
    socklen_t length = sizeof *daemon;
    if (getpeername(connection, reinterpret_cast<sockaddr *>(daemon), &length) != 0 ||
        daemon->sun_path[0] != '/' || daemon->sun_path[sizeof daemon->sun_path - 1] != '\0') {
        return false;
    }
    *path = daemon->sun_path;
    return true;
}

// Replaces an inherited connection by a new one under the same number. Two programs that share a connection
// would mix their messages. The daemon has no other state for an open device, so nothing is lost.
bool separate(int descriptor, const DeviceName &name) {
    sockaddr_un daemon;
    const char *path = nullptr;
    if (!daemonOf(descriptor, &daemon, &path)) return false;
    const int own = connectDevice(path, name.device - '0', SOCK_CLOEXEC);
    if (own < 0) return false;
    const int onExec = fcntl(descriptor, F_GETFD) & FD_CLOEXEC;
    fcntl(own, F_SETFL, fcntl(descriptor, F_GETFL));
    const bool moved = dup3(own, descriptor, onExec != 0 ? O_CLOEXEC : 0) >= 0;
    close(own);
    return moved;
}

int indexOf(const char *path) {
    // The second letter rules out nearly every path.
    if (path == nullptr || path[0] != '/' || (path[1] != 'd' && path[1] != 'c')) return -1;
    int device = 0;
    for (const wire::DeviceNode &candidate : wire::kDevices) {
        if (strcmp(path, candidate.path) == 0) return device;
        ++device;
    }
    return -1;
}

}  // namespace

int deviceOf(const char *path) {
    const int device = indexOf(path);
    return device >= 0 && wire::hostSocket() != nullptr ? device : -1;
}

int deviceOf(int descriptor) {
    DeviceName name;
    return readName(descriptor, &name) ? name.device - '0' : -1;
}

int openDevice(int device, int flags) {
    const int savedErrno = errno;
    const int connection =
        connectDevice(wire::hostSocket(), device, (flags & O_CLOEXEC) != 0 ? SOCK_CLOEXEC : 0);
    return finish(connection, savedErrno);
}

int controlDevice(int descriptor, unsigned long request, uint64_t argument) {
    const int savedErrno = errno;
    const Turn turn(descriptor);
    DeviceName name;
    sockaddr_un daemon;
    const char *path = nullptr;
    if (!readName(descriptor, &name)) return fail(EBADF);
    if (qvsHostSilence.begun() && daemonOf(descriptor, &daemon, &path) && qvsHostSilence.lasts(path)) {
        return fail(ETIMEDOUT);
    }
    if (!belongsHere(name) && !separate(descriptor, name)) return failLost();
    int result = -1;
    int error = 0;
    const wire::FrameLayout &layout = wire::kDevices[name.device - '0'].frame;
    if (!sendRequest(descriptor, layout, static_cast<uint32_t>(request), argument) ||
        !converse(descriptor, &result, &error)) {
        const int reason = errno;
        if (reason == ETIMEDOUT && daemonOf(descriptor, &daemon, &path)) qvsHostSilence.begin(path);
        // The rest of this dialogue must not be read as the start of the next one.
        shutdown(descriptor, SHUT_RDWR);
        errno = reason;
        return failLost();
    }
    if (result < 0) return fail(error);
    return finish(result, savedErrno);
}

}  // namespace qvs::preload

// A device of the emulated kernel. Everything here runs inside other people's programs, in forked and vforked
// children and in signal handlers: no allocation, and errno changes on failure alone.
#include "preload/device.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>

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

using wire::Head;
using wire::Kind;
using wire::receiveAll;
using wire::sendAll;

// Threads that share a descriptor take turns: one dialogue at a time. (A mutex of the C library is born
// zero.)
pthread_mutex_t turns[64];

void resetTurns() {
    for (pthread_mutex_t &turn : turns)
        turn = PTHREAD_MUTEX_INITIALIZER;
}

__attribute__((constructor)) void prepareTurns() {
    // The thread that had its turn does not exist in the child.
    pthread_atfork(nullptr, nullptr, resetTurns);
}

class Turn {
  public:
    explicit Turn(int descriptor) : mutex_(&turns[static_cast<unsigned>(descriptor) % 64]) {
        // A real ioctl is no cancellation point.
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState_);
        pthread_mutex_lock(mutex_);
    }
    ~Turn() {
        pthread_mutex_unlock(mutex_);
        pthread_setcancelstate(cancelState_, nullptr);
    }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

  private:
    pthread_mutex_t *mutex_;
    int cancelState_ = 0;
};

// Memory for one piece of data: on the stack when it is small, mapped when it is not.
class Scratch {
  public:
    explicit Scratch(size_t size) : size_(size) {
        if (size_ <= sizeof small_) return;
        void *mapped = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        data_ = mapped == MAP_FAILED ? nullptr : mapped;
    }
    ~Scratch() {
        if (data_ != nullptr && data_ != small_) munmap(data_, size_);
    }
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;

    void *data() { return data_; }

  private:
    char small_[2048];
    void *data_ = small_;
    size_t size_;
};

int finish(int result, int savedErrno) {
    if (result >= 0) errno = savedErrno;
    return result;
}

int fail(int reason) {
    errno = reason;
    return -1;
}

// What a program sees when the kernel vanishes under it, does not answer or cannot be reached by it.
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

// The kernel names the program's memory by number.
void *pointer(uint64_t address) {
    return reinterpret_cast<void *>(address);  // NOLINT(performance-no-int-to-ptr)
}

// Copies like the kernel does: an address that cannot be read is an error, not a crash. A sandbox may forbid
// the call; a plain copy then serves every program that passes good addresses.
int copyFromProgram(void *target, uint64_t address, size_t size) {
    auto *bytes = static_cast<char *>(target);
    while (size != 0) {
        const iovec local = {bytes, size};
        const iovec remote = {pointer(address), size};
        const ssize_t copied = process_vm_readv(getpid(), &local, 1, &remote, 1, 0);
        if (copied < 0 && (errno == EPERM || errno == ENOSYS)) {
            memcpy(bytes, remote.iov_base, size);
            return 0;
        }
        if (copied <= 0) return EFAULT;
        bytes += copied;
        address += static_cast<uint64_t>(copied);
        size -= static_cast<size_t>(copied);
    }
    return 0;
}

bool sendCopied(int descriptor, uint32_t error, void *data, uint32_t size) {
    struct {
        Head head;
        uint32_t error;
        uint32_t size;
    } message = {{size + 8, static_cast<uint32_t>(Kind::Copied)}, error, size};
    iovec parts[] = {{&message, sizeof message}, {data, size}};
    return sendAll(descriptor, parts, 2);
}

// The kernel reads the program's memory.
bool serveCopyIn(int descriptor, uint32_t payload) {
    struct __attribute__((packed)) {
        uint64_t address;
        uint32_t size;
    } wanted;
    if (payload != sizeof wanted || !receiveAll(descriptor, &wanted, sizeof wanted)) return false;
    if (wanted.size > wire::kMaxRequest) return sendCopied(descriptor, EFAULT, nullptr, 0);
    Scratch scratch(wanted.size);
    if (scratch.data() == nullptr) return sendCopied(descriptor, ENOMEM, nullptr, 0);
    const int error = copyFromProgram(scratch.data(), wanted.address, wanted.size);
    if (error != 0) return sendCopied(descriptor, static_cast<uint32_t>(error), nullptr, 0);
    return sendCopied(descriptor, 0, scratch.data(), wanted.size);
}

// The kernel writes the program's memory: straight from the socket, which fails with EFAULT where a copy by
// the kernel would, and leaves what it could not deliver to be read.
bool serveCopyOut(int descriptor, uint32_t payload) {
    struct __attribute__((packed)) {
        uint64_t address;
        uint32_t size;
    } given;
    if (payload < sizeof given || !receiveAll(descriptor, &given, sizeof given)) return false;
    if (given.size != payload - sizeof given) return false;

    uint64_t address = given.address;
    uint32_t left = given.size;
    uint32_t error = 0;
    while (left != 0) {
        char discarded[2048];
        const size_t most = error != 0 && left > sizeof discarded ? sizeof discarded : left;
        void *target = error == 0 ? pointer(address) : discarded;
        const size_t received = wire::receiveSome(descriptor, target, most);
        if (received == 0 && (errno != EFAULT || error != 0)) return false;
        if (received == 0) error = EFAULT;
        address += received;
        left -= static_cast<uint32_t>(received);
    }
    return sendCopied(descriptor, error, nullptr, 0);
}

// The next message but for what says that it will come late.
bool receiveHead(int descriptor, Head *head, wire::LongerWait *wait) {
    for (;;) {
        if (!receiveAll(descriptor, head, sizeof *head)) return false;
        if (head->kind != static_cast<uint32_t>(Kind::Delay)) return true;
        uint32_t milliseconds = 0;
        if (head->length != sizeof milliseconds ||
            !receiveAll(descriptor, &milliseconds, sizeof milliseconds))
            return false;
        wait->extend(milliseconds);
    }
}

// Serves the kernel's copies until it answers. False when it is gone or talks nonsense.
bool converse(int descriptor, int *result, int *error) {
    wire::LongerWait wait(&descriptor);
    for (;;) {
        Head head;
        if (!receiveHead(descriptor, &head, &wait)) return false;
        bool good = false;
        switch (static_cast<Kind>(head.kind)) {
            case Kind::CopyIn:
                good = serveCopyIn(descriptor, head.length);
                break;
            case Kind::CopyOut:
                good = serveCopyOut(descriptor, head.length);
                break;
            case Kind::Reply: {
                int32_t answer[2];
                if (head.length != sizeof answer || !receiveAll(descriptor, answer, sizeof answer))
                    return false;
                *result = answer[0];
                *error = answer[1];
                return true;
            }
            default:
                break;
        }
        if (!good) return false;
    }
}

// Which program in which process this is.
std::atomic<uint64_t> known;

// The process's number changes with a fork, the rest with the program.
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

// The connection gets a name of its own in the abstract namespace. By its beginning it is known for a device
// wherever it is inherited or passed to, whatever the environment there and however the daemon's path is
// spelled; by the rest, which device it is and whose.
constexpr char kDeviceMark[11] = {'\0', 'q', 'v', 's', '-', 'd', 'e', 'v', 'i', 'c', 'e'};

struct DeviceName {
    sa_family_t family = AF_UNIX;
    char mark[sizeof kDeviceMark];
    char device;
    char program[16];  // that speaks on this connection, and nobody else does
    char number[16];   // so that every name is another one
};

void spell(char (&letters)[16], uint64_t number) {
    for (char &letter : letters) {
        letter = static_cast<char>('a' + number % 16);
        number /= 16;
    }
}

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

// False for what is no device of ours. Leaves errno alone.
bool readName(int descriptor, DeviceName *name) {
    const int savedErrno = errno;
    sockaddr_un own;
    socklen_t length = sizeof own;
    const bool named = getsockname(descriptor, reinterpret_cast<sockaddr *>(&own), &length) == 0;
    errno = savedErrno;
    if (!named || length != sizeof *name || own.sun_family != AF_UNIX) return false;
    memcpy(static_cast<void *>(name), &own, sizeof *name);
    const int device = name->device - '0';
    return memcmp(name->mark, kDeviceMark, sizeof kDeviceMark) == 0 && device >= 0 &&
           device < static_cast<int>(std::size(wire::kDevicePaths));
}

bool belongsHere(const DeviceName &name) {
    char here[sizeof name.program];
    spell(here, thisProgram());
    return memcmp(here, name.program, sizeof here) == 0;
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

// False when there is no sensible answer, with ETIMEDOUT when there is none in time.
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

// A connection on which the daemon at `socket` has opened the device, or -1.
int connectDevice(const char *socket, int device, int flags) {
    if (qvsHostSilence.lasts(socket)) return fail(ETIMEDOUT);
    const int connection = wire::connectTo(socket, flags, wire::hostTimeout());
    if (connection < 0) {
        if (errno == ETIMEDOUT) qvsHostSilence.begin(socket);
        // Nobody listens: to the program, a machine without this device.
        const bool nobody = errno == ECONNREFUSED || errno == ENAMETOOLONG || errno == ENOTDIR;
        return nobody ? fail(ENOENT) : -1;
    }
    uint32_t error = 0;
    const bool answered = nameDevice(connection, device) &&
                          sendOpen(connection, wire::kDevicePaths[device]) &&
                          receiveOpened(connection, &error);
    if (answered && error == 0) return connection;
    const int reason = answered ? static_cast<int>(error) : errno == ETIMEDOUT ? ETIMEDOUT : EIO;
    close(connection);
    if (!answered && reason == ETIMEDOUT) qvsHostSilence.begin(socket);
    return fail(reason);
}

// The daemon that a connection leads to, whatever the environment says by now.
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

// Two programs that share a descriptor would mix their dialogues on one connection. The daemon keeps nothing
// for an open device but which one it is, so whoever did not open it gets a connection of its own under the
// same number.
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
    // Nearly every path is dismissed by its second letter.
    if (path == nullptr || path[0] != '/' || (path[1] != 'd' && path[1] != 'c')) return -1;
    int device = 0;
    for (const char *candidate : wire::kDevicePaths) {
        if (strcmp(path, candidate) == 0) return device;
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
    struct __attribute__((packed)) {
        uint32_t request;
        uint64_t argument;
    } call = {static_cast<uint32_t>(request), argument};
    Head head = {sizeof call, static_cast<uint32_t>(Kind::DeviceIoctl)};
    iovec parts[] = {{&head, sizeof head}, {&call, sizeof call}};
    int result = -1;
    int error = 0;
    if (!sendAll(descriptor, parts, 2) || !converse(descriptor, &result, &error)) {
        const int reason = errno;
        if (reason == ETIMEDOUT && daemonOf(descriptor, &daemon, &path)) qvsHostSilence.begin(path);
        // Half a dialogue must not be taken for the next one's beginning.
        shutdown(descriptor, SHUT_RDWR);
        errno = reason;
        return failLost();
    }
    if (result < 0) return fail(error);
    return finish(result, savedErrno);
}

}  // namespace qvs::preload

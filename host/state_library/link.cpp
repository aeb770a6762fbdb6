// SPDX-License-Identifier: Apache-2.0
// The connection of the process to the emulated kernel.
#include "state_library/link.h"

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "state_library/block.h"
#include "wire/client.h"
#include "wire/silence.h"

namespace qvs::mesh {
namespace {

// Constant-initialised and never destroyed. The first request can come from the initialiser of another
// library, and the last one after the start of exit.
struct Link {
    std::mutex mutex;
    wire::Client *client = nullptr;
    pid_t owner = 0;
    dev_t device = 0;
    ino_t inode = 0;
    std::string *spare = nullptr;  // the memory of the last message
};
constinit Link link;

// The object of the interposer, if the program has one, so that only one request waits for a host that hangs.
extern "C" [[gnu::weak]] wire::Silence qvsHostSilence;
constinit wire::Silence ownSilence;

wire::Silence &silence() {
    return &qvsHostSilence != nullptr ? qvsHostSilence : ownSilence;
}

// A thread that held the mutex during a fork does not exist in the child.
void forgetLockInChild() {
    new (&link.mutex) std::mutex;
}

// Checks that the descriptor is still our connection. A program can close descriptors that it did not open
// and reuse their numbers.
bool sameDescriptor() {
    struct stat now;
    return fstat(link.client->socket(), &now) == 0 && now.st_dev == link.device && now.st_ino == link.inode;
}

// Drops a connection that belongs to the parent or to another file. Two processes must not read the answers
// of one connection.
void dropWhatIsNotOurs() {
    if (!link.client->connected()) return;
    if (!sameDescriptor()) {
        link.client->abandon();
    } else if (link.owner != getpid()) {
        link.client->close();
    }
}

bool connect() {
    if (!link.client->connectToHost()) return false;
    // A program that was started without standard input must not find a socket there.
    link.client->moveAside();
    struct stat now;
    if (fstat(link.client->socket(), &now) != 0) return false;
    link.owner = getpid();
    link.device = now.st_dev;
    link.inode = now.st_ino;
    return true;
}

bool send(wire::Writer &message) {
    if (link.client == nullptr) {
        link.client = new wire::Client;
        pthread_atfork(nullptr, nullptr, forgetLockInChild);
    }
    dropWhatIsNotOurs();
    link.client->setTimeout(wire::hostTimeout());
    const bool kept = link.client->connected();
    if (!kept && !connect()) return false;
    if (link.client->send(message)) return true;
    // The daemon of this connection has ended without executing the request, so the request can be repeated
    // with a new daemon. A request that was sent completely is never repeated.
    return kept && (errno == EPIPE || errno == ECONNRESET) && connect() && link.client->send(message);
}

HYP_ReturnStatus lost() {
    switch (errno) {
        case ETIMEDOUT:
            if (const char *path = wire::hostSocket(); path != nullptr) silence().begin(path);
            return kTimeout;
        case EACCES:
            return kNoAccess;
        case EPERM:
            return kNotPermitted;
        case EMFILE:
        case ENFILE:
            return kNoDescriptor;
        case ENOMEM:
        case ENOBUFS:
            return HYP_NO_MEMORY;
        case EPROTO:
            return HYP_FAILURE;
        default:
            return kNoConnection;
    }
}

bool hostIsSilent() {
    const char *path = wire::hostSocket();
    return path != nullptr && silence().lasts(path);
}

HYP_ReturnStatus broken() {
    link.client->close();
    return HYP_FAILURE;
}

// An internal status: the file of the reply was not received, because the program has no free descriptor.
constexpr HYP_ReturnStatus kFileLost = 1;

// Reads the whole file that was received, and closes it.
bool readFile(void *bytes, size_t size) {
    const int file = link.client->takeFile();
    auto *target = static_cast<char *>(bytes);
    size_t taken = 0;
    while (taken < size) {
        const ssize_t step = pread(file, target + taken, size - taken, static_cast<off_t>(taken));
        if (step < 0 && errno == EINTR) continue;
        if (step <= 0) break;
        taken += static_cast<size_t>(step);
    }
    const bool gotten = file >= 0 && taken == size;
    if (file >= 0) close(file);
    return gotten;
}

// Reads the bytes of a reply, from the message or from its file.
HYP_ReturnStatus receiveValue(uint32_t rest, void **bytes, uint32_t *length) {
    uint32_t size = 0;
    if (rest < sizeof size) return broken();
    if (!link.client->receiveBytes(&size, sizeof size)) return lost();
    const bool inFile = size != 0 && rest == sizeof size;
    if (!inFile && size != rest - sizeof size) return broken();
    auto *value = static_cast<char *>(allocateBlock(size_t{size} + 1));
    if (value == nullptr) {
        link.client->close();
        return HYP_NO_MEMORY;
    }
    if (inFile ? !readFile(value, size) : !link.client->receiveBytes(value, size)) {
        const HYP_ReturnStatus status = inFile ? kFileLost : lost();
        std::free(value);
        return status;
    }
    value[size] = '\0';
    *bytes = value;
    *length = size;
    return HYP_OK;
}

HYP_ReturnStatus exchange(wire::Writer &message, void **bytes, uint32_t *length) try {
    const std::lock_guard<std::mutex> lock(link.mutex);
    uint32_t rest = 0;
    HYP_ReturnStatus status = HYP_OK;
    if (hostIsSilent()) return kTimeout;
    if (!send(message) || !link.client->receiveHead(wire::Kind::Reply, &rest)) return lost();
    if (rest < sizeof status) return broken();
    if (!link.client->receiveBytes(&status, sizeof status)) return lost();
    rest -= static_cast<uint32_t>(sizeof status);

    if (status == HYP_OK && bytes != nullptr) return receiveValue(rest, bytes, length);
    // The reply to a failed request contains at most an empty value.
    uint32_t empty = 0;
    if (rest == sizeof empty && !link.client->receiveBytes(&empty, sizeof empty)) return lost();
    if (empty != 0 || (rest != 0 && rest != sizeof empty)) return broken();
    return status;
} catch (const std::bad_alloc &) {
    return HYP_NO_MEMORY;
}

void keepMemory(wire::Writer &message) {
    constexpr size_t kMost = 1 << 20;
    std::string used = message.take();
    const std::lock_guard<std::mutex> lock(link.mutex);
    if (link.spare == nullptr) link.spare = new (std::nothrow) std::string;
    if (link.spare != nullptr && used.capacity() <= kMost && used.capacity() > link.spare->capacity())
        link.spare->swap(used);
}

}  // namespace

wire::Writer messageOf(wire::Kind kind) {
    constexpr size_t kUsual = 16 << 10;
    std::string memory;
    {
        const std::lock_guard<std::mutex> lock(link.mutex);
        if (link.spare != nullptr) memory.swap(*link.spare);
    }
    memory.reserve(kUsual);
    return wire::Writer(kind, std::move(memory));
}

HYP_ReturnStatus request(wire::Writer &message) {
    return requestBytes(message, nullptr, nullptr);
}

HYP_ReturnStatus requestBytes(wire::Writer &message, void **bytes, uint32_t *length) {
    if (bytes != nullptr) {
        *bytes = nullptr;
        *length = 0;
    }
    const HYP_ReturnStatus status = exchange(message, bytes, length);
    keepMemory(message);
    return status;
}

HYP_ReturnStatus requestState(void **bytes, uint32_t *length) {
    for (const bool asFile : {true, false}) {
        wire::Writer message(wire::Kind::StateGet);
        const HYP_ReturnStatus status = requestBytes(message.u8(asFile), bytes, length);
        if (status != kFileLost) return status;
    }
    return HYP_FAILURE;
}

}  // namespace qvs::mesh

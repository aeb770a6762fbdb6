// SPDX-License-Identifier: Apache-2.0
// Preloaded: fails a call of the C library, or shortens what sockets take and give. QVS_TROUBLE says what:
// "CALL ERRNO NTH" with "+" behind it for all later calls too, or "short". QVS_STRUCK names a file that is
// made when a call has failed.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

// Finds the next function of this name once.
#define NEXT(name)                 \
    static __typeof__(name) *next; \
    if (next == NULL) next = __extension__(__typeof__(name) *) dlsym(RTLD_NEXT, #name)

enum { Off, Short, Failing };
static int mode, number, nth, fromThenOn, serving;
static char call[16], struck[4096];
static int calls;

__attribute__((constructor)) static void begin(void) {
    const char *text = getenv("QVS_TROUBLE");
    const char *path = getenv("QVS_STRUCK");
    char more = 0;
    if (text == NULL) return;
    if (path != NULL) snprintf(struck, sizeof struck, "%s", path);
    if (strcmp(text, "short") == 0) {
        mode = Short;
    } else if (sscanf(text, "%15s %d %d%c", call, &number, &nth, &more) >= 3) {
        mode = Failing;
        fromThenOn = more == '+';
    }
    // Children have no trouble of their own.
    if (mode == Failing) unsetenv("QVS_TROUBLE");
}

// Whether this call fails.
static int fails(const char *name) {
    if (mode != Failing || strcmp(name, call) != 0) return 0;
    const int now = __atomic_add_fetch(&calls, 1, __ATOMIC_RELAXED);
    if (now < nth || (now > nth && !fromThenOn)) return 0;
    if (now == nth && struck[0] != 0) close(open(struck, O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    errno = number;
    return 1;
}

// SQLite is the one that writes, reads and shortens files at offsets.
ssize_t pwrite64(int file, const void *data, size_t size, off64_t offset) {
    NEXT(pwrite64);
    if (!fails("write")) return next(file, data, size, offset);
    // A full disk takes a part.
    return number == ENOSPC && size > 1 ? next(file, data, size / 2, offset) : -1;
}
ssize_t pread64(int file, void *data, size_t size, off64_t offset) {
    NEXT(pread64);
    return fails("read") ? -1 : next(file, data, size, offset);
}
int ftruncate64(int file, off64_t size) {
    NEXT(ftruncate64);
    return fails("truncate") ? -1 : next(file, size);
}
int fdatasync(int file) {
    NEXT(fdatasync);
    return fails("sync") ? -1 : next(file);
}
int fsync(int file) {
    NEXT(fsync);
    return fails("sync") ? -1 : next(file);
}

// Allocations fail when the first client has come.
extern void *__libc_malloc(size_t size);
void *malloc(size_t size) {
    return serving && fails("alloc") ? NULL : __libc_malloc(size);
}
int accept(int listener, __SOCKADDR_ARG address, socklen_t *size) {
    NEXT(accept);
    serving = 1;
    return next(listener, address, size);
}
int accept4(int listener, __SOCKADDR_ARG address, socklen_t *size, int flags) {
    NEXT(accept4);
    serving = 1;
    return next(listener, address, size, flags);
}

// How much of `size` a socket takes or gives: 1 to 13 bytes; 0 when the call is interrupted.
static size_t part(int file, size_t size) {
    struct stat about;
    const int before = errno;
    const int isSocket = mode == Short && size != 0 && fstat(file, &about) == 0 && S_ISSOCK(about.st_mode);
    errno = before;
    if (!isSocket) return size;
    const unsigned now = (unsigned)__atomic_add_fetch(&calls, 1, __ATOMIC_RELAXED);
    if (now % 5 == 0) {
        errno = EINTR;
        return 0;
    }
    return now % 13 + 1 < size ? now % 13 + 1 : size;
}

#define SHORTENED(name, parameters, size, ...)                  \
    ssize_t name parameters {                                   \
        NEXT(name);                                             \
        const size_t some = part(file, size);                   \
        return some == 0 && size != 0 ? -1 : next(__VA_ARGS__); \
    }
SHORTENED(read, (int file, void *data, size_t size), size, file, data, some)
SHORTENED(write, (int file, const void *data, size_t size), size, file, data, some)
SHORTENED(recv, (int file, void *data, size_t size, int flags), size, file, data, some, flags)
SHORTENED(send, (int file, const void *data, size_t size, int flags), size, file, data, some, flags)

// A message without its last parts, and with less of the last of them.
static ssize_t message(int file, const struct msghdr *whole, ssize_t (*next)(int, struct msghdr *, int),
                       int flags) {
    size_t size = 0;
    for (size_t i = 0; i < whole->msg_iovlen; ++i)
        size += whole->msg_iov[i].iov_len;
    size_t some = part(file, size);
    if (some == 0 && size != 0) return -1;
    struct msghdr piece = *whole;
    struct iovec parts[64];
    size_t count = 0;
    for (; count < whole->msg_iovlen && count < 64 && some != 0; ++count) {
        parts[count] = whole->msg_iov[count];
        if (parts[count].iov_len > some) parts[count].iov_len = some;
        some -= parts[count].iov_len;
    }
    piece.msg_iov = parts;
    piece.msg_iovlen = count;
    return next(file, &piece, flags);
}
ssize_t sendmsg(int file, const struct msghdr *whole, int flags) {
    NEXT(sendmsg);
    return message(file, whole, (ssize_t(*)(int, struct msghdr *, int))next, flags);
}
ssize_t recvmsg(int file, struct msghdr *whole, int flags) {
    static ssize_t (*next)(int, struct msghdr *, int);
    if (next == NULL) next = __extension__(ssize_t(*)(int, struct msghdr *, int)) dlsym(RTLD_NEXT, "recvmsg");
    if (mode != Short) return next(file, whole, flags);
    // The control data and flags of the answer are the caller's.
    if (whole->msg_iovlen == 1) {
        struct iovec *only = whole->msg_iov;
        const size_t size = only->iov_len;
        const size_t some = part(file, size);
        if (some == 0 && size != 0) return -1;
        only->iov_len = some;
        const ssize_t got = next(file, whole, flags);
        only->iov_len = size;
        return got;
    }
    return next(file, whole, flags);
}

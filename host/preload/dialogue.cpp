// SPDX-License-Identifier: Apache-2.0
// Serves a request. The emulated kernel reads and writes the memory of this program until it answers.
#include "preload/dialogue.h"

#include <sys/mman.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "wire/noncopyable.h"

namespace qvs::preload {
namespace {

// Memory for one piece of data. A small piece is on the stack, a large one is mapped.
class Scratch : private wire::Noncopyable {
  public:
    explicit Scratch(size_t size) : size_(size) {
        if (size_ <= sizeof small_) return;
        void *mapped = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        data_ = mapped == MAP_FAILED ? nullptr : mapped;
    }
    ~Scratch() {
        if (data_ != nullptr && data_ != small_) munmap(data_, size_);
    }

    void *data() { return data_; }

  private:
    char small_[2048];
    void *data_ = small_;
    size_t size_;
};

// Converts an address of the protocol to a pointer.
void *pointer(uint64_t address) {
    return reinterpret_cast<void *>(address);  // NOLINT(performance-no-int-to-ptr)
}

// Copies memory like a kernel: an address that cannot be read is an error instead of a crash. Returns the
// number of bytes, or -1 with EPERM or ENOSYS if a sandbox forbids the system call.
ssize_t readMemory(void *target, uint64_t address, size_t size) {
    const iovec local = {target, size};
    const iovec remote = {pointer(address), size};
    return process_vm_readv(getpid(), &local, 1, &remote, 1, 0);
}

// Copies all bytes. In a sandbox, a plain copy is used, which works for valid addresses.
int copyFromProgram(void *target, uint64_t address, size_t size) {
    auto *bytes = static_cast<char *>(target);
    while (size != 0) {
        const ssize_t copied = readMemory(bytes, address, size);
        if (copied < 0 && (errno == EPERM || errno == ENOSYS)) {
            memcpy(bytes, pointer(address), size);
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

// Sends memory of the program to the kernel.
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

// Receives bytes directly into the memory of the program. The system call fails with EFAULT like a copy by
// the kernel, and the remaining bytes are then discarded.
bool receiveCopyOut(int descriptor, uint32_t payload, uint32_t *error) {
    struct __attribute__((packed)) {
        uint64_t address;
        uint32_t size;
    } given;
    if (payload < sizeof given || !receiveAll(descriptor, &given, sizeof given)) return false;
    if (given.size != payload - sizeof given) return false;

    uint64_t address = given.address;
    uint32_t left = given.size;
    *error = 0;
    while (left != 0) {
        char discarded[2048];
        const size_t most = *error != 0 && left > sizeof discarded ? sizeof discarded : left;
        void *target = *error == 0 ? pointer(address) : discarded;
        const size_t received = wire::receiveSome(descriptor, target, most);
        if (received == 0 && (errno != EFAULT || *error != 0)) return false;
        if (received == 0) *error = EFAULT;
        address += received;
        left -= static_cast<uint32_t>(received);
    }
    return true;
}

template <typename Number>
Number numberAt(const char *bytes, size_t offset) {
    Number number;
    memcpy(&number, bytes + offset, sizeof number);
    return number;
}

// Reads memory before the kernel asks for it. It may never ask, so a plain copy is no substitute here.
bool look(void *target, uint64_t address, size_t size) {
    return size != 0 && readMemory(target, address, size) == static_cast<ssize_t>(size);
}

}  // namespace

bool receiveHead(int descriptor, Head *head, wire::LongerWait *wait) {
    return wire::receiveHead(
        head, wait, [descriptor](void *data, size_t size) { return receiveAll(descriptor, data, size); });
}

bool sendRequest(int descriptor, const wire::FrameLayout &layout, uint32_t request, uint64_t argument) {
    // A larger input is rare and is copied when the kernel asks for it.
    char input[2048];
    char frame[wire::kMaxFrame];
    struct __attribute__((packed)) {
        uint32_t request;
        uint64_t argument;
        uint32_t frameSize;
    } call = {request, argument, 0};
    uint32_t inputSize = 0;
    if (look(frame, argument, layout.size)) {
        call.frameSize = static_cast<uint32_t>(layout.size);
        if (layout.inLength != wire::FrameLayout::kNone) {
            const auto size = numberAt<uint32_t>(frame, layout.inLength);
            const auto address = numberAt<uint64_t>(frame, layout.inAddress);
            if (size <= sizeof input && look(input, address, size)) inputSize = size;
        }
    }
    const size_t payload = sizeof call + call.frameSize + sizeof inputSize + inputSize;
    Head head = {static_cast<uint32_t>(payload), static_cast<uint32_t>(Kind::DeviceIoctl)};
    iovec parts[] = {{&head, sizeof head},
                     {&call, sizeof call},
                     {frame, call.frameSize},
                     {&inputSize, sizeof inputSize},
                     {input, inputSize}};
    return sendAll(descriptor, parts, 5);
}

bool converse(int descriptor, int *result, int *error) {
    wire::LongerWait wait(&descriptor);
    for (;;) {
        Head head;
        if (!receiveHead(descriptor, &head, &wait)) return false;
        bool good = false;
        uint32_t copyError = 0;
        switch (static_cast<Kind>(head.kind)) {
            case Kind::CopyIn:
                good = serveCopyIn(descriptor, head.length);
                break;
            case Kind::CopyOut:
                good = receiveCopyOut(descriptor, head.length, &copyError) &&
                       sendCopied(descriptor, copyError, nullptr, 0);
                break;
            case Kind::LastCopyOut:
                if (!receiveCopyOut(descriptor, head.length, &copyError)) return false;
                *result = copyError == 0 ? 0 : -1;
                *error = static_cast<int>(copyError);
                return true;
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

}  // namespace qvs::preload

// SPDX-License-Identifier: Apache-2.0
// A blocking client of the emulated kernel.
#include "wire/client.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qvs::wire {

bool Client::connect(const char *path, int timeoutMs) {
    close();
    socket_ = connectTo(path, SOCK_CLOEXEC, timeoutMs);
    timeoutMs_ = timeoutMs;
    return connected();
}

bool Client::connectToHost() {
    const char *path = hostSocket();
    return path == nullptr ? fail(ENOENT) : connect(path);
}

void Client::setTimeout(int timeoutMs) {
    if (connected() && timeoutMs != timeoutMs_) wire::setTimeout(socket_, timeoutMs);
    timeoutMs_ = timeoutMs;
}

void Client::close() {
    if (connected()) ::close(socket_);
    if (file_ >= 0) ::close(takeFile());
    abandon();
}

void Client::abandon() {
    socket_ = -1;
    begin_ = end_ = 0;
}

bool Client::fail(int reason) {
    close();
    errno = reason;
    return false;
}

bool Client::send(Writer &message) {
    if (!connected()) return fail(ENOTCONN);
    const std::string_view bytes = message.bytes();
    return sendAll(socket_, bytes.data(), bytes.size()) || fail(errno);
}

bool Client::receiveBytes(void *data, size_t size) {
    if (!connected()) return fail(ENOTCONN);
    auto *target = static_cast<char *>(data);
    while (size != 0) {
        if (begin_ == end_ && size >= sizeof buffered_) {
            return receiveAll(socket_, target, size) || fail(errno);
        }
        if (begin_ == end_) {
            begin_ = 0;
            end_ = receiveSome(socket_, buffered_, sizeof buffered_, &file_);
            if (end_ == 0) return fail(errno);
        }
        const size_t step = std::min(size, end_ - begin_);
        std::memcpy(target, buffered_ + begin_, step);
        begin_ += step;
        target += step;
        size -= step;
    }
    return true;
}

bool Client::receiveHead(Kind kind, uint32_t *length) {
    Head head;
    LongerWait wait(&socket_);
    const auto receive = [this](void *data, size_t size) { return receiveBytes(data, size); };
    if (!wire::receiveHead(&head, &wait, receive)) return fail(errno);
    if (head.kind != static_cast<uint32_t>(kind)) return fail(EPROTO);
    *length = head.length;
    return true;
}

bool Client::receive(Kind kind, std::string *payload) {
    uint32_t length = 0;
    if (!receiveHead(kind, &length)) return false;
    if (length > kMaxRequest) return fail(EPROTO);
    payload->resize(length);
    return receiveBytes(payload->data(), length);
}

}  // namespace qvs::wire

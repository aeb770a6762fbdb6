// SPDX-License-Identifier: Apache-2.0
// Messages with descriptors on Unix sockets.
#pragma once

#include <sys/socket.h>

#include <cstring>
#include <span>
#include <vector>

#include "wire/file.h"

namespace qvs::wire {

constexpr size_t kMostDescriptors = 8;

// Both behave as sendmsg and recvmsg with one buffer.
inline ssize_t sendWith(int socket, const void *data, size_t size, std::span<const int> files, int flags) {
    iovec part{const_cast<void *>(data), size};
    alignas(cmsghdr) char control[CMSG_SPACE(kMostDescriptors * sizeof(int))] = {};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (!files.empty()) {
        message.msg_control = control;
        message.msg_controllen = CMSG_SPACE(files.size_bytes());
        cmsghdr *head = CMSG_FIRSTHDR(&message);
        head->cmsg_level = SOL_SOCKET;
        head->cmsg_type = SCM_RIGHTS;
        head->cmsg_len = CMSG_LEN(files.size_bytes());
        memcpy(CMSG_DATA(head), files.data(), files.size_bytes());
    }
    return sendmsg(socket, &message, flags | MSG_NOSIGNAL);
}

inline ssize_t receiveWith(int socket, void *data, size_t size, std::vector<File> &files, int flags) {
    iovec part{data, size};
    alignas(cmsghdr) char control[CMSG_SPACE(kMostDescriptors * sizeof(int))];
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t received = recvmsg(socket, &message, flags | MSG_CMSG_CLOEXEC);
    if (received < 0) return received;
    for (cmsghdr *head = CMSG_FIRSTHDR(&message); head != nullptr; head = CMSG_NXTHDR(&message, head)) {
        if (head->cmsg_level != SOL_SOCKET || head->cmsg_type != SCM_RIGHTS) continue;
        const size_t count = (head->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (size_t i = 0; i < count; ++i) {
            int file = -1;
            memcpy(&file, CMSG_DATA(head) + i * sizeof file, sizeof file);
            files.emplace_back(file);
        }
    }
    return received;
}

}  // namespace qvs::wire

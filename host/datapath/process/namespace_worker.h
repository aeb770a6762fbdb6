// SPDX-License-Identifier: Apache-2.0
// The process that makes network namespaces and their interfaces for the data path. It is asked on a
// SOCK_SEQPACKET socket, one answer to each request.
#pragma once

#include <cstdint>

#include "datapath/frame.h"

namespace qvs::datapath {

// A request. With `open`, the descriptor of the client's namespace comes along if there is one.
struct NamespaceRequest {
    uint32_t port = 0;
    bool open = true;       // false: the interface of the port is removed
    bool restored = false;  // the namespace is older than this process: its interface keeps its address
    MacAddress address = 0;
    uint32_t mtu = 0;
};

// An answer. The reason of a failure follows, or nothing; then come these descriptors:
// - to `open`: the AF_PACKET socket on the switch's end, the notifications of the client's interface, and the
//   client's namespace;
// - without a request, first of all: the user namespace, if there is one, and the namespace of the switch's
// ends.
struct NamespaceAnswer {
    MacAddress address = 0;
    int32_t index = 0;  // of the client's interface
    bool up = false;
    bool promiscuous = false;
};

// Runs the worker on its end of the socket. The namespaces are those of an earlier worker, or -1.
[[noreturn]] void runNamespaceWorker(int socket, int user, int base);

}  // namespace qvs::datapath

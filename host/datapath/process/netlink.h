// SPDX-License-Identifier: Apache-2.0
// The network interfaces of the current network namespace, by netlink.
#pragma once

#include <linux/netlink.h>

#include <functional>
#include <optional>
#include <string>

#include "datapath/frame.h"
#include "wire/file.h"

namespace qvs::datapath {

struct Link {
    int index = 0;
    std::string name;
    MacAddress address = 0;
    uint32_t mtu = 0;
    bool up = false;
    bool promiscuous = false;
    bool gone = false;  // in notifications
    int peer = 0;       // index of the other end of a pair, in the namespace of that end
};

// A netlink socket in the network namespace in which it was made, whichever the process enters later.
// Functions throw std::system_error.
class Netlink {
  public:
    Netlink();

    std::optional<Link> find(const std::string &name);
    void remove(int index);
    // Creates a pair of interfaces. The other end is in another namespace.
    void makePair(const Link &here, const Link &there, int otherNamespace);
    // Applies address (unless 0), MTU (unless 0) and `up` of the link with this index.
    void change(const Link &link);

  private:
    void call(std::string &message, const char *doing, const std::function<void(const nlmsghdr *)> &answer);

    wire::File socket_;
    uint32_t sequence_ = 0;
};

// A non-blocking socket that is notified of changed links of the current network namespace.
wire::File watchLinks();
// Reads the notifications that wait on such a socket.
void readLinks(int socket, const std::function<void(const Link &link)> &changed);

}  // namespace qvs::datapath

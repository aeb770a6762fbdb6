// SPDX-License-Identifier: Apache-2.0
// An endpoint is one open attachment of policy.fbs. It passes frames to and from a port.
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "datapath/frame.h"
#include "wire/noncopyable.h"

namespace qvs::policy {
struct AttachmentT;  // of policy.fbs
}

namespace qvs::datapath {

class Loop;
class Namespaces;

// The events of an endpoint. An endpoint is not destroyed while it calls one of these functions.
struct EndpointEvents {
    std::function<void(const Frame &frame)> received;
    // The carrier changed. A problem is the reason why there is none, in words for the user.
    std::function<void(bool up, const std::string &problem)> carrier;
    // The adapter of the client has this address from now on (0: the one that it was given), and asks for all
    // frames or not. Endpoints that cannot know this do not tell it; they ask.
    std::function<void(MacAddress address, bool promiscuous)> adapter;
};

class Endpoint : private wire::Noncopyable {
  public:
    virtual ~Endpoint() = default;
    // Sends a frame without waiting. Returns false if the receiver does not read, and the frame is lost.
    virtual bool send(const Frame &frame) = 0;
    // Whether the endpoint takes frames with an offload that is not done.
    virtual bool takesOffloads() const { return false; }
    // The kernel takes the link of the port down, or up again. Endpoints that can show it to the other end
    // do.
    virtual void setLink(bool /*up*/) {}
    // Whether the endpoint has said if it can be opened.
    virtual bool settled() const { return true; }
};

// Why an attachment cannot be opened, and the remedy.
struct AttachmentError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The services of the process that endpoints use.
struct EndpointContext {
    Loop &loop;
    Namespaces &namespaces;
    const std::string &directory;  // the state directory; relative file names begin there
};

// Opens an attachment. Throws AttachmentError if that fails at once. Each kind uses these fields:
//
// | Kind      | Fields                                                                                     |
// |-----------|--------------------------------------------------------------------------------------------|
// | Session   | none; sessions on the file "frames" are the client                                         |
// | Namespace | `name` of the namespace; `mac` and `mtu` of its interface eth0                             |
// | Stream    | `path` of the socket at which the data path listens; one client at a time                  |
// | Datagram  | `path` of the socket of the data path; `peer`, to which frames are sent                    |
// | Capture   | `path`, a pcap file of frames that the client sends; `peer`, a pcap file of those it gets; |
// |           | each may be absent                                                                         |
// | Tap       | `name` of the interface; its `mac` and `mtu`                                               |
// | Host      | `path`, the file of this end of the wire (absent: "wire-" and `name` in the state          |
// |           | directory); `peer`, that of the other end, OTHER_DIR/wire-NIC                              |
std::unique_ptr<Endpoint> openEndpoint(const policy::AttachmentT &attachment, const EndpointContext &context,
                                       EndpointEvents events);

}  // namespace qvs::datapath

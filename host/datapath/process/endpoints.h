// SPDX-License-Identifier: Apache-2.0
// The kinds of endpoints, and what their files share.
#pragma once

#include <sys/un.h>

#include "datapath/packet.h"
#include "datapath/process/endpoint.h"
#include "wire/file.h"

#include <policy_generated.h>

namespace qvs::datapath {

std::unique_ptr<Endpoint> openNamespace(const policy::AttachmentT &attachment, const EndpointContext &context,
                                        EndpointEvents events);
std::unique_ptr<Endpoint> openStream(const policy::AttachmentT &attachment, const EndpointContext &context,
                                     EndpointEvents events);
std::unique_ptr<Endpoint> openDatagram(const policy::AttachmentT &attachment, const EndpointContext &context,
                                       EndpointEvents events);
std::unique_ptr<Endpoint> openCapture(const policy::AttachmentT &attachment, const EndpointContext &context,
                                      EndpointEvents events);
std::unique_ptr<Endpoint> openTap(const policy::AttachmentT &attachment, const EndpointContext &context,
                                  EndpointEvents events);
std::unique_ptr<Endpoint> openHost(const policy::AttachmentT &attachment, const EndpointContext &context,
                                   EndpointEvents events);

// The address that an attachment gives, or 0.
inline MacAddress macOf(const policy::AttachmentT &attachment) {
    return attachment.mac ? readMac(attachment.mac->bytes()->data()) : 0;
}

// The whole name of a file of an attachment. Throws if there is none; `what` says which one it is.
std::string pathOf(const std::string &path, const EndpointContext &context, const char *what);

// The error about a path that does not fit into the address of a socket.
std::string tooLong(const std::string &path);
// Opens a socket of a type at a path, and removes the file of a socket that nobody serves. Throws
// AttachmentError.
wire::File serveAt(const std::string &path, int type);
// Connects a new socket. Returns none and sets errno if that fails.
wire::File connectTo(const std::string &path, int type);

}  // namespace qvs::datapath

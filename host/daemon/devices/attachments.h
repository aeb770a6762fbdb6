// SPDX-License-Identifier: Apache-2.0
// Attachments: how frames reach the ports and NICs of a host. They are stored, and the network carries them
// out.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "daemon/devices/json_members.h"
#include "daemon/model/model.h"

namespace qvs::kernel {

struct Attachment {
    enum class Kind : uint8_t { Namespace, Stream, Datagram, Capture, Tap, Host };

    Kind kind = Kind::Namespace;
    std::string name;  // of the namespace or of the tap
    // Stream: the socket. Datagram: the own socket, and that of the peer. Capture: the files that are read
    // and written. Host: the state directory of the other host, and its NIC.
    std::string path;
    std::string peer;
    uint32_t mtu = 0;  // 0: the MTU of the switch, or of the NIC
    bool offloads = true;
    bool ownsClient = false;  // the port has its client by this attachment
};

// The words for the kinds, in their order.
extern const std::array<const char *, 6> kAttachmentKinds;

// Reads an attachment from the members kind, name, path, peer, mtu and offloads. Throws JsonError.
Attachment readAttachment(Members &members);
// Reads the short form of labs, such as "stream:/tmp/vm1". Returns nothing if the text is none.
std::optional<Attachment> parseAttachment(std::string_view text);

// Attaches a port, or the NIC that is bound to it. Replaces an existing attachment.
[[nodiscard]] Status attachPort(Model &model, Port &port, Attachment attachment);
void attachNic(Model &model, const Nic &nic, const Attachment &attachment);
// Removes the attachment of a port or of its NIC. Returns NotFound if there is none.
[[nodiscard]] Status detachPort(Model &model, Port &port);
// Visits the attachments of ports, and of NICs that are bound to ports.
void forEachAttachment(const Model &model,
                       const std::function<void(Port &port, const Attachment &attachment)> &visit);
// Removes the attachments of ports and NICs that no longer exist.
void dropDeadAttachments(Model &model);

// Tells whether the host has a network: because a user enabled it, or because of an attachment.
bool hasNetwork(const Model &model);
void enableNetwork(Model &model, bool enabled);

// Returns the address of the adapter of a port: that of its NIC, the one that was given to its client, or one
// that is derived from the number of the port. On a host with a network, it differs from those of other
// hosts.
std::string adapterMac(const Model &model, const Port &port);
// Returns an address for the number of a port or portset of this host.
std::string hostMac(const Model &model, uint32_t number);
// Returns the same address, or 0 for a port without a client.
std::string macOf(const Model &model, const Port &port);
void setClientMac(Model &model, const Port &port, const std::array<uint8_t, 6> &mac);

}  // namespace qvs::kernel

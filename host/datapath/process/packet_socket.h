// SPDX-License-Identifier: Apache-2.0
// The end of a pair of interfaces where the data path receives and sends frames, with their offloads.
#pragma once

#include "datapath/process/endpoint.h"
#include "wire/file.h"

namespace qvs::datapath {

// Opens a socket for all frames of an interface of the current namespace. Throws std::system_error.
wire::File openPacketSocket(int index);

// Receives some frames that wait on such a socket, and passes them on.
void receivePackets(int socket, const std::function<void(const Frame &frame)> &received);
bool sendPacket(int socket, const Frame &frame);

}  // namespace qvs::datapath

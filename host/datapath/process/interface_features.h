// SPDX-License-Identifier: Apache-2.0
// The offloads of the interface of a client.
#pragma once

namespace qvs::datapath {

// Disables all offloads of an interface of the current namespace, except checksums and TCP segmentation:
// frames with other offloads could not be passed on. Features that the kernel does not know are ignored.
void disableUnusualOffloads(const char *interface);

}  // namespace qvs::datapath

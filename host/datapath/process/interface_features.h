// SPDX-License-Identifier: Apache-2.0
// What an interface of a client leaves to the network.
#pragma once

namespace qvs::datapath {

// Makes an interface of the current namespace leave nothing to the network but checksums and the segments of
// TCP: frames with other work left to do could not be handed over. Kernels that do not know a feature are
// fine.
void disableUnusualOffloads(const char *interface);

}  // namespace qvs::datapath

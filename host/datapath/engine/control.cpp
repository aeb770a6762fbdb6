// SPDX-License-Identifier: Apache-2.0
// Frames of protocols between neighbours, which no switch forwards, and their times.
#include <algorithm>

#include "datapath/engine/engine.h"

namespace qvs::datapath {

void Engine::control(Port &from, const Passage &passage) {
    receiveLldp(from, passage);
}

Time Engine::continueControl() {
    return std::min(continueCheck(), continueLldp());
}

// The address from which an uplink sends frames of its own.
MacAddress Engine::addressOf(const Port &uplink) const {
    return uplink.policy->mac != nullptr ? macOf(*uplink.policy->mac) : switchAddress();
}

void Engine::tell(uint32_t port, Topic topic, Bytes state) {
    if (surroundings_.told) surroundings_.told(port, topic, state);
}

}  // namespace qvs::datapath

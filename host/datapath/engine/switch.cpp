// SPDX-License-Identifier: Apache-2.0
// The interface of a switch in front of its engine.
#include "datapath/switch.h"

#include "datapath/engine/engine.h"

namespace qvs::datapath {

class Switch::State : public Engine {
  public:
    using Engine::Engine;
};

Switch::Switch(Surroundings surroundings) : state_(std::make_unique<State>(std::move(surroundings))) {}
Switch::~Switch() = default;

void Switch::configure(std::unique_ptr<policy::SwitchT> policy, Time now) {
    state_->configure(std::move(policy), now);
}

bool Switch::changePort(std::unique_ptr<policy::PortT> policy, Time now) {
    return state_->changePort(std::move(policy), now);
}

void Switch::receive(uint32_t port, const Frame &frame, Time now) {
    state_->receive(port, frame, now);
}

void Switch::setCarrier(uint32_t port, bool up, Time now) {
    state_->setCarrier(port, up, now);
}

void Switch::setAddress(uint32_t port, MacAddress address, Time now) {
    state_->setAddress(port, address, now);
}

void Switch::setPromiscuous(uint32_t port, bool asked, Time) {
    state_->setPromiscuous(port, asked);
}

void Switch::forget(uint32_t port, MacAddress address, uint16_t vlan, Time now) {
    state_->forget(port, address, vlan, now);
}

Time Switch::tick(Time now) {
    return state_->tick(now);
}

}  // namespace qvs::datapath

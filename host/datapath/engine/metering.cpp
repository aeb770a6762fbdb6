// SPDX-License-Identifier: Apache-2.0
// Which frames the flows of a port are made of, and where their records go.
#include "datapath/engine/engine.h"

namespace qvs::datapath {

void Engine::compileMeter(Port &port, const policy::PortT &policy, const Port *former) {
    if (policy.ipfix == nullptr) return;
    port.meter = former != nullptr ? former->meter : nullptr;
    if (port.meter == nullptr) port.meter = std::make_shared<Meter>();
    port.meter->configure(*policy.ipfix, slotAt(policy.ipfix->slot));
}

// Ports that are gone, or are no longer sampled, report the flows that they have.
void Engine::endMeters(const std::vector<Port> &former) {
    for (const Port &old : former) {
        const Port *port = find(old.number);
        if (old.meter != nullptr && (port == nullptr || port->meter == nullptr)) report(*old.meter, true);
    }
}

void Engine::meterIn(Port &from, const Passage &passage) {
    if (from.policy->ipfix->internalOnly && (from.uplink || passage.left)) return;
    from.meter->observe({passage.frame->bytes, passage.body, passage.vlan, false, from.number, passage.to},
                        now_);
}

void Engine::meterOut(Port &to, const Passage &passage) {
    const Port *from = passage.from == kNone ? nullptr : &ports_[passage.from];
    if (to.policy->ipfix->internalOnly && (to.uplink || (from != nullptr && from->uplink))) return;
    to.meter->observe({passage.frame->bytes, passage.body, passage.vlan, true,
                       from == nullptr ? 0 : from->number, to.number},
                      now_);
}

void Engine::expireFlows() {
    for (Port &port : ports_)
        if (port.meter != nullptr && !port.meter->empty()) report(*port.meter, false);
}

void Engine::report(Meter &meter, bool all) {
    const policy::IpfixT &policy = meter.policy();
    Slot &slot = meter.slot();
    const auto sendAll = [&](std::span<uint8_t> message, uint32_t records, uint32_t templates) {
        for (const auto &collector : policy.collectors) {
            if (!surroundings_.report || !surroundings_.report(policy, *collector, message, records)) {
                add(slot, kRecordsNotSent, records);
                continue;
            }
            add(slot, kRecordsSent, records);
            add(slot, kTemplatesSent, templates);
            add(slot, kMessagesSent);
            add(slot, kMessageBytesSent, message.size());
        }
    };
    meter.report(now_, surroundings_.epoch ? surroundings_.epoch() : 0, all, sendAll);
}

}  // namespace qvs::datapath

// SPDX-License-Identifier: Apache-2.0
// Changes physical NICs and binds them to uplink ports.
#include "daemon/model/uplinks.h"

#include <algorithm>
#include <unordered_set>

namespace qvs::kernel {

namespace {

uint32_t numberOf(const Switch &sw, std::string_view portId) {
    const Port *port = sw.port(portId);
    return port == nullptr ? 0u : port->number;
}

}  // namespace

Bindings Uplinks::plan(const Switch &sw, const std::vector<std::string> &uplinks) const {
    return plan(sw, uplinks, [&](std::string_view name) { return numberOf(sw, name); });
}

Bindings Uplinks::planWith(const Switch &sw, std::string_view portId, uint32_t number) const {
    return plan(sw, sw.uplinks,
                [&](std::string_view name) { return name == portId ? number : numberOf(sw, name); });
}

// Existing ports of the list get free NICs in order. A port keeps its NIC. A port that is no longer listed
// releases its NIC, which is then free.
Bindings Uplinks::plan(const Switch &sw, const std::vector<std::string> &uplinks,
                       const FindNumber &find) const {
    std::vector<uint32_t> waiting;
    std::unordered_set<uint32_t> listed;
    for (const std::string &name : uplinks) {
        const uint32_t number = find(name);
        if (number != 0 && listed.insert(number).second) waiting.push_back(number);
    }
    std::unordered_set<uint32_t> served;
    for (const auto &nic : inventory_.nics()) {
        if (nic->port != nullptr && listed.contains(nic->port->number)) served.insert(nic->port->number);
    }
    std::erase_if(waiting, [&](uint32_t number) { return served.contains(number); });

    Bindings bindings;
    auto next = waiting.begin();
    for (const auto &nic : inventory_.nics()) {
        const bool released =
            nic->port != nullptr && nic->port->owner == &sw && !listed.contains(nic->port->number);
        const bool available = nic->port == nullptr || released;
        if (available && next != waiting.end()) {
            bindings.emplace_back(nic.get(), *next++);
        } else if (released) {
            bindings.emplace_back(nic.get(), 0);
        }
    }
    return bindings;
}

void Uplinks::store(const Bindings &bindings) {
    for (const auto &[nic, number] : bindings) {
        storeNic(*nic, *nic, number);
        if (nic->port != nullptr) storeStatusReturn(store_, *nic->port);
        if (const Port *port = inventory_.findPort(number)) storeStatusReturn(store_, *port);
    }
}

void Uplinks::apply(const Bindings &bindings) {
    for (const auto &[nic, number] : bindings) {
        if (nic->port == nullptr) continue;
        nic->port->nic = nullptr;
        nic->port->returnStatus();
        nic->port = nullptr;
    }
    for (const auto &[nic, number] : bindings) {
        Port *port = inventory_.findPort(number);
        if (port == nullptr) continue;
        nic->port = port;
        port->nic = nic;
        port->returnStatus();
    }
}

void Uplinks::storeNic(const Nic &nic, const Nic &to, uint32_t port) {
    const auto &nics = inventory_.nics();
    const auto at =
        std::find_if(nics.begin(), nics.end(), [&](const auto &known) { return known.get() == &nic; });
    store_.run(kSetNic, int64_t{at - nics.begin()}, to.link, to.admin, to.speedMbps, to.mtu, bytesOf(to.mac),
               port);
}

Status Uplinks::setNic(Nic &nic, const Nic &to) {
    if (!isMtu(to.mtu)) return Status::BadParameter;
    Port *port = nic.port;
    const bool flips = port != nullptr && nic.up() != to.up();
    Transaction transaction(store_);
    storeNic(nic, to, port == nullptr ? 0 : port->number);
    if (flips) storeStatusReturn(store_, *port);
    transaction.commit();

    nic.link = to.link;
    nic.admin = to.admin;
    nic.speedMbps = to.speedMbps;
    nic.mtu = to.mtu;
    nic.mac = to.mac;
    if (flips) port->returnStatus();
    changes_.all();
    return Status::Ok;
}

// A status that a client has set is replaced by that of the kernel. Only that is stored, not each flap.
void Uplinks::flipped(Port &port) {
    if (port.statusFrom == Port::StatusFrom::Client) {
        Transaction transaction(store_);
        storeStatusReturn(store_, port);
        transaction.commit();
    }
    port.returnStatus();
}

void Uplinks::setCarrier(Nic &nic, bool carrier) {
    if (nic.carrier == carrier) return;
    const bool before = nic.up();
    nic.carrier = carrier;
    if (nic.up() == before) return;
    if (nic.port != nullptr) flipped(*nic.port);
    changes_.all();
}

void Uplinks::setCarrier(Port &port, bool carrier) {
    if (port.carrier == carrier) return;
    const bool before = port.linkUp();
    port.carrier = carrier;
    if (port.linkUp() == before) return;
    flipped(port);
    changes_.properties(port);
}

Status Uplinks::addNic(const Nic &nic) {
    if (!isNodeName(nic.name, kMaxNicName) || !isMtu(nic.mtu)) return Status::BadParameter;
    if (inventory_.findNic(nic.name) != nullptr) return Status::Exists;
    store_.change(kAddNic, static_cast<int64_t>(inventory_.nics().size()), std::string_view(nic.name),
                  nic.link, nic.admin, nic.speedMbps, nic.mtu, bytesOf(nic.mac), 0u);
    inventory_.insert(std::make_unique<Nic>(nic));
    changes_.all();
    return Status::Ok;
}

void Uplinks::clearNics() {
    store_.change(kClearNics);
    inventory_.clearNics();
    changes_.all();
}

void storeStatusReturn(Store &store, const Port &port) {
    if (port.statusFrom == Port::StatusFrom::Client)
        store.run(kDropPortProperty, port.number, std::string_view(kPortStatusKey));
}

std::string_view bytesOf(const std::array<uint8_t, 6> &mac) {
    return {reinterpret_cast<const char *>(mac.data()), mac.size()};
}

}  // namespace qvs::kernel

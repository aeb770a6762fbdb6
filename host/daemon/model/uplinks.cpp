// Which physical NIC serves which uplink port, and the NICs themselves.
#include <algorithm>

#include "daemon/model/model.h"

namespace qvs::kernel {

void Switch::setUplinks(std::vector<std::string> names) {
    uplinks = std::move(names);
    uplinkSet = {uplinks.begin(), uplinks.end()};
}

Model::FindNumber Model::numbersOf(const Switch &sw) {
    return [&sw](std::string_view portId) {
        const Port *port = sw.port(portId);
        return port == nullptr ? 0u : port->number;
    };
}

// Listed ports that exist get free NICs in order. A port that has one keeps it; what is no longer listed
// gives its NIC back, and such NICs are free again at once.
Model::Bindings Model::planBindings(const Switch &sw, const std::vector<std::string> &uplinks,
                                    const FindNumber &find) const {
    std::vector<uint32_t> waiting;
    std::unordered_set<uint32_t> listed;
    for (const std::string &name : uplinks) {
        const uint32_t number = find(name);
        if (number != 0 && listed.insert(number).second) waiting.push_back(number);
    }
    std::unordered_set<uint32_t> served;
    for (const auto &nic : nics_) {
        if (nic->port != nullptr && listed.contains(nic->port->number)) served.insert(nic->port->number);
    }
    std::erase_if(waiting, [&](uint32_t number) { return served.contains(number); });

    Bindings bindings;
    auto next = waiting.begin();
    for (const auto &nic : nics_) {
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

void Model::storeBindings(const Bindings &bindings) {
    for (const auto &[nic, number] : bindings) {
        storeNic(*nic, *nic, number);
        if (nic->port != nullptr) storeStatusReturn(*nic->port);
        if (const Port *port = findPort(number); port != nullptr) storeStatusReturn(*port);
    }
}

void Model::applyBindings(const Bindings &bindings) {
    for (const auto &[nic, number] : bindings) {
        if (nic->port == nullptr) continue;
        nic->port->nic = nullptr;
        applyStatusReturn(*nic->port);
        nic->port = nullptr;
    }
    for (const auto &[nic, number] : bindings) {
        Port *port = findPort(number);
        if (port == nullptr) continue;
        nic->port = port;
        port->nic = nic;
        applyStatusReturn(*port);
    }
}

std::vector<const Nic *> Model::boundNics(const Switch &sw) const {
    std::vector<const Nic *> bound;
    for (const auto &nic : nics_) {
        if (nic->port != nullptr && nic->port->owner == &sw) bound.push_back(nic.get());
    }
    const auto place = [&](const Nic *nic) {
        return std::find(sw.uplinks.begin(), sw.uplinks.end(), nic->port->id);
    };
    std::sort(bound.begin(), bound.end(), [&](const Nic *a, const Nic *b) { return place(a) < place(b); });
    return bound;
}

void Model::storeNic(const Nic &nic, const Nic &to, uint32_t port) {
    const auto at =
        std::find_if(nics_.begin(), nics_.end(), [&](const auto &known) { return known.get() == &nic; });
    const std::string_view mac(reinterpret_cast<const char *>(to.mac.data()), to.mac.size());
    store_.run(Sql::SetNic, int64_t{at - nics_.begin()}, to.link, to.admin, to.speedMbps, to.mtu, mac, port);
}

Status Model::setNic(Nic &nic, const Nic &to) {
    if (to.mtu < kMinMtu || to.mtu > kMaxMtu) return Status::BadParameter;
    const bool flips = nic.port != nullptr && nic.up() != to.up();
    Transaction transaction(store_);
    storeNic(nic, to, nic.port == nullptr ? 0 : nic.port->number);
    if (flips) storeStatusReturn(*nic.port);
    transaction.commit();

    nic.link = to.link;
    nic.admin = to.admin;
    nic.speedMbps = to.speedMbps;
    nic.mtu = to.mtu;
    nic.mac = to.mac;
    if (flips) applyStatusReturn(*nic.port);
    changed();
    return Status::Ok;
}

Status Model::addNic(const Nic &nic) {
    if (nic.name.empty() || nic.name.size() > kMaxNicName || nic.name.find('/') != std::string::npos ||
        nic.name.find('\0') != std::string::npos || nic.mtu < kMinMtu || nic.mtu > kMaxMtu) {
        return Status::BadParameter;
    }
    if (findNic(nic.name) != nullptr) return Status::Exists;
    const std::string_view mac(reinterpret_cast<const char *>(nic.mac.data()), nic.mac.size());
    Transaction transaction(store_);
    store_.run(Sql::AddNic, static_cast<int64_t>(nics_.size()), std::string_view(nic.name), nic.link,
               nic.admin, nic.speedMbps, nic.mtu, mac, 0u);
    transaction.commit();
    nics_.push_back(std::make_unique<Nic>(nic));
    changed();
    return Status::Ok;
}

void Model::clearNics() {
    Transaction transaction(store_);
    store_.run(Sql::ClearNics);
    transaction.commit();
    nics_.clear();
    changed();
}

}  // namespace qvs::kernel

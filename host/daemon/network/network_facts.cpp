// SPDX-License-Identifier: Apache-2.0
// Receives the facts of the data path: carriers, addresses, groups, and descriptors to keep.
#include <unistd.h>

#include <fcntl.h>
#include <algorithm>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "daemon/devices/attachments.h"
#include "daemon/devices/mac_table.h"
#include "daemon/network/neighbours.h"
#include "daemon/network/network.h"
#include "datapath/protocol.h"

namespace qvs::kernel {

namespace {

using nlohmann::json;

// Policies that are stored and listed, and have no effect on frames.
constexpr const char *kNotCarriedOut[] = {"SPF", "KCP",  "telemetry", "overlay", "logical-switch teaming",
                                          "CDP", "LACP", "BFD"};

}  // namespace

void Network::received(uint32_t kind, std::string_view payload, int file) {
    using datapath::Kind;
    const wire::Reader reader(payload);
    bool valid = false;
    switch (static_cast<Kind>(kind)) {
        case Kind::InForce:
            valid = inForce(reader);
            break;
        case Kind::Keep:
            valid = keep(reader, std::exchange(file, -1));
            break;
        case Kind::Carrier:
            valid = carrier(reader);
            break;
        case Kind::Learnt:
            valid = learnt(reader);
            break;
        case Kind::Joined:
            valid = joined(reader);
            break;
        case Kind::Told:
            valid = told(reader);
            break;
        default:
            break;
    }
    if (file >= 0) close(file);
    if (!valid) process_.kill(fmt::format("it sent an invalid message of kind {}", kind));
}

bool Network::inForce(wire::Reader reader) {
    const uint64_t generation = reader.u64();
    if (!reader.complete() || generation > generation_) return false;
    inForce_ = std::max(inForce_, generation);
    slots_->inForce(inForce_);
    while (!owed_.empty() && owed_.front().generation <= generation)
        owed_.pop_front();
    watch();
    answer(generation);
    return true;
}

bool Network::keep(wire::Reader reader, int file) {
    const std::string name(reader.text());
    if (const auto known = kept_.find(name); known != kept_.end()) {
        close(known->second);
        kept_.erase(known);
    }
    if (file >= 0) kept_.emplace(name, file);
    return reader.complete();
}

bool Network::carrier(wire::Reader reader) {
    const uint32_t number = reader.u32();
    const bool up = reader.u8() != 0;
    const std::string problem(reader.text());
    if (!reader.complete()) return false;
    carriers_[number] = {up, problem};
    Port *port = model_.inventory.findPort(number);
    if (port == nullptr) return true;
    // Others are the ports of sessions, whose clients keep their link.
    model_.facts.attached.insert(number);
    if (stored_.contains(number)) applyCarrier(*port, up);
    return true;
}

void Network::applyCarrier(Port &port, bool up) {
    if (port.nic != nullptr) {
        model_.uplinks.setCarrier(*model_.inventory.findNic(port.nic->name), up);
    } else {
        model_.uplinks.setCarrier(port, up);
    }
}

// Sets the carrier of all ports to that of their attachment. An attachment without a known carrier has none.
void Network::applyCarriers() {
    for (const uint32_t number : model_.facts.attached) {
        Port *port = model_.inventory.findPort(number);
        if (port == nullptr || stored_.contains(number)) continue;
        applyCarrier(*port, true);
        takeCheck(number, "");
    }
    std::erase_if(model_.facts.attached,
                  [&](uint32_t number) { return model_.inventory.findPort(number) == nullptr; });
    for (const uint32_t number : stored_) {
        model_.facts.attached.insert(number);
        const auto known = carriers_.find(number);
        applyCarrier(*model_.inventory.findPort(number), known != carriers_.end() && known->second.up);
    }
}

bool Network::learnt(wire::Reader reader) {
    const uint64_t now = learningClock(model_);
    for (uint32_t count = reader.u32(); count != 0; --count) {
        Facts::Address address;
        address.portset = reader.u32();
        const bool here = reader.u8() != 0;
        address.address = reader.u64();
        address.vlan = static_cast<uint16_t>(reader.u32());
        const uint32_t port = reader.u32();
        if (reader.failed()) return false;
        if (here) {
            model_.facts.learnt.insert_or_assign(address, Facts::Learnt{port, now});
        } else {
            model_.facts.learnt.erase(address);
        }
    }
    return reader.complete();
}

bool Network::joined(wire::Reader reader) {
    for (uint32_t count = reader.u32(); count != 0; --count) {
        const uint32_t port = reader.u32();
        const bool here = reader.u8() != 0;
        const std::string group(reader.text());
        if (reader.failed()) return false;
        if (here) {
            model_.facts.joined.emplace(port, group);
        } else {
            model_.facts.joined.erase({port, group});
        }
    }
    return reader.complete();
}

bool Network::told(wire::Reader reader) {
    for (uint32_t count = reader.u32(); count != 0; --count) {
        const uint32_t port = reader.u32();
        const auto topic = static_cast<datapath::Topic>(reader.u8());
        std::string state(reader.text());
        if (reader.failed()) return false;
        if (topic == datapath::Topic::Check && stored_.contains(port)) {
            // A round has begun, or has a result.
            takeCheck(port, state.empty() ? std::string(1, '\0') : std::move(state));
        } else if (topic == datapath::Topic::Neighbour) {
            if (state.empty())
                neighbours_.erase(port);
            else
                neighbours_[port] = std::move(state);
        }
    }
    return reader.complete();
}

// Results are properties of the ports of the switch.
void Network::takeCheck(uint32_t number, std::string found) {
    Port *port = model_.inventory.findPort(number);
    if (port == nullptr || port->checked == found) return;
    port->checked = std::move(found);
    for (const auto &[other, each] : port->owner->ports)
        model_.changes.properties(*each);
}

json Network::describe() const {
    json answer = {{"enabled", on_}};
    if (!on_) return answer;
    answer["process"] = process_.running() ? json(process_.pid()) : json();
    answer["restarts"] = process_.restarts();
    answer["notCarriedOut"] = kNotCarriedOut;
    json &list = answer["attachments"] = json::array();
    forEachAttachment(model_, [&](const Port &port, const Attachment &attachment) {
        const auto known = carriers_.find(port.number);
        const bool up = known != carriers_.end() && known->second.up;
        json entry = {{"switch", port.owner->alias()},
                      {"port", port.id},
                      {"client", port.clientName()},
                      {"kind", kAttachmentKinds[static_cast<size_t>(attachment.kind)]},
                      {"name", attachment.name},
                      {"carrier", up ? "up" : "down"},
                      {"problem", known == carriers_.end() ? "" : known->second.problem}};
        if (!attachment.path.empty()) entry["path"] = attachment.path;
        if (!attachment.peer.empty()) entry["peer"] = attachment.peer;
        list.push_back(std::move(entry));
    });
    answer["neighbours"] = describeNeighbours(model_, neighbours_);
    return answer;
}

}  // namespace qvs::kernel

// SPDX-License-Identifier: Apache-2.0
// Applies configurations: replaces switches, opens and closes endpoints.
#include <algorithm>
#include <chrono>

#include "datapath/packet.h"
#include "datapath/process/datapath.h"
#include "datapath/process/log.h"

namespace qvs::datapath {

namespace {

// How long the answer to a configuration waits for its attachments. The policies are in force before; whoever
// attaches a thousand namespaces sees their carriers come afterwards.
constexpr Time kLongestWait = 500;

bool isSame(const policy::AttachmentT &one, const policy::AttachmentT &other) {
    const auto mac = [](const policy::AttachmentT &each) {
        std::array<uint8_t, 6> bytes{};
        if (each.mac) std::copy_n(each.mac->bytes()->begin(), bytes.size(), bytes.begin());
        return bytes;
    };
    return one.kind == other.kind && one.path == other.path && one.peer == other.peer &&
           one.name == other.name && mac(one) == mac(other) && one.mtu == other.mtu &&
           one.noOffloads == other.noOffloads;
}

uint64_t unixTime() {
    using std::chrono::system_clock;
    const auto since = system_clock::now().time_since_epoch();
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

}  // namespace

void DataPath::configure(std::string_view bytes) {
    // The buffer must be aligned, which a field of a message is not.
    const std::vector<uint8_t> aligned(bytes.begin(), bytes.end());
    flatbuffers::Verifier verifier(aligned.data(), aligned.size(), 64, 100'000'000);
    if (!policy::VerifyConfigurationBuffer(verifier))
        return warn("a configuration of {} bytes is malformed and was not applied", bytes.size());
    const policy::Configuration &configuration = *policy::GetConfiguration(aligned.data());

    if (configuration.removed() != nullptr) {
        for (const uint32_t number : *configuration.removed())
            removeSwitch(number);
    }
    std::set<uint32_t> named;
    if (configuration.switches() != nullptr) {
        for (const policy::Switch *each : *configuration.switches()) {
            named.insert(each->number());
            replaceSwitch(std::unique_ptr<policy::SwitchT>(each->UnPack()));
        }
    }
    if (configuration.whole()) {
        std::vector<uint32_t> others;
        for (const auto &[number, owner] : switches_) {
            if (!named.contains(number)) others.push_back(number);
        }
        for (const uint32_t number : others)
            removeSwitch(number);
    }
    if (configuration.changedPorts() != nullptr) {
        for (const policy::ChangedPort *each : *configuration.changedPorts())
            changePort(*each, &named);
    }
    for (const uint32_t number : named) {
        Owner &owner = switches_[number];
        learnPorts(owner);
        owner.forwarding->configure(std::make_unique<policy::SwitchT>(*owner.policy), loop_.now());
    }
    if (configuration.forgotten() != nullptr) {
        for (const policy::ForgottenMac *each : *configuration.forgotten())
            forget(*each);
    }
    if (configuration.attachmentsGiven()) attach(configuration);
    for (const uint32_t number : named) {
        for (const uint32_t port : switches_[number].ports) {
            if (ports_[port].attachment) tellSwitch(port, ports_[port]);
        }
    }
    if (unanswered_.empty()) {
        answerBy_ = loop_.now() + kLongestWait;
        loop_.at(answerBy_, [] {});
    }
    unanswered_.push_back(configuration.generation());
    tickAt_ = 0;
}

void DataPath::replaceSwitch(std::unique_ptr<policy::SwitchT> policy) {
    const uint32_t number = policy->number;
    Owner &owner = switches_[number];
    owner.policy = std::move(policy);
    if (!owner.forwarding) {
        Surroundings surroundings;
        surroundings.send = [this](uint32_t port, const Frame &frame) { return send(port, frame); };
        surroundings.learnt = [this, number](MacAddress address, uint16_t vlan, uint32_t port, bool here) {
            kernel_.learnt(number, address, vlan, port, here);
        };
        surroundings.joined = [this](uint32_t port, std::span<const uint8_t> group, bool joined) {
            kernel_.joined(port, group, joined);
        };
        surroundings.slots = slots_;
        surroundings.told = [this](uint32_t port, Topic topic, std::span<const uint8_t> state) {
            kernel_.told(port, topic, state);
        };
        surroundings.report = [this](const policy::IpfixT &ipfix, const policy::CollectorT &collector,
                                     std::span<uint8_t> message, uint32_t records) {
            return exporter_.send(ipfix, collector, message, records);
        };
        surroundings.epoch = [this] { return unixTime() - loop_.now(); };
        owner.forwarding = std::make_unique<Switch>(std::move(surroundings));
    }
}

void DataPath::changePort(const policy::ChangedPort &changed, std::set<uint32_t> *named) {
    const auto found = switches_.find(changed.portset());
    if (found == switches_.end() || changed.policy() == nullptr) return;
    std::unique_ptr<policy::PortT> port(changed.policy()->UnPack());
    Owner &owner = found->second;
    auto &ports = owner.policy->ports;
    const auto place = std::find_if(ports.begin(), ports.end(),
                                    [&](const auto &each) { return each->number == port->number; });
    // The switch applies the change alone, unless it is configured as a whole anyway.
    const bool alone = place != ports.end() && !named->contains(changed.portset()) &&
                       owner.forwarding->changePort(std::make_unique<policy::PortT>(*port), loop_.now());
    if (alone) {
        Attached &attached = learnPort(*owner.policy, *port);
        if (attached.attachment) tellSwitch(port->number, attached);
    } else {
        named->insert(changed.portset());
    }
    if (place == ports.end())
        ports.push_back(std::move(port));
    else
        *place = std::move(port);
}

// Takes notice of a port.
DataPath::Attached &DataPath::learnPort(const policy::SwitchT &policy, const policy::PortT &port) {
    Attached &attached = ports_[port.number];
    if (attached.owner != 0 && attached.owner != policy.number)
        switches_[attached.owner].ports.erase(port.number);
    attached.owner = policy.number;
    attached.id = port.id;
    attached.client = port.client;
    attached.mtu = policy.mtu;
    attached.link = port.link;
    if (attached.endpoint) attached.endpoint->setLink(attached.link);
    return attached;
}

void DataPath::forget(const policy::ForgottenMac &forgotten) {
    const auto found = ports_.find(forgotten.port());
    if (found == ports_.end() || forgotten.address() == nullptr) return;
    if (Switch *const forwarding = switchOf(found->second))
        forwarding->forget(forgotten.port(), readMac(forgotten.address()->bytes()->data()), forgotten.vlan(),
                           loop_.now());
}

// Updates the ports of a switch: adds new ones, changes existing ones, and removes those that are gone.
void DataPath::learnPorts(Owner &owner) {
    const policy::SwitchT &policy = *owner.policy;
    std::set<uint32_t> ports;
    for (const auto &port : policy.ports) {
        ports.insert(port->number);
        learnPort(policy, *port);
    }
    std::vector<uint32_t> gone;
    std::set_difference(owner.ports.begin(), owner.ports.end(), ports.begin(), ports.end(),
                        std::back_inserter(gone));
    owner.ports = std::move(ports);
    for (const uint32_t port : gone)
        removePort(port);
}

void DataPath::removeSwitch(uint32_t number) {
    const auto found = switches_.find(number);
    if (found == switches_.end()) return;
    for (const uint32_t port : found->second.ports)
        removePort(port);
    // A switch without ports has told what it has to tell.
    if (found->second.forwarding)
        found->second.forwarding->configure(std::make_unique<policy::SwitchT>(), loop_.now());
    switches_.erase(found);
}

// The attachment of the port stays until the kernel removes it.
void DataPath::removePort(uint32_t port) {
    Attached &attached = ports_[port];
    attached.owner = 0;
    for (auto &guests : attached.guests) {
        for (Guest *guest : guests)
            guest->portRemoved();
        guests.clear();
    }
    if (!attached.attachment) ports_.erase(port);
}

// Retries attachments that could not be opened, because the user may have removed the cause.
bool DataPath::couldNotOpen(const Attached &attached) {
    const bool opensLater = attached.attachment->kind == policy::AttachmentKind::Namespace;
    return !attached.problem.empty() && (opensLater || !attached.endpoint);
}

void DataPath::attach(const policy::Configuration &configuration) {
    std::map<uint32_t, std::unique_ptr<policy::AttachmentT>> wanted;
    std::vector<std::string> clients;
    if (configuration.attachments() != nullptr) {
        for (const policy::Attachment *each : *configuration.attachments()) {
            auto &attachment = wanted[each->port()];
            attachment.reset(each->UnPack());
            if (attachment->kind == policy::AttachmentKind::Namespace) clients.push_back(attachment->name);
        }
    }
    // Removals come first, because they free names and interfaces.
    for (auto each = ports_.begin(); each != ports_.end();) {
        Attached &attached = each->second;
        const auto found = wanted.find(each->first);
        if (attached.attachment && (found == wanted.end() || couldNotOpen(attached) ||
                                    !isSame(*attached.attachment, *found->second))) {
            attached.endpoint.reset();
            attached.attachment.reset();
            attached.address = 0;
            attached.promiscuous = true;
            attached.problem.clear();
            // Without an attachment, a port has the link that the kernel gives it.
            attached.carrier = true;
            tellSwitch(each->first, attached);
            attached.carrier.reset();
        }
        const bool stays = attached.owner != 0 || attached.attachment || found != wanted.end();
        each = stays ? std::next(each) : ports_.erase(each);
    }
    namespaces_.retain(clients);
    for (auto &[port, attachment] : wanted) {
        Attached &attached = ports_[port];
        if (attached.attachment) continue;
        attached.attachment = std::move(attachment);
        open(port, attached);
    }
}

void DataPath::open(uint32_t port, Attached &attached) {
    const EndpointContext context{loop_, namespaces_, directory_};
    EndpointEvents events;
    events.received = [this, port](const Frame &frame) { receive(port, frame); };
    events.carrier = [this, port](bool up, const std::string &problem) { changeCarrier(port, up, problem); };
    events.adapter = [this, port](MacAddress address, bool promiscuous) {
        Attached &changed = ports_[port];
        if (changed.address == address && changed.promiscuous == promiscuous) return;
        changed.address = address;
        changed.promiscuous = promiscuous;
        tellSwitch(port, changed);
    };
    try {
        attached.endpoint = openEndpoint(*attached.attachment, context, std::move(events));
        attached.endpoint->setLink(attached.link);
    } catch (const std::exception &error) {
        changeCarrier(port, false, error.what());
    }
    countGuests(port);
}

}  // namespace qvs::datapath

// SPDX-License-Identifier: Apache-2.0
// The table of flows, and the templates by which they are reported.
#include "datapath/engine/meter.h"

#include <algorithm>

#include "datapath/engine/engine.h"
#include "datapath/engine/message.h"

namespace qvs::datapath {
namespace {

constexpr size_t kMostFlows = 4096;
constexpr uint32_t kDefaultIdle = 15;
constexpr uint32_t kDefaultActive = 60;
constexpr Time kTemplatesEvery = 60'000;
constexpr size_t kFullMessage = 1300;  // another record fits into a frame

enum EndReason : uint8_t { GoesOn = 0, Idle = 1, Active = 2, Forced = 4 };

constexpr uint8_t kTcp = 6;
constexpr uint8_t kUdp = 17;
constexpr uint8_t kSctp = 132;
constexpr uint8_t kIcmp = 1;
constexpr uint8_t kIcmp6 = 58;

// Numbers of sets and templates.
enum Set : uint16_t {
    Templates = 2,
    OptionTemplates = 3,
    Flows4 = 256,
    Flows6 = 257,
    Sampling = 258,
    Name = 259
};

// The information elements of a record behind its addresses: number and length. `writeFlow` follows them.
struct Element {
    uint16_t number;
    uint16_t length;
};
constexpr Element kElements[] = {
    {4, 1},    // protocol
    {5, 1},    // type of service
    {61, 1},   // direction: 0 into the switch
    {7, 2},    // port of the sender
    {11, 2},   // port of the receiver, or type and code of ICMP
    {58, 2},   // VLAN
    {10, 4},   // ingress interface
    {14, 4},   // egress interface
    {56, 6},   // source MAC address
    {80, 6},   // destination MAC address
    {6, 1},    // TCP flags
    {2, 8},    // packets
    {1, 8},    // bytes
    {152, 8},  // begin, milliseconds
    {153, 8},  // end
    {136, 1},  // why it ended
};
constexpr Element kSamplingElements[] = {{302, 8}, {304, 2}, {305, 4}, {306, 4}};
constexpr Element kNameElements[] = {{149, 4}, {300, UINT16_MAX}};

void putElements(Message &message, std::span<const Element> elements) {
    for (const Element &element : elements) {
        message.put(element.number, 2);
        message.put(element.length, 2);
    }
}

void putTemplate(Message &message, Set number, std::span<const Element> addresses) {
    message.set(Templates);
    message.put(number, 2);
    message.put(addresses.size() + std::size(kElements), 2);
    putElements(message, addresses);
    putElements(message, kElements);
}

void putOptionTemplate(Message &message, Set number, std::span<const Element> elements) {
    message.set(OptionTemplates);
    message.put(number, 2);
    message.put(elements.size(), 2);
    message.put(1, 2);  // fields of the scope
    putElements(message, elements);
}

// Returns the number of records. The sampling is count-based: one frame, then a gap.
uint32_t putOptions(Message &message, const policy::IpfixT &policy) {
    constexpr size_t kLongestName = 254;
    uint32_t records = 0;
    if (policy.sampling > 1) {
        message.set(Sampling);
        message.put(1, 8);
        message.put(1, 2);
        message.put(1, 4);
        message.put(policy.sampling - 1, 4);
        ++records;
    }
    if (!policy.domainName.empty()) {
        const size_t length = std::min(policy.domainName.size(), kLongestName);
        message.set(Name);
        message.put(policy.domain, 4);
        message.put(length, 1);
        message.put(Bytes(reinterpret_cast<const uint8_t *>(policy.domainName.data()), length));
        ++records;
    }
    return records;
}

uint32_t putTemplates(Message &message, const policy::IpfixT &policy, uint32_t *records) {
    constexpr Element kAddresses4[] = {{8, 4}, {12, 4}};
    constexpr Element kAddresses6[] = {{27, 16}, {28, 16}};
    uint32_t count = 2;
    putTemplate(message, Flows4, kAddresses4);
    putTemplate(message, Flows6, kAddresses6);
    if (policy.sampling > 1) {
        putOptionTemplate(message, Sampling, kSamplingElements);
        ++count;
    }
    if (!policy.domainName.empty()) {
        putOptionTemplate(message, Name, kNameElements);
        ++count;
    }
    *records += putOptions(message, policy);
    return count;
}

}  // namespace

// Collects records in messages.
class Meter::Reports {
  public:
    Reports(Meter &meter, Time now, uint64_t epoch, const Sink &sink)
        : meter_(meter), now_(now), epoch_(epoch), sink_(sink) {}
    ~Reports() { send(); }
    Reports(const Reports &) = delete;
    Reports &operator=(const Reports &) = delete;

    void add(const Key &key, const Flow &flow, EndReason reason) {
        if (message_ && message_->size() > kFullMessage) send();
        if (!message_) begin();
        const bool isVersion4 = key[0] == 4;
        const size_t length = isVersion4 ? 4 : 16;
        Message &to = *message_;
        to.set(isVersion4 ? Flows4 : Flows6);
        to.put(Bytes(key).subspan(10, length));
        to.put(Bytes(key).subspan(26, length));
        to.put(Bytes(key).subspan(1, 9));  // protocol to VLAN
        to.put(flow.ingress, 4);
        to.put(flow.egress, 4);
        to.put(flow.source, 6);
        to.put(flow.destination, 6);
        to.put(flow.tcpFlags, 1);
        to.put(flow.packets, 8);
        to.put(flow.bytes, 8);
        to.put(epoch_ + flow.first, 8);
        to.put(epoch_ + flow.last, 8);
        to.put(reason, 1);
        ++records_;
    }

  private:
    void begin() {
        message_.emplace(meter_.policy_->domain);
        if (now_ < meter_.templatesDue_) return;
        meter_.templatesDue_ = now_ + kTemplatesEvery;
        templates_ = putTemplates(*message_, *meter_.policy_, &records_);
    }

    void send() {
        if (!message_) return;
        sink_(message_->finish(static_cast<uint32_t>((epoch_ + now_) / 1000)), records_, templates_);
        message_.reset();
        records_ = templates_ = 0;
    }

    Meter &meter_;
    Time now_;
    uint64_t epoch_;
    const Sink &sink_;
    std::optional<Message> message_;
    uint32_t records_ = 0;
    uint32_t templates_ = 0;
};

// A collector of a new policy needs the templates.
void Meter::configure(const policy::IpfixT &policy, Slot *slot) {
    policy_ = &policy;
    slot_ = slot;
    templatesDue_ = 0;
}

bool Meter::readKey(const Observed &seen, Key *key, size_t *bytes, uint8_t *tcpFlags) const {
    const size_t packet = seen.type + 2;
    if (packet + 1 > seen.frame.size()) return false;
    const uint16_t type = read16(seen.frame.data() + seen.type);
    IpHeader ip;
    if (!readIp(seen.frame, packet, type, ip)) return false;
    const bool isVersion4 = type == kIpv4Type;
    const uint8_t *head = seen.frame.data() + packet;
    const uint8_t *payload = seen.frame.data() + ip.payload;
    *key = {};
    Key &to = *key;
    to[0] = isVersion4 ? 4 : 6;
    to[1] = ip.protocol;
    to[2] = isVersion4 ? head[1] : static_cast<uint8_t>(read16(head) >> 4);
    to[3] = seen.out ? 1 : 0;
    // Fragments behind the first one have no ports.
    const bool isFirst = !isVersion4 || (read16(head + 6) & 0x1fff) == 0;
    const bool hasPorts = ip.protocol == kTcp || ip.protocol == kUdp || ip.protocol == kSctp;
    if (isFirst && hasPorts && ip.payload + 4 <= ip.end) std::copy_n(payload, 4, to.begin() + 4);
    if (isFirst && (ip.protocol == kIcmp || ip.protocol == kIcmp6) && ip.payload + 2 <= ip.end)
        std::copy_n(payload, 2, to.begin() + 6);
    write16(to.data() + 8, seen.vlan);
    std::copy(ip.source.begin(), ip.source.end(), to.begin() + 10);
    std::copy(ip.destination.begin(), ip.destination.end(), to.begin() + 26);
    *bytes = ip.end - packet;
    *tcpFlags = isFirst && ip.protocol == kTcp && ip.payload + 14 <= ip.end ? payload[13] : uint8_t{0};
    return true;
}

void Meter::observe(const Observed &seen, Time now) {
    Slot &slot = *slot_;
    add(slot, kFramesSeen);
    add(slot, kBytesSeen, seen.frame.size());
    if (policy_->sampling > 1 && seen_++ % policy_->sampling != 0) return;
    add(slot, kFramesSampled);
    add(slot, kBytesSampled, seen.frame.size());
    Key key;
    size_t bytes = 0;
    uint8_t tcpFlags = 0;
    const bool isPacket = readKey(seen, &key, &bytes, &tcpFlags);
    auto found = isPacket ? flows_.find(key) : flows_.end();
    if (found == flows_.end()) {
        if (!isPacket || flows_.size() >= kMostFlows) {
            add(slot, kFramesWithoutFlow);
            add(slot, isPacket ? kTableFull : kNoPacket);
            return;
        }
        found = flows_.emplace(key, Flow{}).first;
        found->second.first = now;
        found->second.ingress = seen.ingress;
        found->second.egress = seen.egress;
        found->second.destination = readMac(seen.frame.data());
        found->second.source = readMac(seen.frame.data() + 6);
        add(slot, kFlowsBegun);
        add(slot, kFlowsNow);
    }
    Flow &flow = found->second;
    flow.last = now;
    ++flow.packets;
    flow.bytes += bytes;
    flow.tcpFlags |= tcpFlags;
}

uint8_t Meter::endOf(const Flow &flow, Time now, bool all) const {
    constexpr Time kSecond = 1000;
    const auto past = [&](Time since, uint32_t timeout, uint32_t otherwise) {
        return now - since >= (timeout != 0 ? timeout : otherwise) * kSecond;
    };
    if (past(flow.last, policy_->idle, kDefaultIdle)) return Idle;
    if (past(flow.first, policy_->active, kDefaultActive)) return Active;
    return all ? Forced : GoesOn;
}

void Meter::report(Time now, uint64_t epoch, bool all, const Sink &sink) {
    Reports reports(*this, now, epoch, sink);
    for (auto flow = flows_.begin(); flow != flows_.end();) {
        const auto reason = static_cast<EndReason>(endOf(flow->second, now, all));
        if (reason == GoesOn) {
            ++flow;
            continue;
        }
        add(*slot_, reason == Idle ? kFlowsIdle : reason == Active ? kFlowsActive : kFlowsForced);
        reports.add(flow->first, flow->second, reason);
        flow = flows_.erase(flow);
    }
    slot_->values[kFlowsNow].store(flows_.size(), std::memory_order_relaxed);
}

}  // namespace qvs::datapath

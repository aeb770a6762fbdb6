// SPDX-License-Identifier: Apache-2.0
// Snooping: reads the messages with which clients join and leave groups, and the queries of routers.
#include <algorithm>

#include "datapath/engine/engine.h"

namespace qvs::datapath {
namespace {

constexpr Time kMembership = 260'000;  // after the last report, if a router asks at all
constexpr Time kLeaving = 2'000;       // for the other clients behind a port to report
constexpr Time kResponse = 10'000;     // for clients to answer a query
constexpr Time kRouter = 255'000;
constexpr size_t kMostMembers = 4096;  // of a switch
constexpr size_t kMostSources = 64;

constexpr uint8_t kIgmp = 2;
constexpr uint8_t kIcmp6 = 58;

enum class Message { None, Query, Report, Leave, Records };

struct MessageType {
    uint8_t protocol;
    uint8_t type;
    Message message;
    size_t group;   // where the group stands
    size_t length;  // the shortest message
};

constexpr MessageType kMessages[] = {
    {kIgmp, 0x11, Message::Query, 4, 8},   {kIgmp, 0x12, Message::Report, 4, 8},
    {kIgmp, 0x16, Message::Report, 4, 8},  {kIgmp, 0x17, Message::Leave, 4, 8},
    {kIgmp, 0x22, Message::Records, 0, 8}, {kIcmp6, 130, Message::Query, 8, 24},
    {kIcmp6, 131, Message::Report, 8, 24}, {kIcmp6, 132, Message::Leave, 8, 24},
    {kIcmp6, 143, Message::Records, 0, 8},
};

// The effect of a record of a report, by its type.
enum Record : uint8_t { kIsInclude = 1, kIsExclude, kToInclude, kToExclude, kAllow, kBlock };

const MessageType *messageOf(const IpHeader &ip, Bytes bytes) {
    for (const MessageType &type : kMessages)
        if (type.protocol == ip.protocol && ip.end >= ip.payload + type.length &&
            bytes[ip.payload] == type.type)
            return &type;
    return nullptr;
}

// Groups that always flood need no members.
bool isMemorable(Bytes group) {
    if (group.size() == 4)
        return group[0] >> 4 == 0xe && !(group[0] == 224 && group[1] == 0 && group[2] == 0);
    return group[0] == 0xff && (group[1] & 0xf) > 1;
}

void addSources(Member &member, const std::vector<std::string> &sources) {
    for (const std::string &source : sources)
        if (member.sources.size() < kMostSources &&
            std::find(member.sources.begin(), member.sources.end(), source) == member.sources.end())
            member.sources.push_back(source);
}

void removeSources(Member &member, const std::vector<std::string> &sources) {
    for (const std::string &source : sources)
        std::erase(member.sources, source);
}

void apply(Member &member, uint8_t record, const std::vector<std::string> &sources) {
    const bool replaces = record <= kToExclude;
    if (replaces) {
        member.exclude = record == kIsExclude || record == kToExclude;
        member.sources.clear();
    }
    if (replaces || (record == kAllow) != member.exclude)
        addSources(member, sources);
    else
        removeSources(member, sources);
}

}  // namespace

bool Engine::snoop(Port &from, const Passage &passage) {
    const Bytes bytes = passage.frame->bytes;
    IpHeader ip;
    if (!readIp(bytes, passage.body + 2, passage.type, ip)) return false;
    const MessageType *type = messageOf(ip, bytes);
    if (type == nullptr) return false;
    if (type->message == Message::Query) {
        add(*slot_, kSnoopedQueries);
        lastQuery_ = now_;
        if (!from.uplink) from.routerUntil = now_ + kRouter;
        return false;
    }
    add(*slot_, type->message == Message::Leave ? kSnoopedLeaves : kSnoopedReports);
    if (from.uplink) return true;
    const size_t addressLength = ip.destination.size();
    const Bytes message = bytes.subspan(ip.payload, ip.end - ip.payload);
    if (type->message == Message::Records)
        reportRecords(from, passage, message, addressLength);
    else
        report(from, passage.filing, message.subspan(type->group, addressLength),
               type->message == Message::Leave ? kToInclude : kIsExclude, {});
    return true;
}

// The records of a report of the third version of IGMP, or the second one of MLD.
void Engine::reportRecords(Port &from, const Passage &passage, Bytes message, size_t addressLength) {
    size_t at = 8;
    for (size_t count = read16(message.data() + 6); count > 0; --count) {
        if (message.size() < at + 4 + addressLength) return;
        const uint8_t type = message[at];
        const size_t extra = message[at + 1] * size_t{4};
        const size_t sourceCount = read16(message.data() + at + 2);
        const Bytes group = message.subspan(at + 4, addressLength);
        at += 4 + addressLength;
        if (message.size() < at + sourceCount * addressLength + extra) return;
        std::vector<std::string> sources;
        for (size_t number = 0; number < sourceCount; ++number, at += addressLength)
            sources.emplace_back(reinterpret_cast<const char *>(message.data() + at), addressLength);
        at += extra;
        if (type >= kIsInclude && type <= kBlock) report(from, passage.filing, group, type, sources);
    }
}

void Engine::report(Port &from, uint16_t filing, Bytes group, uint8_t type,
                    const std::vector<std::string> &sources) {
    if (!isMemorable(group)) return;
    const GroupKey key = groupKey(group, filing);
    const auto found = groups_.find(key);
    Member *member = nullptr;
    if (found != groups_.end())
        for (Member &other : found->second)
            if (other.port == from.index) member = &other;
    const bool leaves = (type == kToInclude || type == kIsInclude) && sources.empty();
    if (member == nullptr) {
        if (leaves || type == kBlock || members_ >= kMostMembers) return;
        ++members_;
        member = &groups_[key].emplace_back();
        member->port = from.index;
        member->exclude = false;
        if (surroundings_.joined) surroundings_.joined(from.number, group, true);
    }
    if (leaves) {
        if (member->leaves == 0) member->leaves = now_ + kLeaving;
        return;
    }
    apply(*member, type, sources);
    member->reported = now_;
    member->leaves = !member->exclude && member->sources.empty() ? now_ + kLeaving : 0;
}

// Without a querier nobody reports again, so memberships do not expire.
void Engine::expireMembers() {
    if (members_ == 0 || now_ < membersChecked_ + kLeaving / 4) return;
    membersChecked_ = now_;
    for (auto entry = groups_.begin(); entry != groups_.end();) {
        const GroupKey &key = entry->first;
        std::erase_if(entry->second, [&](const Member &member) {
            if (member.configured) return false;
            const bool asked = lastQuery_ > member.reported && now_ - lastQuery_ >= kResponse;
            const bool silent = asked && now_ - member.reported >= kMembership;
            const bool left = member.leaves != 0 && now_ >= member.leaves;
            if (!silent && !left) return false;
            --members_;
            if (surroundings_.joined)
                surroundings_.joined(ports_[member.port].number, Bytes(key.address).first(key.length), false);
            return true;
        });
        entry = entry->second.empty() ? groups_.erase(entry) : std::next(entry);
    }
}

}  // namespace qvs::datapath

// SPDX-License-Identifier: Apache-2.0
// The engine of a switch: its ports, and the steps that forward a frame. Each policy is implemented in the
// file of its name.
#pragma once

#include <array>
#include <bitset>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "datapath/engine/addresses.h"
#include "datapath/engine/meter.h"
#include "datapath/packet.h"
#include "datapath/switch.h"
#include "policy_generated.h"

namespace qvs::datapath {

constexpr size_t kVlans = 4096;
using VlanSet = std::bitset<kVlans>;

// A port of a switch. The first group of members outlives a change of the policies.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): members stand by their meaning
struct Port {
    uint32_t number = 0;
    bool carrier = true;
    bool asksPromiscuous = false;  // an attachment does
    MacAddress changedTo = 0;      // the address that the adapter took; 0: the one that it was given
    uint32_t lastUplink = 0;       // number of the last uplink that carried its frames
    bool keepsUplink = true;       // its teaming policy is the one under which it chose that uplink
    Time routerUntil = 0;          // multicast queries came from this port
    Time heard = 0;                // a beacon of another uplink arrived, or the uplink came up
    bool silent = false;           // no beacon arrived for a while
    Time lldpDue = 0;              // when its uplink advertises the switch again

    uint32_t index = 0;
    const policy::PortT *policy = nullptr;
    Slot *slot = nullptr;
    bool up = false;
    bool uplink = false;
    MacAddress address = 0;  // the effective one
    bool deniedAddress = false;
    bool checksSource = false;
    bool promiscuous = false;

    bool trunk = false;
    bool nested = false;
    bool inPrivateMap = false;
    bool hasVlan = true;  // false: its VLAN is missing in the map
    uint16_t vlan = 0;
    VlanSet carries;  // VLANs of the frames that it receives, and that a trunk sends

    bool learns = false;
    uint32_t learnt = 0;

    uint32_t team = 0;         // index of its teaming policy
    uint32_t current = kNone;  // index of the uplink that it uses now

    const std::vector<MacAddress> *multicastList = nullptr;
    std::vector<MacAddress> filterGroups;
    bool allGroups = false;
    uint64_t wanted = 0;  // the last frame whose group it joined
    uint64_t got = 0;     // the last frame that was offered to it

    bool mirrorOnly = false;         // receives nothing but mirrored frames
    bool mirrorSilent = false;       // a mirror destination that may not send
    std::vector<uint32_t> mirrorIn;  // sessions
    std::vector<uint32_t> mirrorOut;

    std::shared_ptr<Meter> meter;  // null: flows are not reported
};

struct Team {
    policy::Balance balance = policy::Balance::SourcePort;
    std::vector<uint32_t> active;  // indexes of ports
    std::vector<uint32_t> standby;
    bool checkLink = true;
    bool rolling = false;
    bool notify = true;
    bool checkBeacon = false;
    bool bestEffort = false;
    bool shotgun = false;
    bool deaf = false;                 // no uplink hears another one, so that beacons tell nothing
    std::vector<uint32_t> candidates;  // those between which frames are distributed now
};

struct MirrorTarget {
    std::array<uint8_t, 16> address{};
    size_t length = 0;
    MacAddress nextHop = kBroadcast;
    Time probeAt = 0;
    uint32_t sequence = 0;
};

struct MirrorSession {
    const policy::MirrorSessionT *policy = nullptr;
    Slot *slot = nullptr;
    uint32_t number = 0;
    uint64_t seen = 0;
    std::vector<uint32_t> ports;
    std::vector<MirrorTarget> targets;
};

// A frame on its way through the switch.
struct Passage {
    const Frame *frame = nullptr;
    uint64_t id = 0;
    uint32_t from = kNone;   // index of the port that sent it; none for frames of the switch itself
    bool returned = false;   // a frame of an adapter of this switch that came back by an uplink
    uint32_t owner = kNone;  // the port with the learnt address of a frame that came back
    bool stranded = false;   // it should leave by an uplink, and there is none
    MacAddress destination = 0;
    MacAddress source = 0;
    uint16_t vlan = 0;
    uint16_t filing = 0;
    uint16_t priority = 0;         // the upper bits of a tag
    uint16_t type = 0;             // behind the tag that the frame has with regard to this switch
    bool tagged = false;           // it came with such a tag
    bool inner = false;            // a tag of a client follows
    size_t body = kAddresses;      // where the type stands
    size_t packet = 0;             // length of the longest packet
    size_t attempts = 0;           // receivers that it was sent to
    uint32_t to = 0;               // number of the last port that received it
    bool left = false;             // by an uplink
    std::optional<Frame> plain;    // without tag
    std::optional<Frame> tagForm;  // with tag
};

struct GroupKey {
    std::array<uint8_t, 16> address{};
    uint8_t length = 0;
    uint16_t filing = 0;
    bool operator==(const GroupKey &) const = default;
};

[[nodiscard]] GroupKey groupKey(Bytes address, uint16_t filing);

struct GroupKeyHash {
    size_t operator()(const GroupKey &key) const;
};

struct Member {
    uint32_t port = 0;
    bool configured = false;
    bool exclude = true;  // all senders but those of `sources`; otherwise only those
    std::vector<std::string> sources;
    Slot *slot = nullptr;
    Time reported = 0;
    Time leaves = 0;  // when it ends after it was left; 0: it was not
};

using Groups = std::unordered_map<GroupKey, std::vector<Member>, GroupKeyHash>;

// A reverse ARP frame that is sent again.
struct Announcement {
    Time due = 0;
    uint32_t port = 0;  // number
    MacAddress address = 0;
    uint16_t vlan = 0;
};

constexpr Time kNever = UINT64_MAX;

// The check of VLANs and MTU.
struct Check {
    enum class Step : uint8_t { Vlans, Answers, Lengths, Done };
    struct Found {
        VlanSet vlans;
        uint32_t mtu = 0;
    };

    VlanSet vlans;  // to be checked
    Time begins = 0;
    Time until = 0;  // answers arrive
    Step step = Step::Done;
    uint32_t next = 0;  // VLAN
    uint32_t round = 0;
    std::unordered_map<uint32_t, Found> found;  // by number of the uplink
};

class Engine {
  public:
    explicit Engine(Surroundings surroundings);

    void configure(std::unique_ptr<policy::SwitchT> policy, Time now);
    [[nodiscard]] bool changePort(std::unique_ptr<policy::PortT> policy, Time now);
    void receive(uint32_t number, const Frame &frame, Time now);
    void setCarrier(uint32_t number, bool up, Time now);
    void setAddress(uint32_t number, MacAddress address, Time now);
    void setPromiscuous(uint32_t number, bool asked);
    void forget(uint32_t port, MacAddress address, uint16_t vlan, Time now);
    [[nodiscard]] Time tick(Time now);

  private:
    // configure.cpp
    [[nodiscard]] Port *find(uint32_t number);
    [[nodiscard]] Slot *slotAt(uint32_t index);
    void compilePrivateVlans();
    void compilePorts(const std::vector<Port> &former);
    static void keepState(Port &port, const Port &former);
    [[nodiscard]] bool concernsOthers(const Port &port, const policy::PortT &policy) const;
    void compilePort(Port &port, const policy::PortT &policy);
    void compileVlan(Port &port);
    void compileFilter(Port &port);
    void useAddress(Port &port);
    static void updateState(Port &port);

    // forwarding.cpp
    [[nodiscard]] std::optional<Drop> admit(Port &from, Passage &passage);
    [[nodiscard]] std::optional<Drop> checkSource(Port &from, const Passage &passage);
    [[nodiscard]] static std::optional<Drop> parse(Passage &passage);
    [[nodiscard]] std::optional<Drop> classify(const Port &from, Passage &passage) const;
    void forwardUnicast(Port &from, Passage &passage);
    [[nodiscard]] bool deliverToOwner(const Port &from, Passage &passage);
    [[nodiscard]] bool offerUnicast(const Port &from, Port &to, Passage &passage);
    void deliverExtra(const Port &from, Passage &passage, bool known);
    void forwardGroup(Port &from, Passage &passage);
    void sendByUplink(Port &from, Passage &passage);
    bool deliver(Port &to, Passage &passage);
    [[nodiscard]] std::optional<Drop> refuse(const Port &to, const Passage &passage) const;
    [[nodiscard]] const Frame &form(Passage &passage, bool tagged);
    void drop(Port &port, Drop reason, bool sent);
    void countIn(Port &from, const Passage &passage);
    void countOut(Port &port, MacAddress destination, size_t bytes);

    // learning.cpp
    [[nodiscard]] std::optional<Drop> learn(Port &from, const Passage &passage);
    [[nodiscard]] bool isReflection(Passage &passage);
    [[nodiscard]] bool ownsStatic(const Port &port, const Passage &passage);
    [[nodiscard]] bool isAdapterHere(const Passage &passage, bool &always) const;
    void forget(const LearntAddress &entry);
    void remove(LearntAddress entry);
    void expireAddresses();
    void restoreAddresses(const AddressTable &before, const std::vector<Port> &old);

    // teaming.cpp
    void compileTeams();
    void addTeam(const policy::TeamingT *policy);
    [[nodiscard]] static const policy::TeamingT *teamingOf(const policy::PortT &port,
                                                           const policy::SwitchT &policy);
    [[nodiscard]] static bool sameTeaming(const policy::PortT &formerPort, const policy::SwitchT &former,
                                          const policy::PortT &port, const policy::SwitchT &policy);
    [[nodiscard]] bool usable(const Team &team, uint32_t uplink) const;
    [[nodiscard]] bool reachable(const Team &team, uint32_t uplink) const;
    void updateTeam(Team &team) const;
    void chooseUplinks(bool linkChanged);
    [[nodiscard]] uint32_t choose(const Port &port) const;
    [[nodiscard]] uint32_t uplinkFor(const Port &port, const Passage &passage) const;
    [[nodiscard]] bool acceptsUnicast(const Port &port, uint32_t uplink) const;
    void announceMoves(const std::vector<uint32_t> &ports);
    void announce(const Port &port, MacAddress address, uint16_t vlan);
    void sendReverseArp(const Announcement &announcement);
    [[nodiscard]] Time repeatAnnouncements();

    // beacon.cpp
    void compileBeacons();
    [[nodiscard]] Time sendBeacons();
    [[nodiscard]] bool takesBeacon(const Passage &passage);

    // mirror.cpp
    void compileMirrors();
    void compileMirrorSources(const MirrorSession &session);
    void compileMirrorDestination(MirrorSession &session, const policy::MirrorDestinationT &destination);
    static void keepMirrorState(MirrorSession &session, const std::vector<MirrorSession> &former);
    void mirrorIn(const Port &from, Passage &passage);
    void mirrorOut(const Port &to, Passage &passage);
    void mirrorBy(const std::vector<uint32_t> &sessions, Passage &passage, bool sent);
    void mirrorRemote(std::vector<uint16_t> policy::MirrorSessionT::*vlans, Passage &passage, bool sent);
    void mirror(MirrorSession &session, Passage &passage, bool sent);
    void sendCopy(MirrorSession &session, Port &to, const Frame &frame);

    // mirror_remote.cpp
    void encapsulate(MirrorSession &session, MirrorTarget &target, Bytes frame, const Passage &passage,
                     bool cut);
    void sendOwn(Port &uplink, Bytes bytes);
    [[nodiscard]] bool answersProbe(const Passage &passage);
    [[nodiscard]] MacAddress switchAddress() const;

    // control.cpp
    void control(Port &from, const Passage &passage);
    [[nodiscard]] Time continueControl();
    [[nodiscard]] MacAddress addressOf(const Port &uplink) const;
    void tell(uint32_t port, Topic topic, Bytes state);

    // check.cpp
    void compileCheck(const policy::SwitchT &former, const std::vector<Port> &formerPorts);
    void beginCheck();
    void sendProbe(Port &uplink, uint16_t vlan, uint32_t packet);
    void sendProbes();
    void sendLongProbes();
    [[nodiscard]] Time continueCheck();
    void tellFound(const Port &uplink);
    [[nodiscard]] bool isProbe(Port &from, const Passage &passage);

    // lldp.cpp
    void compileLldp(const policy::SwitchT &former);
    void sendLldp(Port &uplink, uint16_t lifetime);
    void receiveLldp(const Port &from, const Passage &passage);
    [[nodiscard]] Time continueLldp();

    // metering.cpp
    void compileMeter(Port &port, const policy::PortT &policy, const Port *former);
    void endMeters(const std::vector<Port> &former);
    void meterIn(Port &from, const Passage &passage);
    void meterOut(Port &to, const Passage &passage);
    void expireFlows();
    void report(Meter &meter, bool all);

    // multicast.cpp
    void compileGroups(const std::vector<Port> &former);
    [[nodiscard]] bool isLinkLocalGroup(const Passage &passage) const;
    [[nodiscard]] bool wantsGroup(const Port &port, const Passage &passage) const;
    [[nodiscard]] bool receivesReports(const Port &port) const;
    void markMembers(const Passage &passage);
    void markMembersOf(const GroupKey &key, Bytes source, const Passage &passage);

    // snooping.cpp: whether the frame is a report, which only routers receive
    [[nodiscard]] bool snoop(Port &from, const Passage &passage);
    void report(Port &from, uint16_t filing, Bytes group, uint8_t type,
                const std::vector<std::string> &sources);
    void reportRecords(Port &from, const Passage &passage, Bytes message, size_t addressLength);
    void expireMembers();
    [[nodiscard]] bool snoops() const { return policy_->multicast == policy::Multicast::Snooping; }

    Surroundings surroundings_;
    Time now_ = 0;
    std::unique_ptr<policy::SwitchT> policy_;
    Slot nobody_{};
    Slot *slot_ = &nobody_;

    std::vector<Port> ports_;
    std::unordered_map<uint32_t, uint32_t> indexes_;  // by number
    std::vector<uint32_t> promiscuous_;               // ports that may receive all frames
    std::vector<uint32_t> unknown_;                   // ports that receive frames for unknown destinations
    std::array<uint16_t, kVlans> filing_{};           // the primary of each VLAN
    AdapterAddresses adapters_;
    AddressTable table_;
    std::vector<MacAddress> switchList_;
    std::vector<std::vector<MacAddress>> portLists_;

    std::vector<Team> teams_;
    std::vector<Announcement> announcements_;
    std::vector<uint32_t> beaconing_;  // uplinks that send beacons
    Time beaconAt_ = 0;
    std::vector<MirrorSession> sessions_;
    VlanSet remoteIn_;
    VlanSet remoteOut_;
    bool encapsulates_ = false;
    Groups groups_;
    Check check_;
    std::unordered_map<uint32_t, Time> neighbours_;  // until when, by number of the uplink
    uint32_t learnt_ = 0;
    uint64_t lastFrame_ = 0;
    size_t members_ = 0;  // found by snooping
    Time lastQuery_ = 0;
    Time membersChecked_ = 0;

    std::vector<uint8_t> plainBytes_;
    std::vector<uint8_t> tagBytes_;
    std::vector<uint8_t> copyBytes_;
};

inline void add(Slot &slot, uint32_t value, uint64_t amount = 1) {
    std::atomic<uint64_t> &counter = slot.values[value];
    // Only this process writes. A plain addition is therefore enough, and is faster than an atomic one.
    counter.store(counter.load(std::memory_order_relaxed) + amount, std::memory_order_relaxed);
}

MacAddress macOf(const policy::Mac &mac);

// Whether frames of the port may be in the VLAN.
inline bool sendsIn(const Port &port, uint16_t vlan) {
    return port.trunk ? port.carries[vlan] : port.vlan == vlan;
}

}  // namespace qvs::datapath

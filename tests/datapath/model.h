// SPDX-License-Identifier: Apache-2.0
// The rules of docs/datapath.md in their plainest form: slow, without tables, and without code of the engine.
#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "datapath/network.h"

namespace qvs::test {

// A number of so many bytes, the first one highest.
uint64_t numberAt(const uint8_t *at, size_t length);

// Whether a frame from its type on is an IPv4 packet. The model knows those without options alone; random
// frames are no others.
bool isIp(const Bytes &body);

template <typename T>
bool has(const std::vector<T> &list, T value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

class Model {
  public:
    // The policies must outlive the model.
    explicit Model(const policy::SwitchT &policy);
    std::vector<Sent> receive(uint32_t port, const Bytes &bytes, uint64_t now);
    void setCarrier(uint32_t port, bool up);
    void setAddress(uint32_t port, uint64_t mac);
    // How often a frame was dropped at a port, by the number of the reason.
    std::map<std::pair<uint32_t, int>, uint64_t> drops;

  private:
    struct State {
        bool carrier = true;
        uint64_t changed = 0;
        uint32_t uplink = 0;      // that it uses now
        uint32_t lastUplink = 0;  // that it used last
    };
    struct Learnt {
        uint32_t port = 0;
        uint64_t seen = 0;
    };
    struct Packet {
        const policy::PortT *from = nullptr;
        uint64_t to = 0;
        uint64_t source = 0;
        int vlan = 0;
        int priority = 0;  // upper four bits of the tag
        Bytes addresses;
        Bytes body;  // from the type on, without the tag of the switch's VLAN
        size_t payload = 0;
        std::set<uint32_t> owners;
        [[nodiscard]] bool inner() const { return body[0] == 0x81 && body[1] == 0; }
    };

    using Port = policy::PortT;
    [[nodiscard]] const Port *find(uint32_t number) const;
    [[nodiscard]] int primaryOf(int vlan) const;
    [[nodiscard]] bool sendsIn(const Port &port, int vlan) const;
    [[nodiscard]] bool receivesFrom(const Port &port, int vlan) const;
    [[nodiscard]] bool isMapped(const Port &port) const;
    [[nodiscard]] uint64_t addressOf(const Port &port) const;
    [[nodiscard]] bool isUp(const Port &port) const;
    [[nodiscard]] bool deniesAddress(const Port &port) const;
    [[nodiscard]] bool isPromiscuous(const Port &port) const;
    [[nodiscard]] const policy::TeamingT *teamOf(const Port &port) const;
    [[nodiscard]] std::vector<uint32_t> candidates(const Port &port) const;
    [[nodiscard]] bool isUsable(const Port &port, uint32_t uplink) const;
    [[nodiscard]] uint32_t usualUplink(const Port &port) const;
    [[nodiscard]] uint32_t uplinkOf(const Port &port, const Packet &packet) const;
    [[nodiscard]] bool acceptsUnicast(const Port &port, uint32_t uplink) const;
    void chooseUplinks();

    int parse(const Port &from, const Bytes &bytes, Packet &packet) const;
    int classify(const Port &from, int tag, Packet &packet) const;
    int admit(const Port &from, Packet &packet);
    int admitFromOutside(Packet &packet);
    int learn(const Port &from, const Packet &packet);
    void forward(Packet &packet);
    bool byAddress(Packet &packet);
    bool offer(const Port &to, Packet &packet);
    [[nodiscard]] bool wants(const Port &port, const Packet &packet) const;
    void deliver(const Port &to, const Packet &packet);
    void mirror(bool sent, const Port &port, const Packet &packet);
    void drop(const Port &port, int reason) { ++drops[{port.number, reason}]; }

    const policy::SwitchT &policy_;
    std::map<uint32_t, State> states_;
    std::map<std::pair<int, uint64_t>, Learnt> learnt_;
    std::map<size_t, uint64_t> mirrored_;
    uint64_t now_ = 0;
    std::vector<Sent> sent_;
    std::set<uint32_t> offered_;
};

}  // namespace qvs::test

// SPDX-License-Identifier: Apache-2.0
// Compiles mirror sessions. A session that is stored in several lists is one session with all their sources
// and destinations. Disabled sessions and names of unknown ports are left out.
#include "daemon/devices/device_request.h"
#include "daemon/devices/mirror_sessions.h"
#include "daemon/network/compile.h"

namespace qvs::kernel {

namespace {

// A client can store more sessions than any switch needs. Compiling them all would delay other requests.
constexpr size_t kMostSessions = 256;
constexpr size_t kMostEntities = 1024;
constexpr size_t kValue = kMirrorEntity - kMirrorValueAt;

template <typename Visit>
void eachValue(std::string_view entities, const Visit &visit) {
    entities = entities.substr(0, kMostEntities * kMirrorEntity);
    for (size_t at = 0; at < entities.size(); at += kMirrorEntity)
        visit(entities.substr(at + kMirrorValueAt, kValue));
}

template <typename T>
void addOnce(std::vector<T> *list, T value) {
    if (std::find(list->begin(), list->end(), value) == list->end()) list->push_back(value);
}

class Compiler {
  public:
    Compiler(const Model &model, const Switch &sw) : model_(model), sw_(sw) {}

    void add(const MirrorSession &from, policy::MirrorSessionT *to) const {
        eachValue(from.destinations, [&](std::string_view value) { addDestination(from, value, to); });
        addSources(from, from.sourcesIn, from.wildIn, &to->sourcesIn, &to->vlansIn);
        addSources(from, from.sourcesOut, from.wildOut, &to->sourcesOut, &to->vlansOut);
    }

  private:
    void addDestination(const MirrorSession &from, std::string_view value, policy::MirrorSessionT *to) const {
        constexpr size_t kMacSize = 6;
        constexpr size_t kAddressAt = 4;
        constexpr size_t kIpv4 = 4;
        constexpr size_t kIpv6 = 16;
        auto destination = std::make_unique<policy::MirrorDestinationT>();
        if (from.type == MirrorSession::EncapsulatedSource) {
            destination->address = bytesFrom(value.substr(kAddressAt, u8At(value, 0) == 0 ? kIpv4 : kIpv6));
        } else if (from.type == MirrorSession::LogicalSpan) {
            destination->address = bytesFrom(value.substr(0, kMacSize));
        } else {
            const Port *port = portNamed(model_, sw_, textAt(value, 0, kValue));
            if (port == nullptr) return;
            destination->port = port->number;
        }
        to->destinations.push_back(std::move(destination));
    }

    // The sources at the end of a remote session are VLANs. Others are names of ports.
    void addSources(const MirrorSession &from, std::string_view entities, uint16_t wild,
                    std::vector<uint32_t> *ports, std::vector<uint16_t> *vlans) const {
        eachValue(entities, [&](std::string_view value) {
            if (from.type == MirrorSession::RemoteDestination) {
                addOnce(vlans, u16At(value, 0));
            } else if (const Port *port = portNamed(model_, sw_, textAt(value, 0, kValue))) {
                addOnce(ports, port->number);
            }
        });
        if (wild == 0) return;
        for (const auto &[number, port] : sw_.ports) {
            const uint16_t kind =
                port->nic != nullptr ? MirrorSession::kAllUplinks : MirrorSession::kAllClients;
            if (port->inUse() && (wild & kind) != 0) addOnce(ports, number);
        }
    }

    const Model &model_;
    const Switch &sw_;
};

std::unique_ptr<policy::MirrorSessionT> headOf(const MirrorSession &session, uint32_t slot) {
    auto head = std::make_unique<policy::MirrorSessionT>();
    head->id = session.id;
    head->slot = slot;
    head->type = static_cast<policy::MirrorType>(session.type);
    head->snapLength = session.snapLength;
    head->sampling = std::max(session.sampling, 1u);
    head->noOutput = (session.flags & MirrorSession::kNoOutput) != 0;
    head->noInput = (session.flags & MirrorSession::kNoInput) != 0;
    head->keepVlan = (session.flags & MirrorSession::kOriginalVlan) != 0;
    head->encapsulated = (session.flags & MirrorSession::kEncapsulate) != 0;
    head->encapVlan = std::min(session.encapVlan, kMaxVlan);
    return head;
}

}  // namespace

std::vector<std::unique_ptr<policy::MirrorSessionT>> compileMirrors(const Model &model, const Switch &sw,
                                                                    Slots &slots) {
    std::vector<std::unique_ptr<policy::MirrorSessionT>> sessions;
    const Compiler compiler(model, sw);
    forEachMirrorSession(sw, [&](const MirrorSession &stored) {
        if (stored.disabled || stored.type > MirrorSession::LogicalSpan) return;
        auto known = std::find_if(sessions.begin(), sessions.end(),
                                  [&](const auto &session) { return session->id == stored.id; });
        if (known == sessions.end()) {
            if (sessions.size() == kMostSessions) return;
            sessions.push_back(headOf(stored, slots.of(mirrorSlot(sw.portset->number, stored.id))));
            known = sessions.end() - 1;
        }
        compiler.add(stored, known->get());
    });
    return sessions;
}

}  // namespace qvs::kernel

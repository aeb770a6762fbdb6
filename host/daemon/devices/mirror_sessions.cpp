// SPDX-License-Identifier: Apache-2.0
// Reads stored mirror sessions. A list consists of
//
//   u32 magic, u32 version, u32 sessions, u32 entities, u32 0; the sessions (232); the entities (52)
//
// and a session has these fields:
//
//   0 identifier[32], 116 u32 type, 120 i32 bytes kept, 124 u32 flags, 128 u16 VLAN of the encapsulation,
//   130 u16 and 132 u16 masks of sources, 136 u32 sampling, 216 u32 destinations, 220 u32 sources in,
//   224 u32 sources out, 228 u32 index of the first entity.
#include "daemon/devices/mirror_sessions.h"

#include <set>

#include "daemon/devices/device.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kMagic = 0xfacebeef;
constexpr uint32_t kUntyped = 1;  // the version whose sessions have masks instead of a type
constexpr size_t kHead = 20;
constexpr size_t kSession = 232;
constexpr size_t kIdWidth = 32;

// Tells whether the destinations of this type are names.
bool namesPorts(uint32_t version, uint32_t type) {
    return version == kUntyped || type == MirrorSession::MixedDestination ||
           type == MirrorSession::PortDestination || type == MirrorSession::RemoteDestination;
}

MirrorSession sessionOf(std::string_view stored, uint32_t version) {
    MirrorSession session;
    session.id = textAt(stored, 0, kIdWidth);
    if (version == kUntyped) {
        session.wildIn = u16At(stored, 130);
        session.wildOut = u16At(stored, 132);
    } else {
        session.type = u32At(stored, 116);
    }
    session.snapLength = numberAt<int32_t>(stored, 120);
    session.flags = u32At(stored, 124);
    session.encapVlan = u16At(stored, 128);
    session.sampling = u32At(stored, 136);
    session.disabled = (session.flags & MirrorSession::kDisabled) != 0;
    session.namesPorts = namesPorts(version, session.type);
    return session;
}

// The entities of a session: destinations, sources in, sources out. A part that ends beyond the list is
// empty.
void addEntities(std::string_view stored, std::string_view entities, MirrorSession *session) {
    uint64_t first = u32At(stored, 228);
    const std::pair<size_t, std::string_view MirrorSession::*> kParts[] = {
        {216, &MirrorSession::destinations},
        {220, &MirrorSession::sourcesIn},
        {224, &MirrorSession::sourcesOut}};
    for (const auto &[countAt, part] : kParts) {
        const uint64_t count = u32At(stored, countAt);
        if ((first + count) * kMirrorEntity <= entities.size())
            session->*part = entities.substr(first * kMirrorEntity, count * kMirrorEntity);
        first += count;
    }
}

void visitList(std::string_view list, const std::function<void(const MirrorSession &)> &visit) {
    const uint64_t sessions = u32At(list, 8);
    const uint64_t entities = u32At(list, 12);
    if (u32At(list, 0) != kMagic || kHead + sessions * kSession + entities * kMirrorEntity > list.size())
        return;
    const std::string_view group = list.substr(kHead + sessions * kSession, entities * kMirrorEntity);
    for (uint64_t i = 0; i < sessions; ++i) {
        const std::string_view stored = list.substr(kHead + i * kSession, kSession);
        MirrorSession session = sessionOf(stored, u32At(list, 4));
        addEntities(stored, group, &session);
        visit(session);
    }
}

void visitProperty(const Property *property, const std::function<void(const MirrorSession &)> &visit) {
    if (property != nullptr) visitList(property->value, visit);
}

}  // namespace

void forEachMirrorSession(const Switch &sw, const std::function<void(const MirrorSession &)> &visit) {
    visitProperty(sw.host.find("com.quillon.vswitch.uplinkMirrorSessions"), visit);
    for (const auto &[number, port] : sw.ports)
        visitProperty(port->properties.find("com.quillon.vswitch.port.mirrorSessions"), visit);
}

std::vector<std::string_view> mirrorSessionIds(const Switch &sw) {
    std::vector<std::string_view> ids;
    std::set<std::string_view> seen;
    forEachMirrorSession(sw, [&](const MirrorSession &session) {
        if (seen.insert(session.id).second) ids.push_back(session.id);
    });
    return ids;
}

const Port *findByName(const Model &model, const Switch &sw, std::string_view name) {
    const Port *served = model.inventory.findServedBy(sw, name);
    return served != nullptr ? served : sw.port(name);
}

}  // namespace qvs::kernel

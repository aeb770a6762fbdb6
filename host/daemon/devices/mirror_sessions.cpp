// SPDX-License-Identifier: Apache-2.0
// Reads stored mirror sessions. A list consists of
//
//   u32 magic, u32 version, u32 sessions, u32 entities, u32 0; the sessions (232); the entities (52)
//
// and a session has these fields:
//
//   0 identifier[32], 116 u32 type, 124 u32 flags, 216 u32 destinations, 228 u32 index of the first entity.
#include "daemon/devices/mirror_sessions.h"

#include "daemon/devices/device.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kMagic = 0xfacebeef;
constexpr uint32_t kUntyped = 1;  // the version whose sessions have masks instead of a type
constexpr size_t kHead = 20;
constexpr size_t kSession = 232;
constexpr size_t kIdWidth = 32;
constexpr uint32_t kDisabled = 0x20;

// Tells whether the destinations of this type are names. The types are mixed destinations (0), ports (1) and
// the end of a remote session (3).
bool namesPorts(uint32_t version, uint32_t type) {
    return version == kUntyped || type == 0 || type == 1 || type == 3;
}

void visitList(std::string_view list, const std::function<void(const MirrorSession &)> &visit) {
    const uint64_t sessions = u32At(list, 8);
    const uint64_t entities = u32At(list, 12);
    if (u32At(list, 0) != kMagic || kHead + sessions * kSession + entities * kMirrorEntity > list.size())
        return;
    const std::string_view group = list.substr(kHead + sessions * kSession, entities * kMirrorEntity);
    for (uint64_t i = 0; i < sessions; ++i) {
        const std::string_view stored = list.substr(kHead + i * kSession, kSession);
        const uint64_t first = u32At(stored, 228);
        const uint64_t count = u32At(stored, 216);
        MirrorSession session;
        session.id = textAt(stored, 0, kIdWidth);
        session.disabled = (u32At(stored, 124) & kDisabled) != 0;
        session.namesPorts = namesPorts(u32At(list, 4), u32At(stored, 116));
        if (first + count <= entities)
            session.destinations = group.substr(first * kMirrorEntity, count * kMirrorEntity);
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

}  // namespace qvs::kernel

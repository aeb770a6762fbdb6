// SPDX-License-Identifier: Apache-2.0
// Mirror sessions: of a port, and of the uplinks of this host.
#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <unordered_set>

#include "config/settings/codec.h"
#include "config/settings/families.h"
#include "config/settings/mirror_entity.h"
#include "config/settings/mirror_list.h"

namespace qvs::config {
namespace {

// --- members ---

constexpr const char *kTypes[] = {"mixdst",      "dvport",       "rmirror-src",
                                  "rmirror-dst", "ermirror-src", "logical-span"};
constexpr const char *kFlagWords[] = {"no-output", "no-input", "orig-vlan", "encap", "legacy", "disabled"};
constexpr uint32_t kFlagBits[] = {VSDVS_MIRROR_DST_NO_OUTPUT, VSDVS_MIRROR_DST_NO_INPUT,
                                  VSDVS_MIRROR_DST_ORIG_VLAN, VSDVS_MIRROR_DST_ENCAP,
                                  VSDVS_MIRROR_LEGACY,        VSDVS_MIRROR_DISABLED};
constexpr Flags kFlags{kFlagWords, kFlagBits};
constexpr const char *kMaskWords[] = {"vmm", "pnic", "cos", "tcpip", "test"};
constexpr uint32_t kMaskBits[] = {VSDVS_MIRROR_WILD_VMM, VSDVS_MIRROR_WILD_PNIC, VSDVS_MIRROR_WILD_COS,
                                  VSDVS_MIRROR_WILD_TCPIP, VSDVS_MIRROR_WILD_TEST};
constexpr Flags kMasks{kMaskWords, kMaskBits};

constexpr Member numberMember(const char *name, const char *summary, uint64_t most) {
    return {
        .name = name, .summary = summary, .type = Type::Number, .most = most, .fallback = "0", .quiet = true};
}
constexpr Member entitiesMember(const char *name, const char *summary) {
    return {.name = name,
            .summary = summary,
            .type = Type::Text,
            .list = true,
            .least = 1,
            .most = sizeof(VSDVS_MirrorEntity::value) - 1,
            .fallback = "",
            .quiet = true};
}
constexpr Member kMembers[] = {
    {.name = "session",
     .summary = "identifier",
     .type = Type::Text,
     .required = true,
     .least = 1,
     .most = sizeof(VSDVS_MirrorSession::sessionId)},
    {.name = "name",
     .summary = "display name",
     .type = Type::Text,
     .most = sizeof(VSDVS_MirrorSession::displayName) - 1,
     .fallback = "",
     .quiet = true},
    {.name = "type", .summary = "type", .type = Type::Word, .required = true, .words = kTypes},
    {.name = "snapLength",
     .summary = "how much of each frame is kept; all without it",
     .type = Type::Number,
     .most = INT32_MAX,
     .unit = "bytes"},
    {.name = "flags",
     .summary = "flags",
     .type = Type::Word,
     .list = true,
     .words = kFlagWords,
     .fallback = "",
     .quiet = true,
     .set = true},
    numberMember("encapVlan", "VLAN of the mirrored frames, with the flag encap", QVS_VLAN_MAX),
    numberMember("samplingRate", "sampling rate", UINT32_MAX),
    {.name = "stack",
     .summary = "use the mirror stack, with type ermirror-src",
     .type = Type::Boolean,
     .fallback = "off",
     .quiet = true},
    entitiesMember("destinations", "destinations"),
    entitiesMember("sourcesIn", "sources whose incoming frames are mirrored"),
    entitiesMember("sourcesOut", "sources whose outgoing frames are mirrored"),
};
constexpr Member kSessions[] = {
    {.name = "", .summary = "mirror sessions", .type = Type::Record, .list = true, .members = kMembers}};

// The three lists of a session, in the order of its entities.
struct Group {
    const char *member;
    const char *what;
};
constexpr Group kGroups[] = {
    {"destinations", "destination"},
    {"sourcesIn", "source"},
    {"sourcesOut", "source"},
};

using Counts = std::array<uint32_t, std::size(kGroups)>;
Counts countsOf(const VSDVS_MirrorSession &session) {
    return {session.dstEntities, session.srcInEntities, session.srcOutEntities};
}

// --- from the list ---

Value sessionOf(const MirrorList &list, const VSDVS_MirrorSession &stored) {
    const bool typed = list.header().version != VSDVS_MIRROR_VERSION_WILDCARD;
    Value session = Members{{"session", boundedText(stored.sessionId, sizeof stored.sessionId)},
                            {"name", boundedText(stored.displayName, sizeof stored.displayName)}};
    if (typed) session.set("type", wordOf(kTypes, stored.type));
    if (stored.snapLength >= 0) session.set("snapLength", static_cast<uint64_t>(stored.snapLength));
    session.set("flags", wordsOf(kFlags, stored.flags));
    session.set("encapVlan", uint64_t{stored.encapVlan});
    session.set("samplingRate", uint64_t{stored.samplingRate});
    session.set("stack", stored.mirrorStack != 0);
    std::optional<uint32_t> type;
    if (typed) type = uint32_t{stored.type};
    const Counts counts = countsOf(stored);
    uint64_t next = stored.firstEntity;
    for (size_t group = 0; group < counts.size(); group++) {
        List texts;
        for (uint32_t i = 0; i < counts[group]; i++)
            texts.emplace_back(textOfEntity(formOf(group, type), list.entity(next++)));
        session.set(kGroups[group].member, std::move(texts));
    }
    // The older form has masks in place of a type.
    if (!typed) session.set("wildIn", wordsOf(kMasks, stored.wildIn));
    if (!typed) session.set("wildOut", wordsOf(kMasks, stored.wildOut));
    return session;
}

template <const Setting &setting>
std::optional<Value> decode(const StoredView &stored) {
    if (!stored[0]) return std::nullopt;
    const std::optional<MirrorList> list = MirrorList::of(*stored[0]);
    if (!list || list->header().version != VSDVS_MIRROR_VERSION) return std::nullopt;
    List sessions;
    uint64_t next = 0;
    for (uint32_t i = 0; i < list->size(); i++) {
        const VSDVS_MirrorSession session = list->session(i);
        // Groups in another order, or with entities in common, would be written otherwise.
        if (session.firstEntity != next || !list->hasGroup(session)) return std::nullopt;
        next = MirrorList::groupEnd(session);
        sessions.push_back(sessionOf(*list, session));
    }
    return ifTaken(setting, std::move(sessions));
}

// --- to the list ---

std::string problemOfSession(const Value &session) {
    const std::string where = fmt::format("session {}: ", inQuotes(session["session"].text()));
    const uint32_t type = numberOf(kTypes, session["type"]);
    if (session["stack"].on() && type != VSDVS_MIRROR_ERMIRROR_SRC)
        return where + "stack requires the type ermirror-src";
    for (size_t group = 0; group < std::size(kGroups); group++) {
        const Form form = formOf(group, type);
        for (const Value &each : session[kGroups[group].member].list()) {
            VSDVS_MirrorEntity entity{};
            if (!setEntity(form, each.text(), entity))
                return fmt::format("{}{} {} is not {}", where, kGroups[group].what, inQuotes(each.text()),
                                   shapeOf(form));
        }
    }
    return {};
}

std::string problemOfSessions(const Value &value) {
    std::unordered_set<std::string_view> seen;
    for (const Value &session : value.list()) {
        const std::string &id = session["session"].text();
        if (!seen.insert(id).second) return fmt::format("session {} is given twice", inQuotes(id));
        std::string problem = problemOfSession(session);
        if (!problem.empty()) return problem;
    }
    return {};
}

// Addresses and VLAN ids may be written in several ways.
// NOLINTNEXTLINE(performance-unnecessary-value-param): the table has one type for all
Value canonical(Value value) {
    List sessions = value.list();
    for (Value &session : sessions) {
        if (session["type"].absent()) continue;
        const uint32_t type = numberOf(kTypes, session["type"]);
        for (size_t group = 0; group < std::size(kGroups); group++) {
            const Form form = formOf(group, type);
            List entities = session[kGroups[group].member].list();
            for (Value &each : entities) {
                VSDVS_MirrorEntity entity{};
                if (form != Form::Name && form != Form::Text && setEntity(form, each.text(), entity))
                    each = textOfEntity(form, entity);
            }
            session.set(kGroups[group].member, std::move(entities));
        }
    }
    return sessions;
}

// What is stored of a session, for the bytes that no member expresses.
struct OldSession {
    VSDVS_MirrorSession record{};
    std::vector<VSDVS_MirrorEntity> entities;  // of one group behind the other
};

OldSession oldSession(const std::optional<MirrorList> &list, const std::string &id) {
    for (uint32_t i = 0; list && i < list->size(); i++) {
        OldSession old{list->session(i), {}};
        if (boundedText(old.record.sessionId, sizeof old.record.sessionId) != id) continue;
        if (!list->hasGroup(old.record)) break;
        for (uint64_t at = old.record.firstEntity; at < MirrorList::groupEnd(old.record); at++)
            old.entities.push_back(list->entity(at));
        return old;
    }
    return {};
}

VSDVS_MirrorSession recordOfSession(const Value &session, const VSDVS_MirrorSession &old) {
    VSDVS_MirrorSession record{};
    std::ranges::copy(old.reserved1, record.reserved1);
    std::ranges::copy(old.reserved2, record.reserved2);
    std::ranges::copy(old.reserved3, record.reserved3);
    std::ranges::copy(session["session"].text(), record.sessionId);
    std::ranges::copy(session["name"].text(), record.displayName);
    record.type = numberOf(kTypes, session["type"]);
    const Value &snapLength = session["snapLength"];
    record.snapLength = snapLength.absent() ? -1 : static_cast<int32_t>(snapLength.number());
    record.flags = bitsOf(kFlags, session["flags"]);
    record.encapVlan = static_cast<uint16_t>(session["encapVlan"].number());
    record.samplingRate = static_cast<uint32_t>(session["samplingRate"].number());
    record.mirrorStack = session["stack"].on() ? 1 : 0;
    record.dstEntities = static_cast<uint32_t>(session["destinations"].list().size());
    record.srcInEntities = static_cast<uint32_t>(session["sourcesIn"].list().size());
    record.srcOutEntities = static_cast<uint32_t>(session["sourcesOut"].list().size());
    return record;
}

// Appends the entities of a session. One that says what it said before stays as it was.
void appendEntities(std::vector<VSDVS_MirrorEntity> &entities, const Value &session, const OldSession &old) {
    const uint32_t type = numberOf(kTypes, session["type"]);
    const Counts counts = old.record.type == type ? countsOf(old.record) : Counts{};
    size_t oldFirst = 0;
    for (size_t group = 0; group < counts.size(); group++) {
        const Form form = formOf(group, type);
        const List &texts = session[kGroups[group].member].list();
        for (size_t i = 0; i < texts.size(); i++) {
            VSDVS_MirrorEntity &entity = entities.emplace_back();
            setEntity(form, texts[i].text(), entity);
            if (i >= counts[group]) continue;
            const VSDVS_MirrorEntity &before = old.entities[oldFirst + i];
            if (textOfEntity(form, before) == texts[i].text()) entity = before;
        }
        oldFirst += counts[group];
    }
}

Stored encode(const Value &value, const StoredView &now, const Target &) {
    std::optional<MirrorList> old;
    if (now[0]) old = MirrorList::of(*now[0]);
    if (old && old->header().version != VSDVS_MIRROR_VERSION) old.reset();

    std::vector<VSDVS_MirrorSession> sessions;
    std::vector<VSDVS_MirrorEntity> entities;
    for (const Value &session : value.list()) {
        const OldSession before = oldSession(old, session["session"].text());
        sessions.push_back(recordOfSession(session, before.record));
        sessions.back().firstEntity = static_cast<uint32_t>(entities.size());
        appendEntities(entities, session, before);
    }
    const VSDVS_MirrorHeader header{VSDVS_MIRROR_MAGIC, VSDVS_MIRROR_VERSION,
                                    static_cast<uint32_t>(sessions.size()),
                                    static_cast<uint32_t>(entities.size()), old ? old->header().reserved : 0};
    Blob list = blobOf(header);
    const auto append = [&list](const auto &records) {
        const auto *bytes = reinterpret_cast<const uint8_t *>(records.data());
        list.insert(list.end(), bytes, bytes + records.size() * sizeof records[0]);
    };
    append(sessions);
    append(entities);
    return {std::move(list)};
}

// --- through libqvs ---

const char *portOf(const Target &target) {
    return target.port.empty() ? nullptr : target.port.c_str();
}

template <const Setting &setting>
std::optional<Value> read(const Target &target) {
    void *raw = nullptr;
    const HYP_ReturnStatus status =
        call<VSDVS_GetDVMirrorSessions>(target.alias.c_str(), portOf(target), &raw);
    if (!wasRead(setting, target, status)) return std::nullopt;
    const VsdvsBuffer buffer(raw);
    const MirrorList list = MirrorList::checked(raw);
    List sessions;
    for (uint32_t i = 0; i < list.size(); i++) {
        const VSDVS_MirrorSession session = list.session(i);
        if (!list.hasGroup(session))
            fail(Exit::Failed, "mirror session {}: its entities end at {}, but the list has {}",
                 inQuotes(boundedText(session.sessionId, sizeof session.sessionId)),
                 MirrorList::groupEnd(session), uint32_t{list.header().entityCount});
        sessions.push_back(sessionOf(list, session));
    }
    return sessions;
}

HYP_ReturnStatus store(const Target &target, const Stored &records) {
    return call<VSDVS_SetDVMirrorSessions>(target.alias.c_str(), portOf(target), records[0]->data());
}

HYP_ReturnStatus clear(const Target &target) {
    return call<VSDVS_ClearDVMirrorSessions>(target.alias.c_str(), portOf(target));
}

constexpr const char *kDetails =
    "A destination is the name of a port or uplink, at most 47 bytes; with type rmirror-src a text of at "
    "most 32 bytes, with ermirror-src an IPv4 or IPv6 address, with logical-span a MAC address. A source is "
    "a name as well; with type rmirror-dst a VLAN id. An empty list is stored as one.";

template <const Setting &setting>
constexpr Setting mirrorSessions(Scope scope, const char *key, const char *summary) {
    return {
        .name = "mirrorSessions",
        .noun = "mirror",
        .what = "mirror sessions",
        .summary = summary,
        .scope = scope,
        .keys = {key},
        .members = kSessions,
        .example = "sessions.json",
        .details = kDetails,
        .content = "sessions",
        .canonical = canonical,
        .problem = problemOfSessions,
        .decode = decode<setting>,
        .encode = encode,
        .read = read<setting>,
        .store = store,
        .clear = clear,
    };
}

}  // namespace

constinit const Setting kUplinkMirrorSessions = mirrorSessions<kUplinkMirrorSessions>(
    Scope::Host, QVS_KEY_UPLINK_MIRROR_SESSIONS, "the mirror sessions of the uplinks of this host");
constinit const Setting kPortMirrorSessions = mirrorSessions<kPortMirrorSessions>(
    Scope::Port, QVS_KEY_PORT_MIRROR_SESSIONS, "the mirror sessions of a port");

}  // namespace qvs::config

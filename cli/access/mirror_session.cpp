// SPDX-License-Identifier: Apache-2.0
#include "access/mirror_session.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "config/library/vlan_id.h"
#include "tool/failure.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

using EntityValue = std::array<uint8_t, sizeof(VSDVS_MirrorEntity::value)>;
constexpr size_t kEntitySize = sizeof(VSDVS_MirrorEntity);

// --- entities ---

// What an entity's value is.
enum class Form { Name, Text, Address, Mac, Vlan, Unknown };

Form destinationForm(std::optional<uint32_t> type) {
    constexpr Form kForms[] = {Form::Name, Form::Name, Form::Text, Form::Name, Form::Address, Form::Mac};
    if (!type) return Form::Name;
    return *type < std::size(kForms) ? kForms[*type] : Form::Unknown;
}

Form sourceForm(std::optional<uint32_t> type) {
    return type == VSDVS_MIRROR_RMIRROR_DST ? Form::Vlan : Form::Name;
}

constexpr Limit kEntityNameLimit{"port or uplink name", sizeof(EntityValue) - 1};
constexpr Limit kEntityTextLimit{"destination", 32};
constexpr size_t kAddressOffset = 4;

std::string decodeValue(Form form, const EntityValue &value) {
    switch (form) {
        case Form::Name:
            return std::string(boundedText(value.data(), value.size()));
        case Form::Text:
            return std::string(boundedText(value.data(), kEntityTextLimit.bytes));
        case Form::Address: {
            char text[INET6_ADDRSTRLEN];
            inet_ntop(value[0] == 0 ? AF_INET : AF_INET6, &value[kAddressOffset], text, sizeof text);
            return text;
        }
        case Form::Mac:
            return macText(Bytes(value).first(sizeof(MacAddress)));
        case Form::Vlan: {
            uint16_t id = 0;
            std::memcpy(&id, value.data(), sizeof id);
            return fmt::to_string(id);
        }
        case Form::Unknown:
            break;
    }
    return hex(value);
}

EntityValue encodeValue(Form form, const std::string &text) {
    EntityValue value{};
    switch (form) {
        case Form::Name:
        case Form::Text:
            requireFits(form == Form::Name ? kEntityNameLimit : kEntityTextLimit, text);
            std::copy(text.begin(), text.end(), value.begin());
            break;
        case Form::Address:
            value[0] = inet_pton(AF_INET, text.c_str(), &value[kAddressOffset]) == 1 ? 0 : 1;
            if (value[0] != 0 && inet_pton(AF_INET6, text.c_str(), &value[kAddressOffset]) != 1)
                fail(Exit::Usage, "destination {}: neither an IPv4 nor an IPv6 address", inQuotes(text));
            break;
        case Form::Mac: {
            std::optional<MacAddress> address = parseMac(text);
            if (!address)
                fail(Exit::Usage, "destination {}: no MAC address like 02:00:00:00:00:01", inQuotes(text));
            std::copy(address->begin(), address->end(), value.begin());
            break;
        }
        case Form::Vlan: {
            uint16_t id = vlanId("source", text);
            std::memcpy(value.data(), &id, sizeof id);
            break;
        }
        case Form::Unknown:
            break;
    }
    return value;
}

// --- from the list ---

// Entities of a list, which are taken one behind the other.
class EntityReader {
  public:
    EntityReader(const uint8_t *entities, uint32_t first)
        : at_(entities + first * sizeof(VSDVS_MirrorEntity)) {}

    std::vector<std::string> take(uint32_t count, Form form) {
        std::vector<std::string> values;
        for (; count > 0; count--) {
            EntityValue value;
            std::memcpy(value.data(), at_ + offsetof(VSDVS_MirrorEntity, value), value.size());
            values.push_back(decodeValue(form, value));
            at_ += sizeof(VSDVS_MirrorEntity);
        }
        return values;
    }

  private:
    const uint8_t *at_;
};

MirrorSession decodeSession(const VSDVS_MirrorSession &stored, bool typed) {
    MirrorSession session;
    session.id = boundedText(stored.sessionId, sizeof stored.sessionId);
    session.name = boundedText(stored.displayName, sizeof stored.displayName);
    if (typed) session.type = uint32_t{stored.type};
    if (stored.snapLength >= 0) session.snapLength = static_cast<uint32_t>(stored.snapLength);
    session.flags = stored.flags;
    session.encapVlan = stored.encapVlan;
    session.samplingRate = stored.samplingRate;
    session.stack = stored.mirrorStack != 0;
    if (!typed) session.wildIn = stored.wildIn;
    if (!typed) session.wildOut = stored.wildOut;
    return session;
}

// --- to the list ---

VSDVS_MirrorSession encodeSession(const MirrorSession &session) {
    requireFits(kMirrorIdLimit, session.id);
    if (!session.name.empty()) requireFits(kMirrorNameLimit, session.name);
    if (!session.type) fail(Exit::Usage, "type: is missing; sessions of the older form cannot be stored");
    if (session.snapLength && *session.snapLength > kMostSnapLength)
        fail(Exit::Usage, "snap length: {}, at most {} fit", *session.snapLength, kMostSnapLength);
    if (session.encapVlan > QVS_VLAN_MAX)
        fail(Exit::Usage, "encap VLAN: {} is no VLAN id, which go from 0 to {}", session.encapVlan,
             QVS_VLAN_MAX);

    VSDVS_MirrorSession stored{};
    std::copy(session.id.begin(), session.id.end(), stored.sessionId);
    std::copy(session.name.begin(), session.name.end(), stored.displayName);
    stored.type = *session.type;
    stored.snapLength = session.snapLength ? static_cast<int32_t>(*session.snapLength) : -1;
    stored.flags = session.flags;
    stored.encapVlan = static_cast<uint16_t>(session.encapVlan);
    stored.samplingRate = session.samplingRate;
    stored.mirrorStack = session.stack ? 1 : 0;
    stored.dstEntities = static_cast<uint32_t>(session.destinations.size());
    stored.srcInEntities = static_cast<uint32_t>(session.sourcesIn.size());
    stored.srcOutEntities = static_cast<uint32_t>(session.sourcesOut.size());
    return stored;
}

void encodeEntities(std::vector<VSDVS_MirrorEntity> &entities, Form form,
                    const std::vector<std::string> &values) {
    for (const std::string &text : values) {
        VSDVS_MirrorEntity &entity = entities.emplace_back();
        EntityValue value = encodeValue(form, text);
        std::copy(value.begin(), value.end(), entity.value);
    }
}

template <typename Packed>
void append(std::vector<uint8_t> &list, const Packed &record) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(&record);
    list.insert(list.end(), bytes, bytes + sizeof record);
}

// The list that has one session alone, without the bytes that nobody reads.
std::vector<uint8_t> encodeRead(const MirrorSession &session) {
    std::vector<VSDVS_MirrorEntity> entities;
    encodeEntities(entities, destinationForm(session.type), session.destinations);
    encodeEntities(entities, sourceForm(session.type), session.sourcesIn);
    encodeEntities(entities, sourceForm(session.type), session.sourcesOut);
    auto count = static_cast<uint32_t>(entities.size());
    std::vector<uint8_t> list;
    append(list, VSDVS_MirrorHeader{VSDVS_MIRROR_MAGIC, VSDVS_MIRROR_VERSION, 1, count, 0});
    append(list, encodeSession(session));
    for (const VSDVS_MirrorEntity &entity : entities)
        append(list, entity);
    return list;
}

// --- bytes that nobody reads ---

// Where a stored session differs from what would be written. One that cannot be written has no such bytes.
std::vector<std::string> unreadBytes(VSDVS_MirrorHeader header, VSDVS_MirrorSession stored, Bytes entities,
                                     const MirrorSession &session) {
    if (!session.type || *session.type >= std::size(kMirrorTypes)) return {};
    header.sessionCount = 1;
    header.entityCount = static_cast<uint32_t>(entities.size() / kEntitySize);
    stored.firstEntity = 0;
    std::vector<uint8_t> list;
    append(list, header);
    append(list, stored);
    list.insert(list.end(), entities.begin(), entities.end());

    std::vector<uint8_t> written;
    try {
        written = encodeRead(session);
    } catch (const Failure &) {
        return {};
    }
    std::vector<std::string> found;
    for (size_t i = 0; i < list.size(); i++) {
        size_t begin = i;
        while (i < list.size() && list[i] != written[i])
            i++;
        if (i > begin)
            found.push_back(fmt::format("{}:{}", begin, hex(Bytes(list).subspan(begin, i - begin))));
    }
    return found;
}

void replaceBytes(std::vector<uint8_t> &list, const std::string &text) {
    size_t colon = text.find(':');
    if (colon == std::string::npos) fail(Exit::Usage, "unread: {} is not OFFSET:DIGITS", inQuotes(text));
    std::optional<uint32_t> offset = parseNumber(text.substr(0, colon));
    std::optional<std::vector<uint8_t>> bytes = parseHex(text.substr(colon + 1));
    if (!offset || !bytes) fail(Exit::Usage, "unread: {} is not OFFSET:DIGITS", inQuotes(text));
    if (*offset > list.size() || bytes->size() > list.size() - *offset)
        fail(Exit::Usage, "unread: {} is outside the session, which has {} bytes", inQuotes(text),
             list.size());
    std::copy(bytes->begin(), bytes->end(), list.begin() + *offset);
}

// Whether two lists of one session say the same.
bool readAlike(const std::vector<uint8_t> &left, const std::vector<uint8_t> &right) {
    auto counts = [](const std::vector<uint8_t> &list) {
        VSDVS_MirrorHeader header;
        VSDVS_MirrorSession record;
        std::memcpy(&header, list.data(), sizeof header);
        std::memcpy(&record, &list[sizeof header], sizeof record);
        return std::array<uint32_t, 6>{header.sessionCount,  header.entityCount,    record.dstEntities,
                                       record.srcInEntities, record.srcOutEntities, record.firstEntity};
    };
    // Wrong counts would lead outside the list.
    if (counts(left) != counts(right)) return false;
    return decodeMirrorList(left.data()) == decodeMirrorList(right.data());
}

// The list that has one session alone.
std::vector<uint8_t> encodeAlone(const MirrorSession &session) {
    std::vector<uint8_t> read = encodeRead(session);
    std::vector<uint8_t> list = read;
    for (const std::string &text : session.unread.texts)
        replaceBytes(list, text);
    if (list != read && !readAlike(list, read))
        fail(Exit::Usage, "unread: {} changes what the other members say",
             fmt::join(session.unread.texts, " "));
    return list;
}

}  // namespace

uint32_t mirrorType(std::string_view what, std::string_view text) {
    auto it = std::find(std::begin(kMirrorTypes), std::end(kMirrorTypes), text);
    if (it == std::end(kMirrorTypes))
        fail(Exit::Usage, "{}: {} is none of {}", what, inQuotes(text), fmt::join(kMirrorTypes, ", "));
    return static_cast<uint32_t>(it - std::begin(kMirrorTypes));
}

std::vector<MirrorSession> decodeMirrorList(const void *list) {
    const auto *bytes = static_cast<const uint8_t *>(list);
    VSDVS_MirrorHeader header;
    std::memcpy(&header, bytes, sizeof header);
    const uint8_t *sessions = bytes + sizeof header;
    const uint8_t *entities = sessions + header.sessionCount * sizeof(VSDVS_MirrorSession);

    std::vector<MirrorSession> decoded;
    for (uint32_t i = 0; i < header.sessionCount; i++) {
        VSDVS_MirrorSession stored;
        std::memcpy(&stored, sessions + i * sizeof stored, sizeof stored);
        MirrorSession session = decodeSession(stored, header.version != VSDVS_MIRROR_VERSION_WILDCARD);
        uint64_t end =
            uint64_t{stored.firstEntity} + stored.dstEntities + stored.srcInEntities + stored.srcOutEntities;
        if (end > header.entityCount) {
            fail(Exit::Failed, "mirror session {}: its entities end at {}, but the list has {}",
                 inQuotes(session.id), end, uint32_t{header.entityCount});
        }
        EntityReader reader(entities, stored.firstEntity);
        session.destinations = reader.take(stored.dstEntities, destinationForm(session.type));
        session.sourcesIn = reader.take(stored.srcInEntities, sourceForm(session.type));
        session.sourcesOut = reader.take(stored.srcOutEntities, sourceForm(session.type));
        Bytes group(entities + stored.firstEntity * kEntitySize, entities + end * kEntitySize);
        session.unread.texts = unreadBytes(header, stored, group, session);
        decoded.push_back(std::move(session));
    }
    return decoded;
}

std::vector<uint8_t> encodeMirrorList(const std::vector<MirrorSession> &sessions) {
    VSDVS_MirrorHeader header{VSDVS_MIRROR_MAGIC, VSDVS_MIRROR_VERSION, 0, 0, 0};
    std::vector<uint8_t> records;
    std::vector<uint8_t> entities;
    for (const MirrorSession &session : sessions) {
        std::vector<uint8_t> alone = encodeAlone(session);
        auto group = alone.begin() + sizeof header + sizeof(VSDVS_MirrorSession);
        VSDVS_MirrorSession record;
        std::memcpy(&header, alone.data(), sizeof header);
        std::memcpy(&record, &alone[sizeof header], sizeof record);
        record.firstEntity = static_cast<uint32_t>(entities.size() / kEntitySize);
        append(records, record);
        entities.insert(entities.end(), group, alone.end());
    }
    header.sessionCount = static_cast<uint32_t>(sessions.size());
    header.entityCount = static_cast<uint32_t>(entities.size() / kEntitySize);
    std::vector<uint8_t> list;
    append(list, header);
    list.insert(list.end(), records.begin(), records.end());
    list.insert(list.end(), entities.begin(), entities.end());
    return list;
}

}  // namespace qvs::cli

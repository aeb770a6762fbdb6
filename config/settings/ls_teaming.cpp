// SPDX-License-Identifier: Apache-2.0
// The table of logical-switch teaming policies, and a port's choice among them.
#include <qvs/keys.h>
#include <qvs/vsdvs.h>
#include <qvs/vshyp.h>

#include <algorithm>
#include <cstring>

#include "config/library/kernel_list.h"
#include "config/settings/codec.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

constexpr size_t kEntrySize = VSDVS_LS_TEAMING_ENTRY_SIZE;
constexpr Member kTable[] = {{.name = "",
                              .summary = "policies",
                              .type = Type::Bytes,
                              .list = true,
                              .least = kEntrySize,
                              .most = kEntrySize,
                              .mostItems = (kMostValueBytes - sizeof(QVS_ListHead)) / kEntrySize}};

// The entries behind a head that counts them; as many as there are bytes for.
List entriesOf(Bytes entries, uint64_t count) {
    List list;
    for (size_t i = 0; i < std::min<uint64_t>(count, entries.size() / kEntrySize); i++) {
        const Bytes entry = entries.subspan(i * kEntrySize, kEntrySize);
        list.emplace_back(Blob(entry.begin(), entry.end()));
    }
    return list;
}

std::optional<Value> decode(const StoredView &stored) {
    if (!stored[0] || stored[0]->size() < sizeof(QVS_ListHead)) return std::nullopt;
    const uint32_t count = recordOf<QVS_ListHead>(stored[0]->first(sizeof(QVS_ListHead)))->count;
    if (stored[0]->size() != sizeof(QVS_ListHead) + uint64_t{count} * kEntrySize) return std::nullopt;
    return ifTaken(kLsTeaming, entriesOf(stored[0]->subspan(sizeof(QVS_ListHead)), count));
}

Stored encode(const Value &value, const StoredView &, const Target &) {
    Blob table = blobOf(QVS_ListHead{static_cast<uint32_t>(value.list().size())});
    for (const Value &entry : value.list())
        table.insert(table.end(), entry.bytes().begin(), entry.bytes().end());
    return {std::move(table)};
}

// The number of bytes stored; the table itself only says how many entries it counts.
size_t storedLength(const Target &target) {
    const char *name = target.alias.c_str();
    VSDVS_PropBuffer length{0, nullptr};
    require(call<VSDVS_GetGlobProp>(target.byId ? nullptr : name, QVS_KEY_LS_TEAMING, &length,
                                    target.byId ? name : nullptr, static_cast<uint8_t>(target.byId ? 0 : 1)),
            target.named());
    return static_cast<size_t>(std::max(length.length, 0));
}

std::optional<Value> read(const Target &target) {
    const char *name = target.alias.c_str();
    void *raw = nullptr;
    const HYP_ReturnStatus status = target.byId ? call<VSDVS_GetLSTeamingPolicyTableFromDVSID>(name, &raw)
                                                : call<VSDVS_GetLSTeamingPolicyTable>(name, &raw);
    if (!wasRead(kLsTeaming, target, status)) return std::nullopt;
    const VsdvsBuffer table(raw);
    QVS_ListHead head;
    std::memcpy(&head, raw, sizeof head);
    const size_t there = std::max(storedLength(target), sizeof head) - sizeof head;
    List entries = entriesOf({static_cast<const uint8_t *>(raw) + sizeof head, there}, head.count);
    if (entries.size() < head.count)
        warn("the table counts {} entries and holds {}", uint32_t{head.count}, entries.size());
    return entries;
}

std::optional<Value> running(const Target &target) {
    const auto ask = [&] {
        return fetched<VSHYP_GetLSTeamingPolicyTable>(target.named(), target.alias.c_str());
    };
    const KernelList table = boundedList(ask, VSHYP_LS_TEAMING_ENTRY_SIZE, "entries", sizeof(QVS_ListHead));
    return entriesOf(table.bytes().subspan(sizeof(QVS_ListHead)), table.count);
}

HYP_ReturnStatus store(const Target &target, const Stored &records) {
    return call<VSDVS_SetLSTeamingPolicy>(target.alias.c_str(), records[0]->data());
}

// --- a port's choice ---

constexpr Member kChoice[] = {{.name = "",
                               .summary = "name of the policy",
                               .type = Type::Text,
                               .least = 1,
                               .most = VSDVS_LS_TEAMING_NAME_SIZE - 1}};

std::optional<Value> readPort(const Target &target) {
    char name[VSDVS_LS_TEAMING_NAME_SIZE] = {};
    if (!wasRead(kPortLsTeaming, target,
                 call<VSDVS_GetPortLSTeamingPolicyName>(target.alias.c_str(), target.port.c_str(), name)))
        return std::nullopt;
    return Value(boundedText(name, sizeof name));
}

std::optional<Value> runningPort(const Target &target) {
    char name[VSHYP_LS_TEAMING_NAME_SIZE] = {};
    require(call<VSHYP_GetPortLSTeamingPolicyName>(portNumber(target.alias, target.port), name),
            target.named());
    if (name[0] == '\0') return std::nullopt;
    return Value(boundedText(name, sizeof name));
}

}  // namespace

const Setting kLsTeaming = {
    .name = "lsTeaming",
    .noun = "ls-teaming",
    .what = "logical-switch teaming table",
    .summary = "the logical-switch teaming policies of a switch",
    .scope = Scope::Global,
    .keys = {QVS_KEY_LS_TEAMING},
    .members = kTable,
    .example = "--file policies.bin",
    .details = "Each policy is opaque and has 2748 bytes. At most 12210 of them fit.",
    .content = "policies",
    .decode = decode,
    .encode = encode,
    .read = read,
    .running = running,
    .store = store,
    .clear = clearSwitch<VSDVS_ClearLSTeamingPolicy>,
    .readsById = true,
};

const Setting kPortLsTeaming = {
    .name = "lsTeaming",
    .noun = "port ls-teaming",
    .what = "logical-switch teaming choice",
    .summary = "the logical-switch teaming policy that a port has chosen",
    .scope = Scope::Port,
    .keys = {QVS_KEY_PORT_LS_TEAMING},
    .members = kChoice,
    .example = "storage",
    .content = "policy",
    .decode = decodeText<kPortLsTeaming>,
    .encode = encodeText,
    .read = readPort,
    .running = runningPort,
    .store = storeText<VSDVS_SetPortLSTeamingPolicy>,
    .clear = clearPort<VSDVS_ClearPortLSTeamingPolicy>,
};

}  // namespace qvs::config

// SPDX-License-Identifier: Apache-2.0
// The discovery protocol of a switch.
#include <qvs/discovery.h>
#include <qvs/keys.h>

#include "config/settings/codec.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

constexpr const char *kProtocols[] = {"cdp", "lldp"};
constexpr const char *kOperations[] = {"down", "listen", "advertise", "both"};
constexpr Member kMembers[] = {
    {.name = "protocol",
     .summary = "discovery protocol",
     .type = Type::Word,
     .words = kProtocols,
     .fallback = "cdp"},
    {.name = "operation",
     .summary = "what the switch does with it",
     .type = Type::Word,
     .words = kOperations,
     .fallback = "down"},
};

Value valueOf(const Discovery_Param &param) {
    return Members{{"protocol", wordOf(kProtocols, param.protocol)},
                   {"operation", wordOf(kOperations, param.operation)}};
}

std::optional<Value> decode(const StoredView &stored) {
    const auto param = recordOf<Discovery_Param>(stored[0]);
    if (!param || param->operation == DISCOVERY_DOWN) return std::nullopt;
    return ifTaken(kDiscovery, valueOf(*param));
}

Stored encode(const Value &value, const StoredView &, const Target &) {
    const Discovery_Param param{static_cast<uint8_t>(numberOf(kProtocols, value["protocol"])),
                                static_cast<uint8_t>(numberOf(kOperations, value["operation"]))};
    // libqvs stores nothing for a protocol that is down.
    if (param.operation == DISCOVERY_DOWN) return {};
    return {blobOf(param)};
}

std::optional<Value> read(const Target &target) {
    uint8_t record[sizeof(Discovery_Param)] = {DISCOVERY_CDP, DISCOVERY_DOWN};
    if (!wasRead(kDiscovery, target, call<Discovery_GetParam>(target.alias.c_str(), record)))
        return std::nullopt;
    return valueOf(*recordOf<Discovery_Param>(Bytes(record)));
}

HYP_ReturnStatus clear(const Target &target) {
    const uint8_t down[sizeof(Discovery_Param)] = {DISCOVERY_CDP, DISCOVERY_DOWN};
    return call<Discovery_SetParam>(target.alias.c_str(), down);
}

HYP_ReturnStatus store(const Target &target, const Stored &records) {
    if (!records[0]) return unlessAbsent(clear(target));
    return call<Discovery_SetParam>(target.alias.c_str(), records[0]->data());
}

}  // namespace

const Setting kDiscovery = {
    .name = "discovery",
    .noun = "discovery",
    .what = "discovery",
    .summary = "the discovery protocol of a switch and what it does",
    .scope = Scope::Global,
    .keys = {QVS_KEY_DISCOVERY},
    .members = kMembers,
    .example = "--protocol lldp --operation both",
    .details = "The default is cdp, down. Down removes what is stored.",
    .decode = decode,
    .encode = encode,
    .read = read,
    .store = store,
    .clear = clear,
};

}  // namespace qvs::config

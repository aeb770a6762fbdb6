// SPDX-License-Identifier: Apache-2.0
// qvs discovery: the discovery protocol of a switch.
#include <qvs/qvs.h>

#include <string>

#include "access/library.h"
#include "access/policy.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr Policy kDiscovery{"discovery", QVS_KEY_DISCOVERY, sizeof(Discovery_Param)};

constexpr const char *kProtocols[] = {"cdp", "lldp"};
constexpr const char *kOperations[] = {"down", "listen", "advertise", "both"};

Discovery_Param readParam(const PolicyPlace &place) {
    uint8_t record[sizeof(Discovery_Param)] = {DISCOVERY_CDP, DISCOVERY_DOWN};
    place.requireRead(call<Discovery_GetParam>(place.name(), record));
    return {record[0], record[1]};
}

void get(const Arguments &arguments, Output &out) {
    PolicyPlace place(kDiscovery, arguments);
    Discovery_Param param = readParam(place);
    std::optional<std::string> protocol;
    if (place.stored()) protocol = nameOf(kProtocols, param.protocol);
    Record record(out);
    place.describe(record);
    record.field("protocol", "protocol", protocol);
    record.field("operation", "operation", std::string_view(nameOf(kOperations, param.operation)));
    record.finish();
}

void set(const Arguments &arguments, Output &out) {
    uint32_t operation = chosen(arguments, "--operation", kOperations);
    std::optional<uint32_t> protocol;
    if (arguments.given("--protocol")) protocol = chosen(arguments, "--protocol", kProtocols);
    PolicyPlace place(kDiscovery, arguments);
    // Down stores nothing, so what is there need not be read for it.
    if (!protocol && operation != DISCOVERY_DOWN) protocol = readParam(place).protocol;
    Discovery_Param param{static_cast<uint8_t>(protocol.value_or(DISCOVERY_CDP)),
                          static_cast<uint8_t>(operation)};
    auto store = [&] { return call<Discovery_SetParam>(place.name(), &param.protocol); };
    // Down is what is not stored.
    if (operation == DISCOVERY_DOWN) return clearPolicy(out, place, store);
    storePolicy(out, place, place.holds(bytesOf(param)), store);
}

const Command kRows[] = {
    {.words = "discovery get",
     .summary = "show the discovery protocol of a switch and what it does",
     .arguments = {kSwitchArgument},
     .example = "qvs discovery get sw1",
     .run = reads(get, touches<kDiscovery>)},
    {.words = "discovery set",
     .summary = "store the discovery protocol of a switch and what it does",
     .arguments = {kSwitchArgument},
     .options = {{"--protocol", "NAME", "cdp or lldp (as it is; cdp)"},
                 {"--operation", "NAME", "down, listen, advertise or both", Kind::Word, false, Need::Always}},
     .details = "Down removes what is stored.",
     .example = "qvs discovery set sw1 --protocol lldp --operation both",
     .run = writes(set, touches<kDiscovery>)},
};

}  // namespace

const std::span<const Command> kDiscoveryCommands = kRows;

}  // namespace qvs::cli

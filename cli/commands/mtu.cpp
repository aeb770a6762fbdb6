// SPDX-License-Identifier: Apache-2.0
// qvs mtu: the MTU of a switch.
#include <qvs/qvs.h>

#include <string>

#include "access/library.h"
#include "access/policy.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

constexpr Policy kMtu{"MTU", QVS_KEY_MTU};
constexpr Policy kEtherswitchMtu{"MTU", QVS_KEY_ETHERSWITCH_MTU};

int readMtu(const std::string &alias) {
    int mtu = 0;
    require(call<VSDVS_GetMTU>(alias.c_str(), &mtu), named(alias) + ": MTU");
    return mtu;
}

void get(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    findSwitch(alias);
    auto mtu = static_cast<uint32_t>(readMtu(alias));
    if (!out.json()) return out.write(fmt::format("{}\n", mtu));
    Record record(out);
    record.field("switch", "switch", alias);
    record.field("mtu", "MTU", mtu);
    record.finish();
}

// The NICs are not asked: one that was bound since may have another MTU, so all are set in any case.
void set(const Arguments &arguments, Output &out) {
    uint32_t mtu = arguments.number("MTU", 0, QVS_MTU_MIN, QVS_MTU_MAX);
    PolicyPlace place(kMtu, arguments);
    bool same = readMtu(place.name()) == static_cast<int>(mtu) && place.holds(bytesOf(mtu)) &&
                PolicyPlace(kEtherswitchMtu, arguments).holds(bytesOf(mtu));
    require(callWhole<VSDVS_SetMTU>(place.name(), mtu), place.named());
    place.report(out, !same);
}

const Command kRows[] = {
    {.words = "mtu get",
     .summary = "print the MTU of a switch in bytes, as its portset has it",
     .arguments = {kSwitchArgument},
     .example = "qvs mtu get sw1",
     .run = reads(get, touches<kMtu, kEtherswitchMtu>)},
    {.words = "mtu set",
     .summary = "set the MTU of a switch: of its NICs, its portset and its properties",
     .arguments = {kSwitchArgument, {"MTU", "bytes, 1280 to 9000"}},
     .details = "When a step fails, the old value is put back. Changed means that portset or properties had "
                "another value; the NICs are set in any case.",
     .example = "qvs mtu set sw1 9000",
     .run = writes(set, touches<kMtu, kEtherswitchMtu>)},
};

}  // namespace

const std::span<const Command> kMtuCommands = kRows;

}  // namespace qvs::cli

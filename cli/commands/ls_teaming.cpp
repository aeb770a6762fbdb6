// SPDX-License-Identifier: Apache-2.0
// qvs ls-teaming, port ls-teaming: the table of logical-switch teaming policies, and a port's choice among
// them.
#include <qvs/qvs.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "access/library.h"
#include "access/policy.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr Policy kTable{"logical-switch teaming table", QVS_KEY_LS_TEAMING};
constexpr Policy kChoice{"logical-switch teaming choice", QVS_KEY_PORT_LS_TEAMING};

constexpr Limit kChoiceLimit{"logical-switch teaming policy", VSDVS_LS_TEAMING_NAME_SIZE - 1};
constexpr size_t kCountSize = sizeof(uint32_t);
constexpr size_t kEntrySize = VSDVS_LS_TEAMING_ENTRY_SIZE;

// --- the table ---

// The number of bytes stored; the table itself only says what it counts.
size_t storedLength(const PolicyPlace &place, bool byId) {
    VSDVS_PropBuffer length{0, nullptr};
    require(call<VSDVS_GetGlobProp>(byId ? nullptr : place.name(), kTable.key, &length,
                                    byId ? place.name() : nullptr, byId ? 0 : 1),
            place.named());
    return static_cast<size_t>(std::max(length.length, 0));
}

void showEntries(const Arguments &arguments, Output &out, Bytes entries) {
    if (arguments.given("--raw")) return writeRaw(out, arguments.text("--raw"), entries);
    auto count = static_cast<uint32_t>(entries.size() / kEntrySize);
    if (out.json()) {
        Listing listing(out, {{"index", "INDEX"}, {"entry", "ENTRY"}});
        for (uint32_t i = 0; i < count; i++)
            listing.row(i, entries.subspan(i * kEntrySize, kEntrySize));
        return listing.finish();
    }
    for (uint32_t i = 0; i < count; i++) {
        fmt::format_to(std::back_inserter(out.buffer()), "entry {} ({} bytes):\n", i, kEntrySize);
        appendHexDump(out.buffer(), entries.subspan(i * kEntrySize, kEntrySize));
        out.drain();
    }
}

void getFromKernel(const Arguments &arguments, Output &out, const PolicyPlace &place) {
    auto ask = [&] { return fetched<VSHYP_GetLSTeamingPolicyTable>(place.named(), place.name()); };
    KernelList table = boundedList(ask, VSHYP_LS_TEAMING_ENTRY_SIZE, "entries", kCountSize);
    showEntries(arguments, out, table.bytes().subspan(kCountSize));
}

void get(const Arguments &arguments, Output &out) {
    PolicyPlace place(kTable, arguments);
    if (arguments.given("--kernel")) return getFromKernel(arguments, out, place);
    bool byId = arguments.given("--by-id");
    void *raw = nullptr;
    HYP_ReturnStatus status = byId ? call<VSDVS_GetLSTeamingPolicyTableFromDVSID>(place.name(), &raw)
                                   : call<VSDVS_GetLSTeamingPolicyTable>(place.name(), &raw);
    place.requireRead(status);
    VsdvsBuffer table(raw);

    uint32_t count = 0;
    std::memcpy(&count, table.get(), sizeof count);
    size_t there = (std::max(storedLength(place, byId), kCountSize) - kCountSize) / kEntrySize;
    if (count > there) complain("warning: the table counts {} entries and holds {}", count, there);
    auto shown = static_cast<uint32_t>(std::min<size_t>(count, there));
    showEntries(arguments, out, {static_cast<const uint8_t *>(table.get()) + kCountSize, shown * kEntrySize});
}

void set(const Arguments &arguments, Output &out) {
    std::vector<uint8_t> entries = readFile(arguments.text("--file"), kMostValueBytes - kCountSize);
    if (entries.size() % kEntrySize != 0) {
        fail(Exit::Usage, "file {}: {} bytes, but each entry has {}", inQuotes(arguments.text("--file")),
             entries.size(), kEntrySize);
    }
    auto count = static_cast<uint32_t>(entries.size() / kEntrySize);
    std::vector<uint8_t> table(kCountSize + entries.size());
    std::memcpy(table.data(), &count, sizeof count);
    std::copy(entries.begin(), entries.end(), table.begin() + kCountSize);

    PolicyPlace place(kTable, arguments);
    storePolicy(out, place, place.holds(table),
                [&] { return call<VSDVS_SetLSTeamingPolicy>(place.name(), table.data()); });
}

// --- a port's choice ---

void getChoice(const Arguments &arguments, Output &out) {
    PolicyPlace place(kChoice, arguments);
    char name[VSDVS_LS_TEAMING_NAME_SIZE] = {};
    if (arguments.given("--kernel")) {
        uint32_t number = 0;
        require(call<VSDVS_DvPortIDToPortID>(place.name(), place.port(), &number), place.named());
        require(call<VSHYP_GetPortLSTeamingPolicyName>(number, name), place.named());
        if (name[0] == '\0') place.failAbsent();
    } else {
        place.requireRead(call<VSDVS_GetPortLSTeamingPolicyName>(place.name(), place.port(), name));
    }
    printValue(out, place, "policy", boundedText(name, sizeof name));
}

void setChoice(const Arguments &arguments, Output &out) {
    const std::string &name = arguments.text("NAME");
    requireFits(kChoiceLimit, name);
    PolicyPlace place(kChoice, arguments);
    storePolicy(out, place, place.holdsText(name),
                [&] { return call<VSDVS_SetPortLSTeamingPolicy>(place.name(), place.port(), name.c_str()); });
}

const Command kRows[] = {
    {.words = "ls-teaming get",
     .summary = "show the logical-switch teaming policies of a switch",
     .arguments = {kSwitchArgument},
     .options = {kById, {"--kernel", nullptr, "show the table that is in force"}, kRaw},
     .details = "Entries have 2748 bytes each and are shown as they are.",
     .example = "qvs ls-teaming get sw1 --raw policies.bin",
     .run = reads(get, touches<kTable>)},
    {.words = "ls-teaming set",
     .summary = "store the logical-switch teaming policies of a switch",
     .arguments = {kSwitchArgument},
     .options = {{"--file", "FILE",
                  "the entries, one behind the other, of 2748 bytes each (- for standard input)", Kind::File,
                  false, Need::Always}},
     .details = "What ls-teaming get --raw has written can be given back. At most 12210 entries fit.",
     .example = "qvs ls-teaming set sw1 --file policies.bin",
     .run = writes(set, touches<kTable>)},
    {.words = "ls-teaming clear",
     .summary = "remove the logical-switch teaming policies of a switch",
     .arguments = {kSwitchArgument},
     .example = "qvs ls-teaming clear sw1",
     .run = writes(clearBy<kTable, VSDVS_ClearLSTeamingPolicy>, touches<kTable>)},
    {.words = "port ls-teaming get",
     .summary = "print the logical-switch teaming policy a port has chosen",
     .arguments = {kSwitchArgument, kPortArgument},
     .options = {{"--kernel", nullptr, "print the one that is in force"}},
     .example = "qvs port ls-teaming get sw1 port0",
     .run = reads(getChoice, touches<kChoice>)},
    {.words = "port ls-teaming set",
     .summary = "choose a logical-switch teaming policy for a port",
     .arguments = {kSwitchArgument, kPortArgument, {"NAME", "name of the policy, at most 135 bytes"}},
     .example = "qvs port ls-teaming set sw1 port0 storage",
     .run = writes(setChoice, touches<kChoice>)},
    {.words = "port ls-teaming clear",
     .summary = "remove a port's choice of a logical-switch teaming policy",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port ls-teaming clear sw1 port0",
     .run = writes(clearBy<kChoice, VSDVS_ClearPortLSTeamingPolicy>, touches<kChoice>)},
};

}  // namespace

const std::span<const Command> kLsTeamingCommands = kRows;

}  // namespace qvs::cli

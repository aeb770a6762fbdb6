// SPDX-License-Identifier: Apache-2.0
// Adding entries to the MAC table of a port, and removing them.
#include <qvs/qvs.h>

#include <algorithm>
#include <string>
#include <vector>

#include "access/library.h"
#include "access/opaque.h"
#include "commands/mac.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

template <auto Change>
HYP_ReturnStatus changeEntry(const Arguments &arguments) {
    const char *port = macPort(arguments);
    uint32_t number = arguments.number("--number", 0);
    std::vector<uint8_t> entry = *parseHex(arguments.text("ENTRY"));
    entry.resize(VSHYP_MAC_ENTRY_SIZE);
    return call<Change>(arguments.text("SWITCH").c_str(), port, number, entry.data());
}

void report(const Arguments &arguments, Output &out, bool changed) {
    const std::string &alias = arguments.text("SWITCH");
    const std::string &port = arguments.text(arguments.given("--port") ? "--port" : "--number");
    reportPort(out, alias, port, changed);
}

// The addresses behind a port that is given by its identifier.
KernelList portTable(const Arguments &arguments) {
    auto ask = [&] {
        return fetched<VSHYP_GetPortMACTable>(named(arguments), arguments.text("SWITCH").c_str(),
                                              macPort(arguments), uint8_t{0});
    };
    return boundedList(ask, VSHYP_MAC_ENTRY_SIZE, "MAC entries");
}

// The kernel answers the same for a port and for an entry that does not exist.
void requirePort(const Arguments &arguments) {
    if (arguments.given("--port")) {
        portTable(arguments);
        return;
    }
    const uint32_t number = arguments.number("--number", 0);
    bool found = false;
    forEachPort(findVswitch(arguments.text("SWITCH")), [&](DVSPort *port) {
        found = portStatus(port).number == number;
        return !found;
    });
    if (!found)
        throw libraryFailure(fmt::format("{}: port number {}", named(arguments), number), HYP_NOT_FOUND);
}

}  // namespace

const char *macPort(const Arguments &arguments) {
    if (arguments.given("--port")) requireFits(kPortIdLimit, arguments.text("--port"));
    return arguments.orNull("--port");
}

void checkMacEntry(std::string_view name, const std::string &text) {
    checkHex(name, text);
    const size_t bytes = parseHex(text)->size();
    if (bytes == 0 || bytes > VSHYP_MAC_ENTRY_SIZE)
        fail(Exit::Usage, "{}: {} bytes, 1 to {} fit", name, bytes, VSHYP_MAC_ENTRY_SIZE);
}

// The kernel does not answer whether an entry is new, so that the table is read before and after.
void addMacEntry(const Arguments &arguments, Output &out) {
    const bool byName = arguments.given("--port");
    const KernelList before = byName ? portTable(arguments) : KernelList{};
    require(changeEntry<VSHYP_SetPortMACTable>(arguments), named(arguments));
    if (!byName) return report(arguments, out, true);
    const KernelList after = portTable(arguments);
    const Bytes was = before.bytes();
    const Bytes is = after.bytes();
    report(arguments, out, !std::equal(was.begin(), was.end(), is.begin(), is.end()));
}

void removeMacEntry(const Arguments &arguments, Output &out) {
    HYP_ReturnStatus status = changeEntry<VSHYP_ClearPortMACTable>(arguments);
    bool absent = status == HYP_NOT_FOUND && arguments.given("--if-exists");
    if (absent) {
        requirePort(arguments);
    } else {
        require(status, named(arguments));
    }
    report(arguments, out, !absent);
}

}  // namespace qvs::cli

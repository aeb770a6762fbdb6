// SPDX-License-Identifier: Apache-2.0
// qvs port add, remove, block and unblock.
#include <qvs/qvs.h>

#include <algorithm>
#include <string>
#include <unordered_set>

#include "access/library.h"
#include "access/setting.h"
#include "commands/port.h"
#include "config/library/snapshot.h"
#include "config/settings/codec.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

constexpr uint32_t kDefaultConnectId = 1;

// Throws when a port that is there differs from what was given.
void requireSame(DVSPort *port, const Arguments &arguments, const std::string &name) {
    std::optional<uint32_t> connectId = findNumber(placeOf(port), QVS_KEY_PORT_CONNECT_ID);
    uint32_t wanted = arguments.number("--connect-id", 0);
    if (arguments.given("--connect-id") && connectId != wanted) {
        fail(Exit::Differs, "{}: exists with connect id {}, not {}", name,
             connectId ? fmt::to_string(*connectId) : "-", wanted);
    }
    std::string_view externalId = findText(placeOf(port), QVS_KEY_PORT_EXTERNAL_ID).value_or("");
    if (arguments.given("--external-id") && externalId != arguments.text("--external-id")) {
        fail(Exit::Differs, "{}: exists with external id {}, not {}", name, inQuotes(externalId),
             inQuotes(arguments.text("--external-id")));
    }
}

HYP_ReturnStatus addOne(const Arguments &arguments, const std::string &alias, const std::string &port) {
    if (arguments.given("--external-id")) {
        return callWhole<VSDVS_AddOpaqueDVPort>(alias.c_str(), port.c_str(),
                                                arguments.text("--external-id").c_str());
    }
    return call<VSDVS_AddDVPort>(alias.c_str(), port.c_str(),
                                 arguments.number("--connect-id", kDefaultConnectId));
}

// Warns, or with --strict fails, when something uses a port that is to be removed.
void requireUnused(DVSSwitch *sw, const Arguments &arguments, const std::string &alias,
                   const std::vector<std::string> &ports) {
    const bool strict = arguments.given(kStrict.name);
    for (const std::string &id : ports) {
        DVSPort *port = lookUpPort(sw, id);
        if (port == nullptr) continue;
        const PortStatus status = portStatus(port);
        if (status.inUse)
            warnOrFail(strict, fmt::format("{}: is removed while {} uses it", named(alias, id),
                                           inQuotes(status.client.value_or("a client"))));
    }
    checkUsers(sw, alias, ports, strict);
}

}  // namespace

void requirePortsOnce(const Arguments &arguments) {
    std::unordered_set<std::string_view> seen;
    for (const std::string &port : arguments.all("PORT")) {
        requireFits(kPortIdLimit, port);
        if (!seen.insert(port).second) fail(Exit::Usage, "port {}: given twice", inQuotes(port));
    }
}

void requirePortsToAdd(const Arguments &arguments) {
    requirePortsOnce(arguments);
    if (arguments.given("--external-id") && arguments.all("PORT").size() > 1)
        fail(Exit::Usage, "--external-id names one interface, so it takes one port");
}

void addPorts(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    const std::vector<std::string> &ports = arguments.all("PORT");
    DVSSwitch *sw = findVswitch(alias);
    const uint32_t maxPorts = DVS_GetMaxPorts(sw);
    const bool mayExist = arguments.given("--may-exist");

    auto isThere = [&](const std::string &port) {
        DVSPort *existing = lookUpPort(sw, port);
        if (existing == nullptr) return false;
        if (!mayExist) throw libraryFailure(named(alias, port), HYP_EXISTS);
        requireSame(existing, arguments, named(alias, port));
        return true;
    };
    std::vector<bool> there(ports.size());
    std::transform(ports.begin(), ports.end(), there.begin(), isThere);

    auto nowThere = [&](const std::string &port) {
        sw = findVswitch(alias);
        return isThere(port);
    };
    ChangeList changes(out, alias, "ports", "port");
    for (size_t i = 0; i < ports.size(); i++) {
        if (!there[i]) {
            HYP_ReturnStatus status = addOne(arguments, alias, ports[i]);
            there[i] = status == HYP_EXISTS && mayExist && comesTrue([&] { return nowThere(ports[i]); });
            if (!there[i] && status != HYP_OK)
                throw libraryFailure(named(alias, ports[i]), status, roomHint(status, maxPorts));
        }
        changes.add(ports[i], !there[i]);
    }
}

void removePorts(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    const std::vector<std::string> &ports = arguments.all("PORT");
    DVSSwitch *sw = findVswitch(alias);
    std::vector<std::string_view> uplinks = uplinkPorts(sw);

    std::vector<bool> there;
    for (const std::string &port : ports) {
        there.push_back(DVPortExist(DVS_SwitchId(sw), port.c_str()) != 0);
        if (!there.back() && !arguments.given("--if-exists")) findPort(sw, alias, port);
        // Its entries in the uplink lists would be left behind, and the lists could not be read any more.
        if (there.back() && std::find(uplinks.begin(), uplinks.end(), port) != uplinks.end()) {
            fail(Exit::Failed, "{}: carries an uplink; remove that with 'qvs uplink remove'",
                 named(alias, port));
        }
    }
    requireUnused(sw, arguments, alias, ports);
    ChangeList changes(out, alias, "ports", "port");
    for (size_t i = 0; i < ports.size(); i++) {
        if (there[i]) {
            HYP_ReturnStatus status = call<VSDVS_RemoveDVPort>(alias.c_str(), ports[i].c_str());
            // Another process may have been quicker.
            if (status == HYP_NOT_FOUND && arguments.given("--if-exists")) there[i] = false;
            if (there[i]) require(status, named(alias, ports[i]));
        }
        changes.add(ports[i], there[i]);
    }
}

namespace {

void setBlocked(const Arguments &arguments, Output &out, bool blocked) {
    const std::string &alias = arguments.text("SWITCH");
    const std::vector<std::string> &ports = arguments.all("PORT");
    DVSSwitch *sw = findVswitch(alias);
    const config::Blob value = config::blobOfText(blocked ? "true" : "false");
    // A port without the property is not blocked.
    std::vector<bool> changes;
    for (const std::string &id : ports) {
        const auto stored = findProperty(placeOf(findPort(sw, alias, id)), QVS_KEY_PORT_BLOCK);
        const bool same =
            stored && stored->classes == DVS_PROP_CONFIG && std::ranges::equal(stored->value, value);
        changes.push_back(!same && (blocked || stored));
    }
    ChangeList list(out, alias, "ports", "port");
    for (size_t i = 0; i < ports.size(); i++) {
        if (changes[i])
            require(call<VSDVS_SetPortProp>(alias.c_str(), ports[i].c_str(), QVS_KEY_PORT_BLOCK, value.data(),
                                            static_cast<uint32_t>(value.size()), nullptr, 1),
                    named(alias, ports[i]));
        list.add(ports[i], changes[i]);
    }
}

}  // namespace

void blockPorts(const Arguments &arguments, Output &out) {
    setBlocked(arguments, out, true);
}

void unblockPorts(const Arguments &arguments, Output &out) {
    setBlocked(arguments, out, false);
}

}  // namespace qvs::cli

// SPDX-License-Identifier: Apache-2.0
// qvs uplink add, remove, set and clear.
#include <qvs/qvs.h>

#include <algorithm>
#include <string>

#include "access/library.h"
#include "access/remains.h"
#include "access/setting.h"
#include "commands/uplink.h"
#include "config/library/snapshot.h"
#include "config/library/uplink_list.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

const Uplink *findUplink(const std::vector<Uplink> &uplinks, std::string_view name) {
    auto it = std::find_if(uplinks.begin(), uplinks.end(),
                           [&](const Uplink &uplink) { return uplink.name == name || uplink.port == name; });
    return it == uplinks.end() ? nullptr : &*it;
}

// Whether a change may have failed because another process changed the uplinks at the same time.
bool raced(HYP_ReturnStatus status, HYP_ReturnStatus quicker) {
    return status == quicker || status == HYP_FAILURE;
}

// Returns the end of a message: why there was no room, or what the change has left incomplete.
std::string hintFor(HYP_ReturnStatus status, uint32_t maxPorts, const std::string &alias) {
    std::string room = roomHint(status, maxPorts);
    return room.empty() ? mendingHint(alias) : room;
}

// The names of the uplinks: those given, or uplink0, uplink1 and so on.
std::vector<std::string> wantedUplinks(const Arguments &arguments) {
    if (arguments.given("UPLINK")) return arguments.all("UPLINK");
    uint32_t count = arguments.number("--count", 0);
    std::vector<std::string> names;
    // No switch has room for more, and the comparison needs one name more than any has.
    for (uint32_t i = 0; i < std::min(count, 65536u); i++)
        names.push_back(fmt::format("uplink{}", i));
    return names;
}

template <auto Get>
bool hasList(const std::string &alias, const char *key) {
    VSDVS_PropBuffer size{0, nullptr};
    HYP_ReturnStatus status = call<Get>(alias.c_str(), key, &size, nullptr, 1);
    if (status == HYP_NOT_FOUND) return false;
    require(status, named(alias));
    return true;
}

bool hasLists(const std::string &alias) {
    bool names = hasList<VSDVS_GetGlobProp>(alias, QVS_KEY_UPLINK_NAMES);
    bool ports = hasList<VSDVS_GetHostProp>(alias, QVS_KEY_UPLINK_PORTS);
    return names || ports;
}

}  // namespace

void addUplinks(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    const std::vector<std::string> &wanted = arguments.all("UPLINK");
    findVswitch(alias);
    std::vector<Uplink> uplinks = readUplinks(alias);
    DVSSwitch *sw = findVswitch(alias);
    const uint32_t maxPorts = DVS_GetMaxPorts(sw);

    std::vector<bool> there;
    for (const std::string &uplink : wanted) {
        there.push_back(findUplink(uplinks, uplink) != nullptr);
        if (there.back() && !arguments.given("--may-exist"))
            throw libraryFailure(namedUplink(alias, uplink), HYP_EXISTS);
        if (!there.back() && lookUpPort(sw, uplink) != nullptr) {
            throw libraryFailure(namedUplink(alias, uplink), HYP_EXISTS, "an ordinary port has this name");
        }
    }
    ChangeList changes(out, alias, "uplinks", "uplink");
    for (size_t i = 0; i < wanted.size(); i++) {
        if (!there[i]) {
            HYP_ReturnStatus status = callWhole<VSDVS_AddSwitchUplinkPort>(alias.c_str(), wanted[i].c_str());
            there[i] = raced(status, HYP_EXISTS) && arguments.given("--may-exist") &&
                       comesTrue([&] { return findUplink(readUplinks(alias), wanted[i]) != nullptr; });
            if (!there[i] && status != HYP_OK)
                throw libraryFailure(namedUplink(alias, wanted[i]), status, hintFor(status, maxPorts, alias));
        }
        changes.add(wanted[i], !there[i]);
    }
}

void removeUplinks(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    const std::vector<std::string> &wanted = arguments.all("UPLINK");
    findVswitch(alias);
    std::vector<Uplink> uplinks = readUplinks(alias);

    std::vector<const Uplink *> there;
    for (const std::string &uplink : wanted) {
        there.push_back(findUplink(uplinks, uplink));
        if (there.back() == nullptr && !arguments.given("--if-exists")) {
            throw libraryFailure(namedUplink(alias, uplink), HYP_NOT_FOUND);
        }
    }
    std::vector<std::string> names;
    for (const Uplink *uplink : there)
        if (uplink != nullptr) names.push_back(uplink->name);
    checkUsers(findVswitch(alias), alias, names, arguments.given(kStrict.name));
    checkLinksLeft(alias, names, arguments.given(kStrict.name));
    ChangeList changes(out, alias, "uplinks", "uplink");
    for (size_t i = 0; i < wanted.size(); i++) {
        bool changed = there[i] != nullptr;
        if (changed) {
            HYP_ReturnStatus status =
                callWhole<VSDVS_RemoveSwitchUplinkPort>(alias.c_str(), there[i]->port.c_str());
            changed = !(raced(status, HYP_NOT_FOUND) && arguments.given("--if-exists") &&
                        comesTrue([&] { return findUplink(readUplinks(alias), wanted[i]) == nullptr; }));
            if (changed && status != HYP_OK)
                throw libraryFailure(namedUplink(alias, wanted[i]), status, mendingHint(alias));
        }
        changes.add(wanted[i], changed);
    }
}

void setUplinks(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    std::vector<std::string> wanted = wantedUplinks(arguments);
    findVswitch(alias);
    std::vector<Uplink> uplinks = readUplinks(alias);
    DVSSwitch *sw = findVswitch(alias);

    bool same = std::equal(uplinks.begin(), uplinks.end(), wanted.begin(), wanted.end(),
                           [](const Uplink &uplink, const std::string &name) { return uplink.name == name; });
    if (!same) {
        if (!uplinks.empty()) {
            fail(Exit::Differs, "{}: has other uplinks; remove them with 'qvs uplink remove' first",
                 named(alias));
        }
        uint32_t maxPorts = DVS_GetMaxPorts(sw);
        HYP_ReturnStatus status = HYP_OK;
        if (arguments.number("--count", 0) > maxPorts) {
            status = HYP_LIMIT_EXCEEDED;  // the library would make the lists first, and run out of memory
        } else if (arguments.given("--count")) {
            status =
                callWhole<SetNumSwitchUplinkPortsByUUID>(DVS_SwitchId(sw), arguments.number("--count", 0));
        } else {
            status = callWhole<VSDVS_SetSwitchUplinkPorts>(alias.c_str(),
                                                           packList(wanted, sizeof(VSDVS_UplinkName)).data(),
                                                           packList(wanted, sizeof(VSDVS_UplinkPort)).data());
        }
        if (status != HYP_OK) {
            throw libraryFailure(
                named(alias), status,
                status == HYP_EXISTS ? "a port has the name of an uplink" : hintFor(status, maxPorts, alias));
        }
    }
    reportSwitch(out, alias, !same);
}

void clearUplinks(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    DVSSwitch *sw = findVswitch(alias);
    bool there = hasLists(alias);
    if (there) {
        std::vector<std::string> names;
        for (const Uplink &uplink : uplinkState(sw).whole)
            names.push_back(uplink.name);
        checkUsers(sw, alias, names, arguments.given(kStrict.name));
        require(callWhole<VSDVS_ClearSwitchUplinkPorts>(alias.c_str()), named(alias));
        // The status of this call concerns only the name.
        if (hasLists(alias)) throw libraryFailure(named(alias) + ": uplink lists", HYP_FAILURE);
    }
    reportSwitch(out, alias, there);
}

}  // namespace qvs::cli

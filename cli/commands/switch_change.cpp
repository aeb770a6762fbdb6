// SPDX-License-Identifier: Apache-2.0
// qvs switch create and destroy.
#include <qvs/qvs.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "access/library.h"
#include "access/remains.h"
#include "base/natural.h"
#include "commands/switch.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

// Throws when an attribute that was given is not the one the switch has.
void requireSame(const SwitchView &sw, const Arguments &arguments, const std::string &alias) {
    auto differs = [&](const std::string &has, const auto &wanted) {
        fail(Exit::Differs, "{}: exists with {}, not {}", named(alias), has, wanted);
    };
    auto text = [&](const char *option, std::string_view what, std::string_view has) {
        if (!arguments.given(option) || has == arguments.text(option)) return;
        differs(fmt::format("{} {}", what, inQuotes(has)), inQuotes(arguments.text(option)));
    };
    auto number = [&](const char *option, fmt::format_string<uint32_t &> format, uint32_t has,
                      uint32_t wanted) {
        if (arguments.given(option) && has != wanted) differs(fmt::format(format, has), wanted);
    };
    if (sw.className != "vswitch") differs("class " + inQuotes(sw.className), "'vswitch'");
    text("--id", "identifier", sw.id);
    text("--portset", "portset", sw.portset.value_or(""));
    number("--version", "version {}", sw.version, arguments.number("--version", 0));
    uint32_t maxPorts = arguments.number("--max-ports", 0);
    number("--max-ports", "room for {} ports", sw.maxPorts, maxPorts == 0 ? QVS_MAX_PORTS_DEFAULT : maxPorts);
    if (arguments.given("--opaque") && !sw.opaque) differs("opaque false", "true");
    number("--uplinks", "{} uplinks", sw.uplinks, arguments.number("--uplinks", 0));
    number("--ports", "{} ordinary ports", sw.ports - std::min(sw.uplinks, sw.ports),
           arguments.number("--ports", 0));
}

// Returns the parts that a switch or its uplinks lack. Empty when the switch is complete.
std::string halfMade(DVSSwitch *sw, const std::string &alias) {
    std::optional<KernelSwitches> kernel = askKernelSwitches();
    std::vector<std::string> parts;
    if (kernel) parts = missingParts(sw, *kernel);
    if (!parts.empty())
        return fmt::format("{}; 'qvs switch destroy {}' removes it", fmt::join(parts, ", "), shown(alias));
    parts = remainsOf(sw, std::nullopt);
    if (parts.empty()) return {};
    return fmt::format("{}; 'qvs switch repair {}' mends that", fmt::join(parts, ", "), shown(alias));
}

// Whether the switch exists with the wanted attributes. Throws when it exists and must not, is incomplete, or
// differs.
bool isThere(const Arguments &arguments, const std::string &alias) {
    DVSSwitch *sw = DVSState_SwitchFindByAlias(alias.c_str());
    if (sw == nullptr) return false;
    std::string lacking = halfMade(sw, alias);
    if (!arguments.given("--may-exist")) {
        throw libraryFailure(named(alias), HYP_EXISTS, lacking.empty() ? "" : "it is half made: " + lacking);
    }
    if (!lacking.empty()) fail(Exit::Differs, "{}: exists, but is half made: {}", named(alias), lacking);
    requireSame(SwitchView(sw), arguments, alias);
    return true;
}

// A switch that lacks parts or ports may be one that another process is still creating.
bool isInTheMaking(const Arguments &arguments, const std::string &alias) {
    DVSSwitch *sw = DVSState_SwitchFindByAlias(alias.c_str());
    if (sw == nullptr || !arguments.given("--may-exist")) return false;
    uint64_t wanted = uint64_t{arguments.number("--uplinks", 0)} + arguments.number("--ports", 0);
    return countPorts(sw) < wanted || !halfMade(sw, alias).empty();
}

// Throws when the kernel has a portset of this name.
void requireNoPortset(const std::string &portset, const std::string &alias) {
    std::optional<KernelSwitches> kernel = askKernelSwitches();
    if (!kernel || !hasPortset(*kernel, portset)) return;
    fail(Exit::Differs,
         "{}: portset {} exists in the kernel; name another with --portset, or remove it with 'qvs switch "
         "destroy {}' "
         "if nothing needs it",
         named(alias), inQuotes(portset), shown(portset));
}

// The message for a switch that prevents the creation of a new one, with the remedy.
void requireFree(const std::string &portset, const Arguments &arguments, const std::string &alias) {
    forEachSwitch([&](DVSSwitch *sw) {
        std::string owner = inQuotes(findText({Scope::Global, sw}, QVS_KEY_ALIAS).value_or("-"));
        if (findText({Scope::Host, sw}, QVS_KEY_HOST_PORTSET) == portset) {
            throw libraryFailure(named(alias) + ": portset " + inQuotes(portset), HYP_EXISTS,
                                 "it belongs to switch " + owner + ", name another with --portset");
        }
        if (arguments.given("--id") && DVS_SwitchId(sw) == arguments.text("--id")) {
            throw libraryFailure(named(alias) + ": identifier " + inQuotes(arguments.text("--id")),
                                 HYP_EXISTS, "it belongs to switch " + owner);
        }
        return true;
    });
}

// The library creates the switch and both lists before it refuses the first uplink, so that the room is
// checked here.
void requireRoom(const Arguments &arguments, const std::string &alias) {
    uint32_t given = arguments.number("--max-ports", 0);
    uint32_t maxPorts = given == 0 ? QVS_MAX_PORTS_DEFAULT : given;
    uint64_t wanted = uint64_t{arguments.number("--uplinks", 0)} + arguments.number("--ports", 0);
    if (wanted <= maxPorts) return;
    throw libraryFailure(named(alias), HYP_LIMIT_EXCEEDED,
                         fmt::format("--max-ports has to hold uplinks and ports, and is {}", maxPorts));
}

bool anyNameless() {
    bool any = false;
    forEachSwitch([&](DVSSwitch *sw) { return !(any = !findText({Scope::Global, sw}, QVS_KEY_ALIAS)); });
    return any;
}

std::string_view hintFor(HYP_ReturnStatus status, const Arguments &arguments) {
    switch (status) {
        case HYP_BAD_PARAM:
            return "the kernel's shell would interpret the portset name, give a plain one with --portset";
        case HYP_EXISTS:
            if (anyNameless())
                return "a half-made switch without alias may have the identifier; 'qvs switch repair' "
                       "removes it";
            return arguments.given("--id") ? ""
                                           : "the identifier is made from the first 15 bytes, "
                                             "give another with --id";
        default:
            return {};
    }
}

// Waits a moment for another program that is creating the switch. The lock has already excluded other runs of
// qvs.
constexpr int kLooksAtOthers = 15;

bool isHalfMade(const std::string &alias) {
    DVSSwitch *sw = DVSState_SwitchFindByAlias(alias.c_str());
    std::optional<KernelSwitches> kernel = askKernelSwitches();
    return sw != nullptr && kernel && !missingParts(sw, *kernel).empty();
}

// Warns when clients use ordinary ports of a switch that is to be destroyed.
void warnOfClients(DVSSwitch *sw, const std::string &alias) {
    constexpr size_t kMostNamed = 3;
    const std::vector<std::string_view> uplinks = uplinkPorts(sw);
    std::vector<std::string_view> used;
    forEachPort(sw, [&](DVSPort *port) {
        const std::string_view id = DVS_PortId(port);
        if (portStatus(port).inUse && std::ranges::find(uplinks, id) == uplinks.end()) used.push_back(id);
        return true;
    });
    if (used.empty()) return;
    std::ranges::sort(used, namedBefore);
    std::string names;
    for (size_t i = 0; i < std::min(used.size(), kMostNamed); i++)
        names += fmt::format("{}{}", i == 0 ? "" : ", ", inQuotes(used[i]));
    warn("{}: is destroyed while {} of its ports {} in use: {}{}", named(alias), used.size(),
         used.size() == 1 ? "is" : "are", names, used.size() > kMostNamed ? ", ..." : "");
}

// Returns false when another process has already removed it.
bool destroyAlias(const std::string &alias) {
    auto isGone = [&] { return DVSState_SwitchFindByAlias(alias.c_str()) == nullptr; };
    warnOfClients(findVswitch(alias), alias);
    HYP_ReturnStatus status = callWhole<VSDVS_DestroyVSwitch>(alias.c_str());
    if (status != HYP_NOT_FOUND) {
        require(status, named(alias));
        return true;
    }
    // The switch is gone, or it is incomplete and lacks the association with its portset.
    if (!comesTrue([&] { return isGone() || isHalfMade(alias); })) require(status, named(alias));
    if (isGone()) return false;
    removeHalfMade(findVswitch(alias), named(alias));
    return true;
}

}  // namespace

void createSwitch(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("ALIAS");
    const std::string portset = arguments.given("--portset") ? arguments.text("--portset") : alias;
    uint32_t version = arguments.number("--version", QVS_SWITCH_VERSION_DEFAULT);
    uint32_t maxPorts = arguments.number("--max-ports", 0);
    auto nowThere = [&] { return isThere(arguments, alias); };
    bool there = isInTheMaking(arguments, alias) ? comesTrue(nowThere, kLooksAtOthers) : nowThere();
    if (!there) {
        requireRoom(arguments, alias);
        requireFree(portset, arguments, alias);
        HYP_ReturnStatus status = callWhole<VSDVS_CreateVSwitch>(
            alias.c_str(), arguments.orNull("--id"), arguments.orNull("--portset"), version,
            arguments.given("--opaque") ? 1 : 0, maxPorts, arguments.number("--uplinks", 0),
            arguments.number("--ports", 0));
        // The kernel refuses a second portset of a name without saying why.
        bool taken = status == HYP_EXISTS || status == HYP_FAILURE;
        there = taken && arguments.given("--may-exist") && comesTrue(nowThere);
        if (!there && status == HYP_FAILURE) requireNoPortset(portset, alias);
        if (!there && status != HYP_OK)
            throw libraryFailure(named(alias), status, hintFor(status, arguments));
    }
    reportSwitch(out, alias, !there);
}

void destroySwitch(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    bool there =
        DVSState_SwitchFindByAlias(alias.c_str()) != nullptr ? destroyAlias(alias) : removeNameless(alias);
    if (!there && !arguments.given("--if-exists")) throw libraryFailure(named(alias), HYP_NOT_FOUND);
    reportSwitch(out, alias, there);
}

}  // namespace qvs::cli

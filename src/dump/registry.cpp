// SPDX-License-Identifier: Apache-2.0
// The registry of printers and the initialiser that sorts it.
#include "dump/registry.h"

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "dump/printers.h"
#include "qvs/hyp.h"
#include "qvs/keys.h"

namespace qvs {
namespace {

struct NetDVSPrinterEntry {
    const char *key;
    NetDVSPrinter printer;
};

// The table is writable because it is sorted when the library is loaded. After that it is only read.
NetDVSPrinterEntry NetDVSPrinterTable[] = {
    {QVS_KEY_UPLINK_PORTS, printUplinkPorts},
    {QVS_KEY_HOST_STATUS, printHostStatus},
    {QVS_KEY_OVERLAY, printOverlay},
    {QVS_KEY_PORT_CONNECT_ID, printNumber},
    {QVS_KEY_PORT_DVFILTER, printOpaque},
    {QVS_KEY_PORT_LINK_STATUS, printLinkStatus},
    {QVS_KEY_PORT_OVERLAY, printPortOverlay},
    {QVS_KEY_PORT_RESPOOL, printOpaque},
    {QVS_KEY_PORT_RESPOOLS, printOpaque},
    {QVS_KEY_PORT_SERVICE_PROFILE, printOpaque},
    {QVS_KEY_PORT_SHAPER_BROADCAST, printShaper},
    {QVS_KEY_PORT_SHAPER_INPUT, printShaper},
    {QVS_KEY_PORT_SHAPER_OUTPUT, printShaper},
    {QVS_KEY_PORT_STATISTICS, printPortStatistics},
    {QVS_KEY_PORT_MTU_CHECK_RESULT, printMtuCheckResult},
    {QVS_KEY_PORT_PASS_THROUGH_STATUS, printPassThroughStatus},
    {QVS_KEY_PORT_STATUS, printPortStatus},
    {QVS_KEY_PORT_VLAN_IN_FORCE, printVlanInForce},
    {QVS_KEY_PORT_VLAN_CHECK_RESULT, printVlanCheckResult},
    {QVS_KEY_RESPOOLS, printOpaque},
    {QVS_KEY_RESPOOL_LIST, printOpaque},
    {QVS_KEY_RESPOOL_SCHEDULER, printOpaque},
    {QVS_KEY_SERVICE_INSTANCE, printOpaque},
    {QVS_KEY_TEAM_CHECK_DEPLOYMENT, printTeamCheckDeployment},
    {QVS_KEY_UPLINK_NAMES, printUplinkNames},
    {QVS_KEY_DISCOVERY, printDiscovery},
    {QVS_KEY_ETHERSWITCH_IPFIX, printSwitchIpfix},
    {QVS_KEY_IPV4_ADDRESS, printIPv4Address},
    {QVS_KEY_LACP, printSwitchLacp},
    {QVS_KEY_ETHERSWITCH_MIRROR_SESSIONS, printMirrorSessions},
    {QVS_KEY_ETHERSWITCH_MTU, printNumber},
    {QVS_KEY_ETHERSWITCH_PORT_FILTER, printExtraEthFilter},
    {QVS_KEY_PORT_LACP, printPortLacp},
    {QVS_KEY_ETHERSWITCH_PORT_MIRROR_SESSIONS, printMirrorSessions},
    {QVS_KEY_ETHERSWITCH_PORT_SECURITY, printSecurity},
    {QVS_KEY_ETHERSWITCH_PORT_TEAMING, printTeaming},
    {QVS_KEY_ETHERSWITCH_PORT_VLAN, printVlan},
    {QVS_KEY_ETHERSWITCH_PRIVATE_VLAN_MAP, printPrivateVlanMap},
    {QVS_KEY_TEAM_CHECK_PARAMETER, printTeamCheckParameter},
    {QVS_KEY_PORT_IPFIX, printPortIpfix},
    {QVS_KEY_MAC_LEARNING, printMacLearning},
    {QVS_KEY_LEARN_STATIC, printMacLearningSwitch},
    {QVS_KEY_STATIC_MAC_ALLOW, printMacLearningSwitch},
    {QVS_KEY_MULTICAST_ADDRESSES, printMulticastAddresses},
    {QVS_KEY_MTU, printNumber},
    {QVS_KEY_PORT_FILTER, printExtraEthFilter},
    {QVS_KEY_PORT_MAC_MANAGEMENT, printMacManagement},
    {QVS_KEY_PORT_MULTICAST_ADDRESSES, printMulticastAddresses},
    {QVS_KEY_PORT_MULTICAST_OVERRIDE, printMulticastAddresses},
    {QVS_KEY_PORT_MIRROR_SESSIONS, printMirrorSessions},
    {QVS_KEY_PORT_PRIORITY_RETAIN, printOpaque},
    {QVS_KEY_PORT_SECURITY, printSecurity},
    {QVS_KEY_PORT_TEAMING, printTeaming},
    {QVS_KEY_PORT_VLAN, printVlan},
    {QVS_KEY_PRIVATE_VLAN_MAP, printPrivateVlanMap},
    {QVS_KEY_TEAMING, printTeaming},
};
static_assert(std::size(NetDVSPrinterTable) == 56);

int compareKeys(const void *left, const void *right) {
    return std::strcmp(static_cast<const NetDVSPrinterEntry *>(left)->key,
                       static_cast<const NetDVSPrinterEntry *>(right)->key);
}

}  // namespace

NetDVSPrinter findPrinter(const char *key) {
    const NetDVSPrinterEntry wanted = {key, nullptr};
    const void *found = std::bsearch(&wanted, NetDVSPrinterTable, std::size(NetDVSPrinterTable),
                                     sizeof(NetDVSPrinterEntry), compareKeys);
    return found != nullptr ? static_cast<const NetDVSPrinterEntry *>(found)->printer : printGeneric;
}

// Keys differ most at their ends, so the slot is computed from the last bytes.
size_t PrinterCache::slotOf(std::string_view key) {
    constexpr uint64_t kGoldenRatio = 0x9e3779b97f4a7c15;
    uint64_t tail = 0;
    std::memcpy(&tail, key.data() + key.size() - sizeof tail, sizeof tail);
    return static_cast<size_t>((tail ^ key.size()) * kGoldenRatio >> (64 - std::bit_width(kSlots - 1)));
}

NetDVSPrinter PrinterCache::find(std::string_view key) {
    if (key.size() < sizeof(uint64_t) || key.size() > kLongestKey) return findPrinter(key.data());
    Slot &slot = slots_[slotOf(key)];
    if (std::string_view(slot.key, slot.length) != key) {
        slot.length = static_cast<uint32_t>(key.copy(slot.key, kLongestKey));
        slot.printer = findPrinter(key.data());
    }
    return slot.printer;
}

}  // namespace qvs

extern "C" void SharedObjectInit(void) {
    std::qsort(qvs::NetDVSPrinterTable, std::size(qvs::NetDVSPrinterTable), sizeof(qvs::NetDVSPrinterEntry),
               qvs::compareKeys);
}

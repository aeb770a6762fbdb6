// The printer registry and the initialiser that sorts it.
#include "dump/registry.h"

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "dump/printers.h"
#include "qvs/hyp.h"

namespace qvs {
namespace {

struct NetDVSPrinterEntry {
    const char *key;
    NetDVSPrinter printer;
};

// Writable: it is sorted when the library is loaded and only read from then on.
NetDVSPrinterEntry NetDVSPrinterTable[] = {
    {"com.quillon.common.host.uplinkPorts", printUplinkPorts},
    {"com.quillon.common.host.volatile.status", printHostStatus},
    {"com.quillon.common.overlay", printOverlay},
    {"com.quillon.common.port.connectid", printNumber},
    {"com.quillon.common.port.dvfilter", printOpaque},
    {"com.quillon.common.port.linkstatus", printLinkStatus},
    {"com.quillon.common.port.overlay", printPortOverlay},
    {"com.quillon.common.port.respool.assoc", printOpaque},
    {"com.quillon.common.port.respools.cfg", printOpaque},
    {"com.quillon.common.port.serviceprofile", printOpaque},
    {"com.quillon.common.port.shaper.broadcast", printShaper},
    {"com.quillon.common.port.shaper.input", printShaper},
    {"com.quillon.common.port.shaper.output", printShaper},
    {"com.quillon.common.port.statistics", printPortStatistics},
    {"com.quillon.common.port.volatile.mtuchkresult", printMtuCheckResult},
    {"com.quillon.common.port.volatile.ptstatus", printPassThroughStatus},
    {"com.quillon.common.port.volatile.status", printPortStatus},
    {"com.quillon.common.port.volatile.vlan", printVlanInForce},
    {"com.quillon.common.port.volatile.vlanchkresult", printVlanCheckResult},
    {"com.quillon.common.respools.cfg", printOpaque},
    {"com.quillon.common.respools.list", printOpaque},
    {"com.quillon.common.respools.sched", printOpaque},
    {"com.quillon.common.serviceinstance", printOpaque},
    {"com.quillon.common.teamcheck.deploy", printTeamCheckDeployment},
    {"com.quillon.common.uplinkPorts", printUplinkNames},
    {"com.quillon.etherswitch.cdp", printDiscovery},
    {"com.quillon.etherswitch.ipfix", printSwitchIpfix},
    {"com.quillon.etherswitch.ipv4addr", printIPv4Address},
    {"com.quillon.etherswitch.lacp", printSwitchLacp},
    {"com.quillon.etherswitch.mirrorSessions", printMirrorSessions},
    {"com.quillon.etherswitch.mtu", printNumber},
    {"com.quillon.etherswitch.port.extraEthFRP", printExtraEthFilter},
    {"com.quillon.etherswitch.port.lacp", printPortLacp},
    {"com.quillon.etherswitch.port.mirrorSessions", printMirrorSessions},
    {"com.quillon.etherswitch.port.security", printSecurity},
    {"com.quillon.etherswitch.port.teaming", printTeaming},
    {"com.quillon.etherswitch.port.vlan", printVlan},
    {"com.quillon.etherswitch.pvlanMap", printPrivateVlanMap},
    {"com.quillon.mesh.teamcheck.param", printTeamCheckParameter},
    {"com.quillon.net.ipfix.port", printPortIpfix},
    {"com.quillon.vswitch.macLearning", printMacLearning},
    {"com.quillon.vswitch.macLearning.learnStatic", printMacLearningSwitch},
    {"com.quillon.vswitch.macLearning.staticMACAllow", printMacLearningSwitch},
    {"com.quillon.vswitch.mcast.user.addresses", printMulticastAddresses},
    {"com.quillon.vswitch.mtu", printNumber},
    {"com.quillon.vswitch.port.extraEthFRP", printExtraEthFilter},
    {"com.quillon.vswitch.port.macManagement", printMacManagement},
    {"com.quillon.vswitch.port.mcast.user.addresses", printMulticastAddresses},
    {"com.quillon.vswitch.port.mcast.user.addresses.override", printMulticastAddresses},
    {"com.quillon.vswitch.port.mirrorSessions", printMirrorSessions},
    {"com.quillon.vswitch.port.priority.retain", printOpaque},
    {"com.quillon.vswitch.port.security", printSecurity},
    {"com.quillon.vswitch.port.teaming.policy", printTeaming},
    {"com.quillon.vswitch.port.vlan", printVlan},
    {"com.quillon.vswitch.pvlanMap", printPrivateVlanMap},
    {"com.quillon.vswitch.teaming", printTeaming},
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

// Keys differ most at their ends.
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

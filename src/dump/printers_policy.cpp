// SPDX-License-Identifier: Apache-2.0
// The printers of the policies of switches and ports.
#include "core/heap.h"
#include "dump/printers.h"
#include "qvs/discovery.h"
#include "qvs/ipfixdvs.h"
#include "qvs/records.h"
#include "qvs/vsdvs.h"

namespace qvs {

using namespace std::string_view_literals;

namespace {

// Returns the word for an index, or the word for an unknown index.
template <size_t N>
const char *nameAt(const char *const (&names)[N], uint32_t index, const char *otherwise) {
    return index < N ? names[index] : otherwise;
}

const char *trueFalse(unsigned flag) {
    return flag != 0 ? "true" : "false";
}

const char *lacpMode(uint32_t mode) {
    constexpr const char *kModes[] = {"none", "active", "passive"};  // by QVS_LACP_...
    return nameAt(kModes, mode, "none");
}

// Prints the uplink names of a teaming record from one index to another.
void printTeam(const PrintJob &job, uint64_t from, uint64_t to) {
    constexpr uint64_t kNames = offsetof(VSDVS_TeamingPolicy, uplinks);
    constexpr uint64_t kNameSize = sizeof(VSDVS_TeamingPolicy::uplinks[0]);
    const uint64_t end =
        job.record.entries(std::min<uint64_t>(to, VSDVS_TEAMING_MAX_UPLINKS), kNames, kNameSize);
    for (uint64_t i = from; i < end; ++i)
        job.print<" %s;">(job.record.text(kNames + kNameSize * i, kNameSize));
}

}  // namespace

void printTeaming(const PrintJob &job) {
    constexpr const char *kBalance[] = {"none (all pkts dropped)",      "source ip address",
                                        "source mac address",           "source virtual port id",
                                        "first uplink (i.e. explicit)", "source port traffic load"};
    // The names, which are most of the record, stay where they are.
    const auto word = [&](size_t offset) { return job.record.at<uint32_t>(offset); };
    const uint32_t selection = word(offsetof(VSDVS_TeamingPolicy, linkSelection));
    const uint32_t behaviour = word(offsetof(VSDVS_TeamingPolicy, linkBehaviour));
    const uint64_t active = word(offsetof(VSDVS_TeamingPolicy, activeCount));
    const uint64_t standby = word(offsetof(VSDVS_TeamingPolicy, standbyCount));

    job.print<"\t\t%s:\n\t\t\t">(job.key);
    job.print<"load balancing = ">();
    job.print<"%s">(nameAt(kBalance, word(offsetof(VSDVS_TeamingPolicy, loadBalancing)), ""));
    job.print<"\n\t\t\tlink selection =">();
    if ((selection & VSDVS_SELECT_LINK_STATE) != 0) job.print<" link state up;">();
    if ((selection & VSDVS_SELECT_BEACON_STATE) != 0) job.print<" beacon state ok;">();
    job.print<"\n\t\t\tlink behavior =">();
    if ((behaviour & VSDVS_BEHAVE_NOTIFY_SWITCH) != 0) job.print<" notify switch;">();
    if ((behaviour & VSDVS_BEHAVE_ROLLING_FAILOVER) != 0) job.print<" rolling failover;">();
    if ((behaviour & VSDVS_BEHAVE_BEST_EFFORT) != 0) job.print<" best effort on failure;">();
    if ((behaviour & VSDVS_BEHAVE_SHOTGUN) != 0) job.print<" shotgun on failure;">();
    job.print<"\n\t\t\tactive =">();
    printTeam(job, 0, active);
    job.print<"\n\t\t\tstandby =">();
    printTeam(job, active, active + standby);
    job.print<"\n">();
    job.classLine();
}

void printVlan(const PrintJob &job) {
    const auto policy = job.record.at<VSDVS_PortVLAN>();
    if ((policy.flags & VSDVS_VLAN_TRUNK) != 0) {
        job.print<"\t\t%s = Guest VLAN tagging\n">(job.key);
    } else if ((policy.flags & VSDVS_VLAN_PRIVATE) != 0) {
        job.print<"\t\t%s = PVLAN %d\n">(job.key, policy.vlan);
    } else if (policy.vlan != 0) {
        job.print<"\t\t%s = VLAN %d\n">(job.key, policy.vlan);
    } else {
        job.print<"\t\t%s = No VLAN\n">(job.key);
    }
    if (policy.rangeCount != 0) {
        job.print<"\t\t\tranges =">();
        printRanges(job, sizeof policy, policy.rangeCount);
        job.print<"\n">();
    }
    job.classLine();
}

void printPrivateVlanMap(const PrintJob &job) {
    constexpr const char *kTypes[] = {"unknown", "promiscuous", "isolated",
                                      "community"};  // by VSDVS_PVLAN_...
    const uint64_t count = job.record.length() / sizeof(VSDVS_PrivateVLAN);
    job.print<"\t\t%s:\n">(job.key);
    for (uint64_t i = 0; i < count; ++i) {
        const auto entry = job.record.at<VSDVS_PrivateVLAN>(sizeof(VSDVS_PrivateVLAN) * i);
        job.print<"\t\t\t(%u, %u) - ">(entry.primary, entry.secondary);
        job.print<"%s\n">(nameAt(kTypes, entry.type, "unknown"));
    }
    job.classLine();
}

void printShaper(const PrintJob &job) {
    const auto shaper = job.record.at<QVS_Shaper>();
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\taverage bandwidth = %u bytes/sec\n">(shaper.averageBandwidth);
    job.print<"\t\t\tpeak bandwidth = %u bytes/sec\n">(shaper.peakBandwidth);
    job.print<"\t\t\tburst size = %u bytes\n">(shaper.burstSize);
    job.classLine();
}

void printSecurity(const PrintJob &job) {
    const auto mask = job.record.at<uint32_t>();
    const auto word = [mask](uint32_t bit) { return (mask & bit) != 0 ? "deny"sv : "allow"sv; };
    job.print<"\t\t%s = %s promiscuous; %s mac change; %s forged frames\n">(
        job.key, word(VSDVS_SECURITY_DENY_PROMISCUOUS), word(VSDVS_SECURITY_DENY_MAC_CHANGE),
        word(VSDVS_SECURITY_DENY_FORGED));
    job.classLine();
}

void printExtraEthFilter(const PrintJob &job) {
    constexpr uint64_t kAddresses = offsetof(VSDVS_ExtraEthFilter, addresses);
    constexpr uint64_t kAddressSize = sizeof(VSDVS_ExtraEthFilter::addresses[0]);
    constexpr uint64_t kMostAddresses = sizeof(VSDVS_ExtraEthFilter::addresses) / kAddressSize;
    const RecordView &record = job.record;
    const auto filter = record.at<VSDVS_ExtraEthFilter>();
    const auto text = [&filter](uint32_t bit, std::string_view name) {
        return (filter.flags & bit) != 0 ? name : "";
    };
    job.print<"\t\t%s = %s%s%s%s%s%s%s\n">(
        job.key, text(VSDVS_FILTER_UNICAST, "  UNICAST"), text(VSDVS_FILTER_MULTICAST, "  MULTICAST"),
        text(VSDVS_FILTER_ALLMULTI, "  ALLMULTI"), text(VSDVS_FILTER_BROADCAST, "  BROADCAST"),
        text(VSDVS_FILTER_PROMISC, "  PROMISC"), text(VSDVS_FILTER_USE_LADRF, "  USE_LADRF"),
        text(VSDVS_FILTER_SINK, "  SINK"));
    if ((filter.flags & VSDVS_FILTER_MULTICAST) != 0) {
        const uint64_t used = std::min<uint64_t>(filter.addressCount, kMostAddresses);
        const uint64_t count = record.wholeEntries(used, kAddresses, kAddressSize);
        for (uint64_t i = 0; i < count; ++i) {
            job.print<"\t\tmulticastAddr[%d] = %s\n">(
                i, AddressText::ofMac(record, kAddresses + kAddressSize * i).view());
        }
    }
    job.classLine();
}

void printDiscovery(const PrintJob &job) {
    constexpr const char *kProtocols[] = {"CDP", "LLDP"};
    constexpr const char *kOperations[] = {"down", "listen", "advertise", "advertise & listen"};
    const auto discovery = job.record.at<Discovery_Param>();
    job.print<"\t\t%s = %s, %s\n">(job.key, nameAt(kProtocols, discovery.protocol, "unknown"),
                                   nameAt(kOperations, discovery.operation, "unknown"));
    job.classLine();
}

void printIPv4Address(const PrintJob &job) {
    job.print<"\t\t%s = %s, \tpropType = %s\n">(job.key, AddressText::ofIPv4(job.record, 0).view(),
                                                NetDVSPropTypeStr(job.propType));
}

void printSwitchIpfix(const PrintJob &job) {
    constexpr uint64_t kAddress = offsetof(QVS_SwitchIpfix, address);
    const RecordView &record = job.record;
    const auto ipfix = record.at<QVS_SwitchIpfix>();
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tidle timeout = %u seconds\n">(ipfix.idleTimeout);
    job.print<"\t\t\tactive timeout = %u seconds\n">(ipfix.activeTimeout);
    job.print<"\t\t\tsampling rate = %u\n">(ipfix.samplingRate);
    if (ipfix.isIPv6 != 0) {
        job.print<"\t\t\tcollector = [%s]:%u\n">(AddressText::ofIPv6(record, kAddress).view(), ipfix.port);
    } else {
        job.print<"\t\t\tcollector = %s:%u\n">(AddressText::ofIPv4(record, kAddress).view(), ipfix.port);
    }
    job.print<"\t\t\tinternal flows only = %s\n">(trueFalse(ipfix.internalFlowsOnly));
    job.print<"\t\t\tobsDomainID = %u\n">(ipfix.obsDomainID);
    job.classLine();
}

void printPortIpfix(const PrintJob &job) {
    constexpr uint64_t kCollectors = offsetof(IPFIXDVS_Port, collectors);
    const RecordView &record = job.record;
    const auto ipfix = record.at<IPFIXDVS_Port>();

    // If memory for the identifier runs out, nothing of the property is printed.
    HeapBytes obsId;
    if (const uint16_t length = ipfix.virtualObsIDLength; length != 0) {
        obsId = allocateZeroed(uint64_t{length} + 1);
        if (obsId == nullptr) return;
        const std::string_view text = record.text(sizeof ipfix, length);
        std::memcpy(obsId.get(), text.data(), text.size());
    }
    const char *obsIdText = obsId != nullptr ? reinterpret_cast<const char *>(obsId.get()) : "";

    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tidle timeout = %u seconds\n">(ipfix.idleTimeout);
    job.print<"\t\t\tactive timeout = %u seconds\n">(ipfix.activeTimeout);
    job.print<"\t\t\tsampling rate = %u\n">(ipfix.samplingRate);
    job.print<"\t\t\tinternal flows only = %s\n">(trueFalse(ipfix.flags & IPFIXDVS_INTERNAL_FLOWS_ONLY));
    job.print<"\t\t\tvNIC sampling only = %s\n">(trueFalse(ipfix.flags & IPFIXDVS_VNIC_SAMPLING_ONLY));
    job.print<"\t\t\tobsDomainID = %u\n">(ipfix.obsDomainID);
    job.print<"\t\t\tsrcIPv4 = %s\n">(AddressText::ofIPv4(record, offsetof(IPFIXDVS_Port, srcIPv4)).view());
    job.print<"\t\t\tvirtualObsID = '%s'\n">(obsIdText);
    job.print<"\t\t\tcollectorCount = %u\n">(ipfix.collectorCount);
    const uint64_t used = std::min<uint64_t>(ipfix.collectorCount, IPFIXDVS_MAX_COLLECTORS);
    const uint64_t count = record.wholeEntries(used, kCollectors, sizeof(IPFIXDVS_Collector));
    for (uint64_t i = 0; i < count; ++i) {
        const IPFIXDVS_Collector &collector = ipfix.collectors[i];
        const uint64_t address = kCollectors + sizeof collector * i + offsetof(IPFIXDVS_Collector, address);
        // "th" for each of them.
        if (collector.isIPv6 != 0) {
            job.print<"\t\t\t\t%dth collector = [%s]:%u\n">(i, AddressText::ofIPv6(record, address).view(),
                                                            collector.port);
        } else {
            job.print<"\t\t\t\t%dth collector = %s:%u\n">(i, AddressText::ofIPv4(record, address).view(),
                                                          collector.port);
        }
    }
    job.classLine();
}

void printSwitchLacp(const PrintJob &job) {
    constexpr const char *kPolicies[] = {"None",
                                         "Dst mac",
                                         "Src mac",
                                         "Src and dst mac",
                                         "Dst ip",
                                         "Src ip",
                                         "Src and dst ip",
                                         "Vlan",
                                         "Dst ip and vlan",
                                         "Src ip and vlan",
                                         "Src and dst ip, vlan",
                                         "Dst port",
                                         "Src port",
                                         "Src and dst port",
                                         "Dst ip and dst port",
                                         "Src ip and src port",
                                         "Src and dst ip, port",
                                         "Dst ip and dst port, vlan",
                                         "Src ip and src port, vlan",
                                         "Src and dst ip, port, vlan",
                                         "Src portID"};
    const RecordView &record = job.record;
    const auto head = record.at<QVS_ListHead>();
    const uint64_t count = record.entries(head.count, sizeof head, sizeof(QVS_Lag));
    job.print<"\t\t%s:\n">(job.key);
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t entry = sizeof head + sizeof(QVS_Lag) * i;
        const auto lag = record.at<QVS_Lag>(entry);
        job.print<
            "\t\t\tlag name:\t\t\t%s\n\t\t\tlag key:\t\t\t%s\n\t\t\tmode:\t\t\t\t%s\n"
            "\t\t\tload balance policy:\t\t%s\n\t\t\tlag port number:\t\t%d\n\n">(
            record.text(entry + offsetof(QVS_Lag, name), sizeof lag.name),
            record.text(entry + offsetof(QVS_Lag, key), sizeof lag.key), lacpMode(lag.mode),
            nameAt(kPolicies, lag.loadBalance, "unknown"), lag.portNumber);
    }
    job.classLine();
}

// Only this printer and that of a free port print no class line.
void printPortLacp(const PrintJob &job) {
    const auto lacp = job.record.at<QVS_PortLacp>();
    const bool enabled = lacp.status == QVS_LACP_ENABLED;
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tstatus = %s\n">(enabled ? "enabled" : "disabled");
    if (enabled) job.print<"\t\t\tmode = %s\n">(lacpMode(lacp.mode));
}

}  // namespace qvs

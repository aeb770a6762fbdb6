// The printers of the policies of switches and ports.
#include "core/heap.h"
#include "dump/printers.h"

namespace qvs {

using namespace std::string_view_literals;

namespace {

// A word for a number that is an index, or the word for none.
template <size_t N>
const char *nameAt(const char *const (&names)[N], uint32_t index, const char *otherwise) {
    return index < N ? names[index] : otherwise;
}

const char *lacpMode(uint32_t mode) {
    constexpr const char *kModes[] = {"none", "active", "passive"};
    return nameAt(kModes, mode, "none");
}

// Some of the uplink names of a teaming record, from one index to another.
void printTeam(const PrintJob &job, uint64_t from, uint64_t to) {
    constexpr uint64_t kNames = 24;
    constexpr uint64_t kNameSize = 81;
    constexpr uint64_t kMostNames = 32;
    const uint64_t end = job.record.entries(to < kMostNames ? to : kMostNames, kNames, kNameSize);
    for (uint64_t i = from; i < end; ++i)
        job.print<" %s;">(job.record.text(kNames + kNameSize * i, kNameSize));
}

}  // namespace

void printTeaming(const PrintJob &job) {
    constexpr const char *kBalance[] = {"none (all pkts dropped)",      "source ip address",
                                        "source mac address",           "source virtual port id",
                                        "first uplink (i.e. explicit)", "source port traffic load"};
    const RecordView &record = job.record;
    const uint32_t selection = record.u32(4);
    const uint32_t behaviour = record.u32(12);
    const uint64_t active = record.u32(16);
    const uint64_t standby = record.u32(20);

    job.print<"\t\t%s:\n\t\t\t">(job.key);
    job.print<"load balancing = ">();
    job.print<"%s">(nameAt(kBalance, record.u32(0), ""));
    job.print<"\n\t\t\tlink selection =">();
    if ((selection & 0x80) != 0) job.print<" link state up;">();
    if ((selection & 0x20) != 0) job.print<" beacon state ok;">();
    job.print<"\n\t\t\tlink behavior =">();
    if ((behaviour & 0x20) != 0) job.print<" notify switch;">();
    if ((behaviour & 0x08) != 0) job.print<" rolling failover;">();
    if ((behaviour & 0x04) != 0) job.print<" best effort on failure;">();
    if ((behaviour & 0x10) != 0) job.print<" shotgun on failure;">();
    job.print<"\n\t\t\tactive =">();
    printTeam(job, 0, active);
    job.print<"\n\t\t\tstandby =">();
    printTeam(job, active, active + standby);
    job.print<"\n">();
    job.classLine();
}

void printVlan(const PrintJob &job) {
    constexpr uint16_t kGuestTagging = 1u << 0;
    constexpr uint16_t kPrivate = 1u << 1;
    const uint16_t flags = job.record.u16(0);
    const uint16_t vlan = job.record.u16(2);
    const uint16_t ranges = job.record.u16(6);
    if ((flags & kGuestTagging) != 0) {
        job.print<"\t\t%s = Guest VLAN tagging\n">(job.key);
    } else if ((flags & kPrivate) != 0) {
        job.print<"\t\t%s = PVLAN %d\n">(job.key, vlan);
    } else if (vlan != 0) {
        job.print<"\t\t%s = VLAN %d\n">(job.key, vlan);
    } else {
        job.print<"\t\t%s = No VLAN\n">(job.key);
    }
    if (ranges != 0) {
        job.print<"\t\t\tranges =">();
        printRanges(job, 8, ranges);
        job.print<"\n">();
    }
    job.classLine();
}

void printPrivateVlanMap(const PrintJob &job) {
    constexpr const char *kTypes[] = {"unknown", "promiscuous", "isolated", "community"};
    const RecordView &record = job.record;
    job.print<"\t\t%s:\n">(job.key);
    for (uint64_t entry = 0; entry + 8 <= record.length(); entry += 8) {
        job.print<"\t\t\t(%u, %u) - ">(record.u16(entry), record.u16(entry + 2));
        job.print<"%s\n">(nameAt(kTypes, record.u8(entry + 4), "unknown"));
    }
    job.classLine();
}

void printShaper(const PrintJob &job) {
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\taverage bandwidth = %u bytes/sec\n">(job.record.u64(0));
    job.print<"\t\t\tpeak bandwidth = %u bytes/sec\n">(job.record.u64(8));
    job.print<"\t\t\tburst size = %u bytes\n">(job.record.u64(16));
    job.classLine();
}

void printSecurity(const PrintJob &job) {
    const uint32_t mask = job.record.u32(0);
    const auto word = [mask](unsigned bit) { return (mask >> bit & 1) != 0 ? "deny"sv : "allow"sv; };
    job.print<"\t\t%s = %s promiscuous; %s mac change; %s forged frames\n">(job.key, word(0), word(1),
                                                                            word(2));
    job.classLine();
}

void printExtraEthFilter(const PrintJob &job) {
    constexpr uint32_t kMulticast = 1u << 1;
    constexpr uint64_t kAddresses = 6;
    constexpr uint64_t kAddressSize = 6;
    constexpr uint64_t kMostAddresses = 32;
    const RecordView &record = job.record;
    const uint32_t flags = record.u32(0);
    const auto text = [flags](unsigned bit, std::string_view name) {
        return (flags >> bit & 1) != 0 ? name : "";
    };
    job.print<"\t\t%s = %s%s%s%s%s%s%s\n">(job.key, text(0, "  UNICAST"), text(1, "  MULTICAST"),
                                           text(2, "  ALLMULTI"), text(3, "  BROADCAST"),
                                           text(4, "  PROMISC"), text(5, "  USE_LADRF"), text(16, "  SINK"));
    if ((flags & kMulticast) != 0) {
        const uint64_t used = record.u16(4) < kMostAddresses ? record.u16(4) : kMostAddresses;
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
    job.print<"\t\t%s = %s, %s\n">(job.key, nameAt(kProtocols, job.record.u8(0), "unknown"),
                                   nameAt(kOperations, job.record.u8(1), "unknown"));
    job.classLine();
}

void printIPv4Address(const PrintJob &job) {
    job.print<"\t\t%s = %s, \tpropType = %s\n">(job.key, AddressText::ofIPv4(job.record, 0).view(),
                                                NetDVSPropTypeStr(job.propType));
}

void printSwitchIpfix(const PrintJob &job) {
    const RecordView &record = job.record;
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tidle timeout = %u seconds\n">(record.u32(0));
    job.print<"\t\t\tactive timeout = %u seconds\n">(record.u32(4));
    job.print<"\t\t\tsampling rate = %u\n">(record.u32(26));
    if (record.u8(31) != 0) {
        job.print<"\t\t\tcollector = [%s]:%u\n">(AddressText::ofIPv6(record, 8).view(), record.u16(24));
    } else {
        job.print<"\t\t\tcollector = %s:%u\n">(AddressText::ofIPv4(record, 8).view(), record.u16(24));
    }
    job.print<"\t\t\tinternal flows only = %s\n">(record.u8(30) != 0 ? "true" : "false");
    job.print<"\t\t\tobsDomainID = %u\n">(record.u32(32));
    job.classLine();
}

void printPortIpfix(const PrintJob &job) {
    constexpr uint64_t kCollectors = 24;
    constexpr uint64_t kCollectorSize = 20;
    constexpr uint64_t kMostCollectors = 8;
    constexpr uint64_t kObsId = 184;
    const RecordView &record = job.record;
    const uint8_t flags = record.u8(12);

    // Without memory for the identifier nothing of the property is printed.
    HeapBytes obsId;
    if (const uint16_t length = record.u16(14); length != 0) {
        obsId = allocateZeroed(uint64_t{length} + 1);
        if (obsId == nullptr) return;
        const std::string_view text = record.text(kObsId, length);
        std::memcpy(obsId.get(), text.data(), text.size());
    }
    const char *obsIdText = obsId != nullptr ? reinterpret_cast<const char *>(obsId.get()) : "";

    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tidle timeout = %u seconds\n">(record.u32(0));
    job.print<"\t\t\tactive timeout = %u seconds\n">(record.u32(4));
    job.print<"\t\t\tsampling rate = %u\n">(record.u32(8));
    job.print<"\t\t\tinternal flows only = %s\n">((flags & 1) != 0 ? "true" : "false");
    job.print<"\t\t\tvNIC sampling only = %s\n">((flags & 2) != 0 ? "true" : "false");
    job.print<"\t\t\tobsDomainID = %u\n">(record.u32(16));
    job.print<"\t\t\tsrcIPv4 = %s\n">(AddressText::ofIPv4(record, 20).view());
    job.print<"\t\t\tvirtualObsID = '%s'\n">(obsIdText);
    job.print<"\t\t\tcollectorCount = %u\n">(record.u8(13));
    const uint64_t used = record.u8(13) < kMostCollectors ? record.u8(13) : kMostCollectors;
    const uint64_t count = record.wholeEntries(used, kCollectors, kCollectorSize);
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t slot = kCollectors + kCollectorSize * i;
        const uint16_t port = record.u16(slot + 16);
        // "th" for each of them.
        if (record.u8(slot + 18) != 0) {
            job.print<"\t\t\t\t%dth collector = [%s]:%u\n">(i, AddressText::ofIPv6(record, slot).view(),
                                                            port);
        } else {
            job.print<"\t\t\t\t%dth collector = %s:%u\n">(i, AddressText::ofIPv4(record, slot).view(), port);
        }
    }
    job.classLine();
}

void printSwitchLacp(const PrintJob &job) {
    constexpr uint64_t kEntrySize = 93;
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
    const uint64_t count = record.entries(record.u32(0), 4, kEntrySize);
    job.print<"\t\t%s:\n">(job.key);
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t entry = 4 + kEntrySize * i;
        job.print<
            "\t\t\tlag name:\t\t\t%s\n\t\t\tlag key:\t\t\t%s\n\t\t\tmode:\t\t\t\t%s\n"
            "\t\t\tload balance policy:\t\t%s\n\t\t\tlag port number:\t\t%d\n\n">(
            record.text(entry, 65), record.text(entry + 65, 16), lacpMode(record.u32(entry + 81)),
            nameAt(kPolicies, record.u32(entry + 85), "unknown"), record.at<int32_t>(entry + 89));
    }
    job.classLine();
}

// The one printer without a class line besides that of a free port.
void printPortLacp(const PrintJob &job) {
    const bool enabled = job.record.u32(0) == 1;
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tstatus = %s\n">(enabled ? "enabled" : "disabled");
    if (enabled) job.print<"\t\t\tmode = %s\n">(lacpMode(job.record.u32(4)));
}

}  // namespace qvs

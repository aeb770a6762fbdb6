// SPDX-License-Identifier: Apache-2.0
// The printers of the state that the kernel publishes: states, counters, links, overlays, uplinks.
#include "dump/printers.h"
#include "qvs/records.h"
#include "qvs/vsdvs.h"

namespace qvs {
namespace {

// Prints an uplink list: a 32-bit count and names of a fixed size.
void printUplinkList(const PrintJob &job, size_t nameSize) {
    const RecordView &record = job.record;
    const auto head = record.at<QVS_ListHead>();
    const uint64_t count = record.entriesOfRow(head.count, sizeof head, nameSize);
    job.print<"\t\t%s:\n\t\t\t">(job.key);
    if (count == 0) job.print<"%s\n">(head.count == 0 ? "<none>" : "");
    for (uint64_t i = 0; i < count; ++i) {
        const std::string_view name = record.text(sizeof head + nameSize * i, nameSize);
        if (i + 1 < count) {
            job.print<"%s, ">(name);
        } else {
            job.print<"%s\n">(name);
        }
    }
    job.classLine();
}

const char *speedText(uint16_t code) {
    switch (code) {
        case QVS_SPEED_AUTO:
            return " auto negotiation\n";
        case QVS_SPEED_10_HALF:
            return " 10 Mb/s, half duplex\n";
        case QVS_SPEED_10_FULL:
            return " 10 Mb/s, full duplex\n";
        case QVS_SPEED_100_HALF:
            return " 100 Mb/s, half duplex\n";
        case QVS_SPEED_100_FULL:
            return " 100 Mb/s, full duplex\n";
        case QVS_SPEED_1000_HALF:
            return " 1000 Mb/s, half duplex\n";
        case QVS_SPEED_1000_FULL:
            return " 1000 Mb/s, full duplex\n";
        case QVS_SPEED_10G_FULL:
            return " 10 Gb/s, full duplex\n";
        case QVS_SPEED_2500_FULL:
            return " 2500 Mb/s, full duplex\n";
        case QVS_SPEED_20G_FULL:
            return " 20 Gb/s, full duplex\n";
        case QVS_SPEED_40G_FULL:
            return " 40 Gb/s, full duplex\n";
        case QVS_SPEED_100G_FULL:
            return " 100 Gb/s, full duplex\n";
        default:
            return nullptr;
    }
}

}  // namespace

// A free port has neither a number nor a class line.
void printPortStatus(const PrintJob &job) {
    const auto status = job.record.at<QVS_PortStatus>();
    job.print<"\t\t%s =">(job.key);
    if ((status.flags & QVS_PORT_IN_USE) == 0) {
        job.print<" free\n">();
        return;
    }
    job.print<" inUse">();
    if ((status.flags & QVS_PORT_LINK_UP) != 0) job.print<" linkUp">();
    if ((status.flags & QVS_PORT_BLOCKED) != 0) job.print<" blocked">();
    job.print<" portID=%u %s">(status.portNumber, job.record.text(sizeof status));
    job.print<" propType = %s\n">(NetDVSPropTypeStr(job.propType));
}

void printPassThroughStatus(const PrintJob &job) {
    const auto status = job.record.at<QVS_PassThroughStatus>();
    job.print<"\t\t%s =">(job.key);
    if ((status.flags & QVS_PASS_THROUGH_ACTIVE) != 0) {
        job.print<" passthru, ">();
    } else {
        job.print<" noPassthruReason = %u, ">(status.reason);
    }
    job.print<"\tpropType = %s\n">(NetDVSPropTypeStr(job.propType));
}

void printPortStatistics(const PrintJob &job) {
    const auto counters = job.record.at<QVS_PortStatistics>();
    job.print<"\t\t%s:\n">(job.key);
    NetDVSDumpPrintEach<
        "\t\t\tpktsInUnicast = %u\n", "\t\t\tbytesInUnicast = %u\n", "\t\t\tpktsInMulticast = %u\n",
        "\t\t\tbytesInMulticast = %u\n", "\t\t\tpktsInBroadcast = %u\n", "\t\t\tbytesInBroadcast = %u\n",
        "\t\t\tpktsOutUnicast = %u\n", "\t\t\tbytesOutUnicast = %u\n", "\t\t\tpktsOutMulticast = %u\n",
        "\t\t\tbytesOutMulticast = %u\n", "\t\t\tpktsOutBroadcast = %u\n", "\t\t\tbytesOutBroadcast = %u\n",
        "\t\t\tpktsInDropped = %u\n", "\t\t\tpktsOutDropped = %u\n", "\t\t\tpktsInException = %u\n",
        "\t\t\tpktsOutException = %u\n">(
        job.ctx, counters.pktsInUnicast, counters.bytesInUnicast, counters.pktsInMulticast,
        counters.bytesInMulticast, counters.pktsInBroadcast, counters.bytesInBroadcast,
        counters.pktsOutUnicast, counters.bytesOutUnicast, counters.pktsOutMulticast,
        counters.bytesOutMulticast, counters.pktsOutBroadcast, counters.bytesOutBroadcast,
        counters.pktsInDropped, counters.pktsOutDropped, counters.pktsInException, counters.pktsOutException);
    job.classLine();
}

// The reason is printed only for a health that has a colour.
void printHostStatus(const PrintJob &job) {
    constexpr const char *kColours[] = {"green", "yellow", "red"};  // by QVS_HEALTH_...
    const uint32_t health = job.record.at<QVS_HostStatus>().health;
    const std::string_view classes = NetDVSPropTypeStr(job.propType);
    job.print<"\t\t%s = ">(job.key);
    if (health < std::size(kColours)) {
        job.print<"%s %s, \tpropType = %s\n">(kColours[health], job.record.text(sizeof(QVS_HostStatus)),
                                              classes);
    } else {
        job.print<"unknown value %u, \tpropType = %s\n">(health, classes);
    }
}

void printLinkStatus(const PrintJob &job) {
    const auto link = job.record.at<QVS_LinkStatus>();
    job.print<"\t\t%s =\n\t\t\t">(job.key);
    job.print<"%s">(link.up != 0 ? "link up;" : "link down;");
    if (const char *text = speedText(link.speed); text != nullptr) {
        job.print<"%s">(text);
    } else {
        job.print<" unknow speed/duplex %d\n">(link.speed);  // spelled so
    }
    job.classLine();
}

void printOverlay(const PrintJob &job) {
    const RecordView &record = job.record;
    const auto head = record.at<QVS_ListHead>();
    const uint64_t count = record.entriesOfRow(head.count, sizeof head, sizeof(QVS_Overlay));
    job.print<"\t\t%s =">(job.key);
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t entry = sizeof head + sizeof(QVS_Overlay) * i;
        const std::string_view name =
            record.text(entry + offsetof(QVS_Overlay, name), sizeof(QVS_Overlay::name));
        job.print<" %s(%u)">(name, record.at<QVS_Overlay>(entry).number);
    }
    job.print<"\n">();
    job.classLine();
}

// There is no blank between "=" and the first binding, and there is a blank after each binding.
void printPortOverlay(const PrintJob &job) {
    const RecordView &record = job.record;
    const auto head = record.at<QVS_ListHead>();
    const uint64_t count = record.wholeEntries(head.count, sizeof head, sizeof(QVS_PortOverlay));
    job.print<"\t\t%s =">(job.key);
    for (uint64_t i = 0; i < count; ++i) {
        const auto binding = record.at<QVS_PortOverlay>(sizeof head + sizeof(QVS_PortOverlay) * i);
        job.print<"0x%x@%u ">(binding.value, binding.number);
    }
    job.print<"\n">();
    job.classLine();
}

void printVlanInForce(const PrintJob &job) {
    const auto head = job.record.at<QVS_VLANInForce>();
    job.print<"\t\t%s = VLAN %d\n">(job.key, head.vlan);
    if (head.rangeCount != 0) {
        job.print<"\t\t\tranges =">();
        printRanges(job, sizeof head, head.rangeCount);
        job.print<"\n">();
    }
    job.classLine();
}

void printUplinkNames(const PrintJob &job) {
    printUplinkList(job, sizeof(VSDVS_UplinkName));
}
void printUplinkPorts(const PrintJob &job) {
    printUplinkList(job, sizeof(VSDVS_UplinkPort));
}

}  // namespace qvs

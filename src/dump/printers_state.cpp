// The printers of what the kernel publishes: states, counters, links, overlays, uplinks.
#include "dump/printers.h"

namespace qvs {
namespace {

// An uplink list: names of one size behind a 32-bit count.
void printUplinkList(const PrintJob &job, size_t nameSize) {
    const RecordView &record = job.record;
    const uint32_t stored = record.u32(0);
    const uint64_t count = record.entriesOfRow(stored, 4, nameSize);
    job.print<"\t\t%s:\n\t\t\t">(job.key);
    if (count == 0) job.print<"%s\n">(stored == 0 ? "<none>" : "");
    for (uint64_t i = 0; i < count; ++i) {
        const std::string_view name = record.text(4 + nameSize * i, nameSize);
        if (i + 1 < count) {
            job.print<"%s, ">(name);
        } else {
            job.print<"%s\n">(name);
        }
    }
    job.classLine();
}

// The codes are single bits, not all in the order of their speeds.
const char *speedText(uint16_t code) {
    switch (code) {
        case 1:
            return " auto negotiation\n";
        case 2:
            return " 10 Mb/s, half duplex\n";
        case 4:
            return " 10 Mb/s, full duplex\n";
        case 8:
            return " 100 Mb/s, half duplex\n";
        case 16:
            return " 100 Mb/s, full duplex\n";
        case 32:
            return " 1000 Mb/s, half duplex\n";
        case 64:
            return " 1000 Mb/s, full duplex\n";
        case 128:
            return " 10 Gb/s, full duplex\n";
        case 256:
            return " 2500 Mb/s, full duplex\n";
        case 512:
            return " 20 Gb/s, full duplex\n";
        case 1024:
            return " 40 Gb/s, full duplex\n";
        case 2048:
            return " 100 Gb/s, full duplex\n";
        default:
            return nullptr;
    }
}

}  // namespace

// A free port has neither a number nor class words.
void printPortStatus(const PrintJob &job) {
    constexpr uint64_t kInUse = 1u << 0;
    constexpr uint64_t kLinkUp = 1u << 1;
    constexpr uint64_t kBlocked = 1u << 2;
    const uint64_t flags = job.record.u64(0);
    job.print<"\t\t%s =">(job.key);
    if ((flags & kInUse) == 0) {
        job.print<" free\n">();
        return;
    }
    job.print<" inUse">();
    if ((flags & kLinkUp) != 0) job.print<" linkUp">();
    if ((flags & kBlocked) != 0) job.print<" blocked">();
    job.print<" portID=%u %s">(job.record.u32(16), job.record.text(20));
    job.print<" propType = %s\n">(NetDVSPropTypeStr(job.propType));
}

void printPassThroughStatus(const PrintJob &job) {
    constexpr uint64_t kActive = 1u << 3;
    job.print<"\t\t%s =">(job.key);
    if ((job.record.u64(0) & kActive) != 0) {
        job.print<" passthru, ">();
    } else {
        job.print<" noPassthruReason = %u, ">(job.record.u64(8));
    }
    job.print<"\tpropType = %s\n">(NetDVSPropTypeStr(job.propType));
}

void printPortStatistics(const PrintJob &job) {
    const auto counter = [&](uint64_t index) { return job.record.u64(8 * index); };
    job.print<"\t\t%s:\n">(job.key);
    NetDVSDumpPrintEach<
        "\t\t\tpktsInUnicast = %u\n", "\t\t\tbytesInUnicast = %u\n", "\t\t\tpktsInMulticast = %u\n",
        "\t\t\tbytesInMulticast = %u\n", "\t\t\tpktsInBroadcast = %u\n", "\t\t\tbytesInBroadcast = %u\n",
        "\t\t\tpktsOutUnicast = %u\n", "\t\t\tbytesOutUnicast = %u\n", "\t\t\tpktsOutMulticast = %u\n",
        "\t\t\tbytesOutMulticast = %u\n", "\t\t\tpktsOutBroadcast = %u\n", "\t\t\tbytesOutBroadcast = %u\n",
        "\t\t\tpktsInDropped = %u\n", "\t\t\tpktsOutDropped = %u\n", "\t\t\tpktsInException = %u\n",
        "\t\t\tpktsOutException = %u\n">(job.ctx, counter(0), counter(1), counter(2), counter(3), counter(4),
                                         counter(5), counter(6), counter(7), counter(8), counter(9),
                                         counter(10), counter(11), counter(12), counter(13), counter(14),
                                         counter(15));
    job.classLine();
}

// The reason is shown for a health that has a colour only.
void printHostStatus(const PrintJob &job) {
    constexpr const char *kColours[] = {"green", "yellow", "red"};
    const uint32_t health = job.record.u32(0);
    const std::string_view classes = NetDVSPropTypeStr(job.propType);
    job.print<"\t\t%s = ">(job.key);
    if (health < std::size(kColours)) {
        job.print<"%s %s, \tpropType = %s\n">(kColours[health], job.record.text(4), classes);
    } else {
        job.print<"unknown value %u, \tpropType = %s\n">(health, classes);
    }
}

void printLinkStatus(const PrintJob &job) {
    const uint16_t code = job.record.u16(2);
    job.print<"\t\t%s =\n\t\t\t">(job.key);
    job.print<"%s">(job.record.u8(0) != 0 ? "link up;" : "link down;");
    if (const char *text = speedText(code); text != nullptr) {
        job.print<"%s">(text);
    } else {
        job.print<" unknow speed/duplex %d\n">(code);  // spelled so
    }
    job.classLine();
}

void printOverlay(const PrintJob &job) {
    constexpr uint64_t kEntrySize = 36;
    const RecordView &record = job.record;
    const uint64_t count = record.entriesOfRow(record.u32(0), 4, kEntrySize);
    job.print<"\t\t%s =">(job.key);
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t entry = 4 + kEntrySize * i;
        job.print<" %s(%u)">(record.text(entry + 4, 32), record.u32(entry));
    }
    job.print<"\n">();
    job.classLine();
}

// The first binding follows "=" without a blank, and each has one behind it.
void printPortOverlay(const PrintJob &job) {
    constexpr uint64_t kEntrySize = 12;
    const RecordView &record = job.record;
    const uint64_t count = record.wholeEntries(record.u32(0), 4, kEntrySize);
    job.print<"\t\t%s =">(job.key);
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t entry = 4 + kEntrySize * i;
        job.print<"0x%x@%u ">(record.u64(entry + 4), record.u32(entry));
    }
    job.print<"\n">();
    job.classLine();
}

void printVlanInForce(const PrintJob &job) {
    const uint16_t ranges = job.record.u16(2);
    job.print<"\t\t%s = VLAN %d\n">(job.key, job.record.u16(0));
    if (ranges != 0) {
        job.print<"\t\t\tranges =">();
        printRanges(job, 4, ranges);
        job.print<"\n">();
    }
    job.classLine();
}

void printUplinkNames(const PrintJob &job) {
    printUplinkList(job, 81);
}
void printUplinkPorts(const PrintJob &job) {
    printUplinkList(job, 48);
}

}  // namespace qvs

// The printers of health checks, MAC learning and multicast address lists.
#include "dump/printers.h"

namespace qvs {

using namespace std::string_view_literals;

namespace {

std::string_view yesNo(bool yes) {
    return yes ? "true" : "false";
}
std::string_view enabled(bool yes) {
    return yes ? "enabled" : "disabled";
}

// One kind of ranges of a check result.
template <Format Label>
void printRangeLine(const PrintJob &job, uint64_t offset, uint64_t count) {
    job.print<Label>();
    if (count != 0) {
        printRanges(job, offset, count);
        job.print<"\n">();
    } else {
        job.print<" <none>\n">();
    }
}

// Two counts, the ranges of the first kind, the ranges of the second.
template <Format First, Format Second>
void printCheckResult(const PrintJob &job) {
    const uint16_t first = job.record.u16(0);
    const uint16_t second = job.record.u16(2);
    job.print<"\t\t%s:\n">(job.key);
    printRangeLine<First>(job, 4, first);
    printRangeLine<Second>(job, 4 + 4 * uint64_t{first}, second);
    job.classLine();
}

}  // namespace

void printVlanCheckResult(const PrintJob &job) {
    printCheckResult<"\t\t\ttrunked =", "\t\t\tuntrunked =">(job);
}

void printMtuCheckResult(const PrintJob &job) {
    printCheckResult<"\t\t\tallowed =", "\t\t\tdisallowed =">(job);
}

void printTeamCheckDeployment(const PrintJob &job) {
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tenabled = %s\n">(yesNo(job.record.u8(0) != 0));
    job.print<"\t\t\tinterval = %u minutes\n">(job.record.u32(1));
    job.classLine();
}

void printTeamCheckParameter(const PrintJob &job) {
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tip hash expected = %s\n">(yesNo(job.record.u8(0) != 0));
    job.classLine();
}

void printMacLearning(const PrintJob &job) {
    constexpr uint32_t kAgingTimeBits = 0xffffff;
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tagingTime = %u seconds\n">(job.record.u32(0) & kAgingTimeBits);
    job.print<"\t\t\tmacLimit = %u\n">(job.record.u32(4));
    job.classLine();
}

// Learning and acceptance of static addresses: on when the text begins with "true".
void printMacLearningSwitch(const PrintJob &job) {
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tenabled = %s\n">(yesNo(job.record.text(0).starts_with("true")));
    job.classLine();
}

void printMacManagement(const PrintJob &job) {
    const RecordView &record = job.record;
    job.print<
        "\t\t%s:\n"
        "\t\t\tmac change = %s\n"
        "\t\t\tlearning = %s\n"
        "\t\t\tflooding = %s\n"
        "\t\t\tmacLimit = %u\n"
        "\t\t\tmacLimitPolicy = %s\n">(job.key, record.u8(0) != 0 ? "allow"sv : "deny"sv,
                                       enabled(record.u8(1) != 0), enabled(record.u8(2) != 0), record.u32(3),
                                       record.u32(7) == 0 ? "allow"sv : "not allow"sv);
    job.classLine();
}

void printMulticastAddresses(const PrintJob &job) {
    constexpr uint64_t kAddressSize = 6;
    const uint8_t count = job.record.u8(0);
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tcount = %u\n">(count);
    const uint64_t entries = job.record.wholeEntries(count, 1, kAddressSize);
    for (uint64_t i = 0; i < entries; ++i) {
        job.print<"\t\t\taddress = %s\n">(AddressText::ofMac(job.record, 1 + kAddressSize * i).view());
    }
    job.classLine();
}

}  // namespace qvs

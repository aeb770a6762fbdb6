// SPDX-License-Identifier: Apache-2.0
// The printers of health checks, MAC learning and multicast address lists.
#include "dump/printers.h"
#include "qvs/healthcheck.h"
#include "qvs/vsdvs.h"

namespace qvs {

using namespace std::string_view_literals;

namespace {

std::string_view yesNo(bool yes) {
    return yes ? "true" : "false";
}
std::string_view enabled(bool yes) {
    return yes ? "enabled" : "disabled";
}

// Prints the ranges of one kind of a check result.
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

// The record contains two counts, the ranges of the first kind, and the ranges of the second kind.
template <Format First, Format Second>
void printCheckResult(const PrintJob &job) {
    const auto head = job.record.at<HealthCheck_Result>();
    const uint64_t ranges = sizeof head;
    job.print<"\t\t%s:\n">(job.key);
    printRangeLine<First>(job, ranges, head.firstCount);
    printRangeLine<Second>(job, ranges + sizeof(HealthCheck_Range) * head.firstCount, head.secondCount);
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
    const auto deployment = job.record.at<HealthCheck_Deployment>();
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tenabled = %s\n">(yesNo(deployment.enabled != 0));
    job.print<"\t\t\tinterval = %u minutes\n">(deployment.intervalMinutes);
    job.classLine();
}

void printTeamCheckParameter(const PrintJob &job) {
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tip hash expected = %s\n">(yesNo(job.record.at<uint8_t>() != 0));
    job.classLine();
}

void printMacLearning(const PrintJob &job) {
    const auto learning = job.record.at<VSDVS_MACLearning>();
    uint32_t agingTime = 0;
    std::memcpy(&agingTime, learning.agingTime, sizeof learning.agingTime);
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tagingTime = %u seconds\n">(agingTime);
    job.print<"\t\t\tmacLimit = %u\n">(learning.macLimit);
    job.classLine();
}

// Prints the settings for static addresses: enabled if the text begins with "true".
void printMacLearningSwitch(const PrintJob &job) {
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tenabled = %s\n">(yesNo(job.record.text(0).starts_with("true")));
    job.classLine();
}

void printMacManagement(const PrintJob &job) {
    const auto management = job.record.at<VSDVS_PortMACManagement>();
    const VSDVS_PortMACLearning &learning = management.learning;
    job.print<
        "\t\t%s:\n"
        "\t\t\tmac change = %s\n"
        "\t\t\tlearning = %s\n"
        "\t\t\tflooding = %s\n"
        "\t\t\tmacLimit = %u\n"
        "\t\t\tmacLimitPolicy = %s\n">(job.key, management.macChange != 0 ? "allow"sv : "deny"sv,
                                       enabled(learning.learning != 0), enabled(learning.flooding != 0),
                                       learning.macLimit,
                                       learning.macLimitPolicy == 0 ? "allow"sv : "not allow"sv);
    job.classLine();
}

void printMulticastAddresses(const PrintJob &job) {
    constexpr uint64_t kAddressSize = sizeof(VSDVS_MACAddress);
    const auto head = job.record.at<VSDVS_McastList>();
    job.print<"\t\t%s:\n">(job.key);
    job.print<"\t\t\tcount = %u\n">(head.count);
    const uint64_t entries = job.record.wholeEntries(head.count, sizeof head, kAddressSize);
    for (uint64_t i = 0; i < entries; ++i) {
        job.print<"\t\t\taddress = %s\n">(
            AddressText::ofMac(job.record, sizeof head + kAddressSize * i).view());
    }
    job.classLine();
}

}  // namespace qvs

// SPDX-License-Identifier: Apache-2.0
// The printers of the registry, and the functions that they share. The code of a printer shows the layout of
// its output.
#pragma once

#include "dump/registry.h"

namespace qvs {

// Single values.
void printGeneric(const PrintJob &job);
void printNumber(const PrintJob &job);
void printOpaque(const PrintJob &job);

// State that the kernel publishes.
void printPortStatus(const PrintJob &job);
void printPassThroughStatus(const PrintJob &job);
void printPortStatistics(const PrintJob &job);
void printHostStatus(const PrintJob &job);
void printLinkStatus(const PrintJob &job);
void printOverlay(const PrintJob &job);
void printPortOverlay(const PrintJob &job);
void printVlanInForce(const PrintJob &job);
void printUplinkNames(const PrintJob &job);
void printUplinkPorts(const PrintJob &job);

// Policies.
void printTeaming(const PrintJob &job);
void printVlan(const PrintJob &job);
void printPrivateVlanMap(const PrintJob &job);
void printShaper(const PrintJob &job);
void printSecurity(const PrintJob &job);
void printExtraEthFilter(const PrintJob &job);
void printDiscovery(const PrintJob &job);
void printIPv4Address(const PrintJob &job);
void printSwitchIpfix(const PrintJob &job);
void printPortIpfix(const PrintJob &job);
void printSwitchLacp(const PrintJob &job);
void printPortLacp(const PrintJob &job);

// Settings and results.
void printMirrorSessions(const PrintJob &job);
void printVlanCheckResult(const PrintJob &job);
void printMtuCheckResult(const PrintJob &job);
void printTeamCheckDeployment(const PrintJob &job);
void printTeamCheckParameter(const PrintJob &job);
void printMacLearning(const PrintJob &job);
void printMacLearningSwitch(const PrintJob &job);
void printMacManagement(const PrintJob &job);
void printMulticastAddresses(const PrintJob &job);

// Returns whether a character is printable in the C locale, whatever the current locale is.
inline bool isPrintable(unsigned char byte) {
    return byte >= 0x20 && byte <= 0x7e;
}

// Returns whether a record is exactly one printable text with its NUL.
bool isPrintableString(const RecordView &record);

// " first" or " first-last" for ranges of two 16-bit numbers, of VLANs or MTUs; the last is shown whenever it
// differs.
void printRanges(const PrintJob &job, uint64_t offset, uint64_t count);

// The text of an address in a record, so that its line is appended as one piece: IPv4 with points, IPv6 as
// eight full groups, MAC with colons.
class AddressText {
  public:
    static AddressText ofIPv4(const RecordView &record, uint64_t offset);
    static AddressText ofIPv6(const RecordView &record, uint64_t offset);
    static AddressText ofMac(const RecordView &record, uint64_t offset);
    std::string_view view() const { return {text_, length_}; }

  private:
    template <Format F, typename... Bytes>
    static AddressText of(Bytes... bytes);

    char text_[64];  // an IPv6 address has 39 characters; writing a number can touch bytes after it
    size_t length_;
};

}  // namespace qvs

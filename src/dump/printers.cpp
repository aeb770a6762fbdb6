// SPDX-License-Identifier: Apache-2.0
// The printers of single values, and the functions that several printers share.
#include "dump/printers.h"

#include "qvs/vsdvs.h"

namespace qvs {

bool isPrintableString(const RecordView &record) {
    const uint32_t length = record.length();
    const unsigned char *bytes = record.bytes();
    uint32_t i = 0;
    while (i < length && isPrintable(bytes[i]))
        ++i;
    return length != 0 && i == length - 1 && bytes[i] == '\0';
}

void printRanges(const PrintJob &job, uint64_t offset, uint64_t count) {
    const RecordView &record = job.record;
    const uint64_t entries = record.wholeEntries(count, offset, sizeof(VSDVS_VLANRange));
    for (uint64_t i = 0; i < entries; ++i) {
        const auto range = record.at<VSDVS_VLANRange>(offset + sizeof(VSDVS_VLANRange) * i);
        job.print<" %u">(range.first);
        if (range.first != range.last) job.print<"-%u">(range.last);
    }
}

template <Format F, typename... Bytes>
AddressText AddressText::of(Bytes... bytes) {
    AddressText address;
    const char *end = writePiece<F>(address.text_, std::index_sequence_for<Bytes...>(), bytes...);
    address.length_ = static_cast<size_t>(end - address.text_);
    return address;
}

AddressText AddressText::ofIPv4(const RecordView &record, uint64_t offset) {
    const auto byte = [&](uint64_t i) { return record.at<uint8_t>(offset + i); };
    return of<"%u.%u.%u.%u">(byte(0), byte(1), byte(2), byte(3));
}

AddressText AddressText::ofIPv6(const RecordView &record, uint64_t offset) {
    const auto byte = [&](uint64_t i) { return record.at<uint8_t>(offset + i); };
    return of<"%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x">(
        byte(0), byte(1), byte(2), byte(3), byte(4), byte(5), byte(6), byte(7), byte(8), byte(9), byte(10),
        byte(11), byte(12), byte(13), byte(14), byte(15));
}

AddressText AddressText::ofMac(const RecordView &record, uint64_t offset) {
    const auto byte = [&](uint64_t i) { return record.at<uint8_t>(offset + i); };
    return of<"%02x:%02x:%02x:%02x:%02x:%02x">(byte(0), byte(1), byte(2), byte(3), byte(4), byte(5));
}

// Prints connection ids and MTUs: one 32-bit number, printed as signed.
void printNumber(const PrintJob &job) {
    job.print<"\t\t%s = %d , \tpropType = %s\n">(job.key, job.record.at<int32_t>(),
                                                 NetDVSPropTypeStr(job.propType));
}

// Prints a value whose key has no printer of its own: as text if it is one printable string, otherwise as
// bytes.
void printGeneric(const PrintJob &job) {
    if (isPrintableString(job.record)) {
        job.print<"\t\t%s = %s , \tpropType = %s\n">(job.key, job.record.text(0),
                                                     NetDVSPropTypeStr(job.propType));
        return;
    }
    // The first byte is readable even if the length is 0. Bytes are padded with a blank, not with a zero.
    const unsigned char *bytes = job.record.bytes();
    job.print<"\t\t%s = 0x%2x">(job.key, bytes[0]);
    for (uint32_t i = 1; i < job.record.length(); ++i)
        job.print<".%2x">(bytes[i]);
    job.print<"\n">();
    job.classLine();
}

// Prints records whose layout only other programs know: the length, then the text or rows of 16 bytes.
void printOpaque(const PrintJob &job) {
    const RecordView &record = job.record;
    job.print<"\t\t%s:\n\t\t\tlength = %u\n">(job.key, record.length());
    if (isPrintableString(record)) {
        job.print<"\t\t\ttext = %s\n">(record.text(0));
    } else {
        for (uint32_t i = 0; i < record.length(); ++i) {
            if (i % 16 == 0) job.print<"\t\t\tbytes = ">();
            job.print<"%02x">(record.bytes()[i]);
            const bool endsLine = i % 16 == 15 || i + 1 == record.length();
            if (endsLine) {
                job.print<"\n">();
            } else {
                job.print<" ">();
            }
        }
    }
    job.classLine();
}

}  // namespace qvs

// The printers of single values: numbers, and whatever has no layout of its own.
#include "dump/printers.h"

#include "dump/record.h"

namespace qvs {
namespace {

// Printable as in the C locale, whatever the locale is.
bool isPrintable(unsigned char byte) {
    return byte >= 0x20 && byte <= 0x7e;
}

bool isPrintableString(const unsigned char *bytes, uint32_t length) {
    uint32_t i = 0;
    while (i < length && isPrintable(bytes[i]))
        ++i;
    return length != 0 && i == length - 1 && bytes[i] == '\0';
}

}  // namespace

int printNumber(const char *key, const void *value, uint32_t length, uint32_t propType, NetDVSDumpCtx *ctx) {
    char words[kPropTypeSize];
    NetDVSPropTypeStr(propType, words);
    NetDVSDumpPrintf(ctx, "\t\t%s = %d , \tpropType = %s\n", key, RecordView(value, length).at<int32_t>(0),
                     words);
    return 0;
}

int printGeneric(const char *key, const void *value, uint32_t length, uint32_t propType, NetDVSDumpCtx *ctx) {
    char words[kPropTypeSize];
    NetDVSPropTypeStr(propType, words);
    const auto *bytes = static_cast<const unsigned char *>(value);
    if (isPrintableString(bytes, length)) {
        NetDVSDumpPrintf(ctx, "\t\t%s = %s , \tpropType = %s\n", key, reinterpret_cast<const char *>(bytes),
                         words);
        return 0;
    }
    // The first byte is there even when the length is 0; bytes are padded with a blank, not with a zero.
    NetDVSDumpPrintf(ctx, "\t\t%s = 0x%2x", key, bytes[0]);
    for (uint32_t i = 1; i < length; ++i)
        NetDVSDumpPrintf(ctx, ".%2x", bytes[i]);
    NetDVSDumpPrintf(ctx, "\n");
    NetDVSDumpPrintf(ctx, "\t\t\tpropType = %s\n", words);
    return 0;
}

}  // namespace qvs

// SPDX-License-Identifier: Apache-2.0
#include "access/opaque.h"

#include <cstring>
#include <iterator>

#include "config/library/snapshot.h"

namespace qvs::cli {
namespace {

// What fits a line as hexadecimal digits.
constexpr size_t kLineBytes = 32;

}  // namespace

std::string pointerText(void *pointer) {
    if (pointer != nullptr) return "...";
    return errno == 0 ? "null" : fmt::format("null ({})", std::strerror(errno));
}

Failure requestFailure(std::string_view subject, int error) {
    Exit exit = error == ENOENT ? Exit::NotFound : Exit::Failed;
    return {exit, fmt::format("{}: {}", subject, error == 0 ? "no answer" : std::strerror(error)), true};
}

void printRecord(const Arguments &arguments, Output &out, const char *key, const char *label, Bytes record) {
    if (arguments.given("--raw")) return writeRaw(out, arguments.text("--raw"), record);
    Record shown(out);
    if (record.size() <= kLineBytes) {
        shown.field(key, label, record);
    } else {
        shown.block(key, label, record);
    }
    shown.finish();
}

void printList(const Arguments &arguments, Output &out, const KernelList &list, std::string_view label) {
    if (arguments.given("--raw")) return writeRaw(out, arguments.text("--raw"), list.bytes());
    // An empty list shows its heading, whatever the size of its entries.
    if (out.json() || list.entrySize <= kLineBytes || list.count == 0) {
        Listing listing(out, {{"index", "INDEX"}, {"entry", "ENTRY"}});
        for (uint32_t i = 0; i < list.count; i++)
            listing.row(i, list.entry(i));
        return listing.finish();
    }
    for (uint32_t i = 0; i < list.count; i++) {
        fmt::format_to(std::back_inserter(out.buffer()), "{} {} ({} bytes):\n", label, i, list.entrySize);
        appendHexDump(out.buffer(), list.entry(i));
        out.drain();
    }
}

NumberedPort numberedPort(const Arguments &arguments) {
    const std::string &alias = arguments.text("SWITCH");
    const std::string &port = arguments.text("PORT");
    findPort(findVswitch(alias), alias, port);
    return {named(alias, port), portNumber(alias, port)};
}

}  // namespace qvs::cli

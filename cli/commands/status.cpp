// SPDX-License-Identifier: Apache-2.0
// qvs status: what a status of the library means.
#include <qvs/qvs.h>

#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

void explain(const Arguments &arguments, Output &out) {
    uint32_t status = arguments.number("CODE", 0);
    std::string code = fmt::format("0x{:x}", status);
    std::string_view text = ReturnStatusToString(status);
    if (!out.json()) return out.write(fmt::format("{}: {}\n", code, text));
    Record record(out);
    record.field("status", "status", status);
    record.field("hex", "hex", code);
    record.field("text", "text", text);
    record.finish();
}

const Command kRows[] = {
    {.words = "status",
     .summary = "explain an error code of the library",
     .arguments = {{"CODE", "status, decimal or hexadecimal after 0x"}},
     .example = "qvs status 0xbad0003",
     .run = local(explain)},
};

}  // namespace

const std::span<const Command> kStatusCommands = kRows;

}  // namespace qvs::cli

// SPDX-License-Identifier: Apache-2.0
// Records that only the kernel defines: fetched with the reason of a failure, and shown by the fields that a
// layout file names, else as bytes.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "access/layout.h"
#include "access/library.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {

using HeapBuffer = std::unique_ptr<void, Releaser<std::free>>;

// What such a call answered.
struct Answer {
    HeapBuffer buffer;
    int error = 0;  // why there is no buffer; 0 when no request has failed
};

std::string pointerText(void *pointer);

template <auto Function, typename... Arguments>
Answer fetchAnswer(Arguments... arguments) {
    errno = 0;
    Answer answer{HeapBuffer(traced<Function>(pointerText, arguments...)), 0};
    if (!answer.buffer) answer.error = errno;
    return answer;
}

// A request that failed with this errno. 0 stands for a failure without a request.
Failure requestFailure(std::string_view subject, int error);

// A record; throws when there is none.
template <auto Function, typename... Arguments>
HeapBuffer fetchRecord(std::string_view subject, Arguments... arguments) {
    Answer answer = fetchAnswer<Function>(arguments...);
    if (!answer.buffer) throw requestFailure(subject, answer.error);
    return std::move(answer.buffer);
}

inline Bytes recordIn(const HeapBuffer &buffer, size_t size) {
    return {static_cast<const uint8_t *>(buffer.get()), size};
}

// What a record is called: by layout files, as a key in JSON, as a label in text.
struct RecordKind {
    const char *name;
    const char *key;
    const char *label;
};

// The record by its fields; nothing, and a remark in text once, when no layout describes it. Options that
// need a layout are then usage failures. `given` is the number that the request tells the layout.
std::optional<FieldValues> decoded(const Arguments &arguments, const Output &out, const RecordKind &kind,
                                   Bytes record, std::optional<uint32_t> given = std::nullopt);

// A record as a part of what is shown of an object: its bytes and, under `fieldsKey`, its fields in JSON; in
// text its fields, else its bytes.
void addRecord(Record &shown, Output &out, const RecordKind &kind, const std::optional<Bytes> &bytes,
               const std::optional<FieldValues> &fields, const char *fieldsKey = "fields");
void addRecord(const Arguments &arguments, Record &shown, Output &out, const RecordKind &kind,
               const std::optional<Bytes> &bytes, const char *fieldsKey = "fields");
// The fields of a record as fields of what is shown, in text or as members; all but `without`.
void addFields(Record &shown, const FieldValues &record, const LayoutField *without = nullptr);

// One record alone; --raw writes its bytes. A group of entries in it is a list that the options of lists
// select from.
void printRecord(const Arguments &arguments, Output &out, const RecordKind &kind, Bytes record);

// The entries of a list; --raw writes header and entries.
void printList(const Arguments &arguments, Output &out, const KernelList &list, const RecordKind &kind,
               std::optional<uint32_t> given = std::nullopt);

// The options of commands that show such a record, and such a list.
inline constexpr Option kLayout{
    "--layout", "FILE", "show the fields that this layout file describes (the file that QVS_LAYOUT names)",
    Kind::File};
inline constexpr Option kRecordOptions[] = {kRaw, kLayout};
inline constexpr Option kListOptions[] = {
    kRaw,
    kLayout,
    {.name = "--where",
     .value = "FIELD=VALUE",
     .summary = "show only entries with this value of a field",
     .repeated = true,
     .excludes = "--raw"},
    {.name = "--sort", .value = "FIELD", .summary = "sort the entries by a field", .excludes = "--raw"},
    {.name = "--reverse", .value = nullptr, .summary = "list the last entry first", .excludes = "--raw"},
    {.name = "--limit", .value = "N", .summary = "show at most N entries", .excludes = "--raw"},
};

// A usage failure when an option above is given without --kernel, for commands that otherwise show no record.
void requireKernel(const Arguments &arguments);

// The port that SWITCH and PORT name, as the kernel numbers it; throws when there is none.
struct NumberedPort {
    std::string named;
    uint32_t number = 0;
};
NumberedPort numberedPort(const Arguments &arguments);

// What such a command looks at, for its row.
inline std::vector<std::string> touchedPort(const Arguments &arguments) {
    return {touchedPath({arguments.text("SWITCH"), "port", arguments.text("PORT")})};
}

// For rows that are about the kernel alone and leave the snapshot as it is.
inline std::vector<std::string> touchesNothing(const Arguments &) {
    return {};
}

}  // namespace qvs::cli

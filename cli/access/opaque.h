// SPDX-License-Identifier: Apache-2.0
// Records whose format only the kernel defines. They are shown by field when a layout file describes them,
// and as bytes otherwise.
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
#include "tool/values.h"

namespace qvs::cli {

using HeapBuffer = std::unique_ptr<void, Releaser<std::free>>;

// The result of a call that fetches such a record.
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

// The names of a record: in layout files, as a key in JSON, and as a label in text.
struct RecordKind {
    const char *name;
    const char *key;
    const char *label;
};

// The layout of a record of this size in the file that --layout or the environment names, or why there is
// none. Throws a usage failure for a file that --layout names and that is wrong.
struct FoundLayout {
    const RecordLayout *layout = nullptr;
    std::string why;
    bool isFault = false;  // of the file that the environment names
};
FoundLayout findLayout(const Arguments &arguments, const RecordKind &kind, size_t size);

// Whether the options of lists choose from a list of records, or from the group of entries in one record.
enum class Entries { OfList, OfRecord };
// For the `agrees` of rows: refuses options of lists that name fields that the layout does not have, and such
// options without a layout.
void requireFields(const Arguments &arguments, const char *record, Entries entries);
template <const RecordKind &kind>
void choosesFrom(const Arguments &arguments) {
    requireFields(arguments, kind.name, Entries::OfList);
}
template <const RecordKind &kind>
void choosesWithin(const Arguments &arguments) {
    requireFields(arguments, kind.name, Entries::OfRecord);
}
void checkCondition(std::string_view name, const std::string &text);

// The record by its fields; nothing, and a remark in text once, when no layout describes it. Options that
// need a layout are then usage failures. `given` is the number that the request tells the layout.
std::optional<FieldValues> decoded(const Arguments &arguments, const Output &out, const RecordKind &kind,
                                   Bytes record, std::optional<uint32_t> given = std::nullopt);

// Prints a record as a part of an object. JSON has its bytes and, under `fieldsKey`, its fields. Text has its
// fields, or its bytes when there is no layout.
void addRecord(Record &shown, Output &out, const RecordKind &kind, const std::optional<Bytes> &bytes,
               const std::optional<FieldValues> &fields, const char *fieldsKey = "fields");
void addRecord(const Arguments &arguments, Record &shown, Output &out, const RecordKind &kind,
               const std::optional<Bytes> &bytes, const char *fieldsKey = "fields");
// Prints the fields of a record, except `without`, as fields of the object.
void addFields(Record &shown, const FieldValues &record, const LayoutField *without = nullptr);

// Prints one record; --raw writes its bytes. The options of lists apply to the group of entries in it.
void printRecord(const Arguments &arguments, Output &out, const RecordKind &kind, Bytes record);

// Prints the entries of a list; --raw writes the header and the entries.
void printList(const Arguments &arguments, Output &out, const KernelList &list, const RecordKind &kind,
               std::optional<uint32_t> given = std::nullopt);

// The options of commands that show such a record, and such a list.
inline constexpr Option kLayout{
    "--layout", "FILE", "show the fields that this layout file describes (the file that QVS_LAYOUT names)",
    Kind::File};
inline constexpr Option kRecordOptions[] = {kRaw, kLayout};
constexpr Option ofKernel(Option option) {
    option.needs = kKernelOption;
    return option;
}
inline constexpr Option kListOptions[] = {
    ofKernel(kRaw),
    ofKernel(kLayout),
    ofKernel({.name = "--where",
              .value = "FIELD=VALUE",
              .summary = "show only entries with this value of a field",
              .repeated = true,
              .excludes = "--raw",
              .check = checkCondition}),
    ofKernel(
        {.name = "--sort", .value = "FIELD", .summary = "sort the entries by a field", .excludes = "--raw"}),
    ofKernel(
        {.name = "--reverse", .value = nullptr, .summary = "list the last entry first", .excludes = "--raw"}),
    ofKernel({.name = "--limit",
              .value = "N",
              .summary = "show at most N entries",
              .excludes = "--raw",
              .check = checkNumber<0, UINT32_MAX>}),
};

// The port that SWITCH and PORT name, as the kernel numbers it; throws when there is none.
struct NumberedPort {
    std::string named;
    uint32_t number = 0;
};
NumberedPort numberedPort(const Arguments &arguments);

// The paths that such a command reads.
inline std::vector<std::string> touchedPort(const Arguments &arguments) {
    return {touchedPath({arguments.text("SWITCH"), "port", arguments.text("PORT")})};
}

// For commands that neither read nor change what the snapshot holds.
inline std::vector<std::string> touchesNothing(const Arguments &) {
    return {};
}

}  // namespace qvs::cli

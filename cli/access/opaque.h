// SPDX-License-Identifier: Apache-2.0
// Records that nobody but the kernel reads, from the calls that answer a pointer alone: fetched with the
// reason of a failure, and shown as bytes.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

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

// One record under a key and a label: in a line when it is short, else as a hex dump; --raw writes its bytes.
void printRecord(const Arguments &arguments, Output &out, const char *key, const char *label, Bytes record);

// The entries of a list by their index, likewise; --raw writes header and entries. One entry is called
// `label`.
void printList(const Arguments &arguments, Output &out, const KernelList &list, std::string_view label);

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

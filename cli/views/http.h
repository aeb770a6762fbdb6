// SPDX-License-Identifier: Apache-2.0
// One HTTP request on standard input, answered on standard output, as a socket-activated service has them.
#pragma once

#include <fmt/format.h>

#include <functional>
#include <span>
#include <string_view>

namespace qvs::cli {

// The type of metrics in the text format.
inline constexpr const char *kMetricsType = "text/plain; version=0.0.4; charset=utf-8";

// What a resource answers with.
struct Resource {
    std::string_view path;
    std::string_view contentType;
    // Appends the content. A Failure becomes status 503 with its message.
    std::function<void(fmt::memory_buffer &)> content;
};

// Reads one request, answers GET and HEAD of the resources and refuses the rest. A client that sends or reads
// too slowly is dropped.
void answerRequest(std::span<const Resource> resources);

}  // namespace qvs::cli

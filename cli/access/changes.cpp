// SPDX-License-Identifier: Apache-2.0
#include "access/changes.h"

#include <iterator>
#include <optional>

#include "tool/output.h"

namespace qvs::cli {
namespace {

using Kind = config::Change::Kind;

const char *signOf(Kind kind) {
    switch (kind) {
        case Kind::Added:
            return "+";
        case Kind::Removed:
            return "-";
        case Kind::Changed:
            break;
    }
    return "~";
}

const char *wordOf(Kind kind) {
    switch (kind) {
        case Kind::Added:
            return "added";
        case Kind::Removed:
            return "removed";
        case Kind::Changed:
            break;
    }
    return "changed";
}

std::optional<std::string_view> orNull(const std::string &text) {
    if (text.empty()) return std::nullopt;
    return text;
}

}  // namespace

void appendChanges(fmt::memory_buffer &out, const std::vector<config::Change> &changes) {
    for (const config::Change &change : changes) {
        const auto end = std::back_inserter(out);
        fmt::format_to(end, "{} {}", signOf(change.kind), change.path());
        const bool both = !change.beforeText.empty() && !change.afterText.empty();
        if (both) {
            fmt::format_to(end, ": {} -> {}", change.beforeText, change.afterText);
        } else if (!change.beforeText.empty() || !change.afterText.empty()) {
            fmt::format_to(end, ": {}{}", change.beforeText, change.afterText);
        }
        out.push_back('\n');
    }
}

void appendChangesJson(fmt::memory_buffer &out, const std::vector<config::Change> &changes) {
    std::string_view before = "[";
    for (const config::Change &change : changes) {
        out.append(before);
        out.append(std::string_view("{\"path\":"));
        appendJson(out, change.path());
        out.append(std::string_view(",\"change\":"));
        appendJson(out, std::string_view(wordOf(change.kind)));
        out.append(std::string_view(",\"before\":"));
        appendJson(out, orNull(change.beforeText));
        out.append(std::string_view(",\"after\":"));
        appendJson(out, orNull(change.afterText));
        out.push_back('}');
        before = ",";
    }
    out.append(std::string_view(changes.empty() ? "[]" : "]"));
}

}  // namespace qvs::cli

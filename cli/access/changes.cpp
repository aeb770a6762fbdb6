// SPDX-License-Identifier: Apache-2.0
#include "access/changes.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "config/document/write.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

using config::Change;

// How each kind of change is shown.
struct Look {
    const char *name;  // in JSON
    char mark;
    const char *colour;
};
constexpr Look kLooks[] = {
    {"added", '+', "\x1b[32m"}, {"removed", '-', "\x1b[31m"}, {"changed", '~', "\x1b[33m"}};

const Look &lookOf(const Change &change) {
    return kLooks[static_cast<size_t>(change.kind)];
}

// The text of a value, in which the number of bytes stands for the base64 of a long property. The text of a
// setting that is stored in a form of its own has several properties.
std::string shortened(std::string text) {
    constexpr size_t kMostShown = 64;
    constexpr std::string_view kProperty = "{class: ";
    constexpr std::string_view kBytes = "value: ";
    if (!text.starts_with(kProperty)) return text;
    size_t at = text.find(kBytes);
    while (at != std::string::npos) {
        at += kBytes.size();
        const size_t end = std::min(text.find('}', at), text.size());
        const std::string base64 = text.substr(at, end - at);
        if (base64.size() > kMostShown) {
            const auto padding = static_cast<size_t>(std::ranges::count(base64, '='));
            text.replace(at, base64.size(), fmt::format("({} bytes)", base64.size() / 4 * 3 - padding));
        }
        at = text.find(kBytes, at);
    }
    return text;
}

bool inColour(const Output &out) {
    const char *noColour = std::getenv("NO_COLOR");
    return out.terminal() && (noColour == nullptr || *noColour == '\0');
}

// Text that is JSON already.
struct Json {
    std::string text;
};
void appendJson(fmt::memory_buffer &out, const Json &json) {
    out.append(json.text);
}
[[maybe_unused]] void appendText(fmt::memory_buffer &out, const Json &json) {
    out.append(json.text);
}

std::optional<std::string_view> orNull(const std::string &text) {
    if (text.empty()) return std::nullopt;
    return text;
}

void appendMembers(fmt::memory_buffer &out, std::optional<std::string_view> path, std::string_view word,
                   std::optional<std::string_view> before, std::optional<std::string_view> after) {
    out.append(std::string_view("\"path\":"));
    cli::appendJson(out, path);
    out.append(std::string_view(",\"change\":"));
    cli::appendJson(out, word);
    out.append(std::string_view(",\"before\":"));
    cli::appendJson(out, before);
    out.append(std::string_view(",\"after\":"));
    cli::appendJson(out, after);
}

}  // namespace

std::string lineOf(const Change &change) {
    std::string line = fmt::format("{} {}", change.conflict ? '!' : lookOf(change).mark, change.path());
    const std::string &one = change.beforeText.empty() ? change.afterText : change.beforeText;
    if (!one.empty()) line += ": " + shortened(one);
    if (change.kind == Change::Kind::Changed) line += " -> " + shortened(change.afterText);
    if (change.conflict) line += " (an existing switch cannot change it)";
    return line;
}

void appendChangeMembers(fmt::memory_buffer &out, const Change &change) {
    const std::string path = change.path();
    appendMembers(out, path, lookOf(change).name, orNull(change.beforeText), orNull(change.afterText));
}

void appendNoChangeMembers(fmt::memory_buffer &out, std::string_view word) {
    appendMembers(out, std::nullopt, word, std::nullopt, std::nullopt);
}

void printText(const std::vector<Change> &changes, Output &out) {
    const bool colour = inColour(out);
    for (const Change &change : changes) {
        if (colour) out.write(std::string_view(lookOf(change).colour));
        out.write(lineOf(change));
        out.write(std::string_view(colour ? "\x1b[0m\n" : "\n"));
    }
}

void printJson(const std::vector<Change> &changes, Output &out) {
    Listing listing(out, {{"change", "CHANGE"},
                          {"switch", "SWITCH"},
                          {"port", "PORT"},
                          {"host", "HOST"},
                          {"member", "MEMBER"},
                          {"property", "PROPERTY"},
                          {"before", "BEFORE"},
                          {"after", "AFTER"},
                          {"conflict", "CONFLICT"}});
    for (const Change &change : changes) {
        const std::string key = change.property ? change.member : std::string();
        listing.row(std::string_view(lookOf(change).name), std::string_view(change.alias),
                    orNull(change.port), Flag{change.scope == Scope::Host},
                    change.property ? std::nullopt : orNull(change.member), orNull(key),
                    Json{config::jsonOf(change.before)}, Json{config::jsonOf(change.after)},
                    Flag{change.conflict});
    }
    listing.finish();
}

void printDifference(const std::vector<Change> &changes, Output &out) {
    if (out.json()) {
        printJson(changes, out);
    } else {
        printText(changes, out);
    }
    if (!changes.empty()) out.exitWith(static_cast<int>(Exit::Differs));
}

}  // namespace qvs::cli

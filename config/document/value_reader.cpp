// SPDX-License-Identifier: Apache-2.0
#include "config/document/value_reader.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/text.h"

namespace qvs::config {
namespace {

// A document with more problems than these is no document.
constexpr size_t kMostProblems = 1000;

// Line ends and the like, which escapes in quotes can bring into a name, are shown; backslashes stay as they
// are written.
std::string shownPart(std::string_view name) {
    const bool plain =
        std::ranges::all_of(name, [](char c) { return static_cast<unsigned char>(c) >= 0x20; });
    return plain ? std::string(name) : shown(name);
}

std::vector<std::string_view> wordsOf(const Member &member) {
    return {member.words.begin(), member.words.end()};
}

bool isDecimal(std::string_view text) {
    const bool digits =
        !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
    return digits && (text.size() == 1 || text[0] != '0');
}

const char *nameOf(Node::Kind kind) {
    switch (kind) {
        case Node::Kind::Sequence:
            return "a list";
        case Node::Kind::Mapping:
            return "a mapping";
        case Node::Kind::Empty:
            return "empty";
        default:
            return "a single value";
    }
}

}  // namespace

std::string Path::text() const {
    std::string before = parent == nullptr ? std::string() : parent->text();
    if (index) return fmt::format("{}[{}]", before, *index);
    if (!before.empty()) before += '.';
    return before + shownPart(name);
}

std::string suggestion(std::string_view text, std::span<const std::string_view> words) {
    constexpr size_t kLongest = 64;
    if (text.size() > kLongest) return {};
    std::string_view best;
    size_t least = 1 + std::min<size_t>(text.size() / 3, 2);
    for (std::string_view word : words) {
        const size_t distance = distanceBetween(text, word);
        if (distance > least || (distance == least && !best.empty())) continue;
        least = distance;
        best = word;
    }
    return best.empty() ? std::string() : fmt::format("; did you mean '{}'?", best);
}

void ValueReader::report(const Node &node, const Path &path, std::string text) {
    faults_++;
    if (node.kind == Node::Kind::Refused || problems_.size() > kMostProblems) return;
    const bool last = problems_.size() == kMostProblems;
    problems_.push_back({std::string(origin_), node.line, node.column, last ? std::string() : path.text(),
                         last ? std::string("there are more problems from here on") : std::move(text)});
}

bool ValueReader::isMapping(const Node &node, const Path &path, bool mayBeEmpty) {
    if (node.kind == Node::Kind::Mapping) return true;
    if (node.kind != Node::Kind::Empty) {
        report(node, path, fmt::format("is {}, not a mapping", nameOf(node.kind)));
    } else if (!mayBeEmpty) {
        report(node, path, "has no value");
    }
    return false;
}

void ValueReader::reportTwice(const Node &key, const Path &path) {
    if (twice_ != &key) report(key, path, "is given twice");
    twice_ = &key;
}

bool ValueReader::isKey(const Node &key, const Path &path, std::unordered_set<std::string_view> &seen) {
    if (key.kind != Node::Kind::Scalar) {
        report(key, *path.parent, "a name is needed before the colon");
        return false;
    }
    if (!seen.insert(key.text).second) reportTwice(key, path);
    return true;
}

// Texts of documents are stricter than those of commands: numbers are decimal, and quotes make a text.
std::string ValueReader::problemOfForm(const Member &member, const Node &node) const {
    const bool bare = member.type == Type::Boolean || member.type == Type::Number;
    if (bare && !node.plain)
        return fmt::format("{} stands in quotes, where {} is needed without", inQuotes(node.text),
                           expectation(member));
    if (member.type == Type::Number && !isDecimal(node.text))
        return fmt::format("{} is not a decimal number {}", inQuotes(node.text), expectation(member));
    if (member.type == Type::Vlans) {
        const std::string_view text = node.text;
        const size_t dash = text.find('-');
        if (!isDecimal(text.substr(0, dash)) ||
            (dash != std::string_view::npos && !isDecimal(text.substr(dash + 1))))
            return inQuotes(text) + " is not a VLAN id or a range such as 1-100";
    }
    return {};
}

Value ValueReader::readItem(const Member &member, const Node &node, const Path &path) {
    if (member.type == Type::Record) return readRecord(member.members, node, path);
    if (node.kind == Node::Kind::Empty) {
        report(node, path, fmt::format("has no value; {} is needed", expectation(member)));
        return {};
    }
    if (node.kind != Node::Kind::Scalar) {
        report(node, path,
               fmt::format("is {}, not a single value ({})", nameOf(node.kind), expectation(member)));
        return {};
    }
    std::string wrong = problemOfForm(member, node);
    Parsed parsed;
    if (wrong.empty() && member.type == Type::Text) {
        const std::optional<std::string> text = parseShown(node.text);
        if (!text) {
            wrong = "a backslash is followed by x and two digits, n, t, or another backslash";
        } else {
            parsed = parseScalar(member, *text);
        }
    } else if (wrong.empty()) {
        parsed = parseScalar(member, node.text);
    }
    if (wrong.empty() && !parsed.ok())
        wrong = std::move(parsed.problem) + suggestion(node.text, wordsOf(member));
    if (wrong.empty()) return std::move(parsed.value);
    report(node, path, std::move(wrong));
    return {};
}

Value ValueReader::read(const Member &member, const Node &node, const Path &path) {
    if (!member.list) return readItem(member, node, path);
    if (node.kind != Node::Kind::Sequence) {
        report(node, path, fmt::format("is {}, not a list", nameOf(node.kind)));
        return {};
    }
    if (node.items.size() > member.mostItems) {
        report(node, path, fmt::format("has {} items, at most {} fit", node.items.size(), member.mostItems));
        return {};
    }
    List list;
    for (size_t i = 0; i < node.items.size(); i++)
        list.push_back(readItem(member, node.items[i], Path{&path, {}, i}));
    return list;
}

Value ValueReader::readRecord(std::span<const Member> members, const Node &node, const Path &path) {
    std::vector<std::pair<const Member *, Value>> given;
    forEachEntry(node, path, false, [&](const Node &key, const Node &value, const Path &here) {
        const auto member =
            std::ranges::find_if(members, [&](const Member &each) { return key.text == each.name; });
        if (member != members.end()) {
            given.emplace_back(&*member, read(*member, value, here));
            return;
        }
        std::vector<std::string_view> names;
        for (const Member &each : members)
            names.emplace_back(each.name);
        report(key, here, "no such member" + suggestion(key.text, names));
    });
    Members values;
    for (const Member &member : members) {
        const auto at = std::ranges::find(given, &member, &std::pair<const Member *, Value>::first);
        if (at != given.end()) {
            if (!at->second.absent()) values.push_back({member.name, std::move(at->second)});
        } else if (member.required && node.kind == Node::Kind::Mapping) {
            report(node, path, fmt::format("'{}' is missing", member.name));
        }
    }
    return values;
}

std::optional<std::string> ValueReader::readName(const Member &member, const Node &node, const Path &path) {
    Value name = readItem(member, node, path);
    if (name.absent()) return std::nullopt;
    return name.text();
}

}  // namespace qvs::config

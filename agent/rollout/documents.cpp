// SPDX-License-Identifier: Apache-2.0
#include "agent/rollout/documents.h"

#include <algorithm>
#include <array>
#include <utility>

#include "agent/store/digest.h"
#include "base/failure.h"
#include "base/text.h"
#include "config/document/merge.h"
#include "config/document/reader.h"
#include "config/document/tree.h"
#include "config/document/value_reader.h"

namespace qvs::fleet {
namespace {

using config::Member;
using config::Node;
using config::Path;
using config::Type;

constexpr Member kNameMember{
    .name = "name", .summary = "a name", .type = Type::Text, .least = 1, .most = 253};

// Replaces lines (numbered from 1) by blank lines, so that the other lines keep their numbers.
void blank(std::string &text, size_t from, size_t behind) {
    size_t line = 1;
    for (char &c : text) {
        if (c == '\n') {
            line++;
        } else if (line >= from && line < behind) {
            c = ' ';
        }
    }
}

class HeadReader {
  public:
    HeadReader(std::string_view origin, std::vector<config::Problem> &problems) : values_(origin, problems) {}

    // Removes the members of the head from the text.
    void take(const Node &root, std::string &text, DocumentOf &of) {
        const Path top{};
        for (size_t i = 0; i + 1 < root.items.size(); i += 2) {
            const Node &key = root.items[i];
            const Path path{&top, key.text, {}};
            if (key.text == "group" || key.text == "host") {
                takeName(key, root.items[i + 1], path, of);
            } else if (key.text == "labels") {
                takeLabels(root.items[i + 1], path, of);
            } else {
                continue;
            }
            const size_t behind = i + 2 < root.items.size() ? root.items[i + 2].line : std::string::npos;
            if (behind == key.line || (i > 0 && root.items[i - 2].line == key.line) || key.column != 1)
                values_.report(key, path, "stands on a line of its own, at its beginning");
            blank(text, key.line, behind);
        }
        if (of.kind == DocumentOf::Kind::Group && of.labels.empty())
            values_.report(root, top, "a group needs labels, which choose its hosts");
        if (of.kind != DocumentOf::Kind::Group && !of.labels.empty())
            values_.report(root, top, "labels are for a group; add 'group: NAME'");
    }

  private:
    void takeName(const Node &key, const Node &value, const Path &path, DocumentOf &of) {
        if (of.kind != DocumentOf::Kind::Switch)
            values_.report(key, path, "a document has one group or one host");
        of.kind = key.text == "group" ? DocumentOf::Kind::Group : DocumentOf::Kind::Host;
        of.name = values_.readName(kNameMember, value, path).value_or("");
        if (!of.name.empty() && !isName(of.name))
            values_.report(value, path,
                           inQuotes(of.name) + " is no name of letters, digits, dots and dashes");
    }
    void takeLabels(const Node &node, const Path &path, DocumentOf &of) {
        values_.forEachEntry(node, path, false, [&](const Node &key, const Node &value, const Path &here) {
            if (const auto text = values_.readName(kNameMember, value, here)) of.labels[key.text] = *text;
        });
    }

    config::ValueReader values_;
};

}  // namespace

FleetFile readFleetFile(std::string_view text, std::string_view origin, std::string_view name,
                        std::vector<config::Problem> &problems) {
    FleetFile file;
    file.of.name = name;
    file.text = text;
    std::vector<config::Problem> ofTree;
    const auto root = config::parseTree(text, origin, ofTree);
    // Text that cannot be parsed is reported below.
    if (root && ofTree.empty() && root->kind == Node::Kind::Mapping)
        HeadReader(origin, problems).take(*root, file.text, file.of);
    file.document = config::readDocument(file.text, origin, problems);
    file.of.digest = digestOf(file.text);
    return file;
}

config::Document readDocumentOf(Store &store, const KeyNames &keys, const DocumentOf &of) {
    const Found found = store.range({keys.document(of.digest)});
    if (found.entries.empty()) fail(Exit::Failed, "the store does not have the document {}", of.digest);
    const std::string &text = found.entries.front().value;
    if (digestOf(text) != of.digest)
        fail(Exit::Failed, "the document {} was changed in the store", of.digest);
    std::vector<config::Problem> problems;
    FleetFile file = readFleetFile(text, of.name, of.name, problems);
    if (!problems.empty()) fail(Exit::Failed, "{}", messageOf(problems.front()));
    return std::move(file.document);
}

bool isFor(const DocumentOf &document, std::string_view host, const Labels &labels) {
    switch (document.kind) {
        case DocumentOf::Kind::Switch:
            return true;
        case DocumentOf::Kind::Host:
            return document.name == host;
        case DocumentOf::Kind::Group:
            break;
    }
    return std::ranges::all_of(document.labels, [&](const auto &label) {
        const auto found = labels.find(label.first);
        return found != labels.end() && found->second == label.second;
    });
}

config::Document composed(const std::vector<DocumentOf> &documents, std::string_view host,
                          const Labels &labels,
                          const std::function<config::Document(const DocumentOf &)> &read) {
    using Kind = DocumentOf::Kind;
    config::Document whole;
    for (const Kind kind : std::array{Kind::Switch, Kind::Group, Kind::Host})
        for (const DocumentOf &document : documents)
            if (document.kind == kind && isFor(document, host, labels))
                config::overlay(whole, read(document));
    return whole;
}

}  // namespace qvs::fleet

// SPDX-License-Identifier: Apache-2.0
// Reads the nodes of a document as values of members, and collects what is wrong with them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "config/document/problem.h"
#include "config/document/tree.h"
#include "config/settings/member.h"

namespace qvs::config {

// The way to a node, from the node up. Lives on the stack while the document is read.
struct Path {
    const Path *parent = nullptr;
    std::string_view name;        // as the document writes it
    std::optional<size_t> index;  // of an item of a list, which has no name

    std::string text() const;
};

// "did you mean 'vlan'?" behind a comma when one of the words is close to the text; otherwise nothing.
std::string suggestion(std::string_view text, std::span<const std::string_view> words);

class ValueReader {
  public:
    ValueReader(std::string_view origin, std::vector<Problem> &problems)
        : origin_(origin), problems_(problems) {}

    void report(const Node &node, const Path &path, std::string text);
    // Reports a name that is given twice, once for each key.
    void reportTwice(const Node &key, const Path &path);
    // The number of problems so far, with those that are not listed: of nodes that were refused before, and
    // beyond the most that a list has.
    size_t problems() const { return faults_; }

    // Reads the value of a member, a list when it is one. Absent when there was a problem.
    Value read(const Member &member, const Node &node, const Path &path);
    // Reads one item of a member.
    Value readItem(const Member &member, const Node &node, const Path &path);
    // Reads a mapping of these members.
    Value readRecord(std::span<const Member> members, const Node &node, const Path &path);
    // The text that a name stands for. Nothing when there was a problem.
    std::optional<std::string> readName(const Member &member, const Node &node, const Path &path);

    // Calls visit(key, value, path) for each entry of a mapping whose key is a scalar. A key that is there
    // twice is a problem, and both entries are visited, so that all of their problems are found.
    // A value that is missing is an empty mapping when `mayBeEmpty` is set.
    template <typename Visit>
    void forEachEntry(const Node &node, const Path &path, bool mayBeEmpty, Visit visit) {
        if (!isMapping(node, path, mayBeEmpty)) return;
        std::unordered_set<std::string_view> seen;
        for (size_t i = 0; i + 1 < node.items.size(); i += 2) {
            const Node &key = node.items[i];
            const Path here{&path, key.text, {}};
            if (isKey(key, here, seen)) visit(key, node.items[i + 1], here);
        }
    }

  private:
    bool isMapping(const Node &node, const Path &path, bool mayBeEmpty);
    bool isKey(const Node &key, const Path &path, std::unordered_set<std::string_view> &seen);
    std::string problemOfForm(const Member &member, const Node &node) const;

    std::string_view origin_;
    std::vector<Problem> &problems_;
    size_t faults_ = 0;
    const Node *twice_ = nullptr;  // the last key that was reported as such
};

}  // namespace qvs::config

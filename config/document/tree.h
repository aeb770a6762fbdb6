// SPDX-License-Identifier: Apache-2.0
// The text of a document as a tree of mappings, lists and scalars, each with its place in the text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/document/problem.h"

namespace qvs::config {

struct Node {
    enum class Kind : uint8_t {
        Empty,
        Scalar,
        Sequence,
        Mapping,
        Refused  // a problem that was reported already
    };
    Kind kind = Kind::Empty;
    bool plain = true;  // a scalar without quotes
    uint32_t line = 1;
    uint32_t column = 1;
    std::string text;
    std::vector<Node> items;  // of a mapping: key, value, key, value...
};

// Reads YAML, which includes JSON. Anchors, aliases and tags are reported as problems. Returns nothing when
// the text cannot be parsed.
std::optional<Node> parseTree(std::string_view text, std::string_view origin, std::vector<Problem> &problems);

}  // namespace qvs::config

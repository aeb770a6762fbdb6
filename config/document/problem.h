// SPDX-License-Identifier: Apache-2.0
// What is wrong with a document, and where.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qvs::config {

struct Problem {
    std::string origin;  // the name of the file
    size_t line = 0;     // from 1; 0 when the problem has no place in the text
    size_t column = 0;   // from 1, in bytes
    std::string path;    // "switches.sw1.ports.web.vlan.id"
    std::string text;    // "5000 is beyond 4094"

    friend bool operator==(const Problem &, const Problem &) = default;
};

// Puts problems in the order of their places; those of one place keep theirs.
void sortByPlace(std::vector<Problem> &problems);

// "FILE:LINE:COLUMN: switches.sw1.ports.web.vlan.id: 5000 is beyond 4094"
std::string messageOf(const Problem &problem);

}  // namespace qvs::config

// SPDX-License-Identifier: Apache-2.0
// A case of the rules: policies, and lines in the language of network.h.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qvs::test {

struct Case {
    const char *name;
    std::string policies;            // of the switch, in front of its ports
    std::vector<std::string> ports;  // "NUMBER POLICIES"; 8 and 9 are uplinks
    const char *script;
};

inline void PrintTo(const Case &value, std::ostream *stream) {
    *stream << value.name;
}

std::string jsonOf(const Case &value);
std::string nameOf(const testing::TestParamInfo<Case> &info);

class Rules : public testing::TestWithParam<Case> {};

// Policies of ports.
inline const std::string kVlan10 = "vlan: {id: 10}";
inline const std::string kTrunk = "vlan: {trunk: true, ranges: [{first: 10, last: 20}]}";
inline const std::string kLearning = "learning: {enabled: true, limit: 2}";

}  // namespace qvs::test

// SPDX-License-Identifier: Apache-2.0
// The state library's requests, the devices and the shell, as libqvs meets them in a fuzz target: either the
// input says what they answer, or properties and ports are kept as a kernel keeps them.
#pragma once

#include <map>
#include <set>
#include <string>

#include "input.h"

namespace qvs::fuzz {

struct FuzzedKernel {
    Bytes *answers = nullptr;  // the rest of the input; null: the kernel keeps what it is given
    std::map<std::string, std::string> properties;  // "port key"; the port is empty for those of the switch
    std::set<std::string> ports;
};
FuzzedKernel &fuzzedKernel();

// Loads a snapshot with the switch "sw1" on the portset "ps1", the identifier "id" and the port "port0".
void loadSnapshot();

}  // namespace qvs::fuzz

// SPDX-License-Identifier: Apache-2.0
// Every function of libqvs with arguments for which it does all that it can do.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qvs::test {

// What a function that returns no status gives instead of a pointer.
constexpr uint32_t kNull = 0xffffffff;

struct Refusal {
    std::string what;  // "argument 1 null"
    std::function<uint32_t()> call;
};
struct Function {
    const char *name;
    // Calls the function and releases what it gives. Returns its status, 0 for a pointer, or kNull.
    std::function<uint32_t()> call;
    std::vector<Refusal> refusals;  // calls with an argument that the function refuses
};
extern const std::vector<Function> kFunctions;

// Two options, 7 and 0x1234, that the functions read.
extern const std::string kOptions;

// What the function wrote, apart from pointers. Each call fills it with 0xee before.
std::string callerRecord();
// The pointer that a failed call left behind, which is not to be released.
bool pointerLeft();

}  // namespace qvs::test

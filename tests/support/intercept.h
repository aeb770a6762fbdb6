// SPDX-License-Identifier: Apache-2.0
// The program's own versions of a few calls that libqvs makes: they pass everything on, and let a test see
// what was asked, or answer what neither the C library nor the emulated host can be made to answer.
#pragma once

#include <dlfcn.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvs::test {

struct Calls {
    std::vector<std::string> commands;  // the command lines given to system and popen
    std::optional<int> systemResult;    // system answers this and runs nothing

    std::deque<int> ioctlResults;  // the next calls of ioctl answer these once the kernel has answered
    int ioctlErrno = 0;            // what such an answer below 0 leaves in errno
    int descriptor = -1;           // of the last ioctl
    int descriptorFlags = -1;      // its F_GETFD
    int closeErrno = 0;            // close succeeds, but leaves this in errno

    // Told of each ioctl before the kernel is.
    std::function<void(unsigned long request, const void *argument)> onIoctl;

    // DVSData_Data answers for a property what this says of its key and its value.
    std::function<std::string_view(const char *key, std::string_view value)> record;

    std::map<std::string, uint32_t> portStates;     // DVS_PortState by port identifier
    std::map<std::string, std::string> longIds;     // DVS_SwitchId: what stands for an identifier
    std::map<std::string, std::string> otherNames;  // DVSState_SwitchFindByAlias: other name -> identifier
};

Calls &calls();

// The call that this program's version stands before.
template <typename Function>
Function *next(Function *, const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

// Back to passing everything on when the test ends.
struct CallsReset {
    CallsReset() = default;
    CallsReset(const CallsReset &) = delete;
    CallsReset &operator=(const CallsReset &) = delete;
    ~CallsReset() { calls() = Calls(); }
};

}  // namespace qvs::test

// SPDX-License-Identifier: Apache-2.0
// The program's own versions of a few calls; the dynamic linker finds them before the libraries' own.
#include "support/intercept.h"

#include <fcntl.h>
#include <qvs/mesh_public.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace qvs::test {

Calls &calls() {
    // Never destroyed: close is called until the very end.
    static Calls &instance = *new Calls;
    return instance;
}

}  // namespace qvs::test

using qvs::test::calls;
using qvs::test::next;

extern "C" {

__attribute__((visibility("default"))) int system(const char *command) {
    calls().commands.emplace_back(command);
    if (calls().systemResult) return *calls().systemResult;
    return next(&system, "system")(command);
}

__attribute__((visibility("default"))) FILE *popen(const char *command, const char *type) {
    calls().commands.emplace_back(command);
    return next(&popen, "popen")(command, type);
}

__attribute__((visibility("default"))) int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    static const auto real = reinterpret_cast<int (*)(int, unsigned long, ...)>(dlsym(RTLD_NEXT, "ioctl"));
    calls().descriptor = descriptor;
    calls().descriptorFlags = fcntl(descriptor, F_GETFD);
    if (calls().onIoctl) calls().onIoctl(request, argument);
    const int result = real(descriptor, request, argument);
    if (calls().ioctlResults.empty()) return result;
    const int answer = calls().ioctlResults.front();
    calls().ioctlResults.pop_front();
    if (answer < 0 && calls().ioctlErrno != 0) errno = calls().ioctlErrno;
    return answer;
}

__attribute__((visibility("default"))) int close(int descriptor) {
    static const auto real = next(&close, "close");
    const int result = real(descriptor);
    if (calls().closeErrno != 0) errno = calls().closeErrno;
    return result;
}

// The libraries' own calls are found before there are threads. A thread that waits for another one to find a
// call gets EAGAIN in errno, and a child that is made meanwhile waits for ever.
[[maybe_unused]] static const int prepared = ioctl(-1, 0) + close(-1);

uint32_t DVS_PortState(const DVSPort *port) {
    static const auto real = next(&DVS_PortState, "DVS_PortState");
    if (calls().portStates.empty()) return real(port);
    const auto found = calls().portStates.find(DVS_PortId(port));
    return found != calls().portStates.end() ? found->second : real(port);
}

uint32_t DVSData_Data(const DVSData *data, const void **value) {
    static const auto real = next(&DVSData_Data, "DVSData_Data");
    const uint32_t length = real(data, value);
    if (!calls().record) return length;
    const auto record = calls().record(DVSData_Name(data), {static_cast<const char *>(*value), length});
    *value = record.data();
    return static_cast<uint32_t>(record.size());
}

const char *DVS_SwitchId(const DVSSwitch *sw) {
    static const auto real = next(&DVS_SwitchId, "DVS_SwitchId");
    if (calls().longIds.empty()) return real(sw);
    const auto found = calls().longIds.find(real(sw));
    return found != calls().longIds.end() ? found->second.c_str() : real(sw);
}

DVSSwitch *DVSState_SwitchFindByAlias(const char *alias) {
    static const auto real = next(&DVSState_SwitchFindByAlias, "DVSState_SwitchFindByAlias");
    const auto found = alias != nullptr ? calls().otherNames.find(alias) : calls().otherNames.end();
    if (found == calls().otherNames.end()) return real(alias);

    struct Search {
        const std::string &switchId;
        DVSSwitch *found;
    } search{found->second, nullptr};
    DVSState_SwitchForEach(
        [](DVSSwitch *sw, void *context) {
            auto *wanted = static_cast<Search *>(context);
            if (wanted->switchId == DVS_SwitchId(sw)) wanted->found = sw;
            return wanted->found != nullptr ? 1 : 0;
        },
        &search);
    return search.found;
}

}  // extern "C"

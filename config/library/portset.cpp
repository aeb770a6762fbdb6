// SPDX-License-Identifier: Apache-2.0
#include "config/library/portset.h"

#include <fcntl.h>
#include <qvs/qvs.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "config/library/call.h"
#include "config/library/kernel_list.h"
#include "config/library/snapshot.h"

namespace qvs {
namespace {

// As long as the kernel's list has room for it.
std::string_view cut(std::string_view name, size_t entrySize) {
    return name.substr(0, entrySize - 1);
}

// Once in a run.
void warnOfSilence(HYP_ReturnStatus status) {
    static bool warned = false;
    if (std::exchange(warned, true)) return;
    warn("{}; what is half made in the kernel does not show",
         libraryFailure("switches of the kernel", status).message);
}

bool askNames(uint32_t selector, uint32_t entrySize, std::set<std::string, std::less<>> &names) {
    HYP_ReturnStatus status = HYP_OK;
    KernelList list = boundedList(
        [&] {
            VshypBuffer buffer;
            status = fetch<VSHYP_GetSwitches>(buffer, selector);
            return buffer;
        },
        entrySize, "switches");
    if (!list.buffer) {
        warnOfSilence(status);
        return false;
    }
    for (uint32_t i = 0; i < list.count; i++)
        names.emplace(boundedText(list.entry(i).data(), entrySize));
    return true;
}

}  // namespace

std::optional<KernelSwitches> askKernelSwitches() {
    KernelSwitches kernel;
    if (!askNames(VSHYP_SELECT_SWITCH_NAMES, VSHYP_SWITCH_NAME_ENTRY_SIZE, kernel.portsets) ||
        !askNames(VSHYP_SELECT_SWITCH_NAMES - 1, VSHYP_SWITCH_ALIAS_ENTRY_SIZE, kernel.aliases))
        return std::nullopt;
    return kernel;
}

bool hasAlias(const KernelSwitches &kernel, std::string_view alias) {
    return kernel.aliases.contains(cut(alias, VSHYP_SWITCH_ALIAS_ENTRY_SIZE));
}

bool hasPortset(const KernelSwitches &kernel, std::string_view name) {
    return kernel.portsets.contains(cut(name, VSHYP_SWITCH_NAME_ENTRY_SIZE));
}

DVSSwitch *ownerOfPortset(std::string_view portset) {
    DVSSwitch *owner = nullptr;
    forEachSwitch([&](DVSSwitch *sw) {
        if (findText({Scope::Host, sw}, QVS_KEY_HOST_PORTSET) == portset) owner = sw;
        return owner == nullptr;
    });
    return owner;
}

// The library destroys a portset only together with its switch. No shell sees the name here, and the node's
// path ends at the name.
bool destroyPortset(const std::string &portset) {
    if (portset.empty() || portset == "." || portset == ".." || portset.find('/') != std::string::npos)
        return false;
    std::string node = "/net/portsets/" + portset + "/destroy";
    std::string words[] = {"/bin/treesh", "-e", "set", node, "destroy"};
    char *argv[] = {words[0].data(), words[1].data(), words[2].data(),
                    words[3].data(), words[4].data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int fd : {STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int failure = posix_spawn(&child, argv[0], &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) return false;
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR) return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace qvs

// SPDX-License-Identifier: Apache-2.0
// Runs commands in the network namespaces of clients.
#include "launcher/enter.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <fmt/format.h>

#include "launcher/error.h"
#include "launcher/frame_session.h"
#include "launcher/process.h"

namespace qvs::launcher {

namespace {

void enterNamespaces(const std::vector<wire::File> &files) {
    // In front of the network namespace comes the user namespace that owns it, if there is one.
    for (size_t i = 0; i < files.size(); ++i) {
        const bool isUser = i + 1 < files.size();
        if (setns(files[i].get(), isUser ? CLONE_NEWUSER : CLONE_NEWNET) == 0) continue;
        throw Error(
            fmt::format("cannot enter the {} namespace: {}", isUser ? "user" : "network", strerror(errno)));
    }
}

// /sys shows the interfaces of the namespace in which it was mounted. If it cannot be mounted again, the
// command runs without it.
void showOwnInterfaces() {
    if (unshare(CLONE_NEWNS) != 0) return;
    if (mount("", "/", nullptr, MS_REC | MS_SLAVE, nullptr) != 0) return;
    static_cast<void>(mount("sysfs", "/sys", "sysfs", 0, nullptr));
}

}  // namespace

void enterClient(const std::string &hostSocket, const std::string &client,
                 const std::vector<std::string> &command) {
    {
        const FrameSession session(hostSocket, {"enter", client});
        if (session.files().empty()) throw Error("the data path sent no namespace");
        enterNamespaces(session.files());
    }
    showOwnInterfaces();
    const std::vector<char *> words = argumentsOf(command);
    execvp(words[0], words.data());
    throw Error(fmt::format("cannot run {}: {}", command[0], strerror(errno)));
}

}  // namespace qvs::launcher

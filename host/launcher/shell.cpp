// SPDX-License-Identifier: Apache-2.0
// Puts the name of the host in front of the prompt of a shell. The start-up files of a shell set the prompt,
// so that bash and fish change it after they have read them.
#include "launcher/shell.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <fmt/format.h>

namespace qvs::launcher {

namespace {

// Returns the name of the host for a prompt. Replaces characters that shells may interpret.
std::string promptName(const std::string &directory) {
    if (directory.empty()) return "qvs-host";
    std::string name = std::filesystem::path(directory).filename();
    std::replace_if(
        name.begin(), name.end(),
        [](unsigned char c) {
            const bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
            return !plain && c != '-' && c != '_' && c != '.' && c < 0x80;
        },
        '?');
    return "qvs-host " + name;
}

}  // namespace

std::vector<std::string> shellFor(const std::string &directory) {
    const char *set = getenv("SHELL");
    const std::string program = set != nullptr && set[0] != '\0' ? set : "/bin/sh";
    const std::string shell = std::filesystem::path(program).filename();
    const std::string prompt = fmt::format("({}) ", promptName(directory));
    if (shell == "fish") {
        return {program, "--init-command",
                fmt::format("functions -q fish_prompt; and functions -c fish_prompt qvs_host_prompt; "
                            "function fish_prompt; echo -n '{}'; "
                            "functions -q qvs_host_prompt; and qvs_host_prompt; or echo -n '> '; end",
                            prompt)};
    }
    if (shell == "bash") {
        // bash runs this before each prompt.
        const char *before = getenv("PROMPT_COMMAND");
        const bool isSet = before != nullptr && before[0] != '\0';
        const std::string own =
            fmt::format("[ \"$QVS_HOST_PROMPT\" ] || PS1='{}'$PS1 QVS_HOST_PROMPT=1", prompt);
        setenv("PROMPT_COMMAND", isSet ? (own + "; " + before).c_str() : own.c_str(), 1);
        return {program};
    }
    setenv("PS1", (prompt + (shell == "zsh" ? "%# " : "$ ")).c_str(), 1);
    return {program};
}

}  // namespace qvs::launcher

// SPDX-License-Identifier: Apache-2.0
// The completion scripts. They call the program to find the words that can come next. Names come from the
// host, so the scripts quote them and never expand them.
#include <algorithm>
#include <string>

#include "tool/help.h"
#include "tool/program.h"

namespace qvs::cli {
namespace {

// @@ stands for the program, and _@ for its function. The time limit keeps a host that does not answer from
// blocking the shell.
constexpr const char *kBash = R"bash(# bash completion for @@

_@() {
    local cur=${COMP_WORDS[COMP_CWORD]//\\/} kind= line
    local -a typed=("${COMP_WORDS[@]:1:COMP_CWORD}")
    [[ $cur != = ]] || cur=
    typed=("${typed[@]//\\/}")
    COMPREPLY=()
    {
        read -r kind
        while IFS= read -r line; do
            line=${line%%$'\t'*}
            [[ $line == "$cur"* ]] || continue
            printf -v line '%q' "$line"
            # A comma needs no backslash.
            COMPREPLY+=("${line//\\,/,}")
        done
    } < <(QVS_HOST_TIMEOUT=2 "${COMP_WORDS[0]}" complete -- "${typed[@]}" 2>/dev/null)
    case $kind in
        file) mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$cur") ;;
        directory) mapfile -t COMPREPLY < <(compgen -d -- "$cur") ;;
        program) mapfile -t COMPREPLY < <(compgen -c -- "$cur") ;;
    esac
    if [[ $kind == file || $kind == directory ]]; then
        compopt -o filenames 2>/dev/null
    fi
}

complete -F _@ @@
)bash";

constexpr const char *kZsh = R"zsh(#compdef @@

_@() {
    local line
    local -a typed lines found
    ((CURRENT > 2)) && typed=("${(@Q)words[2,CURRENT-1]}")
    lines=("${(@f)$(QVS_HOST_TIMEOUT=2 "${words[1]}" complete -- "${typed[@]}" "${(Q)PREFIX}" 2>/dev/null)}")
    [[ $PREFIX == --*=* ]] && compset -P '*='
    for line in "${(@)lines[2,-1]}"; do
        found+=("${${line%%$'\t'*}//:/\\:}:${line#*$'\t'}")
    done
    ((${#found})) && _describe '' found
    case ${lines[1]} in
        file) _files ;;
        directory) _files -/ ;;
        program) _command_names -e ;;
    esac
}

if [[ ${funcstack[1]} == _@ ]]; then
    _@ "$@"
else
    compdef _@ @@
fi
)zsh";

constexpr const char *kFish = R"fish(# fish completion for @@

function _@_complete
    set -l typed (commandline -opc)
    set -l current (commandline -ct | string unescape)
    set -l tool $typed[1]
    set -e typed[1]
    set -l lines (env QVS_HOST_TIMEOUT=2 $tool complete -- $typed "$current" 2>/dev/null)
    set -l before (string match -r -- '^--[^=]*=' "$current")
    set -l kind $lines[1]
    set -e lines[1]
    for line in $lines
        printf '%s\n' "$before$line"
    end
    switch "$kind"
        case file
            __fish_complete_path "$current"
        case directory
            __fish_complete_directories "$current"
        case program
            __fish_complete_command
    end
end

complete -c @@ -f -a '(_@_complete)'
)fish";

}  // namespace

std::string completionScript(std::string_view shell) {
    std::string function = std::string("_") + program().name;
    // zsh requires that the function has the name of its file.
    if (shell != "zsh") std::replace(function.begin(), function.end(), '-', '_');
    std::string script = shell == "bash" ? kBash : shell == "zsh" ? kZsh : kFish;
    const auto replaceAll = [&](std::string_view mark, std::string_view text) {
        for (size_t at = 0; (at = script.find(mark, at)) != std::string::npos; at += text.size())
            script.replace(at, mark.size(), text);
    };
    replaceAll("@@", program().name);
    replaceAll("_@", function);
    return script;
}

}  // namespace qvs::cli

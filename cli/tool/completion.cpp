// The bash completion, made from the command table.
#include <fmt/format.h>

#include <iterator>
#include <map>
#include <set>

#include "tool/help.h"

namespace qvs::cli {
namespace {

const char *kindWord(Kind kind) {
    switch (kind) {
        case Kind::Switch:
            return "switch";
        case Kind::Port:
            return "port";
        case Kind::Uplink:
            return "uplink";
        case Kind::File:
            return "file";
        case Kind::Shell:
            return "shell";
        case Kind::Word:
            break;
    }
    return "word";
}

// Names come from qvs itself. They are compared and quoted by bash, never expanded: "compgen -W" would run
// what a name contains.
constexpr const char *kHead = R"bash(# bash completion for qvs

_qvs_lines() {
    local line
    while IFS= read -r line; do
        [[ $line == "$cur"* ]] && COMPREPLY+=("$(printf '%q' "$line")")
    done
}

_qvs_offer() {
    case $1 in
        switch) _qvs_lines < <("$tool" switch list --names 2>/dev/null) ;;
        port) _qvs_lines < <("$tool" port list "$switch" --names 2>/dev/null) ;;
        uplink) _qvs_lines < <("$tool" uplink list "$switch" --names 2>/dev/null) ;;
        shell) COMPREPLY=($(compgen -W "bash" -- "$cur")) ;;
        file)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$cur")
            ;;
    esac
}

_qvs() {
    local tool=${COMP_WORDS[0]} cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local -a plain=()
    local word skip= i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [[ $skip ]]; then
            skip=
            continue
        fi
        case $word in
)bash";

constexpr const char *kTail = R"bash(        *) COMPREPLY=($(compgen -W "$nouns" -- "$cur")); return ;;
    esac
    if [[ $skip ]]; then
        return
    fi
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi
    local -a offered=($kinds)
    local at=$((${#plain[@]} - taken))
    if ((at >= ${#offered[@]})); then
        at=$((${#offered[@]} - 1))
        [[ ${offered[at]} == *+ ]] || return
    fi
    local switch=${plain[taken]-}
    _qvs_offer "${offered[at]%+}"
}

complete -F _qvs qvs
)bash";

std::string optionWords(const Command &command) {
    std::string text;
    for (const Option &option : command.options)
        text += std::string(option.name) + " ";
    for (const Option &option : kGlobalOptions) {
        if (command.json || option.name != std::string_view("--json")) text += std::string(option.name) + " ";
    }
    text.pop_back();
    return text;
}

std::string kindWords(const Command &command) {
    std::string text;
    for (const Argument &argument : command.arguments) {
        if (!text.empty()) text += " ";
        text += kindWord(argument.kind);
        if (argument.repeated) text += "+";
    }
    return text;
}

// The words that may come behind others, in the order of the table.
std::map<std::string, std::string> followingWords() {
    std::map<std::string, std::string> following;
    for (const Noun &noun : nouns()) {
        for (const Command &command : noun.commands) {
            std::string before;
            for (std::string_view word : wordsOf(command)) {
                std::string &list = following[before];
                if (fmt::format(" {} ", list).find(fmt::format(" {} ", word)) == std::string::npos)
                    list += fmt::format("{}{}", list.empty() ? "" : " ", word);
                before += fmt::format("{}{}", before.empty() ? "" : " ", word);
            }
        }
    }
    return following;
}

}  // namespace

std::string bashCompletion() {
    std::string script = kHead;
    auto put = std::back_inserter(script);

    std::set<std::string> valued;
    std::set<std::string> files;
    std::set<std::string> ports;
    std::string rows;
    for (const Option &option : kGlobalOptions)
        if (option.value != nullptr) valued.insert(option.name);
    for (const Noun &noun : nouns()) {
        for (const Command &command : noun.commands) {
            for (const Option &option : command.options) {
                if (option.value == nullptr) continue;
                valued.insert(option.name);
                if (option.kind == Kind::File) files.insert(option.name);
                if (option.kind == Kind::Port) ports.insert(option.name);
            }
            rows += fmt::format("        \"{0}\" | \"{0} \"*) taken={1} options=\"{2}\" kinds=\"{3}\" ;;\n",
                                words(command), wordsOf(command).size(), optionWords(command),
                                kindWords(command));
        }
    }
    std::map<std::string, std::string> following = followingWords();
    fmt::format_to(put,
                   "            {}) skip=1 ;;\n            -*) ;;\n            *) plain+=(\"$word\") ;;\n",
                   fmt::join(valued, " | "));
    script += "        esac\n    done\n";
    fmt::format_to(put, "    local nouns=\"{}\"\n", following.extract("").mapped());
    script += "    if [[ $skip ]]; then\n        local switch=${plain[2]-}\n        case $previous in\n";
    fmt::format_to(put, "            {}) _qvs_offer file ;;\n", fmt::join(files, " | "));
    fmt::format_to(put, "            {}) _qvs_offer port ;;\n", fmt::join(ports, " | "));
    script +=
        "        esac\n        return\n    fi\n    local options= kinds= taken=\n    case "
        "\"${plain[*]:0:3}\" "
        "in\n";
    script += rows;
    // Words of a command that lack the last, longer ones first.
    for (auto entry = following.rbegin(); entry != following.rend(); ++entry) {
        fmt::format_to(
            put, "        \"{0}\" | \"{0} \"*) COMPREPLY=($(compgen -W \"{1}\" -- \"$cur\")); return ;;\n",
            entry->first, entry->second);
    }
    script += kTail;
    return script;
}

}  // namespace qvs::cli

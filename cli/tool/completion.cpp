// SPDX-License-Identifier: Apache-2.0
// The bash completion, made from the command table.
#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

#include "tool/help.h"
#include "tool/program.h"

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
        case Kind::Directory:
            return "directory";
        case Kind::Program:
            return "program";
        case Kind::Shell:
            return "shell";
        case Kind::Word:
            break;
    }
    return "word";
}

// _@ stands for the function of the program. Names come from the program itself. They are compared and quoted
// by bash, never expanded: "compgen -W" would run what a name contains.
constexpr const char *kHead = R"bash(
_@_lines() {
    local line
    while IFS= read -r line; do
        [[ $line == "$cur"* ]] && COMPREPLY+=("$(printf '%q' "$line")")
    done
}

_@_files() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen "$1" -- "$cur")
}

_@_offer() {
    case $1 in
)bash";

constexpr const char *kWords = R"bash(        shell) COMPREPLY=($(compgen -W "bash" -- "$cur")) ;;
        file) _@_files -f ;;
        directory) _@_files -d ;;
        program) mapfile -t COMPREPLY < <(compgen -c -- "$cur") ;;
    esac
}

_@() {
    local tool=${COMP_WORDS[0]} cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local -a plain=()
    local word skip= behind= i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [[ $skip ]]; then
            skip=
            continue
        fi
        if [[ $behind ]]; then
            plain+=("$word")
            continue
        fi
        case $word in
            --) behind=1 ;;
)bash";

constexpr const char *kTail = R"bash(        *) COMPREPLY=($(compgen -W "$nouns" -- "$cur")); return ;;
    esac
    if [[ $skip ]]; then
        return
    fi
    if [[ $cur == -* && ! $behind ]]; then
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
    _@_offer "${offered[at]%+}"
}
)bash";

std::string optionWords(const Command &command) {
    std::string text;
    for (const Option &option : optionsOf(command))
        text += std::string(option.name) + " ";
    for (const Option *option : commonOptions()) {
        if (command.json || option->name != std::string_view("--json"))
            text += std::string(option->name) + " ";
    }
    text.pop_back();
    return text;
}

std::string kindWords(const Command &command) {
    std::string text;
    for (const Argument &argument : shapeOf(command).arguments) {
        if (!text.empty()) text += " ";
        if (argument.verbatim) {
            text += "program file+";
            continue;
        }
        text += kindWord(argument.kind);
        if (argument.repeated) text += "+";
    }
    return text;
}

// The words that may come behind others, in the order of the table.
std::map<std::string, std::string> followingWords() {
    std::map<std::string, std::string> following;
    for (const Noun &noun : program().nouns) {
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

// What bash calls a function has underscores instead of dashes.
std::string functionName() {
    std::string name = fmt::format("_{}", program().name);
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

}  // namespace

std::string bashCompletion() {
    std::string script = kHead;
    auto put = std::back_inserter(script);
    for (const NameSource &source : program().names)
        fmt::format_to(put, "        {}) _@_lines < <(\"$tool\" {} 2>/dev/null) ;;\n", kindWord(source.kind),
                       source.words);
    script += kWords;

    std::set<std::string> valued;
    std::map<std::string, std::set<std::string>> byKind;
    std::string rows;
    for (const Option *option : commonOptions())
        if (option->value != nullptr) valued.insert(option->name);
    for (const Noun &noun : program().nouns) {
        for (const Command &command : noun.commands) {
            for (const Option &option : optionsOf(command)) {
                if (option.value == nullptr) continue;
                valued.insert(option.name);
                if (option.kind != Kind::Word) byKind[kindWord(option.kind)].insert(option.name);
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
    for (const auto &[kind, options] : byKind)
        fmt::format_to(put, "            {}) _@_offer {} ;;\n", fmt::join(options, " | "), kind);
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
    for (size_t at = 0; (at = script.find("_@", at)) != std::string::npos;)
        script.replace(at, 2, functionName());
    return fmt::format("# bash completion for {0}\n{1}\ncomplete -F {2} {0}\n", program().name, script,
                       functionName());
}

}  // namespace qvs::cli

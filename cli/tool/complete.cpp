// SPDX-License-Identifier: Apache-2.0
// Finds the words that may complete the unfinished word of a command line, for the completion of the shells.
#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "tool/help.h"
#include "tool/output.h"
#include "tool/program.h"
#include "tool/run.h"
#include "tool/suggest.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

// A command line up to the unfinished word.
struct Line {
    std::vector<std::string> plain;    // the words without options and their values
    const Command *command = nullptr;  // the longest command that the plain words begin with
    size_t taken = 0;                  // how many of the plain words are the command
    std::optional<Option> unfinished;  // the option whose value is the unfinished word
    // The options that are given, and their values.
    std::vector<std::pair<std::string, std::string>> options;
    bool behind = false;  // whether -- was given

    const std::string *given(std::string_view option) const {
        const auto found = std::find_if(options.begin(), options.end(),
                                        [&](const auto &each) { return each.first == option; });
        return found == options.end() ? nullptr : &found->second;
    }
};

void findCommand(Line &line) {
    for (const Noun &noun : program().nouns) {
        for (const Command &command : noun.commands) {
            const std::vector<std::string_view> own = wordsOf(command);
            const bool begins =
                own.size() <= line.plain.size() && std::equal(own.begin(), own.end(), line.plain.begin());
            if (!begins || own.size() <= line.taken) continue;
            line.command = &command;
            line.taken = own.size();
        }
    }
}

Line readLine(std::span<const std::string> words) {
    Line line;
    for (const std::string &word : words) {
        // bash splits --option=value into three words.
        if (line.unfinished && word == "=") continue;
        if (line.unfinished) {
            line.options.back().second = word;
            line.unfinished.reset();
        } else if (line.behind || !word.starts_with("-")) {
            line.plain.push_back(word);
            if (!line.behind) findCommand(line);
        } else if (word == "--") {
            line.behind = true;
        } else if (const std::optional<Option> option =
                       optionNamed(line.command, word.substr(0, word.find('=')))) {
            const size_t equals = word.find('=');
            line.options.emplace_back(option->name,
                                      equals == std::string::npos ? "" : word.substr(equals + 1));
            if (option->value != nullptr && equals == std::string::npos) line.unfinished = option;
        }
    }
    return line;
}

void offer(Output &out, std::string_view word, std::string_view summary) {
    out.write(fmt::format("{}\t{}\n", word, summary));
}

// The words of the command that prints names; none when the line lacks the switch.
std::vector<std::string> sourceWords(const NameSource &source, const Line &line) {
    std::vector<std::string> words;
    std::vector<std::string> behind;
    for (const std::string_view word : splitWords(source.words)) {
        if (word == "$switch") {
            if (line.plain.size() <= line.taken) return {};
            behind = {"--", line.plain[line.taken]};
        } else if (!word.starts_with("$")) {
            words.emplace_back(word);
        } else if (const std::string *value = line.given(word.substr(1))) {
            words.push_back(fmt::format("{}={}", word.substr(1), *value));
        }
    }
    words.insert(words.end(), behind.begin(), behind.end());
    return words;
}

// The names of a kind, as the command prints them. None when it fails, as without a host.
std::vector<std::string> namesOf(const Line &line, Kind kind) {
    const auto source = std::ranges::find(program().names, kind, &NameSource::kind);
    if (source == program().names.end()) return {};
    const std::vector<std::string> words = sourceWords(*source, line);
    if (words.empty()) return {};
    Output printed(false);
    printed.keep();
    try {
        runCall(parseCall(words), printed);
    } catch (const Failure &) {
        return {};
    }
    std::vector<std::string> names;
    std::string_view text(printed.buffer().data(), printed.buffer().size());
    while (!text.empty()) {
        names.emplace_back(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(names.back().size() + 1, text.size()));
    }
    return names;
}

void offerNames(const Line &line, Kind kind, Output &out) {
    for (const std::string &name : namesOf(line, kind))
        out.write(fmt::format("{}\n", name));
}

const char *filesOf(Kind kind) {
    switch (kind) {
        case Kind::File:
        case Kind::Lab:
            return "file";
        case Kind::Directory:
            return "directory";
        case Kind::Program:
            return "program";
        default:
            return "-";
    }
}

void offerChoices(Choices choices, Output &out) {
    for (const char *choice : choices)
        offer(out, choice, "");
}

void offerValues(const Line &line, Kind kind, Choices choices, Output &out) {
    out.write(fmt::format("{}\n", filesOf(kind)));
    offerChoices(choices, out);
    offerNames(line, kind, out);
}

// Offers the list as it is typed up to its last item, with each choice or name that is not in it yet as that
// item.
void offerItems(const Line &line, std::string_view list, const Option &option, Output &out) {
    out.write("-\n");
    const size_t comma = list.rfind(',');
    const std::string_view before = comma == std::string_view::npos ? "" : list.substr(0, comma + 1);
    const std::vector<std::string> given = splitList(before);
    std::vector<std::string> items = namesOf(line, option.kind);
    items.insert(items.begin(), option.choices.begin(), option.choices.end());
    for (const std::string &item : items) {
        if (std::ranges::find(given, item) == given.end()) offer(out, fmt::format("{}{}", before, item), "");
    }
}

void offerOptions(const Line &line, Output &out) {
    out.write("-\n");
    const auto offerOne = [&](const Option &option) {
        if (line.given(option.name) == nullptr || option.repeated) offer(out, option.name, summaryOf(option));
    };
    if (line.command != nullptr) {
        for (const Option &option : optionsOf(*line.command))
            offerOne(option);
    }
    for (const Option *option : commonOptions())
        if (line.command == nullptr || takes(*line.command, *option)) offerOne(*option);
}

// Offers the words that can come next in a command, each with the summary of its command or group.
void offerWords(std::span<const std::string> words, Output &out) {
    out.write("-\n");
    const std::string before = fmt::format("{}", fmt::join(words, " "));
    for (const std::string_view word : wordsBehind(words)) {
        const std::string whole = before.empty() ? std::string(word) : fmt::format("{} {}", before, word);
        offer(out, word, summaryOf(whole));
    }
}

void offerArgument(const Line &line, Output &out) {
    const Shape shape = shapeOf(*line.command);
    const std::span<const Argument> arguments = shape.arguments;
    size_t at = line.plain.size() - line.taken;
    if (!arguments.empty() && at >= arguments.size() && arguments.back().repeated) {
        if (arguments.back().verbatim) return offerValues(line, Kind::File, {}, out);
        at = arguments.size() - 1;
    }
    if (at >= arguments.size()) return offerOptions(line, out);
    const Argument &argument = arguments[at];
    if (argument.verbatim && !line.behind) return offerOptions(line, out);
    if (argument.kind == Kind::Command) {
        offerWords(std::span(line.plain).subspan(line.taken), out);
        return offerChoices(argument.choices, out);
    }
    offerValues(line, argument.kind, argument.choices, out);
}

}  // namespace

void offerNext(std::span<const std::string> words, Output &out) {
    const std::string &current = words.back();
    const Line line = readLine(words.first(words.size() - 1));
    std::optional<Option> valued = line.unfinished;
    const size_t equals = current.find('=');
    if (!valued && !line.behind && current.starts_with("--") && equals != std::string::npos)
        valued = optionNamed(line.command, current.substr(0, equals));
    if (valued && valued->list)
        return offerItems(line, line.unfinished ? current : current.substr(equals + 1), *valued, out);
    if (valued) return offerValues(line, valued->kind, valued->choices, out);
    if (!line.behind && current.starts_with("-")) return offerOptions(line, out);
    if (line.command != nullptr) return offerArgument(line, out);
    offerWords(line.plain, out);
}

}  // namespace qvs::cli

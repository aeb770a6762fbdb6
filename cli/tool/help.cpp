// SPDX-License-Identifier: Apache-2.0
// Usage and help texts.
#include "tool/help.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "tool/program.h"

namespace qvs::cli {
namespace {

void appendAligned(std::string &out, const std::vector<std::pair<std::string, std::string>> &lines) {
    size_t widest = 0;
    for (const auto &[left, right] : lines)
        widest = std::max(widest, left.size());
    for (const auto &[left, right] : lines) {
        fmt::format_to(std::back_inserter(out), "  {:{}}  {}\n", left, widest, right);
    }
}

std::string argumentWords(const Argument &argument) {
    std::string text = argument.name;
    if (argument.repeated) text += "...";
    if (argument.verbatim) text = "-- " + text;
    return argument.optional ? "[" + text + "]" : text;
}

// A command as it is typed.
std::string called(const Command &command) {
    return fmt::format("{} {}", program().name, words(command));
}

bool beginsWith(const Command &command, std::span<const std::string> words) {
    std::vector<std::string_view> own = wordsOf(command);
    return own.size() >= words.size() && std::equal(words.begin(), words.end(), own.begin());
}

}  // namespace

std::vector<std::string_view> wordsOf(const Command &command) {
    std::vector<std::string_view> words;
    std::string_view rest = command.words;
    while (!rest.empty()) {
        size_t blank = std::min(rest.find(' '), rest.size());
        words.push_back(rest.substr(0, blank));
        rest.remove_prefix(std::min(blank + 1, rest.size()));
    }
    return words;
}

Shape shapeOf(const Command &command) {
    if (command.shape != nullptr) return command.shape(command);
    return {command.summary,
            {command.arguments.begin(), command.arguments.size()},
            {command.options.begin(), command.options.size()},
            command.details,
            command.example};
}

std::string words(const Command &command) {
    return command.words;
}

std::string words(const Option &option) {
    return option.value == nullptr ? option.name : fmt::format("{} {}", option.name, option.value);
}

std::vector<Option> optionsOf(const Command &command) {
    const Shape shape = shapeOf(command);
    std::vector<Option> options(shape.options.begin(), shape.options.end());
    options.insert(options.end(), command.more.begin(), command.more.end());
    return options;
}

std::string exampleOf(const Command &command) {
    std::string text = shapeOf(command).example;
    if (const size_t at = text.find('%'); at != std::string::npos) text.replace(at, 1, program().name);
    return text;
}

std::string usageLine(const Command &command) {
    const Shape shape = shapeOf(command);
    std::string line = called(command);
    std::string verbatim;
    for (const Argument &argument : shape.arguments)
        (argument.verbatim ? verbatim : line) += " " + argumentWords(argument);
    bool choosing = false;
    for (const Option &option : optionsOf(command)) {
        bool choice = option.need == Need::Choice;
        if (choosing && !choice) line += ")";
        line += choosing && choice ? " | " : choice ? " (" : " ";
        choosing = choice;
        const std::string text = words(option);
        line += option.need == Need::Never ? "[" + text + "]" : text;
        if (option.repeated) line += "...";
    }
    return line + (choosing ? ")" : "") + verbatim;
}

std::string programHelp() {
    std::string text = fmt::format("usage: {} {}\n\n", program().name, program().usage);
    for (const Noun &noun : program().nouns) {
        text += fmt::format("{}: {}\n", noun.name, noun.summary);
        std::vector<std::pair<std::string, std::string>> lines;
        for (const Command &command : noun.commands)
            lines.emplace_back(called(command), shapeOf(command).summary);
        appendAligned(text, lines);
        text += "\n";
    }
    text += "options of every command:\n";
    std::vector<std::pair<std::string, std::string>> lines;
    for (const Option *option : commonOptions())
        lines.emplace_back(words(*option), option->summary);
    appendAligned(text, lines);
    text += fmt::format("\n{0} COMMAND --help says more about a command, {0} manual everything.\n",
                        program().name);
    return text;
}

std::string nounHelp(std::span<const std::string> asked) {
    std::string text;
    for (const Noun &noun : program().nouns) {
        std::vector<std::pair<std::string, std::string>> lines;
        for (const Command &command : noun.commands) {
            if (beginsWith(command, asked)) lines.emplace_back(called(command), shapeOf(command).summary);
        }
        if (lines.empty()) continue;
        if (!text.empty()) text += "\n";
        text += fmt::format("{} {}: {}\n\n", program().name, noun.name, noun.summary);
        appendAligned(text, lines);
    }
    return text;
}

std::string commandHelp(const Command &command) {
    const Shape shape = shapeOf(command);
    std::string text = fmt::format("usage: {}\n\n  {}\n", usageLine(command), shape.summary);
    if (shape.details != nullptr) text += fmt::format("  {}\n", shape.details);
    if (!shape.arguments.empty()) {
        text += "\narguments:\n";
        std::vector<std::pair<std::string, std::string>> lines;
        for (const Argument &argument : shape.arguments)
            lines.emplace_back(argument.name, argument.summary);
        appendAligned(text, lines);
    }
    text += "\noptions:\n";
    std::vector<std::pair<std::string, std::string>> lines;
    for (const Option &option : optionsOf(command))
        lines.emplace_back(words(option), option.summary);
    for (const Option *option : commonOptions()) {
        bool refused = !command.json && option->name == std::string_view("--json");
        if (!refused) lines.emplace_back(words(*option), option->summary);
    }
    appendAligned(text, lines);
    text += fmt::format("\nexample:\n  {}\n", exampleOf(command));
    return text;
}

}  // namespace qvs::cli

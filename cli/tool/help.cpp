// SPDX-License-Identifier: Apache-2.0
// Usage and help texts.
#include "tool/help.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "tool/program.h"
#include "tool/suggest.h"
#include "tool/terminal.h"

namespace qvs::cli {
namespace {

using Lines = std::vector<std::pair<std::string, std::string>>;

// Appends two columns. If the left text is longer than half a line, the right one begins on the next line.
void appendAligned(std::string &out, const Lines &lines, size_t most = proseColumns()) {
    constexpr size_t kIndent = 2;
    size_t widest = 0;
    for (const auto &[left, right] : lines)
        if (left.size() + 2 * kIndent <= most / 2) widest = std::max(widest, left.size());
    const size_t column = widest == 0 ? 4 * kIndent : widest + 2 * kIndent;
    for (const auto &[left, right] : lines) {
        out += std::string(kIndent, ' ') + left;
        const size_t at = kIndent + left.size();
        out += at + kIndent > column ? "\n" + std::string(column, ' ') : std::string(column - at, ' ');
        appendWrapped(out, right, column, column, most);
        out += "\n";
    }
}

void appendIndented(std::string &out, std::string_view text) {
    out += "  ";
    appendWrapped(out, text, 2, 2);
    out += "\n";
}

void appendCommonOptions(std::string &out) {
    out += "options of every command:\n";
    Lines lines;
    for (const Option *option : commonOptions())
        lines.emplace_back(words(*option), option->summary);
    appendAligned(out, lines);
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

std::string argumentWords(const Argument &argument) {
    std::string text = argument.name;
    if (argument.repeated) text += "...";
    if (argument.verbatim) text = "-- " + text;
    return argument.optional ? "[" + text + "]" : text;
}

// The command with the name of the program.
std::string called(const Command &command) {
    return fmt::format("{} {}", program().name, words(command));
}

template <typename Words>
bool beginsWith(const Command &command, const Words &words) {
    std::vector<std::string_view> own = wordsOf(command);
    return own.size() >= words.size() && std::equal(words.begin(), words.end(), own.begin());
}

// Whether a word of the text begins with the letters.
bool hasWord(std::string_view text, std::string_view letters) {
    const auto isInside = [&](size_t at) {
        return at > 0 && std::isalnum(static_cast<unsigned char>(text[at - 1])) != 0;
    };
    size_t at = text.find(letters);
    while (at != std::string_view::npos && isInside(at))
        at = text.find(letters, at + 1);
    return at != std::string_view::npos;
}

// What a search looks at, in small letters. The options that many commands share are found by their names
// alone. The details and the example are searched when nothing else was found.
std::string searchedText(const Command &command, bool inDetails) {
    const Shape shape = shapeOf(command);
    if (inDetails)
        return lower(fmt::format("{} {}", shape.details == nullptr ? "" : shape.details, shape.example));
    std::string text = fmt::format("{} {}", command.words, shape.summary);
    for (const Option &option : shape.options)
        text += fmt::format(" {} {}", option.name, option.summary);
    for (const Option &option : command.more)
        text += fmt::format(" {}", option.name);
    return lower(text);
}

}  // namespace

std::vector<std::string_view> splitWords(std::string_view text) {
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const size_t blank = std::min(text.find(' '), text.size());
        words.push_back(text.substr(0, blank));
        text.remove_prefix(std::min(blank + 1, text.size()));
    }
    return words;
}

std::vector<std::string_view> wordsOf(const Command &command) {
    return splitWords(command.words);
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

std::string summaryOf(const Option &option) {
    if (option.needs == nullptr) return option.summary;
    return fmt::format("{}; needs {}", option.summary, option.needs);
}

std::vector<Option> optionsOf(const Command &command) {
    const Shape shape = shapeOf(command);
    std::vector<Option> options(shape.options.begin(), shape.options.end());
    options.insert(options.end(), command.more.begin(), command.more.end());
    const auto exists = [&](std::string_view name) {
        return std::ranges::any_of(options, [&](const Option &option) { return option.name == name; });
    };
    for (Option &option : options)
        if (option.needs != nullptr && !exists(option.needs)) option.needs = nullptr;
    return options;
}

std::string summaryOf(std::string_view beginning) {
    std::string group;
    const auto part = std::ranges::find(program().parts, beginning, &Noun::name);
    if (part != program().parts.end()) return part->summary;
    for (const Noun &noun : program().nouns) {
        if (noun.name == beginning) return noun.summary;
        for (const Command &command : noun.commands) {
            if (command.words == beginning) return shapeOf(command).summary;
            if (group.empty() && std::string_view(command.words).starts_with(std::string(beginning) + " "))
                group = noun.summary;
        }
    }
    return group;
}

std::string ofProgram(std::string text) {
    const std::string_view name = program().name;
    for (size_t at = 0; (at = text.find('%', at)) != std::string::npos; at += name.size())
        text.replace(at, 1, name);
    return text;
}

std::string exampleOf(const Command &command) {
    return ofProgram(shapeOf(command).example);
}

namespace {

// The parts of a usage line. Lines are not broken inside of a part.
std::vector<std::string> usageParts(const Command &command) {
    std::vector<std::string> parts;
    std::string verbatim;
    for (const Argument &argument : shapeOf(command).arguments) {
        if (argument.verbatim) {
            verbatim = argumentWords(argument);
        } else {
            parts.push_back(argumentWords(argument));
        }
    }
    bool choosing = false;
    for (const Option &option : optionsOf(command)) {
        const bool choice = option.need == Need::Choice;
        if (choosing && !choice) parts.back() += ")";
        const std::string text = words(option);
        const std::string named = option.need == Need::Never ? "[" + text + "]" : text;
        const char *before = !choice ? "" : choosing ? "| " : "(";
        parts.push_back(before + named + (option.repeated ? "..." : ""));
        choosing = choice;
    }
    if (choosing) parts.back() += ")";
    if (!verbatim.empty()) parts.push_back(verbatim);
    return parts;
}

}  // namespace

// Replaces the blanks inside of parts while lines are broken.
std::string wrappedUsage(const Command &command, size_t columns, std::string text) {
    constexpr char kHold = '\x01';
    std::string line = called(command);
    const size_t indent = text.size();
    std::replace(line.begin(), line.end(), ' ', kHold);
    for (std::string part : usageParts(command)) {
        std::replace(part.begin(), part.end(), ' ', kHold);
        line += " " + part;
    }
    appendWrapped(text, line, indent, indent + 4, columns);
    std::replace(text.begin(), text.end(), kHold, ' ');
    return text;
}

std::string usageLine(const Command &command) {
    std::string line = called(command);
    for (const std::string &part : usageParts(command))
        line += " " + part;
    return line;
}

namespace {

// The columns of a screen on which the short help stands in two columns, and the lines that fit on any.
constexpr size_t kScreenColumns = 80;
constexpr size_t kScreenLines = 24;
constexpr size_t kGap = 2;

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    for (; !text.empty(); text.remove_prefix(text.find('\n') + 1))
        lines.push_back(text.substr(0, text.find('\n')));
    return lines;
}

// The topics of the short help, each with its nouns. Nouns without a topic come last.
std::vector<std::string> topicTexts(size_t columns) {
    std::vector<std::string> texts;
    std::vector<std::string_view> rest = wordsBehind({});
    const auto add = [&](const char *title, const std::vector<std::string_view> &nouns) {
        Lines lines;
        for (const std::string_view noun : nouns)
            lines.emplace_back(noun, summaryOf(noun));
        appendAligned(texts.emplace_back(fmt::format("{}:\n", title)), lines, columns);
    };
    for (const Topic &topic : program().topics) {
        std::vector<std::string_view> nouns = splitWords(topic.nouns);
        std::erase_if(nouns, [&](std::string_view noun) { return std::erase(rest, noun) == 0; });
        add(topic.title, nouns);
    }
    if (!rest.empty()) add("The tool", rest);
    return texts;
}

// Places the first topics beside the others, so that both columns are about as high.
std::string besides(const std::vector<std::string> &topics, size_t columns) {
    const std::string whole = fmt::format("{}", fmt::join(topics, ""));
    const size_t half = (linesOf(whole).size() + 1) / 2;
    std::string text;
    size_t taken = 0;
    while (taken < topics.size() && linesOf(text).size() + linesOf(topics[taken]).size() / 2 <= half)
        text += topics[taken++];
    const std::vector<std::string_view> left = linesOf(text);
    const std::vector<std::string_view> right = linesOf(std::string_view(whole).substr(text.size()));
    std::string result;
    for (size_t i = 0; i < std::max(left.size(), right.size()); i++) {
        std::string line(i < left.size() ? left[i] : "");
        if (i < right.size()) line.append(columns + kGap - line.size(), ' ').append(right[i]);
        result += line + "\n";
    }
    return result;
}

}  // namespace

std::string programHelp() {
    if (program().topics.empty()) return wholeHelp();
    const size_t columns = std::min(proseColumns(), kScreenColumns);
    std::string topics = fmt::format("{}", fmt::join(topicTexts(columns), ""));
    if (linesOf(topics).size() > kScreenLines && columns == kScreenColumns) {
        const size_t half = (columns - kGap) / 2;
        topics = besides(topicTexts(half), half);
    }
    std::string text = "usage: ";
    appendWrapped(text, fmt::format("{} {}", program().name, program().usage), text.size(), text.size());
    return text + fmt::format(
                      "\n{1}\n"
                      "{0} help NOUN lists the verbs of a noun, {0} help all every command.\n"
                      "{0} help WORD searches; {0} COMMAND --help says more about a command.\n",
                      program().name, topics);
}

std::string wholeHelp() {
    std::string text = fmt::format("usage: {} {}\n\n", program().name, program().usage);
    for (const Noun &noun : program().nouns) {
        text += fmt::format("{}: {}\n", noun.name, noun.summary);
        Lines lines;
        for (const Command &command : noun.commands)
            lines.emplace_back(called(command), shapeOf(command).summary);
        appendAligned(text, lines);
        text += "\n";
    }
    appendCommonOptions(text);
    text += fmt::format("\n{0} COMMAND --help says more about a command, {0} manual everything.\n",
                        program().name);
    return text;
}

namespace {

// The commands for which `picks` returns true, grouped by noun.
template <typename Picks>
std::string pickedHelp(Picks picks) {
    std::string text;
    for (const Noun &noun : program().nouns) {
        Lines lines;
        for (const Command &command : noun.commands) {
            if (picks(command)) lines.emplace_back(called(command), shapeOf(command).summary);
        }
        if (lines.empty()) continue;
        if (!text.empty()) text += "\n";
        text += fmt::format("{} {}: {}\n\n", program().name, noun.name, noun.summary);
        appendAligned(text, lines);
    }
    return text;
}

}  // namespace

std::string nounHelp(std::span<const std::string> asked) {
    return pickedHelp([&](const Command &command) { return beginsWith(command, asked); });
}

std::string searchHelp(std::span<const std::string> asked) {
    const std::vector<std::string> meanings =
        asked.size() == 1 ? meaningsOf(lower(asked.front())) : std::vector<std::string>();
    const auto search = [&](bool inDetails) {
        return pickedHelp([&](const Command &command) {
            const auto isMeant = [&](std::string_view each) { return beginsWith(command, splitWords(each)); };
            if (std::ranges::any_of(meanings, isMeant)) return true;
            const std::string text = searchedText(command, inDetails);
            return std::ranges::all_of(asked,
                                       [&](const std::string &word) { return hasWord(text, lower(word)); });
        });
    };
    const std::string found = search(false);
    return found.empty() ? search(true) : found;
}

std::string commandHelp(const Command &command) {
    const Shape shape = shapeOf(command);
    std::string text = wrappedUsage(command, proseColumns()) + "\n\n";
    appendIndented(text, shape.summary);
    if (shape.details != nullptr) appendIndented(text, ofProgram(shape.details));
    if (!shape.arguments.empty()) {
        text += "\narguments:\n";
        Lines lines;
        for (const Argument &argument : shape.arguments)
            lines.emplace_back(argument.name, argument.summary);
        appendAligned(text, lines);
    }
    text += "\noptions:\n";
    Lines lines;
    for (const Option &option : optionsOf(command))
        lines.emplace_back(words(option), summaryOf(option));
    for (const Option *option : commonOptions()) {
        if (takes(command, *option)) lines.emplace_back(words(*option), option->summary);
    }
    appendAligned(text, lines);
    text += fmt::format("\nexample:\n  {}\n", exampleOf(command));
    return text;
}

}  // namespace qvs::cli

// SPDX-License-Identifier: Apache-2.0
// The manual pages, made from the command table and the description of the program.
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <iterator>

#include "tool/help.h"
#include "tool/program.h"

namespace qvs::cli {
namespace {

std::string troff(std::string_view text) {
    std::string out;
    if (text.starts_with(".") || text.starts_with("'")) out = "\\&";
    for (char c : text) {
        switch (c) {
            case '-':
                out += "\\-";
                break;
            case '\\':
                out += "\\e";
                break;
            case '\n':
                out += "\n\\&";
                break;
            default:
                out += c;
        }
    }
    return out;
}

// A usage line with its placeholders in italics.
std::string troffUsage(std::string_view text) {
    auto stands = [](char c) { return c >= 'A' && c <= 'Z'; };
    std::string out;
    bool italic = false;
    for (size_t i = 0; i < text.size(); i++) {
        const bool inside = stands(text[i]) || (italic && text[i] >= '0' && text[i] <= '9');
        if (inside != italic) out += inside ? "\\fI" : "\\fR";
        italic = inside;
        // A dot is a request only at the beginning of a line, where the name of the program stands.
        out += text[i] == '.' ? "." : troff(text.substr(i, 1));
    }
    return italic ? out + "\\fR" : out;
}

// The usage of a command, in lines that fit a terminal of 80 columns.
std::string troffUsage(const Command &command) {
    constexpr size_t kColumns = 80 - 7;  // less the indent of a page
    return troffUsage(wrappedUsage(command, kColumns, ""));
}

void troffItem(std::string &page, std::string_view term, std::string_view text) {
    page += fmt::format(".TP\n\\fB{}\\fR\n{}\n", troff(term), troff(text));
}

void troffPassage(std::string &page, const Passage &passage) {
    if (passage.asIs) {
        page += fmt::format(".PP\n.nf\n{}\n.fi\n", troff(passage.text));
    } else if (passage.term != nullptr) {
        troffItem(page, passage.term, passage.text);
    } else {
        page += fmt::format(".PP\n{}\n", troff(passage.text));
    }
}

void troffCommand(std::string &page, const Command &command) {
    const Shape shape = shapeOf(command);
    page += fmt::format(".SS \"{}\"\n", troff(fmt::format("{} {}", program().name, words(command))));
    page += fmt::format("{}.\n.PP\n.nf\n{}\n.fi\n", troff(shape.summary), troffUsage(command));
    for (const Argument &argument : shape.arguments)
        troffItem(page, argument.name, argument.summary);
    for (const Option &option : optionsOf(command))
        troffItem(page, words(option), summaryOf(option));
    if (shape.details != nullptr) page += fmt::format(".PP\n{}\n", troff(ofProgram(shape.details)));
    page += fmt::format(".PP\nExample: {}\n", troff(exampleOf(command)));
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

std::string markdown(const Passage &passage) {
    if (passage.term != nullptr) return fmt::format("- {}: {}\n", passage.term, passage.text);
    if (!passage.asIs) return fmt::format("{}\n\n", passage.text);
    std::string lines = "    ";
    for (char c : std::string_view(passage.text))
        lines += c == '\n' ? std::string("\n    ") : std::string(1, c);
    return lines + "\n\n";
}

std::string_view firstWord(std::string_view words) {
    return words.substr(0, words.find(' '));
}

std::string pageNameOf(std::string_view noun) {
    return fmt::format("{}-{}", program().name, noun);
}

std::string title(std::string_view name) {
    return fmt::format(".TH {} 1 {} \"qvs {}\" \"User Commands\"\n", troff(upper(std::string(name))),
                       program().date, program().version);
}

// The commands of a program that has pages of nouns: the pages.
void troffPages(std::string &page) {
    page += "Each noun has a page of its own.\n";
    for (const std::string_view noun : nounsWithPages())
        troffItem(page, pageNameOf(noun) + "(1)", summaryOf(noun));
}

// The title of a section begins a paragraph, and no request for one may follow it.
std::string withoutEmptyParagraphs(std::string page) {
    constexpr std::string_view kParagraph = ".PP\n";
    for (size_t at = 0; (at = page.find("\n.SH ", at)) != std::string::npos;) {
        at = page.find('\n', at + 1) + 1;
        if (std::string_view(page).substr(at).starts_with(kParagraph)) page.erase(at--, kParagraph.size());
    }
    return page;
}

// Breaks lines at blanks, so that each has at most 80 bytes, as readers of the source expect.
std::string withShortLines(std::string_view page) {
    constexpr size_t kMost = 80;
    std::string out;
    bool filled = true;
    bool tag = false;
    while (!page.empty()) {
        std::string_view line = page.substr(0, page.find('\n'));
        page.remove_prefix(std::min(line.size() + 1, page.size()));
        if (line == ".nf") filled = false;
        if (line == ".fi") filled = true;
        const bool next = line == ".TP";
        const bool request = line.starts_with('.');
        while (!request && line.size() > kMost) {
            const size_t at = line.rfind(' ', kMost - 2);
            if (at == 0 || at == std::string_view::npos) break;
            out += line.substr(0, at);
            line.remove_prefix(at + 1);
            // Where lines stay as they are, and in a tag, a backslash joins this one and the next.
            out += filled && !tag ? "\n" : " \\\n";
            if (filled && line.starts_with('.')) out += "\\&";
        }
        out += line;
        out += '\n';
        tag = next;
    }
    return out;
}

}  // namespace

std::vector<std::string_view> nounsWithPages() {
    std::vector<std::string_view> found;
    if (!program().hasPagesOfNouns) return found;
    for (const Noun &noun : program().nouns) {
        if (noun.isProgram) continue;
        for (const Command &command : noun.commands) {
            const std::string_view word = firstWord(command.words);
            if (std::find(found.begin(), found.end(), word) == found.end()) found.push_back(word);
        }
    }
    return found;
}

std::string manualPageOf(std::string_view noun) {
    const std::string name = pageNameOf(noun);
    std::string page = title(name);
    page += fmt::format(".SH NAME\n{} \\- {}\n", troff(name), troff(summaryOf(noun)));
    page += ".SH SYNOPSIS\n.nf\n";
    std::string commands;
    for (const Noun &group : program().nouns) {
        for (const Command &command : group.commands) {
            if (firstWord(command.words) != noun) continue;
            page += troffUsage(command) + "\n";
            troffCommand(commands, command);
        }
    }
    page += ".fi\n.SH COMMANDS\n" + commands;
    page += fmt::format(".SH SEE ALSO\n{}(1) has the options of every command and the exit statuses.\n",
                        troff(program().name));
    return withShortLines(withoutEmptyParagraphs(std::move(page)));
}

std::string manualPage() {
    const Program &self = program();
    std::string page = title(self.name);
    page += fmt::format(".SH NAME\n{} \\- {}\n", troff(self.name), troff(self.summary));
    page += fmt::format(".SH SYNOPSIS\n\\fB{}\\fR {}\n", troff(self.name), troffUsage(self.usage));
    page += ".SH DESCRIPTION\n";
    for (const Passage &passage : self.description)
        troffPassage(page, passage);
    page += ".SH OPTIONS\nEvery command takes these.\n";
    for (const Option *option : commonOptions())
        troffItem(page, words(*option), option->summary);
    page += ".SH COMMANDS\n";
    if (self.hasPagesOfNouns) troffPages(page);
    for (const Noun &noun : self.nouns) {
        for (const Command &command : noun.commands)
            if (!self.hasPagesOfNouns) troffCommand(page, command);
    }
    for (const Section &section : self.sections) {
        page += fmt::format(".SH {}\n", upper(section.title));
        for (const Passage &passage : section.passages)
            troffPassage(page, passage);
    }
    return withShortLines(withoutEmptyParagraphs(std::move(page)));
}

std::string markdownManual() {
    const Program &self = program();
    std::string page = fmt::format("# {0}\n\n{1}\n\n    {0} {2}\n\n", self.name, self.summary, self.usage);
    for (const Passage &passage : self.description)
        page += markdown(passage);
    page += "## Options of every command\n\n";
    for (const Option *option : commonOptions())
        page += fmt::format("- `{}`: {}\n", words(*option), option->summary);
    for (const Noun &noun : self.nouns) {
        page += fmt::format("\n## {}\n", noun.name);
        for (const Command &command : noun.commands) {
            const Shape shape = shapeOf(command);
            page += fmt::format("\n### {} {}\n\n{}.\n\n    {}\n", self.name, words(command), shape.summary,
                                usageLine(command));
            if (shape.arguments.size() + optionsOf(command).size() > 0) page += "\n";
            for (const Argument &argument : shape.arguments)
                page += fmt::format("- `{}`: {}\n", argument.name, argument.summary);
            for (const Option &option : optionsOf(command))
                page += fmt::format("- `{}`: {}\n", words(option), summaryOf(option));
            if (shape.details != nullptr) page += fmt::format("\n{}\n", ofProgram(shape.details));
            page += fmt::format("\nExample: `{}`\n", exampleOf(command));
        }
    }
    for (const Section &section : self.sections) {
        page += fmt::format("\n## {}\n\n", section.title);
        for (const Passage &passage : section.passages)
            page += markdown(passage);
    }
    return page;
}

}  // namespace qvs::cli

// The manual page, made from the command table.
#include <fmt/format.h>

#include <iterator>

#include "tool/help.h"

namespace qvs::cli {
namespace {

constexpr const char *kSummary = "control the distributed virtual switches of a hypervisor host";
constexpr const char *kDescription[] = {
    "qvs creates, shows and changes the distributed virtual switches of this host, their ports, uplinks and "
    "stored "
    "properties. A switch is named by its alias.",
    "Every change is reported as changed or unchanged. When several objects are given, all are checked "
    "before the "
    "first is changed. Options may stand anywhere behind the command; -- ends them, so that a name may begin "
    "with a "
    "dash.",
    "Reading commands print a table, or JSON with --json: a list is an array of objects, one a line; an "
    "absent value "
    "is null and shown as -; a boolean is always present. Names are shown with control characters, "
    "backslashes and "
    "bytes that are not UTF-8 escaped. Records whose layout is the kernel's own are shown as hexadecimal "
    "digits, and "
    "as base64 in JSON.",
    "On a machine without a hypervisor, qvs-host run -- qvs ... gives qvs an emulated host.",
};

std::string optionWords(const Option &option) {
    return option.value == nullptr ? option.name : fmt::format("{} {}", option.name, option.value);
}

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
            default:
                out += c;
        }
    }
    return out;
}

void troffItem(std::string &page, std::string_view term, std::string_view text) {
    page += fmt::format(".TP\n\\fB{}\\fR\n{}\n", troff(term), troff(text));
}

void troffCommand(std::string &page, const Command &command) {
    page += fmt::format(".SS \"{}\"\n", troff("qvs " + words(command)));
    page += fmt::format("{}.\n.PP\n.nf\n{}\n.fi\n", troff(command.summary), troff(usageLine(command)));
    for (const Argument &argument : command.arguments)
        troffItem(page, argument.name, argument.summary);
    for (const Option &option : command.options)
        troffItem(page, optionWords(option), option.summary);
    if (command.details != nullptr) page += fmt::format(".PP\n{}\n", troff(command.details));
    page += fmt::format(".PP\nExample: {}\n", troff(command.example));
}

}  // namespace

std::string manualPage() {
    std::string page = fmt::format(".TH QVS 1 \"\" \"qvs {}\" \"User Commands\"\n", QVS_VERSION);
    page += fmt::format(".SH NAME\nqvs \\- {}\n", troff(kSummary));
    page += ".SH SYNOPSIS\n\\fBqvs\\fR \\fINOUN VERB\\fR [\\fIARGUMENT\\fR...] [\\fIOPTION\\fR...]\n";
    page += ".SH DESCRIPTION\n";
    for (const char *paragraph : kDescription)
        page += troff(paragraph) + "\n.PP\n";
    page += ".SH OPTIONS\nEvery command takes these.\n";
    for (const Option &option : kGlobalOptions)
        troffItem(page, optionWords(option), option.summary);
    page += ".SH COMMANDS\n";
    for (const Noun &noun : nouns()) {
        for (const Command &command : noun.commands)
            troffCommand(page, command);
    }
    page += ".SH EXIT STATUS\n";
    for (const ExitCode &exit : kExitCodes)
        troffItem(page, fmt::to_string(exit.code), exit.meaning);
    page += ".SH SEE ALSO\n\\fBqvs\\-host\\fR(1)\n";
    return page;
}

std::string markdownManual() {
    std::string page =
        fmt::format("# qvs\n\n{}\n\n    qvs NOUN VERB [ARGUMENT...] [OPTION...]\n\n", kSummary);
    for (const char *paragraph : kDescription)
        page += fmt::format("{}\n\n", paragraph);
    page += "## Options of every command\n\n";
    for (const Option &option : kGlobalOptions) {
        page += fmt::format("- `{}`: {}\n", optionWords(option), option.summary);
    }
    for (const Noun &noun : nouns()) {
        page += fmt::format("\n## {}\n", noun.name);
        for (const Command &command : noun.commands) {
            page += fmt::format("\n### qvs {}\n\n{}.\n\n    {}\n", words(command), command.summary,
                                usageLine(command));
            if (command.arguments.size() + command.options.size() > 0) page += "\n";
            for (const Argument &argument : command.arguments) {
                page += fmt::format("- `{}`: {}\n", argument.name, argument.summary);
            }
            for (const Option &option : command.options) {
                page += fmt::format("- `{}`: {}\n", optionWords(option), option.summary);
            }
            if (command.details != nullptr) page += fmt::format("\n{}\n", command.details);
            page += fmt::format("\nExample: `{}`\n", command.example);
        }
    }
    page += "\n## Exit status\n\n";
    for (const ExitCode &exit : kExitCodes)
        page += fmt::format("- {}: {}\n", exit.code, exit.meaning);
    return page;
}

}  // namespace qvs::cli

// SPDX-License-Identifier: Apache-2.0
// qvs help, completion and manual: what the tool says about itself.
#include "base/text.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/help.h"
#include "tool/output.h"
#include "tool/run.h"

namespace qvs::cli {
namespace {

void help(const Arguments &arguments, Output &out) {
    if (!arguments.given("NOUN")) return out.write(programHelp());
    std::vector<std::string> asked = {arguments.text("NOUN")};
    for (const std::string &word : arguments.all("VERB"))
        asked.push_back(word);
    out.write(helpFor(asked));
}

void completion(const Arguments &arguments, Output &out) {
    if (arguments.text("SHELL") != "bash")
        fail(Exit::Usage, "SHELL: {} is not 'bash'", inQuotes(arguments.text("SHELL")));
    out.write(bashCompletion());
}

void manual(const Arguments &arguments, Output &out) {
    out.write(arguments.given("--markdown") ? markdownManual() : manualPage());
}

const Command kRows[] = {
    {.words = "help",
     .summary = "print the help of the tool, a noun or a command",
     .arguments = {{"NOUN", "the noun", Kind::Word, true}, {"VERB", "the verb", Kind::Word, true, true}},
     .example = "% help completion",
     .json = false,
     .run = local(help)},
    {.words = "completion",
     .summary = "print the completion of a shell",
     .arguments = {{"SHELL", "bash", Kind::Shell}},
     .example = "source <(% completion bash)",
     .json = false,
     .run = local(completion)},
    {.words = "manual",
     .summary = "print the manual page",
     .options = {{"--markdown", nullptr, "print it as Markdown instead of troff"}},
     .example = "% manual | man -l -",
     .json = false,
     .run = local(manual)},
};

}  // namespace

const std::span<const Command> kToolCommands = kRows;

}  // namespace qvs::cli

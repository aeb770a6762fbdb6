// SPDX-License-Identifier: Apache-2.0
// qvs help, completion and manual: what the tool says about itself.
#include <algorithm>
#include <string>
#include <vector>

#include "base/text.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/help.h"
#include "tool/output.h"
#include "tool/program.h"
#include "tool/run.h"
#include "tool/suggest.h"

namespace qvs::cli {
namespace {

constexpr const char *kAllCommands[] = {"all"};

void help(const Arguments &arguments, Output &out) {
    if (!arguments.given("NOUN")) return out.write(programHelp());
    std::vector<std::string> asked = {arguments.text("NOUN")};
    for (const std::string &word : arguments.all("VERB"))
        asked.push_back(word);
    if (asked.size() == 1 && asked[0] == kAllCommands[0]) return out.write(wholeHelp());
    const std::vector<std::string_view> first = wordsBehind({});
    const bool known = std::find(first.begin(), first.end(), asked[0]) != first.end();
    if (known) return out.write(helpFor(asked));
    const std::string found = searchHelp(asked);
    if (found.empty()) {
        const std::string meant = didYouMean(commandsMeant(asked, 0));
        fail(Exit::Usage, "nothing about {} was found{} '{} help' lists the commands",
             inQuotes(fmt::format("{}", fmt::join(asked, " "))), meant.empty() ? ";" : meant, program().name);
    }
    out.write(found);
}

void completion(const Arguments &arguments, Output &out) {
    out.write(completionScript(arguments.text("SHELL")));
}

void complete(const Arguments &arguments, Output &out) {
    offerNext(arguments.all("WORD"), out);
}

void manual(const Arguments &arguments, Output &out) {
    const std::vector<std::string_view> nouns = nounsWithPages();
    if (arguments.given(kNames.name)) {
        NameList names(out);
        for (const std::string_view noun : nouns)
            names.add(noun);
        return names.finish();
    }
    if (!arguments.given("NOUN"))
        return out.write(arguments.given("--markdown") ? markdownManual() : manualPage());
    const std::string &noun = arguments.text("NOUN");
    if (std::find(nouns.begin(), nouns.end(), noun) == nouns.end())
        fail(Exit::Usage, "there is no manual page about {}{}", inQuotes(noun),
             didYouMean(commandsMeant({&noun, 1}, 0)));
    out.write(manualPageOf(noun));
}

constexpr const char *kShells[] = {"bash", "zsh", "fish"};

const Command kRows[] = {
    {.words = "help",
     .summary = "print or search the help",
     .arguments = {{.name = "NOUN",
                    .summary = "the noun, a word to look for, or all for every command",
                    .kind = Kind::Command,
                    .optional = true,
                    .choices = kAllCommands,
                    .open = true},
                   {"VERB", "the verb", Kind::Command, true, true}},
     .details =
         "A word that is no noun is looked for at the beginnings of words: in the names and summaries "
         "of all commands and of their options. Words of other tools find the commands that do the same.",
     .example = "% help completion",
     .json = false,
     .run = local(help)},
    {.words = "completion",
     .summary = "print completion for a shell",
     .arguments = {{.name = "SHELL", .summary = "bash, zsh or fish", .choices = kShells}},
     .details = "An installation has the completion of each shell in place. To try one without: source "
                "<(% completion bash) in bash and zsh, % completion fish | source in fish.",
     .example = "source <(% completion bash)",
     .json = false,
     .run = local(completion)},
    {.words = "complete",
     .summary = "print possible next words",
     .arguments = {{.name = "WORD",
                    .summary = "the words of a command line behind the program, the last one unfinished",
                    .repeated = true,
                    .verbatim = true}},
     .details = "The completion of each shell calls this. The first line says which names of the machine are "
                "offered as well: file, directory, program, or - for none. Each other line is a word and, "
                "behind a tab, what it is. The shell picks those that begin like the last word.",
     .example = "% complete -- he",
     .json = false,
     .run = local(complete)},
    {.words = "manual",
     .summary = "print a manual page",
     .arguments = {{"NOUN", "the noun of the page; the page of the program without one", Kind::Command,
                    true}},
     .options = {{"--markdown", nullptr, "print all commands as Markdown instead of troff"},
                 {.name = kNames.name,
                  .value = nullptr,
                  .summary = "print the nouns that have pages, one a line"}},
     .example = "% manual | man -l -",
     .json = false,
     .run = local(manual)},
};

}  // namespace

const std::span<const Command> kToolCommands = kRows;

}  // namespace qvs::cli

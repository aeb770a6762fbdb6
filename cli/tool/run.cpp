// SPDX-License-Identifier: Apache-2.0
#include "tool/run.h"

#include <algorithm>
#include <cstdio>
#include <new>

#include "base/text.h"
#include "tool/failure.h"
#include "tool/help.h"
#include "tool/output.h"
#include "tool/program.h"
#include "tool/suggest.h"
#include "tool/terminal.h"

namespace qvs::cli {
namespace {

// The number of words of a command with which other words begin. `whole` tells whether these are all its
// words. A batch compares each line with most commands, so nothing is copied.
size_t sharedWords(std::string_view own, std::span<const std::string> words, bool &whole) {
    size_t shared = 0;
    whole = false;
    for (const std::string &word : words) {
        if (!own.starts_with(word)) break;
        own.remove_prefix(word.size());
        if (!own.empty() && own.front() != ' ') break;
        shared++;
        whole = own.empty();
        if (whole) break;
        own.remove_prefix(1);
    }
    return shared;
}

// The command that the words begin with, and its number of words; null when more words are needed.
const Command *findCommand(std::span<const std::string> words, size_t &taken) {
    if (words.empty()) return nullptr;
    size_t known = 0;  // the number of words that some command begins with
    for (const Noun &noun : program().nouns) {
        for (const Command &command : noun.commands) {
            bool whole = false;
            taken = sharedWords(command.words, words, whole);
            if (whole) return &command;
            known = std::max(known, taken);
        }
    }
    if (known == words.size()) return nullptr;
    std::string begin = fmt::format("{}", fmt::join(words.first(known), " "));
    const char *blank = known == 0 ? "" : " ";
    const std::string meant = didYouMean(commandsMeant(words, known));
    fail(Exit::Usage, "no such command: {}{}{}{} '{} help{}{}' lists them", begin, blank,
         inQuotes(words[known]), meant.empty() ? ";" : meant, program().name, blank, begin);
}

// The option of every command that a word names, with or without "=VALUE".
std::optional<Option> commonOption(const std::string &word) {
    return optionNamed(nullptr, std::string_view(word).substr(0, word.find('=')));
}

// Removes the options that stand before or between the words of the command, and returns them.
std::vector<std::string> takeLeading(std::vector<std::string> &words) {
    constexpr size_t kMostWords = 3;
    std::vector<std::string> leading;
    size_t plain = 0;
    while (plain < words.size() && plain < kMostWords) {
        const auto word = words.begin() + static_cast<long>(plain);
        if (*word == "-h") *word = "--help";
        const bool looksLikeOption = word->starts_with("-");
        if (const std::optional<Option> option = looksLikeOption ? commonOption(*word) : std::nullopt) {
            const bool valued =
                option->value != nullptr && word->find('=') == std::string::npos && plain + 1 < words.size();
            const auto end = word + (valued ? 2 : 1);
            leading.insert(leading.end(), word, end);
            words.erase(word, end);
        } else if (looksLikeOption) {
            if (plain == 0)
                fail(Exit::Usage, "no such option: {}{}", inQuotes(*word),
                     didYouMean(optionsMeant(nullptr, *word)));
            break;
        } else {
            plain++;
        }
    }
    return leading;
}

// The call that the words name; its command is null when more words are needed.
Call takeApart(std::vector<std::string> &words) {
    std::vector<std::string> rest = takeLeading(words);
    const bool help = std::find(rest.begin(), rest.end(), "--help") != rest.end();
    Call call;
    if (help) call.arguments.add("--help", {});
    size_t taken = 0;
    call.command = findCommand(words, taken);
    if (call.command == nullptr || help) return call;
    rest.insert(rest.end(), words.begin() + static_cast<long>(taken), words.end());
    call.arguments = parseArguments(*call.command, rest);
    return call;
}

int show(std::string_view text) {
    Output out(false);
    out.write(text);
    out.flush();
    return 0;
}

int runWords(std::vector<std::string> words) {
    if (!words.empty() && words.front() == "--version")
        return show(fmt::format("{} {}\n", program().name, program().version));
    const Call call = takeApart(words);
    if (call.arguments.given("--help")) return show(helpFor(words));
    if (call.command != nullptr) return execute(call);
    std::fputs(helpFor(words).c_str(), stderr);
    return static_cast<int>(Exit::Usage);
}

}  // namespace

Call parseCall(std::vector<std::string> words) {
    Call call = takeApart(words);
    if (call.command == nullptr && !call.arguments.given("--help"))
        fail(Exit::Usage, "a command is needed; '{} help' lists them", program().name);
    return call;
}

void runCall(const Call &call, Output &out) {
    if (program().run != nullptr) {
        program().run(call, out);
    } else {
        call.command->run(call.arguments, out);
    }
}

int execute(const Call &call) {
    Output out(call.arguments.given("--json"), call.arguments.given("--wide"));
    try {
        runCall(call, out);
    } catch (const Failure &) {
        // Output of the command comes before the message of the failure.
        out.flush();
        throw;
    }
    out.flush();
    return out.exitCode();
}

std::string helpFor(std::span<const std::string> words) {
    size_t taken = 0;
    const Command *command = findCommand(words, taken);
    if (command != nullptr) return commandHelp(*command);
    return words.empty() ? programHelp() : nounHelp(words);
}

int run(int argc, char **argv) {
    try {
        return runWords({argv + (argc > 0 ? 1 : 0), argv + argc});
    } catch (const Failure &failure) {
        std::string message = failure.message;
        if (failure.exit == Exit::Usage) {
            message.clear();
            appendWrapped(message, failure.message, 0, 0, messageColumns());
        }
        if (!message.empty()) complain("{}", message);
        return failure.exit == Exit::Failed ? program().failed : static_cast<int>(failure.exit);
    } catch (const std::bad_alloc &) {
        std::fprintf(stderr, "%s: Out of memory\n", program().name);
    } catch (const std::exception &error) {
        complain("{}", shown(error.what()));
    }
    return program().failed;
}

}  // namespace qvs::cli

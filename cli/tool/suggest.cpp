// SPDX-License-Identifier: Apache-2.0
#include "tool/suggest.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "base/failure.h"
#include "base/text.h"
#include "tool/program.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr size_t kMostSuggestions = 3;

// Verbs of this and other tools that mean the same. For a wrong verb, the verbs of its line that exist are
// suggested.
constexpr const char *kSameVerbs[] = {
    "remove rm del delete destroy clear erase purge unset drop",
    "list ls show get display view info print cat dump status",
    "create add new make mk define",
    "set change edit modify update configure config put",
    "rename mv move",
    "stop off down disable shutdown kill",
    "start on up enable begin",
    "check verify test diagnose doctor",
    "help man usage",
};

// Names of options in other tools, and what such options are called here.
constexpr OtherName kOtherOptions[] = {
    {"--vlan --vid --tag --vlan-id", "--id,--encap-vlan"},
    {"--to --dst --dest --destination --target", "--destinations"},
    {"--from --src --source --sources", "--sources-in,--sources-out"},
    {"--trunks --range --ranges --vlans", "--trunk"},
    {"--backup", "--standby"},
    {"--out", "--output"},
    {"--filter", "--where"},
    {"--order", "--sort"},
};

bool contains(const std::vector<std::string_view> &words, std::string_view word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// The words with a spelling similar to the typed one, the most similar first.
std::vector<std::string_view> similar(std::string_view typed, const std::vector<std::string_view> &words) {
    constexpr size_t kLongestWord = 64;
    if (typed.empty() || typed.size() > kLongestWord) return {};
    // One mistake in three letters at most.
    const size_t most = typed.size() / 3;
    std::vector<std::pair<size_t, std::string_view>> found;
    for (const std::string_view word : words) {
        const size_t distance = distanceBetween(typed, word);
        if (distance <= most && distance < word.size()) {
            found.emplace_back(distance, word);
        } else if (typed.size() > 1 && word.starts_with(typed)) {
            found.emplace_back(most + 1, word);
        }
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<std::string_view> best;
    best.reserve(found.size());
    for (const auto &[distance, word] : found)
        best.push_back(word);
    return best;
}

// The verbs among the words that mean the same as the typed one, which comes first if it is one of them.
std::vector<std::string_view> sameVerbs(std::string_view typed, const std::vector<std::string_view> &words) {
    std::vector<std::string_view> found;
    if (contains(words, typed)) found.push_back(typed);
    for (const char *line : kSameVerbs) {
        const std::vector<std::string_view> same = splitWords(line);
        if (!contains(same, typed)) continue;
        for (const std::string_view verb : same)
            if (verb != typed && contains(words, verb)) found.push_back(verb);
    }
    return found;
}

// What a table says that a word means.
std::vector<std::string> listedMeanings(std::span<const OtherName> table, std::string_view word) {
    for (const OtherName &name : table)
        if (contains(splitWords(name.theirs), word)) return splitList(name.ours);
    return {};
}

// The commands that contain the word behind their noun, up to that word: "port vlan" for "vlan".
std::vector<std::string> endingWith(std::string_view word) {
    std::vector<std::string> found;
    for (const Noun &noun : program().nouns) {
        for (const Command &command : noun.commands) {
            const std::vector<std::string_view> own = wordsOf(command);
            const auto at = std::find(own.begin() + 1, own.end(), word);
            if (at == own.end()) continue;
            std::string beginning = fmt::format("{}", fmt::join(own.begin(), at + 1, " "));
            if (std::find(found.begin(), found.end(), beginning) == found.end())
                found.push_back(std::move(beginning));
        }
    }
    return found;
}

// How well a word fits as the value of an option. Most texts fit any option with a text, so only options that
// take choices, numbers, files or names of the host are considered.
enum class Fit { None, Possible, Certain };

Fit fitOf(const Command &command, const Option &option, std::string_view word) {
    static const std::vector<std::string_view> numeric = {"N",       "ID",      "VLAN",        "BYTES",
                                                          "MINUTES", "SECONDS", "MILLISECONDS"};
    if (!option.choices.empty()) {
        const auto &choices = option.choices;
        return std::find(choices.begin(), choices.end(), word) != choices.end() ? Fit::Certain : Fit::None;
    }
    try {
        if (option.check != nullptr) option.check(option.name, std::string(word));
        if (command.check != nullptr) command.check(command, option.name, std::string(word));
    } catch (const Failure &) {
        return Fit::None;
    }
    const bool number = parseWideNumber(word).has_value();
    switch (option.kind) {
        case Kind::Word:
        case Kind::Name:
            return number && contains(numeric, option.value) ? Fit::Possible : Fit::None;
        case Kind::File:
        case Kind::Directory:
        case Kind::Lab:
            return word.find_first_of("/.") != std::string_view::npos ? Fit::Possible : Fit::None;
        default:
            return number ? Fit::None : Fit::Possible;
    }
}

}  // namespace

std::vector<std::string_view> wordsBehind(std::span<const std::string> words) {
    std::vector<std::string_view> behind;
    for (const Noun &noun : program().nouns) {
        for (const Command &command : noun.commands) {
            const std::vector<std::string_view> own = wordsOf(command);
            if (own.size() > words.size() && std::equal(words.begin(), words.end(), own.begin()) &&
                !contains(behind, own[words.size()]))
                behind.push_back(own[words.size()]);
        }
    }
    return behind;
}

std::string didYouMean(const std::vector<std::string> &suggestions) {
    if (suggestions.empty()) return {};
    std::string text = "; did you mean ";
    const size_t count = std::min(suggestions.size(), kMostSuggestions);
    for (size_t i = 0; i < count; i++) {
        const char *before = i == 0 ? "" : i + 1 == count ? " or " : ", ";
        text += fmt::format("{}{}", before, inQuotes(suggestions[i]));
    }
    return text + "?";
}

std::vector<std::string> meaningsOf(std::string_view word) {
    if (word == "version") return {"--version"};
    const std::vector<std::string_view> nouns = wordsBehind({});
    for (const std::string_view ending : {"", "s", "es"}) {
        if (!word.ends_with(ending)) continue;
        const std::string_view singular = word.substr(0, word.size() - ending.size());
        if (contains(nouns, singular)) return {std::string(singular)};
        std::vector<std::string> meanings = listedMeanings(program().otherNames, singular);
        if (!meanings.empty()) return meanings;
    }
    return {};
}

std::vector<std::string> commandsMeant(std::span<const std::string> words, size_t known) {
    const std::vector<std::string_view> next = wordsBehind(words.first(known));
    const std::string &typed = words[known];
    std::vector<std::string> meant;
    const auto add = [&](std::string command) {
        if (std::find(meant.begin(), meant.end(), command) == meant.end())
            meant.push_back(std::move(command));
    };
    const std::string before = fmt::format("{}{}", fmt::join(words.first(known), " "), known == 0 ? "" : " ");

    if (known == 0) {
        // The verb may come first: "rm port".
        if (words.size() > 1) {
            for (const std::string &meaning : meaningsOf(words[1])) {
                const std::vector<std::string_view> split = splitWords(meaning);
                const std::vector<std::string> noun(split.begin(), split.end());
                for (const std::string_view verb : sameVerbs(typed, wordsBehind(noun)))
                    add(fmt::format("{} {}", meaning, verb));
            }
        }
        // Words that look alike are weaker guesses.
        if (!meant.empty()) return meant;
        if (std::vector<std::string> meanings = meaningsOf(typed); !meanings.empty()) return meanings;
        for (const std::string &command : endingWith(typed))
            add(command);
    }
    for (const std::string_view verb : sameVerbs(typed, next))
        add(before + std::string(verb));
    for (const std::string_view word : similar(typed, next))
        add(before + std::string(word));
    return meant;
}

std::vector<std::string> optionsMeant(const Command *command, std::string_view word) {
    std::vector<std::string_view> names;
    const std::vector<Option> own = command != nullptr ? optionsOf(*command) : std::vector<Option>();
    names.reserve(own.size() + commonOptions().size());
    for (const Option &option : own)
        names.emplace_back(option.name);
    for (const Option *option : commonOptions())
        names.emplace_back(option->name);
    const std::string_view typed = word.substr(0, word.find('='));
    std::vector<std::string> listed = listedMeanings(kOtherOptions, typed);
    std::erase_if(listed, [&](const std::string &name) { return !contains(names, name); });
    if (!listed.empty()) return listed;
    const std::vector<std::string_view> meant = similar(typed, names);
    return {meant.begin(), meant.end()};
}

std::vector<std::string> optionsFor(const Command &command, const Arguments &given, std::string_view word) {
    std::vector<std::string> fitting;
    Fit best = Fit::Possible;
    for (const Option &option : optionsOf(command)) {
        const bool free = option.value != nullptr && (option.repeated || !given.given(option.name));
        const Fit fit = free ? fitOf(command, option, word) : Fit::None;
        if (fit < best) continue;
        if (fit > best) fitting.clear();
        best = fit;
        fitting.push_back(fmt::format("{} {}", option.name, word));
    }
    // Many options fit, so none of them is a good suggestion.
    if (fitting.size() > kMostSuggestions) fitting.clear();
    return fitting;
}

}  // namespace qvs::cli

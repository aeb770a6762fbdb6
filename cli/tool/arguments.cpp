// SPDX-License-Identifier: Apache-2.0
// Takes the words of one call apart with CLI11. Only the parser of the command at hand is built.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <deque>
#include <stdexcept>

#include "base/text.h"
#include "tool/failure.h"
#include "tool/help.h"
#include "tool/program.h"
#include "tool/run.h"

namespace qvs::cli {

const std::vector<std::string> *Arguments::find(std::string_view name) const {
    auto it =
        std::find_if(values_.begin(), values_.end(), [&](const auto &value) { return value.first == name; });
    return it == values_.end() ? nullptr : &it->second;
}

bool Arguments::given(std::string_view name) const {
    return find(name) != nullptr;
}

const std::string &Arguments::text(std::string_view name) const {
    const auto *values = find(name);
    if (values == nullptr || values->empty()) throw std::logic_error(fmt::format("{} is not given", name));
    return values->front();
}

const std::vector<std::string> &Arguments::all(std::string_view name) const {
    static const std::vector<std::string> none;
    const auto *values = find(name);
    return values != nullptr ? *values : none;
}

const char *Arguments::orNull(std::string_view name) const {
    return given(name) ? text(name).c_str() : nullptr;
}

uint32_t Arguments::number(std::string_view name, uint32_t absent, uint32_t least, uint32_t most) const {
    if (!given(name)) return absent;
    std::optional<uint32_t> value = parseNumber(text(name));
    if (!value || *value < least || *value > most)
        fail(Exit::Usage, "{}: {} is not a number from {} to {}", name, inQuotes(text(name)), least, most);
    return *value;
}

void Arguments::add(std::string_view name, std::vector<std::string> values) {
    values_.emplace_back(name, std::move(values));
}

namespace {

constexpr Option kJson{"--json", nullptr, "print JSON"};
constexpr Option kHelp{"--help", nullptr, "print the help of the command"};

// What the parser fills, by row entry; addresses must stay, so a deque.
struct Slot {
    const char *name = nullptr;
    Kind kind = Kind::Word;
    CLI::Option *option = nullptr;
    std::vector<std::string> values = {};
    bool flag = false;
    bool repeated = false;
};

// CLI11 makes a list of a word like "[a,b]" where several words are taken, but a name may look like that. A
// guard behind the bracket keeps it from doing so, and is taken away again afterwards.
constexpr char kGuard = '\x01';

std::string guarded(std::string word) {
    if (word.ends_with(']') || word.ends_with(kGuard)) word += kGuard;
    return word;
}

void unguard(std::string &word) {
    if (word.ends_with(kGuard)) word.pop_back();
}

void configure(Slot &slot, bool repeated) {
    slot.option->expected(1, repeated ? CLI::detail::expected_max_vector_size : 1);
    slot.option->allow_extra_args(repeated);
    slot.option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addArgument(CLI::App &app, std::deque<Slot> &slots, const Argument &argument) {
    Slot &slot = slots.emplace_back(Slot{.name = argument.name, .kind = argument.kind});
    slot.option = app.add_option(argument.name, slot.values);
    configure(slot, argument.repeated);
    slot.option->required(!argument.optional);
    slot.repeated = argument.repeated;
}

void addOption(CLI::App &app, std::deque<Slot> &slots, const Option &option) {
    Slot &slot = slots.emplace_back(Slot{.name = option.name, .kind = option.kind});
    if (option.value == nullptr) {
        slot.option = app.add_flag(option.name, slot.flag);
        slot.option->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
        return;
    }
    slot.option = app.add_option(option.name, slot.values);
    slot.option->type_name(option.value);
    configure(slot, false);
    slot.repeated = option.repeated;
}

// The first word that looks like an option and is none.
const std::string *unknownOption(const CLI::App &app, std::span<const std::string> words) {
    for (const std::string &word : words) {
        if (word == "--") break;
        bool looks = word.size() > 1 && word.front() == '-';
        if (looks && app.get_option_no_throw(word.substr(0, word.find('='))) == nullptr) return &word;
    }
    return nullptr;
}

// The argument that is all words behind --, or null.
const Argument *verbatimOf(const Shape &shape) {
    const bool is = shape.arguments.size() == 1 && shape.arguments.front().verbatim;
    return is ? &shape.arguments.front() : nullptr;
}

[[noreturn]] void failUsage(const Command &command, std::string_view message) {
    fail(Exit::Usage, "{}\nusage: {}", message, usageLine(command));
}

// "--timeout requires SECONDS" for CLI11's "--timeout: 1 required SECONDS missing".
std::string requiring(std::string message) {
    constexpr std::string_view kBefore = ": 1 required ";
    constexpr std::string_view kBehind = " missing";
    const size_t at = message.find(kBefore);
    if (at == std::string::npos || !message.ends_with(kBehind)) return message;
    message.erase(message.size() - kBehind.size());
    return message.replace(at, kBefore.size(), " requires ");
}

[[noreturn]] void failParse(const CLI::App &app, const Command &command, std::span<const std::string> words,
                            std::string message) {
    std::erase(message, kGuard);
    message = requiring(shown(message));
    if (const std::string *word = unknownOption(app, words)) {
        message = fmt::format(
            "no such option: {}{}", inQuotes(*word),
            verbatimOf(shapeOf(command)) != nullptr ? "" : "; a name that begins with a dash goes behind --");
    }
    failUsage(command, message);
}

void requireGood(const Command &command, const Slot &slot) {
    if (slot.values.size() > 1 && !slot.repeated)
        failUsage(command, fmt::format("{}: given twice", slot.name));
    // An empty name comes from a variable that nobody set.
    if (slot.kind != Kind::File && slot.kind != Kind::Directory) return;
    for (const std::string &value : slot.values) {
        if (value.empty())
            fail(Exit::Usage, "{}: the name of a {} is empty", slot.name,
                 slot.kind == Kind::File ? "file" : "directory");
    }
}

// What the options of a call make of each other.
void requireConsistent(const Command &command, const Arguments &arguments) {
    for (const Option &option : optionsOf(command)) {
        const bool given = arguments.given(option.name);
        if (option.need == Need::Always && !given)
            failUsage(command, fmt::format("{} is needed", option.name));
        if (given && option.excludes != nullptr && arguments.given(option.excludes))
            fail(Exit::Usage, "{} and {} exclude each other", option.name, option.excludes);
    }
    if (arguments.given(kJson.name) && !command.json)
        fail(Exit::Usage, "{} {} has no JSON; call it without --json", program().name, words(command));
}

}  // namespace

std::span<const Option *const> commonOptions() {
    static const std::vector<const Option *> all = [] {
        std::vector<const Option *> options = {&kJson};
        for (const Option &option : program().options)
            options.push_back(&option);
        options.push_back(&kHelp);
        return options;
    }();
    return all;
}

Arguments parseArguments(const Command &command, std::span<const std::string> words) {
    CLI::App app;
    app.set_help_flag("-h,--help");
    std::deque<Slot> slots;
    const Shape shape = shapeOf(command);
    const Argument *verbatim = verbatimOf(shape);
    for (const Argument &argument : shape.arguments) {
        if (&argument != verbatim) addArgument(app, slots, argument);
    }
    for (const Option &option : optionsOf(command))
        addOption(app, slots, option);
    for (const Option *option : commonOptions()) {
        if (option != &kHelp) addOption(app, slots, *option);
    }

    std::span<const std::string> own = words;
    if (verbatim != nullptr) {
        own = words.first(static_cast<size_t>(std::find(words.begin(), words.end(), "--") - words.begin()));
    }
    // CLI11 takes the words in reverse.
    std::vector<std::string> reversed(own.rbegin(), own.rend());
    std::transform(reversed.begin(), reversed.end(), reversed.begin(), guarded);
    Arguments arguments;
    arguments.subject = command.subject;
    try {
        app.parse(std::move(reversed));
    } catch (const CLI::CallForHelp &) {
        arguments.add(kHelp.name, {});
        return arguments;
    } catch (const CLI::ParseError &error) {
        failParse(app, command, own, error.what());
    }

    for (Slot &slot : slots) {
        if (slot.option->count() == 0 || (slot.values.empty() && !slot.flag)) continue;
        std::for_each(slot.values.begin(), slot.values.end(), unguard);
        requireGood(command, slot);
        arguments.add(slot.name, std::move(slot.values));
    }
    if (verbatim != nullptr) {
        if (words.size() <= own.size() + 1)
            failUsage(command, fmt::format("{} is needed behind --", verbatim->name));
        arguments.add(verbatim->name, {words.begin() + static_cast<long>(own.size()) + 1, words.end()});
    }
    requireConsistent(command, arguments);
    return arguments;
}

}  // namespace qvs::cli

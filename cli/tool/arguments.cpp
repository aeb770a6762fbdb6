// SPDX-License-Identifier: Apache-2.0
// Parses the words of one call with CLI11, and words its errors. Builds the parser of the called command
// only.
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
#include "tool/suggest.h"
#include "tool/terminal.h"
#include "tool/values.h"

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
    return given(name) ? numberIn(name, text(name), least, most) : absent;
}

void Arguments::add(std::string_view name, std::vector<std::string> values) {
    values_.emplace_back(name, std::move(values));
}

namespace {

constexpr Option kJson{"--json", nullptr, "print JSON"};
constexpr Option kWide{"--wide", nullptr, "do not cut tables to the width of the terminal"};
constexpr Option kHelp{"--help", nullptr, "print the help of the command"};

// An argument or option of a row, and the words that CLI11 found for it. CLI11 keeps pointers to slots, so
// they stand in a deque.
struct Slot {
    const char *name = nullptr;
    Kind kind = Kind::Word;
    Choices choices = {};
    Check check = nullptr;
    CLI::Option *option = nullptr;
    std::vector<std::string> values = {};
    bool flag = false;
    bool repeated = false;
    bool open = false;
    const Limit *limit = nullptr;  // of a name
};

// What names of this kind have to fit into, or null.
const Limit *limitOf(Kind kind) {
    const auto source = std::ranges::find(program().names, kind, &NameSource::kind);
    return source == program().names.end() ? nullptr : source->limit;
}

// CLI11 splits a word such as "[a,b]" into a list, and takes the next word as the value of "--name=". A guard
// at the end of such words prevents both. unguard() removes it from the values.
constexpr char kGuard = '\x01';

std::string guarded(std::string word) {
    if (word.ends_with(']') || word.ends_with('=') || word.ends_with(kGuard)) word += kGuard;
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
    Slot &slot = slots.emplace_back(Slot{.name = argument.name,
                                         .kind = argument.kind,
                                         .choices = argument.choices,
                                         .check = argument.check,
                                         .open = argument.open,
                                         .limit = limitOf(argument.kind)});
    slot.option = app.add_option(argument.name, slot.values);
    configure(slot, argument.repeated);
    slot.option->required(!argument.optional);
    slot.repeated = argument.repeated;
}

void addOption(CLI::App &app, std::deque<Slot> &slots, const Option &option) {
    Slot &slot = slots.emplace_back(Slot{.name = option.name,
                                         .kind = option.kind,
                                         .choices = option.choices,
                                         .check = option.check,
                                         .open = option.open,
                                         .limit = option.list ? nullptr : limitOf(option.kind)});
    if (option.value == nullptr) {
        slot.option = app.add_flag(option.name, slot.flag);
        slot.option->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
        slot.option->disable_flag_override();
        return;
    }
    slot.option = app.add_option(option.name, slot.values);
    slot.option->type_name(option.value);
    configure(slot, false);
    slot.repeated = option.repeated;
}

// The argument that takes all words behind --, or null.
const Argument *verbatimOf(const Shape &shape) {
    const bool is = shape.arguments.size() == 1 && shape.arguments.front().verbatim;
    return is ? &shape.arguments.front() : nullptr;
}

// The parser of one command. CLI11 forgets the words before when it parses again.
struct Parser {
    const Command &command;
    CLI::App app;
    std::deque<Slot> slots;
    const Shape shape;
    const std::vector<Option> options;
    const Argument *verbatim;

    explicit Parser(const Command &of)
        : command(of), shape(shapeOf(of)), options(optionsOf(of)), verbatim(verbatimOf(shape)) {
        app.set_help_flag("-h,--help");
        for (const Argument &argument : shape.arguments) {
            if (&argument != verbatim) addArgument(app, slots, argument);
        }
        for (const Option &option : options)
            addOption(app, slots, option);
        for (const Option *option : commonOptions()) {
            if (option != &kHelp) addOption(app, slots, *option);
        }
    }
};

[[noreturn]] void failUsage(const Command &command, std::string_view message) {
    fail(Exit::Usage, "{}\n{}", message, wrappedUsage(command, messageColumns()));
}

// A call that CLI11 refused.
struct Refused {
    const CLI::App &app;
    const Command &command;
    std::span<const std::string> words;  // without the verbatim words behind --
    const std::deque<Slot> &slots;

    // The arguments and options that CLI11 found, without their values.
    Arguments found() const {
        Arguments arguments;
        for (const Slot &slot : slots)
            if (slot.option->count() > 0) arguments.add(slot.name, {});
        return arguments;
    }
};

// The first word that looks like an option, but is not one.
const std::string *unknownOption(const Refused &call) {
    for (const std::string &word : call.words) {
        if (word == "--") break;
        const bool looks = word.size() > 1 && word.front() == '-';
        if (looks && call.app.get_option_no_throw(word.substr(0, word.find('='))) == nullptr) return &word;
    }
    return nullptr;
}

std::string unknownProblem(const Refused &call, const std::string &word) {
    const std::vector<std::string> meant = optionsMeant(&call.command, word);
    const bool takesName = std::ranges::any_of(shapeOf(call.command).arguments, [](const Argument &argument) {
        return !argument.verbatim && argument.choices.empty();
    });
    const bool mayBeName = meant.empty() && takesName;
    return fmt::format("no such option: {}{}{}", inQuotes(word), didYouMean(meant),
                       mayBeName ? "; a name that begins with a dash goes behind --" : "");
}

std::string surplusProblem(const Refused &call) {
    const std::vector<std::string> rest = call.app.remaining();
    std::string word = rest.empty() ? "" : rest.front();
    unguard(word);
    const Shape shape = shapeOf(call.command);
    if (const Argument *verbatim = verbatimOf(shape))
        return fmt::format("unexpected argument: {}; {} goes behind --", inQuotes(word), verbatim->name);
    return fmt::format("unexpected argument: {}{}", inQuotes(word),
                       didYouMean(optionsFor(call.command, call.found(), word)));
}

// The problem with the value of an option: it is missing, or the option takes none.
std::string valueProblem(const Refused &call, std::string_view message) {
    std::string name(message.substr(0, message.find_first_of(": ")));
    if (!name.starts_with("--")) name.insert(0, "--");
    const std::optional<Option> option = optionNamed(&call.command, name);
    if (!option) return shown(message);
    if (option->value == nullptr) return fmt::format("{} takes no value", name);
    return fmt::format("{} requires {}", name, option->value);
}

[[noreturn]] void failParse(const Refused &call, const CLI::ParseError &error) {
    if (const std::string *word = unknownOption(call)) failUsage(call.command, unknownProblem(call, *word));
    std::string message = error.what();
    std::erase(message, kGuard);
    if (dynamic_cast<const CLI::ExtrasError *>(&error) != nullptr) {
        message = surplusProblem(call);
    } else if (dynamic_cast<const CLI::ArgumentMismatch *>(&error) != nullptr) {
        message = valueProblem(call, message);
    } else {
        message = shown(message);
    }
    failUsage(call.command, message);
}

void requireGood(const Command &command, const Slot &slot) {
    if (slot.values.size() > 1 && !slot.repeated)
        failUsage(command, fmt::format("{}: given twice", slot.name));
    const bool directory = slot.kind == Kind::Directory;
    const bool file = slot.kind == Kind::File || slot.kind == Kind::Lab;
    for (const std::string &value : slot.values) {
        const auto found = std::find(slot.choices.begin(), slot.choices.end(), value);
        if (!slot.choices.empty() && !slot.open && found == slot.choices.end())
            fail(Exit::Usage, "{}: {} is none of {}", slot.name, inQuotes(value),
                 fmt::join(slot.choices, ", "));
        // A variable that is not set gives an empty name.
        if (value.empty() && (directory || file))
            fail(Exit::Usage, "{}: the name of a {} is empty", slot.name, directory ? "directory" : "file");
        if (slot.limit != nullptr) requireFits(*slot.limit, value);
        if (slot.check != nullptr) slot.check(slot.name, value);
        if (command.check != nullptr) command.check(command, slot.name, value);
    }
}

// Refuses a call with none or several of the options of a choice.
void requireChosen(const std::vector<Option> &options, const Arguments &arguments) {
    std::vector<const char *> choice;
    for (const Option &option : options) {
        if (option.need == Need::Choice) {
            choice.push_back(option.name);
        } else if (!choice.empty()) {
            break;
        }
    }
    if (!choice.empty()) (void)oneGiven(arguments, choice);
}

// Refuses a call that lacks an option that it needs, or has options that exclude each other.
void requireConsistent(const Command &command, const std::vector<Option> &options,
                       const Arguments &arguments) {
    requireChosen(options, arguments);
    for (const Option &option : options) {
        const bool given = arguments.given(option.name);
        if (option.need == Need::Always && !given)
            failUsage(command, fmt::format("{} is needed", option.name));
        if (given && option.excludes != nullptr && arguments.given(option.excludes))
            fail(Exit::Usage, "{} and {} exclude each other", option.name, option.excludes);
        const bool isNumber =
            option.value != nullptr && option.value == std::string_view("N") && option.check == nullptr;
        if (given && isNumber && command.check == nullptr && !parseWideNumber(arguments.text(option.name)))
            fail(Exit::Usage, "{}: {} is not a number of 0 or more", option.name,
                 inQuotes(arguments.text(option.name)));
        if (given && option.needs != nullptr && !arguments.given(option.needs))
            fail(Exit::Usage, "{} needs {}", option.name, option.needs);
    }
    const auto refuse = [&](const Option &option, const char *lacking) {
        if (arguments.given(option.name) && !takes(command, option))
            fail(Exit::Usage, "{} {} has no {}; call it without {}", program().name, words(command), lacking,
                 option.name);
    };
    refuse(kJson, "JSON");
    refuse(kWide, "tables");
}

// A number at the end of the names of objects is probably the value of an option that is missing.
std::string numberMeant(const Command &command, const Arguments &arguments) {
    for (const Option &option : optionsOf(command))
        if (option.value != nullptr && arguments.given(option.name)) return {};
    for (const Argument &argument : shapeOf(command).arguments) {
        if (!argument.repeated || !isName(argument.kind) || !arguments.given(argument.name)) continue;
        const std::vector<std::string> &names = arguments.all(argument.name);
        if (names.size() > 1 && parseWideNumber(names.back()))
            return didYouMean(optionsFor(command, arguments, names.back()));
    }
    return {};
}

void requireAgreement(const Command &command, const Arguments &arguments) {
    if (command.agrees == nullptr) return;
    try {
        command.agrees(arguments);
    } catch (Failure &failure) {
        failure.message += numberMeant(command, arguments);
        throw;
    }
}

}  // namespace

std::span<const Option *const> commonOptions() {
    static const std::vector<const Option *> all = [] {
        std::vector<const Option *> options = {&kJson, &kWide};
        for (const Option &option : program().options)
            options.push_back(&option);
        options.push_back(&kHelp);
        return options;
    }();
    return all;
}

std::optional<Option> optionNamed(const Command *command, std::string_view name) {
    if (command != nullptr) {
        for (const Option &option : optionsOf(*command))
            if (name == option.name) return option;
    }
    for (const Option *option : commonOptions())
        if (name == option->name) return *option;
    return std::nullopt;
}

bool takes(const Command &command, const Option &common) {
    return command.json || (&common != &kJson && &common != &kWide);
}

Arguments parseArguments(const Command &command, std::span<const std::string> words) {
    // A batch parses many lines of one command, and making a parser takes most of the time of parsing.
    static std::optional<Parser> parser;
    if (!parser || &parser->command != &command) parser.emplace(command);
    CLI::App &app = parser->app;
    std::deque<Slot> &slots = parser->slots;
    const Argument *verbatim = parser->verbatim;

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
        failParse({app, command, own, slots}, error);
    }

    for (Slot &slot : slots) {
        if (slot.option->count() == 0 || (slot.values.empty() && !slot.flag)) continue;
        std::for_each(slot.values.begin(), slot.values.end(), unguard);
        // A backslash that begins no escape stands for itself.
        if (isName(slot.kind))
            for (std::string &value : slot.values)
                value = parseShown(value).value_or(value);
        requireGood(command, slot);
        arguments.add(slot.name, std::move(slot.values));
    }
    if (verbatim != nullptr) {
        if (words.size() <= own.size() + 1)
            failUsage(command, fmt::format("{} is needed behind --", verbatim->name));
        arguments.add(verbatim->name, {words.begin() + static_cast<long>(own.size()) + 1, words.end()});
    }
    requireConsistent(command, parser->options, arguments);
    requireAgreement(command, arguments);
    return arguments;
}

}  // namespace qvs::cli

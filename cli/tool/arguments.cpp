// Takes the words of one call apart with CLI11. Only the parser of the command at hand is built.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <deque>

#include "tool/command.h"
#include "tool/failure.h"
#include "tool/help.h"
#include "tool/text.h"

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
    return all(name).front();
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

// What the parser fills, by row entry; addresses must stay, so a deque.
struct Slot {
    const char *name = nullptr;
    CLI::Option *option = nullptr;
    std::vector<std::string> values;
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

void configure(CLI::Option &option, bool repeated) {
    option.expected(1, repeated ? CLI::detail::expected_max_vector_size : 1);
    option.allow_extra_args(repeated);
    option.multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addArgument(CLI::App &app, std::deque<Slot> &slots, const Argument &argument) {
    Slot &slot = slots.emplace_back();
    slot.name = argument.name;
    slot.option = app.add_option(argument.name, slot.values);
    configure(*slot.option, argument.repeated);
    slot.option->required(!argument.optional);
    slot.repeated = argument.repeated;
}

void addOption(CLI::App &app, std::deque<Slot> &slots, const Option &option) {
    Slot &slot = slots.emplace_back();
    slot.name = option.name;
    if (option.value == nullptr) {
        slot.option = app.add_flag(option.name, slot.flag);
        return;
    }
    slot.option = app.add_option(option.name, slot.values);
    configure(*slot.option, false);
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

[[noreturn]] void failUsage(const Command &command, std::string_view message) {
    fail(Exit::Usage, "{}\nqvs: usage: {}", shown(message), usageLine(command));
}

[[noreturn]] void failParse(const CLI::App &app, const Command &command, std::span<const std::string> words,
                            std::string message) {
    std::erase(message, kGuard);
    if (const std::string *word = unknownOption(app, words)) {
        message =
            fmt::format("no such option: {}; a name that begins with a dash goes behind --", inQuotes(*word));
    } else {
        message = shown(message);
    }
    failUsage(command, message);
}

}  // namespace

uint32_t timeoutGiven(std::string_view text) {
    std::optional<uint32_t> seconds = parseNumber(text);
    if (!seconds || *seconds == 0 || *seconds > kMostTimeout)
        fail(Exit::Usage, "--timeout: {} is not a number of seconds from 1 to {}", inQuotes(text),
             kMostTimeout);
    return *seconds;
}

Arguments parseArguments(const Command &command, std::span<const std::string> words, GlobalOptions &global) {
    CLI::App app;
    app.set_help_flag("-h,--help");
    std::deque<Slot> slots;
    app.add_flag("--json", global.json);
    app.add_flag("--trace", global.trace);
    std::string timeout;
    app.add_option("--timeout", timeout)->multi_option_policy(CLI::MultiOptionPolicy::Throw);
    for (const Argument &argument : command.arguments) {
        addArgument(app, slots, argument);
    }
    for (const Option &option : command.options) {
        addOption(app, slots, option);
    }

    // CLI11 takes the words in reverse.
    std::vector<std::string> reversed(words.rbegin(), words.rend());
    std::transform(reversed.begin(), reversed.end(), reversed.begin(), guarded);
    try {
        app.parse(std::move(reversed));
    } catch (const CLI::CallForHelp &) {
        global.help = true;
        return {};
    } catch (const CLI::ParseError &error) {
        failParse(app, command, words, error.what());
    }

    if (!timeout.empty()) global.timeout = timeoutGiven(timeout);
    Arguments arguments;
    for (Slot &slot : slots) {
        if (slot.option->count() == 0 || (slot.values.empty() && !slot.flag)) continue;
        if (slot.values.size() > 1 && !slot.repeated)
            failUsage(command, fmt::format("{}: given twice", slot.name));
        std::for_each(slot.values.begin(), slot.values.end(), unguard);
        arguments.add(slot.name, std::move(slot.values));
    }
    for (const Option &option : command.options) {
        if (option.need == Need::Always && !arguments.given(option.name))
            failUsage(command, fmt::format("{} is needed", option.name));
    }
    return arguments;
}

}  // namespace qvs::cli

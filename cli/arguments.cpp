// Takes the words of one call apart with CLI11. Only the parser of the command at hand is built.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <deque>

#include "command.h"
#include "failure.h"
#include "text.h"

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

uint32_t Arguments::number(std::string_view name, uint32_t absent) const {
    if (!given(name)) return absent;
    std::optional<uint32_t> value = parseNumber(text(name));
    if (!value) fail(Exit::Usage, "{}: {} is not a number from 0 to 4294967295", name, inQuotes(text(name)));
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
};

// Values are taken as they come: CLI11 would make a list of "[a,b]" and drop what follows a value twice
// given.
void configure(CLI::Option &option, bool repeated) {
    option.expected(1, repeated ? CLI::detail::expected_max_vector_size : 1);
    option.allow_extra_args(false);
    option.multi_option_policy(repeated ? CLI::MultiOptionPolicy::TakeAll : CLI::MultiOptionPolicy::Throw);
}

void addArgument(CLI::App &app, std::deque<Slot> &slots, const Argument &argument) {
    Slot &slot = slots.emplace_back();
    slot.name = argument.name;
    slot.option = app.add_option(argument.name, slot.values);
    configure(*slot.option, argument.repeated);
    slot.option->required(!argument.optional);
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
}

}  // namespace

Arguments parseArguments(const Command &command, std::span<const std::string> words, GlobalOptions &global) {
    CLI::App app;
    app.set_help_flag("-h,--help");
    std::deque<Slot> slots;
    app.add_flag("--json", global.json);
    app.add_flag("--trace", global.trace);
    for (const Argument &argument : command.arguments)
        addArgument(app, slots, argument);
    for (const Option &option : command.options)
        addOption(app, slots, option);

    // CLI11 takes the words in reverse.
    std::vector<std::string> reversed(words.rbegin(), words.rend());
    try {
        app.parse(std::move(reversed));
    } catch (const CLI::CallForHelp &) {
        global.help = true;
        return {};
    } catch (const CLI::ParseError &error) {
        fail(Exit::Usage, "{}", shown(error.what()));
    }

    Arguments arguments;
    for (Slot &slot : slots) {
        if (slot.option->count() > 0) arguments.add(slot.name, std::move(slot.values));
    }
    return arguments;
}

}  // namespace qvs::cli

// SPDX-License-Identifier: Apache-2.0
// The rows of the settings' commands. Their words are made at the start of the program, their shapes at the
// first use.
#include "commands/settings.h"

#include <algorithm>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "access/setting.h"
#include "access/setting_names.h"
#include "access/setting_value.h"
#include "config/settings/references.h"
#include "tool/values.h"

namespace qvs::cli {

namespace {

using config::Member;
using config::Type;

// A shape, and the texts that it refers to.
struct Made {
    std::deque<std::string> texts = {};
    std::vector<Argument> arguments = {kSwitchArgument};
    std::vector<Option> options = {};
    Shape shape = {};

    const char *keep(std::string text) { return texts.emplace_back(std::move(text)).c_str(); }
};

const char *owner(const Setting &setting) {
    return setting.scope == Scope::Port ? "a port" : "a switch";
}

// "time after which a learned address expires: 0 to 1000000 seconds (600)"
std::string summaryOf(const Member &member) {
    std::string text = member.summary;
    if (member.type == Type::Bytes) {
        text += fmt::format(": a file of {} (- for standard input)", expectation(member));
    } else if (member.type != Type::Record) {
        text += fmt::format(": {}", expectation(member));
    }
    if (member.unit != nullptr) text += fmt::format(" {}", member.unit);
    if (member.type == Type::Vlans) text += ", or all";
    if (takesNone(member) && *member.name != '\0') text += ", or none";
    if (member.fallback != nullptr && *member.fallback != '\0') text += fmt::format(" ({})", member.fallback);
    return text;
}

// The words that completion offers for a member. Its own check refuses others.
Choices choicesOf(const Member &member) {
    return member.type == Type::Boolean ? Choices(kOffOn) : member.words;
}

// Whether the values of a member are names of uplinks: whether they are looked up as such.
bool namesUplinks(const Setting &setting, const Member &member) {
    if (!config::refers(setting) || member.type != Type::Text) return false;
    bool looked = false;
    const config::Existing existing = {.uplink = [&](std::string_view) { return looked = true; },
                                       .port = [](std::string_view) { return true; },
                                       .privateVlan = [](uint64_t) { return true; }};
    Value value = config::Members{};
    const Value name(std::string_view("name"));
    value.set(member.name, member.list ? Value(config::List{name}) : name);
    config::missingReferences(setting, value, existing);
    return looked;
}

void addGetOptions(Made &made, const Setting &setting) {
    made.options.push_back(kStored);
    if (setting.running != nullptr) made.options.back().excludes = kKernelOption;
    if (setting.running != nullptr)
        made.options.push_back({kKernelOption, nullptr, "ask the running switch, whatever is stored"});
    if (setting.readsById) made.options.push_back(kById);
    if (std::ranges::any_of(setting.members, isBytes)) made.options.push_back(kRaw);
}

bool isChecked(const Setting &setting) {
    return config::refers(setting) || config::isReferredTo(setting);
}

void addValueArgument(Made &made, const Setting &setting) {
    const Member &member = setting.members[0];
    if (member.type == Type::Bytes) {
        made.options.push_back({.name = kFileOption,
                                .value = "FILE",
                                .summary = made.keep(summaryOf(member)),
                                .kind = Kind::File,
                                .need = Need::Always});
        return;
    }
    made.arguments.push_back({.name = made.keep(argumentOf(setting)),
                              .summary = made.keep(summaryOf(member)),
                              .optional = member.list,
                              .repeated = member.list,
                              .choices = choicesOf(member),
                              .open = true});
    if (member.list) made.options.push_back({kEmptyOption, nullptr, "store a list without entries"});
}

void addSetOptions(Made &made, const Setting &setting) {
    if (setting.isScalar()) {
        addValueArgument(made, setting);
    } else {
        for (const Member &member : setting.members) {
            made.options.push_back(optionFor(member, made.texts));
            if (namesUplinks(setting, member)) made.options.back().kind = Kind::Uplink;
        }
        made.options.push_back({kResetOption, nullptr, "start from the default, not from what is stored"});
    }
    if (isChecked(setting)) made.options.push_back(kStrict);
}

// The details in the help of set: what happens to members that are not given, and the details of the setting.
const char *setDetails(Made &made, const Setting &setting) {
    if (setting.isScalar()) return setting.details;
    constexpr const char *kKept = "A member that is not given keeps its value.";
    if (setting.details == nullptr) return kKept;
    return made.keep(fmt::format("{} {}", kKept, setting.details));
}

// Words that are the values of a setting could not be told from ports.
bool takesSeveralPorts(const Setting &setting) {
    return setting.scope == Scope::Port && (!setting.isScalar() || isBytes(setting.members[0]));
}

Argument portArgument(const Setting &setting, const Command &command) {
    Argument port = kPortArgument;
    if (command.run.function == setSetting && takesSeveralPorts(setting)) {
        port.summary = "identifiers of the ports; all are checked before the first is changed";
        port.repeated = true;
    }
    return port;
}

void make(Made &made, const Command &command) {
    const auto &setting = *static_cast<const Setting *>(command.subject);
    if (setting.scope == Scope::Port) made.arguments.push_back(portArgument(setting, command));
    std::string example =
        fmt::format("qvs {} sw1{}", command.words, setting.scope == Scope::Port ? " port0" : "");
    Shape &shape = made.shape;
    if (command.run.function == getSetting) {
        shape.summary = made.keep(fmt::format("show {}", setting.summary));
        shape.details = setting.details;
        addGetOptions(made, setting);
    } else if (command.run.function == setSetting) {
        shape.summary =
            made.keep(fmt::format("{} {}", setting.isScalar() ? "store" : "change", setting.summary));
        shape.details = setDetails(made, setting);
        addSetOptions(made, setting);
        example += fmt::format(" {}", setting.example);
    } else {
        shape.summary = made.keep(fmt::format("clear the stored {} of {}", setting.what, owner(setting)));
        shape.details = nullptr;
        if (config::isReferredTo(setting)) made.options.push_back(kStrict);
    }
    shape.example = made.keep(std::move(example));
    shape.arguments = made.arguments;
    shape.options = made.options;
}

Shape shapeOfRow(const Command &command) {
    static std::map<const Command *, Made> made;
    auto [entry, fresh] = made.try_emplace(&command);
    if (fresh) make(entry->second, command);
    return entry->second.shape;
}

void checkValue(const Command &command, std::string_view name, const std::string &text) {
    const auto &setting = *static_cast<const Setting *>(command.subject);
    for (const Member &member : setting.members) {
        const bool named = name == (setting.isScalar() ? argumentOf(setting) : optionOf(member));
        if (!named || isBytes(member)) continue;
        if (setting.isScalar() && member.list) {
            parseItems(member, name, {text});
        } else {
            parseMember(member, name, text);
        }
    }
}

std::vector<std::string> touchesSubject(const Arguments &arguments) {
    return touchedSettings(arguments, {static_cast<const Setting *>(arguments.subject)});
}

}  // namespace

Option optionFor(const Member &member, std::deque<std::string> &texts) {
    auto keep = [&](std::string text) { return texts.emplace_back(std::move(text)).c_str(); };
    return {.name = keep(optionOf(member)),
            .value = keep(placeholderOf(member)),
            .summary = keep(summaryOf(member)),
            .kind = isBytes(member) ? Kind::File : Kind::Word,
            .need = member.required ? Need::Always : Need::Never,
            .choices = choicesOf(member),
            .open = true,
            .list = member.list};
}

std::span<const Command> settingRows(std::initializer_list<const Setting *> settings) {
    static std::deque<std::string> words;
    static std::deque<std::vector<Command>> groups;
    std::vector<Command> &rows = groups.emplace_back();
    rows.reserve(3 * settings.size());
    for (const Setting *setting : settings) {
        auto add = [&](const char *verb, Run run) {
            rows.push_back({.words = words.emplace_back(fmt::format("{} {}", setting->noun, verb)).c_str(),
                            .run = run,
                            .subject = setting,
                            .shape = shapeOfRow});
        };
        add("get", reads(getSetting, touchesSubject));
        const Run set = writes(setSetting, touchesSubject);
        add("set", config::refers(*setting) ? looking(set) : set);
        rows.back().check = checkValue;
        rows.back().agrees = requireValue;
        if (setting->clear != nullptr) add("clear", writes(clearSettings, touchesSubject));
    }
    return rows;
}

}  // namespace qvs::cli

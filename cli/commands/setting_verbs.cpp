// SPDX-License-Identifier: Apache-2.0
// What get, set and clear do with a setting.
#include <string>

#include "access/setting.h"
#include "access/setting_names.h"
#include "access/setting_value.h"
#include "commands/settings.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

using config::Member;
using config::Target;

const Setting &subjectOf(const Arguments &arguments) {
    return *static_cast<const Setting *>(arguments.subject);
}

// --- get ---

std::optional<Value> asked(const Setting &setting, const Target &target, const Arguments &arguments) {
    if (arguments.given(kStoredOption)) return storedValue(setting, target);
    if (arguments.given(kKernelOption)) return setting.running(target);
    return setting.read(target);
}

// Prints bytes after the other members, and the entries of a list of bytes one after the other.
void printBytes(Record &record, Output &out, const char *key, const std::string &label, const Member &member,
                const Value &value) {
    if (out.json() || value.absent()) return record.field(key, label.c_str(), MemberValue{member, value});
    if (!member.list) return record.block(key, label.c_str(), Bytes(value.bytes()));
    record.field(key, label.c_str(), static_cast<uint32_t>(value.list().size()));
    for (size_t i = 0; i < value.list().size(); i++)
        record.block(key, fmt::format("entry {}", i).c_str(), Bytes(value.list()[i].bytes()));
}

void printMember(Record &record, Output &out, const char *key, const std::string &label, const Member &member,
                 const Value &value) {
    if (isBytes(member)) return printBytes(record, out, key, label, member, value);
    record.field(key, label.c_str(), MemberValue{member, value});
}

// Returns the bytes of a value. Empty when nothing is stored.
std::vector<uint8_t> rawBytes(const Setting &setting, const Value &value) {
    for (const Member &member : setting.members) {
        if (!isBytes(member)) continue;
        const Value &content = setting.isScalar() ? value : value[member.name];
        if (content.absent()) break;
        if (!member.list) return content.bytes();
        std::vector<uint8_t> all;
        for (const Value &each : content.list())
            all.insert(all.end(), each.bytes().begin(), each.bytes().end());
        return all;
    }
    return {};
}

// --- set ---

Value givenScalar(const Setting &setting, const Arguments &arguments) {
    const Member &member = setting.members[0];
    if (isBytes(member)) return parseMember(member, kFileOption, arguments.text(kFileOption));
    const std::string argument = argumentOf(setting);
    if (!member.list) return parseMember(member, argument, arguments.text(argument));
    return parseItems(member, argument, arguments.all(argument));
}

// The stored members, overwritten with those that are given.
Value givenMembers(const Setting &setting, const Target &target, const Arguments &arguments) {
    Value value = config::Members{};
    if (!arguments.given(kResetOption)) value = storedValue(setting, target).value_or(value);
    for (const Member &member : setting.members) {
        const std::string option = optionOf(member);
        if (arguments.given(option))
            value.set(member.name, parseMember(member, option, arguments.text(option)));
    }
    return value;
}

// The completed value. Throws when the target cannot have it.
Value checkedValue(const Setting &setting, const Target &target, const Value &given,
                   const Arguments &arguments) {
    const Value value = completed(setting, given);
    const std::string problem = problemOf(setting, value);
    if (!problem.empty()) fail(Exit::Usage, "{}: {}", namedSetting(setting, target), problem);
    checkReferences(setting, target, value, arguments.given(kStrict.name));
    checkUsers(setting, target, value, arguments.given(kStrict.name));
    return value;
}

void requireItems(const Setting &setting, const Arguments &arguments) {
    const std::string argument = argumentOf(setting);
    const Member &member = setting.members[0];
    if (!isBytes(member) && member.list && arguments.given(argument) == arguments.given(kEmptyOption))
        fail(Exit::Usage, "either {} or {} is required", argument, kEmptyOption);
}

}  // namespace

void requireValue(const Arguments &arguments) {
    const Setting &setting = subjectOf(arguments);
    if (setting.isScalar()) return requireItems(setting, arguments);
    std::string options;
    for (const Member &member : setting.members) {
        if (arguments.given(optionOf(member))) return;
        options += optionOf(member) + ", ";
    }
    if (!arguments.given(kResetOption))
        fail(Exit::Usage, "at least one of {}{} is required", options, kResetOption);
}

void getSetting(const Arguments &arguments, Output &out) {
    const Setting &setting = subjectOf(arguments);
    const Target target = targetOf(setting, arguments);
    const std::optional<Value> found = asked(setting, target, arguments);
    const bool mayBeAbsent =
        target.place.sw != nullptr && !arguments.given(kStoredOption) && !arguments.given(kKernelOption);
    if (!found && !mayBeAbsent) throw libraryFailure(namedSetting(setting, target), HYP_NOT_FOUND);
    const Value value = found ? *found : Value();
    if (arguments.given(kRaw.name)) return writeRaw(out, arguments.text(kRaw.name), rawBytes(setting, value));

    Record record(out);
    describe(record, target);
    if (setting.isScalar()) {
        printMember(record, out, setting.content, setting.content, setting.members[0], value);
    } else {
        for (const Member &member : setting.members)
            printMember(record, out, member.name, labelOf(member), member, value[member.name]);
    }
    record.field("stored", "stored", Flag{isStored(storedOf(setting, target.place))});
    record.finish();
}

void setSetting(const Arguments &arguments, Output &out) {
    const Setting &setting = subjectOf(arguments);
    const Value scalar = setting.isScalar() ? givenScalar(setting, arguments) : Value();
    const std::vector<Target> targets = targetsOf(setting, arguments);
    std::vector<Value> values;
    for (const Target &target : targets)
        values.push_back(checkedValue(setting, target,
                                      setting.isScalar() ? scalar : givenMembers(setting, target, arguments),
                                      arguments));
    if (targets.size() == 1)
        return reportSetting(out, targets[0], storeSetting(setting, targets[0], values[0]));
    ChangeList changes(out, targets[0].alias, "ports", "port");
    for (size_t i = 0; i < targets.size(); i++)
        changes.add(targets[i].port, storeSetting(setting, targets[i], values[i]));
}

void clearSettings(const Arguments &arguments, Output &out) {
    const Setting &setting = subjectOf(arguments);
    const Target target = targetOf(setting, arguments);
    checkUsers(setting, target, Value(), arguments.given(kStrict.name));
    reportSetting(out, target, clearSetting(setting, target));
}

}  // namespace qvs::cli

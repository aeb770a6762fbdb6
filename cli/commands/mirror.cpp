// SPDX-License-Identifier: Apache-2.0
// qvs mirror: the mirror sessions of a port, or of the uplinks of this host. A list of sessions is a
// setting; these commands show and change single sessions of it.
#include <qvs/qvs.h>

#include <algorithm>
#include <deque>
#include <string>

#include "access/library.h"
#include "access/setting.h"
#include "access/setting_json.h"
#include "access/setting_names.h"
#include "access/setting_value.h"
#include "commands/nouns.h"
#include "commands/settings.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

using config::List;
using config::Member;
using config::Target;

const Setting &settingOf(const Arguments &arguments) {
    return arguments.given("--port") ? config::kPortMirrorSessions : config::kUplinkMirrorSessions;
}

std::vector<std::string> touchedSessions(const Arguments &arguments) {
    return touchedSettings(arguments, {&settingOf(arguments)});
}

// The members of a session; both settings have the same.
std::span<const Member> sessionMembers() {
    return config::kPortMirrorSessions.members[0].members;
}

// The masks that sessions of the older form have in place of a type.
constexpr Member kMasks[] = {
    {.name = "wildIn", .summary = "mask of incoming frames", .type = config::Type::Word, .list = true},
    {.name = "wildOut", .summary = "mask of outgoing frames", .type = config::Type::Word, .list = true},
};

std::string sessionNamed(const Setting &setting, const Target &target, std::string_view id) {
    return fmt::format("{}: {}", namedSetting(setting, target), inQuotes(id));
}

const char *portOrNull(const Target &target) {
    return target.port.empty() ? nullptr : target.port.c_str();
}

std::optional<std::string_view> portGiven(const Target &target) {
    if (target.port.empty()) return std::nullopt;
    return target.port;
}

void checkSession(std::string_view name, const std::string &id) {
    const std::string problem = problemOf(sessionMembers()[0], Value(id));
    if (!problem.empty()) fail(Exit::Usage, "{}: {}", name, problem);
}

void report(Output &out, const Target &target, const std::string *id, bool changed) {
    std::string label = target.alias;
    if (!target.port.empty()) label += "/" + target.port;
    if (id == nullptr)
        return reportChange(out, label, {{"switch", target.alias}, {"port", portGiven(target)}}, changed);
    reportChange(out, label + " " + *id,
                 {{"switch", target.alias}, {"port", portGiven(target)}, {"session", *id}}, changed);
}

// Reads the sessions. libqvs translates lists of the older form.
List readSessions(const Setting &setting, const Target &target) {
    return setting.read(target).value_or(List{}).list();
}

const Value *findSession(const List &sessions, const std::string &id) {
    const auto found =
        std::ranges::find(sessions, id, [](const Value &each) { return each["session"].text(); });
    return found == sessions.end() ? nullptr : &*found;
}

// A member of a session as it is shown: an empty name is none.
MemberValue shownMember(const Member &member, const Value &session) {
    static const Value none, noMask = List{};
    const Value &value = session[member.name];
    if (member.name == std::string_view("name") && value.text().empty()) return {member, none};
    return {member, value.absent() && member.list ? noMask : value};
}

void listSessions(const Arguments &arguments, Output &out) {
    const Setting &setting = settingOf(arguments);
    const Target target = targetOf(setting, arguments);
    if (arguments.given(kStoredOption) && !isStored(storedOf(setting, target.place)))
        throw libraryFailure(namedSetting(setting, target), HYP_NOT_FOUND);
    const List sessions = readSessions(setting, target);
    if (arguments.given("--names")) {
        NameList names(out);
        for (const Value &session : sessions)
            names.add(session["session"].text());
        return names.finish();
    }
    const auto member = sessionMembers();
    Listing listing(out, {{"session", "SESSION"},
                          {"name", "NAME"},
                          {"type", "TYPE"},
                          {"snapLength", nullptr},
                          {"flags", "FLAGS"},
                          {"encapVlan", nullptr},
                          {"samplingRate", nullptr},
                          {"stack", nullptr},
                          {"destinations", "DESTINATIONS"},
                          {"sourcesIn", "INGRESS"},
                          {"sourcesOut", "EGRESS"},
                          {"wildIn", nullptr},
                          {"wildOut", nullptr}});
    for (const Value &each : sessions) {
        auto at = [&](size_t i) { return shownMember(member[i], each); };
        listing.row(at(0), at(1), at(2), at(3), at(4), at(5), at(6), at(7), at(8), at(9), at(10),
                    shownMember(kMasks[0], each), shownMember(kMasks[1], each));
    }
    listing.finish();
}

void showSession(const Arguments &arguments, Output &out) {
    const std::string &id = arguments.text("SESSION");
    const Setting &setting = settingOf(arguments);
    const Target target = targetOf(setting, arguments);
    const List sessions = readSessions(setting, target);
    const Value *session = findSession(sessions, id);
    if (session == nullptr) throw libraryFailure(sessionNamed(setting, target, id), HYP_NOT_FOUND);
    Record record(out);
    record.field("switch", "switch", target.alias);
    record.field("port", "port", portGiven(target));
    for (std::span<const Member> members : {sessionMembers(), std::span<const Member>(kMasks)})
        for (const Member &member : members)
            record.field(member.name, labelOf(member).c_str(), shownMember(member, *session));
    record.finish();
}

// --- changes ---

void checkMember(const Command &, std::string_view name, const std::string &text) {
    for (const Member &member : sessionMembers().subspan(1))
        if (name == optionOf(member)) (void)parseMember(member, name, text);
}

Value givenSession(const Arguments &arguments) {
    Value session = config::Members{{"session", arguments.text("SESSION")}};
    for (const Member &member : sessionMembers()) {
        const std::string option = optionOf(member);
        if (arguments.given(option))
            session.set(member.name, parseMember(member, option, arguments.text(option)));
    }
    if (session["encapVlan"].absent()) return session;
    List flags = session["flags"].absent() ? List{} : session["flags"].list();
    flags.emplace_back("encap");
    session.set("flags", std::move(flags));
    return session;
}

// Checks that a list of sessions can be stored, and returns it.
Value checked(const Setting &setting, const Target &target, const Value &given, const Arguments &arguments) {
    Value sessions = completed(setting, given);
    const std::string problem = problemOf(setting, sessions);
    if (!problem.empty()) fail(Exit::Usage, "{}: {}", namedSetting(setting, target), problem);
    checkReferences(setting, target, sessions, arguments.given(kStrict.name));
    return sessions;
}

void add(const Arguments &arguments, Output &out) {
    const Setting &setting = settingOf(arguments);
    const Value session = givenSession(arguments);
    const Target target = targetOf(setting, arguments);
    const Value added = checked(setting, target, List{session}, arguments);
    const std::string &id = session["session"].text();
    // A session behind a list of the older form would be read as one of that.
    (void)storedValue(setting, target);

    auto isThere = [&] {
        const List sessions = readSessions(setting, targetOf(setting, arguments));
        const Value *existing = findSession(sessions, id);
        if (existing == nullptr) return false;
        if (!arguments.given("--may-exist"))
            throw libraryFailure(sessionNamed(setting, target, id), HYP_EXISTS);
        if (*existing != added.list().front())
            fail(Exit::Differs, "{}: exists and differs", sessionNamed(setting, target, id));
        return true;
    };
    bool there = isThere();
    if (!there) {
        const auto list = setting.encode(added, {}, target);
        const HYP_ReturnStatus status =
            call<VSDVS_AppendDVMirrorSessions>(target.alias.c_str(), portOrNull(target), list[0]->data());
        there = status == HYP_EXISTS && arguments.given("--may-exist") && comesTrue(isThere);
        if (!there) require(status, sessionNamed(setting, target, id));
    }
    report(out, target, &id, !there);
}

void remove(const Arguments &arguments, Output &out) {
    const std::string &id = arguments.text("SESSION");
    const Setting &setting = settingOf(arguments);
    const Target target = targetOf(setting, arguments);
    const HYP_ReturnStatus status =
        call<VSDVS_RemoveDVMirrorSession>(target.alias.c_str(), portOrNull(target), id.c_str());
    const bool absent = status == HYP_NOT_FOUND && arguments.given("--if-exists");
    if (!absent) require(status, sessionNamed(setting, target, id));
    report(out, target, &id, !absent);
}

void set(const Arguments &arguments, Output &out) {
    const Setting &setting = settingOf(arguments);
    const Value given = valueOfFile(setting.members[0], setting.content, arguments.text("FILE"));
    const Target target = targetOf(setting, arguments);
    const Value sessions = checked(setting, target, given, arguments);
    report(out, target, nullptr, storeSetting(setting, target, sessions));
}

void clear(const Arguments &arguments, Output &out) {
    const Setting &setting = settingOf(arguments);
    const Target target = targetOf(setting, arguments);
    report(out, target, nullptr, clearSetting(setting, target));
}

// --- rows ---

constexpr Argument kSession{
    .name = "SESSION", .summary = "identifier of the session", .kind = Kind::Session, .check = checkSession};
constexpr Option kPort{"--port", "PORT", "the sessions of this port instead of the uplinks of this host",
                       Kind::Port};

Shape shapeOfAdd(const Command &) {
    static constexpr Argument kArguments[] = {kSwitchArgument, kSession};
    static std::deque<std::string> texts;
    static std::vector<Option> options;
    if (options.empty()) {
        options = {kPort};
        for (const Member &member : sessionMembers().subspan(1))
            options.push_back(optionFor(member, texts));
        // The members that are lists of ports; a session may also send to addresses or uplinks.
        for (Option &option : options)
            if (option.list && option.choices.empty()) option.kind = Kind::Port;
        options.insert(options.end(), {kMayExist, kStrict});
    }
    return {.summary = "add a mirror session",
            .arguments = kArguments,
            .options = options,
            .details = config::kPortMirrorSessions.details,
            .example = "qvs mirror add sw1 monitor --type dvport --destinations port1 --sources-in port0"};
}

const Command kRows[] = {
    {.words = "mirror list",
     .summary = "list the mirror sessions",
     .arguments = {kSwitchArgument},
     .options = {kPort, kNames, kStored},
     .details =
         "INGRESS and EGRESS are the ports that a session watches. qvs show SWITCH lists the sessions of "
         "all ports, too. With --json the list is one that mirror set takes.",
     .example = "qvs mirror list sw1 --port port0",
     .run = reads(listSessions, touchedSessions)},
    {.words = "mirror show",
     .summary = "show a mirror session",
     .arguments = {kSwitchArgument, kSession},
     .options = {kPort},
     .example = "qvs mirror show sw1 monitor",
     .run = reads(showSession, touchedSessions)},
    {.words = "mirror add",
     .run = looking(writes(add, touchedSessions)),
     .shape = shapeOfAdd,
     .check = checkMember},
    {.words = "mirror remove",
     .summary = "remove a mirror session",
     .arguments = {kSwitchArgument, kSession},
     .options = {kPort, kIfExists},
     .example = "qvs mirror remove sw1 monitor",
     .run = writes(remove, touchedSessions)},
    {.words = "mirror set",
     .summary = "store the mirror sessions of a file in place of all that are there",
     .arguments = {kSwitchArgument,
                   {"FILE", "what mirror list --json has printed (- for standard input)", Kind::File}},
     .options = {kPort, kStrict},
     .details = "An empty list is stored as one; mirror clear removes it.",
     .example = "qvs mirror set sw1 sessions.json",
     .run = looking(writes(set, touchedSessions))},
    {.words = "mirror clear",
     .summary = "remove all mirror sessions",
     .arguments = {kSwitchArgument},
     .options = {kPort},
     .example = "qvs mirror clear sw1 --port port0",
     .run = writes(clear, touchedSessions)},
};

}  // namespace

const std::span<const Command> kMirrorCommands = kRows;

}  // namespace qvs::cli

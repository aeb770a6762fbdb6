// SPDX-License-Identifier: Apache-2.0
// qvs mirror: the mirror sessions of a port, or of the uplinks of this host.
#include <qvs/qvs.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "access/library.h"
#include "access/mirror_session.h"
#include "access/policy.h"
#include "commands/mirror.h"
#include "commands/nouns.h"
#include "config/library/snapshot.h"
#include "config/library/vlan_id.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

std::vector<std::string> touchedSessions(const Arguments &arguments) {
    return touchedPolicies(arguments, {&mirrorPolicy(arguments)});
}

void report(Output &out, const PolicyPlace &place, const std::string *id, bool changed) {
    std::string label = place.name();
    if (place.port() != nullptr) label += std::string("/") + place.port();
    if (id == nullptr) {
        return reportChange(out, label, {{"switch", place.name()}, {"port", portGiven(place)}}, changed);
    }
    reportChange(out, label + " " + *id,
                 {{"switch", place.name()}, {"port", portGiven(place)}, {"session", *id}}, changed);
}

MirrorSession givenSession(const Arguments &arguments) {
    MirrorSession session;
    session.id = arguments.text("SESSION");
    session.type = mirrorType("--type", arguments.text("--type"));
    if (arguments.given("--name")) session.name = arguments.text("--name");
    if (arguments.given("--snap-length"))
        session.snapLength = arguments.number("--snap-length", 0, 0, kMostSnapLength);
    for (const std::string &flag : arguments.all("--flag"))
        session.flags |= flagNamed("--flag", kMirrorFlags, flag);
    if (arguments.given("--encap-vlan")) {
        session.encapVlan = vlanId("--encap-vlan", arguments.text("--encap-vlan"));
        session.flags |= VSDVS_MIRROR_DST_ENCAP;
    }
    session.samplingRate = arguments.number("--sampling-rate", 0);
    session.stack = arguments.given("--stack");
    if (session.stack && session.type != VSDVS_MIRROR_ERMIRROR_SRC)
        fail(Exit::Usage, "--stack: only sessions of type ermirror-src have one");
    session.destinations = arguments.all("--dst");
    session.sourcesIn = arguments.all("--src-in");
    session.sourcesOut = arguments.all("--src-out");
    return session;
}

// A typed session behind older ones would be read as one of them.
void requireTyped(const PolicyPlace &place, const VsdvsBuffer &list) {
    VSDVS_MirrorHeader header;
    if (!list) return;
    std::memcpy(&header, list.get(), sizeof header);
    if (header.version == VSDVS_MIRROR_VERSION_WILDCARD)
        fail(Exit::Failed, "{}: the list is of the older form, which has no types; clear it first",
             place.named());
}

void add(const Arguments &arguments, Output &out) {
    MirrorSession session = givenSession(arguments);
    std::vector<uint8_t> added = encodeMirrorList({session});
    PolicyPlace place(mirrorPolicy(arguments), arguments);
    VsdvsBuffer list = readMirrorList(place);
    requireTyped(place, list);
    auto isThere = [&](const std::vector<MirrorSession> &sessions) {
        const MirrorSession *existing = findSession(sessions, session.id);
        if (existing == nullptr) return false;
        if (!arguments.given("--may-exist"))
            throw libraryFailure(sessionNamed(place, session.id), HYP_EXISTS);
        // An address may be written in several ways, so what was given is compared as it would be read.
        if (*existing != decodeMirrorList(added.data()).front())
            fail(Exit::Differs, "{}: exists and differs", sessionNamed(place, session.id));
        return true;
    };
    bool there = list && isThere(decodeMirrorList(list.get()));
    if (!there) {
        HYP_ReturnStatus status =
            call<VSDVS_AppendDVMirrorSessions>(place.name(), place.port(), added.data());
        there = status == HYP_EXISTS && arguments.given("--may-exist") && comesTrue([&] {
                    return isThere(readSessions({mirrorPolicy(arguments), arguments}));
                });
        if (!there) require(status, sessionNamed(place, session.id));
    }
    report(out, place, &session.id, !there);
}

void remove(const Arguments &arguments, Output &out) {
    const std::string &id = arguments.text("SESSION");
    requireFits(kMirrorIdLimit, id);
    PolicyPlace place(mirrorPolicy(arguments), arguments);
    HYP_ReturnStatus status = call<VSDVS_RemoveDVMirrorSession>(place.name(), place.port(), id.c_str());
    bool absent = status == HYP_NOT_FOUND && arguments.given("--if-exists");
    if (!absent) require(status, sessionNamed(place, id));
    report(out, place, &id, !absent);
}

void set(const Arguments &arguments, Output &out) {
    const std::string &path = arguments.text("FILE");
    std::vector<uint8_t> text = readFile(path);
    std::vector<uint8_t> list;
    try {
        list = encodeMirrorList(parseMirrorJson({reinterpret_cast<const char *>(text.data()), text.size()}));
    } catch (const Failure &failure) {
        fail(failure.exit, "file {}: {}", inQuotes(path), failure.message);
    }
    PolicyPlace place(mirrorPolicy(arguments), arguments);
    bool same = place.holds(list);
    if (!same) {
        require(call<VSDVS_SetDVMirrorSessions>(place.name(), place.port(), list.data()), place.named());
    }
    report(out, place, nullptr, !same);
}

void clear(const Arguments &arguments, Output &out) {
    PolicyPlace place(mirrorPolicy(arguments), arguments);
    bool there = place.stored().has_value();
    if (there) {
        require(call<VSDVS_ClearDVMirrorSessions>(place.name(), place.port()), place.named());
    }
    report(out, place, nullptr, there);
}

constexpr Argument kSession{"SESSION", "identifier of the session"};
constexpr Option kPort{"--port", "PORT", "the sessions of this port instead of the uplinks of this host",
                       Kind::Port};

const Command kRows[] = {
    {.words = "mirror list",
     .summary = "list the mirror sessions",
     .arguments = {kSwitchArgument},
     .options = {kPort, kNames},
     .details = "With --json the list is one that mirror set takes.",
     .example = "qvs mirror list sw1 --port port0",
     .run = reads(listSessions, touchedSessions)},
    {.words = "mirror show",
     .summary = "show a mirror session",
     .arguments = {kSwitchArgument, kSession},
     .options = {kPort},
     .example = "qvs mirror show sw1 monitor",
     .run = reads(showSession, touchedSessions)},
    {.words = "mirror add",
     .summary = "add a mirror session behind those that are there",
     .arguments = {kSwitchArgument, {"SESSION", "identifier of a new session, at most 32 bytes"}},
     .options = {kPort,
                 {"--type", "TYPE", "mixdst, dvport, rmirror-src, rmirror-dst, ermirror-src or logical-span",
                  Kind::Word, false, Need::Always},
                 {"--name", "TEXT", "display name, at most 83 bytes"},
                 {"--snap-length", "BYTES", "how much of each frame is kept (all)"},
                 {"--flag", "FLAG", "no-output, no-input, orig-vlan, encap, legacy or disabled", Kind::Word,
                  true},
                 {"--encap-vlan", "VLAN", "VLAN of the mirrored frames, 0 to 4094; sets the flag encap"},
                 {"--sampling-rate", "N", "sampling rate, 32 bits (0)"},
                 {"--stack", nullptr, "use the mirror stack, with type ermirror-src"},
                 {"--dst", "ENTITY", "destination", Kind::Word, true},
                 {"--src-in", "ENTITY", "source whose incoming frames are mirrored", Kind::Word, true},
                 {"--src-out", "ENTITY", "source whose outgoing frames are mirrored", Kind::Word, true},
                 kMayExist},
     .details = "A destination is the name of a port or uplink, at most 47 bytes; with type rmirror-src a "
                "text of at most 32 bytes, with ermirror-src an IPv4 or IPv6 address, with logical-span "
                "a MAC address. A source is a name as well; with type rmirror-dst a VLAN id, 0 to 4094.",
     .example = "qvs mirror add sw1 monitor --type dvport --dst port1 --src-in port0 --src-out port0",
     .run = writes(add, touchedSessions)},
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
     .options = {kPort},
     .details = "An empty list is stored as one; mirror clear removes it.",
     .example = "qvs mirror set sw1 sessions.json",
     .run = writes(set, touchedSessions)},
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

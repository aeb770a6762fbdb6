// SPDX-License-Identifier: Apache-2.0
// qvs mirror list and show.
#include <qvs/qvs.h>

#include <algorithm>
#include <string>

#include "access/library.h"
#include "access/mirror_session.h"
#include "access/policy.h"
#include "commands/mirror.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr Policy kPortSessions{"mirror sessions", QVS_KEY_PORT_MIRROR_SESSIONS};
constexpr Policy kUplinkSessions{"mirror sessions", QVS_KEY_UPLINK_MIRROR_SESSIONS};

// A session as it is shown; the words live here.
struct Shown {
    explicit Shown(const MirrorSession &each)
        : session(each),
          flagList(flagNames(kMirrorFlags, each.flags)),
          wildInList(flagNames(kMirrorMasks, each.wildIn)),
          wildOutList(flagNames(kMirrorMasks, each.wildOut)) {
        if (each.type) type = nameOf(kMirrorTypes, *each.type);
        if (!each.name.empty()) name = each.name;
    }

    static Words words(const std::vector<std::string> &list) { return {{list.begin(), list.end()}}; }

    const MirrorSession &session;
    std::vector<std::string> flagList;
    std::vector<std::string> wildInList;
    std::vector<std::string> wildOutList;
    std::optional<std::string_view> name;
    std::optional<std::string> type;

    std::optional<std::string_view> typeName() const { return type; }
};

}  // namespace

const Policy &mirrorPolicy(const Arguments &arguments) {
    return arguments.given("--port") ? kPortSessions : kUplinkSessions;
}

std::string sessionNamed(const PolicyPlace &place, std::string_view id) {
    return place.named() + ": " + inQuotes(id);
}

std::optional<std::string_view> portGiven(const PolicyPlace &place) {
    if (place.port() == nullptr) return std::nullopt;
    return place.port();
}

// The stored list; null without one.
VsdvsBuffer readMirrorList(const PolicyPlace &place) {
    void *raw = nullptr;
    HYP_ReturnStatus status = call<VSDVS_GetDVMirrorSessions>(place.name(), place.port(), &raw);
    VsdvsBuffer list(raw);
    if (status != HYP_NOT_FOUND) place.requireRead(status);
    return list;
}

std::vector<MirrorSession> readSessions(const PolicyPlace &place) {
    VsdvsBuffer list = readMirrorList(place);
    return list ? decodeMirrorList(list.get()) : std::vector<MirrorSession>();
}

const MirrorSession *findSession(const std::vector<MirrorSession> &sessions, const std::string &id) {
    auto it = std::find_if(sessions.begin(), sessions.end(), [&](const auto &each) { return each.id == id; });
    return it == sessions.end() ? nullptr : &*it;
}

void listSessions(const Arguments &arguments, Output &out) {
    PolicyPlace place(mirrorPolicy(arguments), arguments);
    std::vector<MirrorSession> sessions = readSessions(place);
    if (arguments.given("--names")) {
        NameList names(out);
        for (const MirrorSession &session : sessions)
            names.add(session.id);
        return names.finish();
    }
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
                          {"wildOut", nullptr},
                          {"unread", nullptr}});
    for (const MirrorSession &session : sessions) {
        Shown shown(session);
        listing.row(session.id, shown.name, shown.typeName(), session.snapLength,
                    Shown::words(shown.flagList), session.encapVlan, session.samplingRate,
                    Flag{session.stack}, Shown::words(session.destinations), Shown::words(session.sourcesIn),
                    Shown::words(session.sourcesOut), Shown::words(shown.wildInList),
                    Shown::words(shown.wildOutList), Shown::words(session.unread.texts));
    }
    listing.finish();
}

void showSession(const Arguments &arguments, Output &out) {
    const std::string &id = arguments.text("SESSION");
    requireFits(kMirrorIdLimit, id);
    PolicyPlace place(mirrorPolicy(arguments), arguments);
    std::vector<MirrorSession> sessions = readSessions(place);
    const MirrorSession *session = findSession(sessions, id);
    if (session == nullptr) throw libraryFailure(sessionNamed(place, id), HYP_NOT_FOUND);

    Shown shown(*session);
    Record record(out);
    record.field("switch", "switch", std::string_view(place.name()));
    record.field("port", "port", portGiven(place));
    record.field("session", "session", id);
    record.field("name", "name", shown.name);
    record.field("type", "type", shown.typeName());
    if (!out.json() && !session->snapLength) {
        record.field("snapLength", "snap length", std::string_view("full"));
    } else {
        record.field("snapLength", "snap length", session->snapLength);
    }
    record.field("flags", "flags", Shown::words(shown.flagList));
    record.field("encapVlan", "encap VLAN", session->encapVlan);
    record.field("samplingRate", "sampling rate", session->samplingRate);
    record.field("stack", "mirror stack", Flag{session->stack});
    record.field("destinations", "destinations", Shown::words(session->destinations));
    record.field("sourcesIn", "ingress sources", Shown::words(session->sourcesIn));
    record.field("sourcesOut", "egress sources", Shown::words(session->sourcesOut));
    record.field("wildIn", "ingress mask", Shown::words(shown.wildInList));
    record.field("wildOut", "egress mask", Shown::words(shown.wildOutList));
    if (out.json()) record.field("unread", "unread", Shown::words(session->unread.texts));
    record.finish();
}

}  // namespace qvs::cli

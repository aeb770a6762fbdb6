// SPDX-License-Identifier: Apache-2.0
#include "config/apply/plan.h"

#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <utility>

#include "config/apply/steps.h"
#include "config/library/call.h"
#include "config/library/portset.h"
#include "config/settings/codec.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

std::string subjectOf(const Change &change) {
    const std::string place = change.port.empty() ? named(change.alias) : named(change.alias, change.port);
    return change.member.empty() ? place : place + ": " + shown(change.member);
}

bool isWhole(const Change &change) {
    return change.member.empty();
}

// A member of identity that is one property of its own: its key and the bytes of the wanted value.
struct IdentityProperty {
    const char *member;
    Scope scope;
    const char *key;
    Blob (*encode)(const Value &value);
};

Blob encodeNumber(const Value &value) {
    return blobOf(static_cast<uint32_t>(value.number()));
}
Blob encodeText(const Value &value) {
    return blobOfText(value.text());
}
Blob encodeBoolean(const Value &value) {
    return blobOfText(value.on() ? "true" : "false");
}

constexpr IdentityProperty kIdentityProperties[] = {
    {"version", Scope::Global, QVS_KEY_VERSION, encodeNumber},
    {"opaque", Scope::Global, QVS_KEY_OPAQUE, encodeBoolean},
    {"connectId", Scope::Port, QVS_KEY_PORT_CONNECT_ID, encodeNumber},
    {"externalId", Scope::Port, QVS_KEY_PORT_EXTERNAL_ID, encodeText},
    {"blocked", Scope::Port, QVS_KEY_PORT_BLOCK, encodeBoolean},
};

const IdentityProperty *identityProperty(const Change &change) {
    for (const IdentityProperty &identity : kIdentityProperties)
        if (change.scope == identity.scope && change.member == identity.member) return &identity;
    return nullptr;
}

class Planner {
  public:
    Planner(std::span<const Change> changes, const Document &wanted, bool prune)
        : changes_(changes), wanted_(wanted), prune_(prune) {}

    Plan run() {
        for (const Change &change : changes_) {
            if (change.conflict)
                fail(Exit::Differs, "{} is {} and cannot become {}; remove what has it first",
                     subjectOf(change), change.beforeText, change.afterText);
            if (isWhole(change)) {
                change.port.empty() ? planSwitch(change) : planPort(change);
            } else if (change.setting != nullptr && !change.property) {
                planSetting(change);
            } else if (change.property) {
                planProperty(change);
            } else {
                planIdentity(change);
            }
        }
        std::stable_sort(plan_.steps.begin(), plan_.steps.end(),
                         [](const Step &left, const Step &right) { return left.stage < right.stage; });
        plan_.before = recorder_.before();
        return std::move(plan_);
    }

  private:
    void add(Stage stage, const Change &change, std::function<HYP_ReturnStatus()> run) {
        plan_.steps.push_back({stage, subjectOf(change), std::move(run)});
    }

    // The switch in the snapshot; null for one that the plan creates.
    static DVSSwitch *switchOf(const Change &change) {
        return DVSState_SwitchFindByAlias(change.alias.c_str());
    }

    void record(const Change &change, const char *key) {
        DVSSwitch *sw = switchOf(change);
        if (sw == nullptr || key == nullptr) return;
        recorder_.property(change.scope, sw, change.port, key);
        if (std::string_view(key) == QVS_KEY_MTU) recorder_.mtu(sw);
    }

    void planSwitch(const Change &change) {
        if (change.kind == Change::Kind::Removed) {
            recorder_.wholeSwitch(findVswitch(change.alias));
            return add(Stage::Removals, change,
                       [&change] { return call<VSDVS_DestroyVSwitch>(change.alias.c_str()); });
        }
        SwitchEntry entry = *wanted_.findSwitch(change.alias);
        if (!entry.id) entry.id = defaultSwitchId(entry.alias);
        const std::string portset = entry.portset.value_or(entry.alias);
        requireFree(entry, portset);
        recorder_.newSwitch(*entry.id, entry.alias, portset);
        add(Stage::Switches, change, [entry = std::move(entry)] { return createSwitch(entry); });
    }

    static void requireFree(const SwitchEntry &sw, const std::string &portset) {
        if (findSwitchById(*sw.id) != nullptr)
            fail(Exit::Differs, "{}: identifier {} belongs to another switch", named(sw.alias),
                 inQuotes(*sw.id));
        const std::optional<KernelSwitches> kernel = askKernelSwitches();
        if (kernel && hasPortset(*kernel, portset))
            fail(Exit::Differs, "{}: portset {} exists in the kernel; name another one, or remove it first",
                 named(sw.alias), inQuotes(portset));
    }

    void planPort(const Change &change) {
        DVSSwitch *sw = switchOf(change);
        if (change.kind == Change::Kind::Removed) {
            if (uplinkPorts_.contains({change.alias, change.port})) return;
            recorder_.wholePort(sw, findPort(sw, change.alias, change.port));
            return add(Stage::Removals, change, [&change] {
                return call<VSDVS_RemoveDVPort>(change.alias.c_str(), change.port.c_str());
            });
        }
        // The port of an uplink comes with it.
        if (uplinkPorts_.contains({change.alias, change.port})) return;
        const PortEntry *entry = wanted_.findSwitch(change.alias)->findPort(change.port);
        if (sw != nullptr) recorder_.newPort(sw, change.port);
        add(Stage::Ports, change, [&change, entry] { return addPort(change.alias, *entry); });
        clearInitialPolicy(change, change.port, entry);
    }

    // libqvs gives every port a VLAN policy, which a document without it removes.
    void clearInitialPolicy(const Change &change, const std::string &port, const PortEntry *wanted) {
        const bool named = wanted != nullptr && (wanted->part.find(kVlan) != nullptr ||
                                                 wanted->part.findProperty(QVS_KEY_PORT_VLAN) != nullptr);
        if (!prune_ || named) return;
        Change of = change;
        of.port = port;
        of.scope = Scope::Port;
        add(Stage::Contents, of, [of] { return storeRaw(of, QVS_KEY_PORT_VLAN, 0, nullptr); });
    }

    void planSetting(const Change &change) {
        for (const char *key : change.setting->keys)
            record(change, key);
        if (change.kind != Change::Kind::Removed) {
            add(Stage::Contents, change, [&change] { return storeSetting(change); });
        } else {
            // Nothing refers to the setting of a port, and others may repeat a part of it.
            add(change.scope == Scope::Port ? Stage::Contents : Stage::Removals, change,
                [&change] { return clearSetting(change); });
        }
        if (change.scope == Scope::Port) storeRepeating(change);
    }

    // Stores again what repeats a part of a setting that changes.
    void storeRepeating(const Change &change) {
        const PortEntry *port = wanted_.findSwitch(change.alias)->findPort(change.port);
        for (const Setting *setting : settings()) {
            const Value *value = port == nullptr ? nullptr : port->part.find(*setting);
            if (value == nullptr || setting->repeats != change.setting) continue;
            Change again = change;
            again.setting = setting;
            again.after = completed(*setting, *value);
            for (const char *key : setting->keys)
                record(again, key);
            add(Stage::Contents, again, [again] { return storeSetting(again); });
        }
    }

    void planProperty(const Change &change) {
        record(change, change.member.c_str());
        if (change.after.absent())
            return add(Stage::Removals, change,
                       [&change] { return storeRaw(change, change.member.c_str(), 0, nullptr); });
        add(Stage::Contents, change, [&change] {
            const Blob &value = change.after["value"].bytes();
            const auto classes = static_cast<uint32_t>(change.after["class"].number());
            return storeRaw(change, change.member.c_str(), classes, &value);
        });
    }

    void planIdentity(const Change &change) {
        if (change.member == "uplinks") return planUplinks(change);
        const IdentityProperty *identity = identityProperty(change);
        // The others come with the switch that is created.
        if (identity == nullptr || change.after.absent()) return;
        if (change.port.empty() && switchOf(change) == nullptr) return;
        record(change, identity->key);
        add(Stage::Contents, change, [&change, identity] {
            const Blob value = identity->encode(change.after);
            return storeRaw(change, identity->key, DVS_PROP_CONFIG, &value);
        });
    }

    void planUplinks(const Change &change) {
        DVSSwitch *sw = switchOf(change);
        const std::vector<UplinkEntry> before = uplinksIn(change.before);
        const std::vector<UplinkEntry> after = uplinksIn(change.after);
        if (sw != nullptr) {
            recorder_.property(Scope::Global, sw, "", QVS_KEY_UPLINK_NAMES);
            recorder_.property(Scope::Host, sw, "", QVS_KEY_UPLINK_PORTS);
        }
        for (const UplinkEntry &uplink : after) {
            uplinkPorts_.emplace(change.alias, uplink.port);
            if (sw != nullptr) recorder_.property(Scope::Port, sw, uplink.port, QVS_KEY_PORT_ALIAS);
            if (has(before, uplink.port)) continue;
            add(Stage::Ports, change, [&change, port = uplink.port] {
                return call<VSDVS_AddSwitchUplinkPort>(change.alias.c_str(), port.c_str());
            });
            clearInitialPolicy(change, uplink.port, wanted_.findSwitch(change.alias)->findPort(uplink.port));
        }
        for (const UplinkEntry &uplink : before) {
            uplinkPorts_.emplace(change.alias, uplink.port);
            if (has(after, uplink.port)) continue;
            DVSPort *port = sw == nullptr ? nullptr : lookUpPort(sw, uplink.port);
            if (port != nullptr) recorder_.wholePort(sw, port);
            add(Stage::Removals, change, [&change, port = uplink.port] {
                return call<VSDVS_RemoveSwitchUplinkPort>(change.alias.c_str(), port.c_str());
            });
        }
        // The lists have the uplinks in another order then, or with ports of other names.
        std::vector<UplinkEntry> made = before;
        std::erase_if(made, [&](const UplinkEntry &uplink) { return !has(after, uplink.port); });
        for (const UplinkEntry &uplink : after)
            if (!has(before, uplink.port)) made.push_back({uplink.port, uplink.port});
        if (made == after) return;
        add(Stage::Removals, change, [&change, after] {
            if (const HYP_ReturnStatus status = loadSnapshot(); status != HYP_OK) return status;
            return arrangeUplinks(change.alias, after);
        });
    }

    static bool has(const std::vector<UplinkEntry> &uplinks, const std::string &port) {
        return std::any_of(uplinks.begin(), uplinks.end(),
                           [&](const UplinkEntry &uplink) { return uplink.port == port; });
    }

    std::span<const Change> changes_;
    const Document &wanted_;
    bool prune_;
    Recorder recorder_;
    std::set<std::pair<std::string, std::string>> uplinkPorts_;
    Plan plan_;
};

}  // namespace

Plan planOf(std::span<const Change> changes, const Document &wanted, bool prune) {
    return Planner(changes, wanted, prune).run();
}

}  // namespace qvs::config

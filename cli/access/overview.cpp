// SPDX-License-Identifier: Apache-2.0
#include "access/overview.h"

#include <qvs/qvs.h>
#include <qvs/records.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <unordered_map>
#include <utility>

#include "access/library.h"
#include "access/remains.h"
#include "config/settings/families.h"
#include "config/settings/references.h"

namespace qvs::cli {
namespace {

using config::Setting;
using config::StoredView;
using config::Target;

// What is stored at a place of one setting.
struct Found {
    const Setting *setting;
    StoredView stored;
};

bool isMirror(const Setting *setting) {
    return setting == &config::kPortMirrorSessions || setting == &config::kUplinkMirrorSessions;
}

struct Speed {
    uint16_t code;
    uint32_t mbps;
};
constexpr Speed kSpeeds[] = {
    {QVS_SPEED_10_HALF, 10},     {QVS_SPEED_10_FULL, 10},       {QVS_SPEED_100_HALF, 100},
    {QVS_SPEED_100_FULL, 100},   {QVS_SPEED_1000_HALF, 1000},   {QVS_SPEED_1000_FULL, 1000},
    {QVS_SPEED_2500_FULL, 2500}, {QVS_SPEED_10G_FULL, 10000},   {QVS_SPEED_20G_FULL, 20000},
    {QVS_SPEED_40G_FULL, 40000}, {QVS_SPEED_100G_FULL, 100000},
};

std::optional<uint32_t> speedIn(Bytes record) {
    QVS_LinkStatus status;
    if (record.size() < sizeof status) return std::nullopt;
    std::memcpy(&status, record.data(), sizeof status);
    const auto *speed = std::ranges::find(kSpeeds, uint16_t{status.speed}, &Speed::code);
    return speed == std::end(kSpeeds) ? std::nullopt : std::optional(speed->mbps);
}

template <auto Query>
std::optional<bool> askLink(const std::string &portset, const std::string &uplink, std::string_view subject) {
    if (uplink.size() > kLinkUplinkLimit.bytes) return std::nullopt;
    uint32_t up = 0;
    const HYP_ReturnStatus status = call<Query>(portset.c_str(), uplink.c_str(), &up);
    if (status == HYP_NOT_FOUND) return std::nullopt;
    require(status, subject);
    return up != 0;
}

class Gatherer {
  public:
    Gatherer(DVSSwitch *sw, Ask ask) : ask_(ask) {
        facts_.handle = sw;
        facts_.alias = findText({Scope::Global, sw}, QVS_KEY_ALIAS);
        facts_.id = boundedText(DVS_SwitchId(sw), sizeof(SwitchIdString));
        facts_.className = DVS_ClassName(sw);
        facts_.portset = findText({Scope::Host, sw}, QVS_KEY_HOST_PORTSET);
        facts_.version = DVS_Version(sw);
        facts_.maxPorts = DVS_GetMaxPorts(sw);
        facts_.opaque = findText({Scope::Global, sw}, QVS_KEY_OPAQUE) == "true";
    }

    SwitchFacts gather() {
        gatherPlace(Scope::Global);
        gatherPlace(Scope::Host);
        gatherPorts();
        gatherUplinks();
        for (const auto &[setting, count] : unreadable_)
            if (count > 1)
                warn("{}: {}: so on {} more ports", named(facts_.name()), setting->what, count - 1);
        if (ask_ == Ask::Kernel && facts_.className == "vswitch" && facts_.alias) askKernel();
        return std::move(facts_);
    }

  private:
    // Notes what cannot be read, and warns.
    void gap(std::string what, const std::string &reason) {
        warn("{}", reason);
        facts_.gaps.push_back(std::move(what));
    }

    Target targetOf(const Place &place, std::string_view port) const {
        return {.alias = std::string(facts_.name()), .port = std::string(port), .place = place};
    }

    // Adds a property to what was found of its setting.
    void find(const Setting *setting, const Property &property) {
        if (ask_ == Ask::NumbersAlone && setting != &config::kVlan) return;
        auto at = std::ranges::find(found_, setting, &Found::setting);
        if (at == found_.end()) at = found_.insert(found_.end(), {setting, {}});
        at->stored[property.key == setting->keys[0] ? 0 : 1] = property.value;
    }

    void addMirrors(const Found &found, const Place &place, std::string_view port) {
        std::optional<config::Value> sessions = found.setting->decode(found.stored);
        try {
            // libqvs reads the older form, too, but each time from the host.
            if (!sessions) sessions = found.setting->read(targetOf(place, port));
        } catch (const Failure &failure) {
            gap("mirror sessions", failure.message);
        }
        if (!sessions) return;
        for (const config::Value &session : sessions->list())
            facts_.mirrors.push_back({port, session});
    }

    void addPolicy(std::vector<Policy> &policies, const Found &found, const Target &target,
                   std::string_view port) {
        if (ask_ == Ask::Kernel && config::refers(*found.setting))
            if (const auto value = found.setting->decode(found.stored))
                addMissing(*found.setting, *value, port);
        std::optional<Policy> policy = policyOf(*found.setting, found.stored);
        if (!policy) return;
        if (!policy->value && unreadable_[found.setting]++ == 0)
            warn("{}: {}: {}", target.named(), found.setting->what, policy->words);
        policies.push_back(std::move(*policy));
    }

    void addMissing(const Setting &setting, const config::Value &value, std::string_view port) {
        if (ask_ != Ask::Kernel) return;
        if (!existing_) existing_ = config::existingIn(facts_.handle);
        std::vector<std::string> objects = config::missingReferences(setting, value, *existing_);
        if (!objects.empty()) facts_.missing.push_back({port, &setting, std::move(objects)});
    }

    void gatherPlace(Scope scope) {
        const Place place{scope, facts_.handle};
        found_.clear();
        forEachProperty(place, [&](const Property &property) {
            const Setting *setting = config::settingOfKey(scope, property.key);
            if (setting != nullptr) find(setting, property);
            return true;
        });
        for (const Found &found : found_) {
            if (isMirror(found.setting)) {
                addMirrors(found, place, {});
            } else if (found.setting == &config::kPrivateVlans) {
                addPrivateVlans(found);
            } else if (found.setting != &config::kMtu) {
                addPolicy(facts_.policies, found, targetOf(place, {}), {});
            } else if (const auto mtu = found.setting->decode(found.stored)) {
                facts_.mtu = mtu->number();
            }
        }
    }

    void addPrivateVlans(const Found &found) {
        const std::optional<config::Value> map = found.setting->decode(found.stored);
        if (!map)
            return gap("private VLANs",
                       fmt::format("{}: the private VLANs cannot be read", named(facts_.name())));
        for (const config::Value &each : map->list())
            facts_.privateVlans.push_back({static_cast<uint32_t>(each["primary"].number()),
                                           static_cast<uint32_t>(each["secondary"].number()),
                                           each["type"].text()});
    }

    void gatherPorts() {
        forEachPort(facts_.handle, [&](DVSPort *handle) {
            const size_t index = facts_.ports.size();
            PortFacts &port = facts_.ports.emplace_back();
            port.handle = handle;
            port.index = index;
            port.id = DVS_PortId(handle);
            return true;
        });
        std::ranges::sort(facts_.ports, namedBefore, &PortFacts::id);
        for (PortFacts &port : facts_.ports) {
            gatherPort(port);
            if (port.inUse) facts_.portsInUse++;
        }
    }

    void gatherPort(PortFacts &port) {
        found_.clear();
        const Place place = placeOf(port.handle);
        forEachProperty(place, [&](const Property &property) {
            if (const Setting *setting = config::settingOfKey(Scope::Port, property.key)) {
                find(setting, property);
            } else {
                addFact(port, property);
            }
            return true;
        });
        // Most ports have no policy.
        if (found_.empty()) return;
        const Target target = targetOf(place, port.id);
        for (const Found &found : found_) {
            const bool isVlan = found.setting == &config::kVlan;
            const auto vlan = isVlan ? found.setting->decode(found.stored) : std::nullopt;
            if (isMirror(found.setting)) {
                addMirrors(found, place, port.id);
            } else if (vlan) {
                port.vlan = vlanWords(*vlan);
                port.vlanPolicy = *vlan;
                addMissing(*found.setting, *vlan, port.id);
            } else if (!isVlan || ask_ != Ask::NumbersAlone) {
                addPolicy(port.policies, found, target, port.id);
            }
        }
    }

    static void addFact(PortFacts &port, const Property &property) {
        if (property.key == QVS_KEY_PORT_STATUS) {
            const PortStatus status = readStatus(property.value);
            port.number = status.number;
            port.client = status.client;
            port.inUse = status.inUse;
            port.linkUp = status.linkUp;
            port.kernelBlocked = status.blocked;
        } else if (property.key == QVS_KEY_PORT_STATISTICS) {
            port.counters = countersIn(property.value);
        } else if (property.key == QVS_KEY_PORT_ALIAS) {
            port.alias = property.text();
        } else if (property.key == QVS_KEY_PORT_CONNECT_ID) {
            port.connectId = property.number();
        } else if (property.key == QVS_KEY_PORT_BLOCK) {
            port.blocked = property.text() == "true";
        } else if (property.key == QVS_KEY_PORT_EXTERNAL_ID) {
            port.externalId = property.text();
        } else if (property.key == QVS_KEY_PORT_LINK_STATUS) {
            port.speedMbps = speedIn(property.value);
        }
    }

    void gatherUplinks() {
        const UplinkState state = uplinkState(facts_.handle);
        if (ask_ == Ask::NumbersAlone) return addUplinks(state);
        if (!state.readable) gap("uplinks", named(facts_.name()) + ": the lists of uplinks cannot be read");
        for (const std::string &defect : state.broken)
            gap(defect, fmt::format("{}: {}", named(facts_.name()), defect));
        addUplinks(state);
    }

    void addUplinks(const UplinkState &state) {
        std::unordered_map<std::string_view, size_t> places;
        if (!state.whole.empty())
            for (size_t i = 0; i < facts_.ports.size(); i++)
                places.emplace(facts_.ports[i].id, i);
        for (const Uplink &listed : state.whole) {
            UplinkFacts uplink;
            uplink.name = listed.name;
            uplink.portId = listed.port;
            if (const auto place = places.find(listed.port); place != places.end()) {
                PortFacts &port = facts_.ports[place->second];
                port.uplink = facts_.uplinks.size();
                uplink.port = place->second;
                uplink.nic = port.client;
                uplink.speedMbps = port.speedMbps;
                // The kernel knows links of bound uplinks alone.
                if (ask_ != Ask::Kernel && port.client) uplink.linkUp = port.linkUp;
            }
            facts_.uplinks.push_back(std::move(uplink));
        }
    }

    void askKernel() {
        try {
            const auto mtu = config::kMtu.read(targetOf({Scope::Global, facts_.handle}, {}));
            if (mtu) facts_.mtu = mtu->number();
        } catch (const Failure &failure) {
            facts_.mtu.reset();
            gap("MTU", failure.message);
        }
        if (!facts_.portset) return;
        const std::string portset(*facts_.portset);
        for (UplinkFacts &uplink : facts_.uplinks) {
            const std::string subject = namedUplink(facts_.name(), uplink.name);
            try {
                uplink.linkUp = uplinkLink(portset, uplink.portId, subject);
                uplink.lacpUp = uplinkLacpLink(portset, uplink.portId, subject);
            } catch (const Failure &failure) {
                gap("links of uplinks", failure.message);
                // A kernel that has failed once is not asked for each of many.
                return;
            }
        }
    }

    Ask ask_;
    SwitchFacts facts_;
    std::vector<Found> found_;  // at the place that is gathered
    std::optional<config::Existing> existing_;
    std::map<const Setting *, size_t> unreadable_;
};

}  // namespace

std::string_view MirrorFacts::text(std::string_view member) const {
    const config::Value &value = session[member];
    return value.absent() ? std::string_view() : value.text();
}

std::vector<std::string_view> MirrorFacts::texts(std::string_view member) const {
    std::vector<std::string_view> all;
    const config::Value &value = session[member];
    if (value.absent()) return all;
    for (const config::Value &each : value.list())
        all.push_back(each.text());
    return all;
}

bool MirrorFacts::disabled() const {
    const std::vector<std::string_view> flags = texts("flags");
    return std::ranges::find(flags, "disabled") != flags.end();
}

SwitchFacts gatherSwitch(DVSSwitch *sw, Ask ask) {
    return Gatherer(sw, ask).gather();
}

std::vector<SwitchFacts> gatherSwitches(Ask ask) {
    std::vector<SwitchFacts> all;
    forEachSwitch([&](DVSSwitch *sw) {
        all.push_back(gatherSwitch(sw, ask));
        return true;
    });
    std::ranges::sort(all, namedBefore, &SwitchFacts::name);
    return all;
}

std::optional<bool> uplinkLink(const std::string &portset, const std::string &uplink,
                               std::string_view subject) {
    return askLink<VSHYP_GetUplinkLinkState>(portset, uplink, subject);
}

std::optional<bool> uplinkLacpLink(const std::string &portset, const std::string &uplink,
                                   std::string_view subject) {
    return askLink<VSHYP_GetUplinkLACPLinkState>(portset, uplink, subject);
}

}  // namespace qvs::cli

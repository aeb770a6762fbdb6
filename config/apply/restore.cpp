// SPDX-License-Identifier: Apache-2.0
// Compares the host with what was there, and makes up the differences: what is missing is created, then what
// is stored is made the same, then what is too much is removed. What one pass could not do because something
// stood in its way is left to the next one.
#include "config/apply/restore.h"

#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <memory>
#include <set>

#include "config/library/call.h"
#include "config/library/host.h"
#include "config/library/portset.h"

namespace qvs::config {
namespace {

constexpr int kMostPasses = 5;
// A status of the state library: nobody answers.
constexpr HYP_ReturnStatus kNoConnection = 0xbad0040u;

struct Mend {
    std::string what;  // the difference
    std::function<HYP_ReturnStatus()> run;
};

// The differences, in the order in which they are mended.
struct Mends {
    std::vector<Mend> switches, ports, mtus, properties, surplusPorts, surplusSwitches;
};

// --- properties ---

HYP_ReturnStatus setProperty(Scope scope, const std::string &id, const std::string &port,
                             const PropertyBefore &property) {
    const Blob &value = *property.value;
    const auto length = static_cast<uint32_t>(value.size());
    const char *key = property.key.c_str();
    switch (scope) {
        case Scope::Global:
            return call<DVSHYP_GlobalPropSet>(id.c_str(), key, value.data(), length, property.classes);
        case Scope::Host:
            return call<DVSHYP_HostPropSet>(id.c_str(), key, value.data(), length, property.classes);
        case Scope::Port:
            break;
    }
    return call<DVSHYP_PortDataSet>(id.c_str(), port.c_str(), key, value.data(), length, property.classes);
}

HYP_ReturnStatus clearProperty(Scope scope, const std::string &id, const std::string &port,
                               const std::string &key) {
    switch (scope) {
        case Scope::Global:
            return call<DVSHYP_GlobalPropClear>(id.c_str(), key.c_str());
        case Scope::Host:
            return call<DVSHYP_HostPropClear>(id.c_str(), key.c_str());
        case Scope::Port:
            break;
    }
    return call<DVSHYP_PortDataClear>(id.c_str(), port.c_str(), key.c_str());
}

bool isSame(const PropertyBefore &before, const std::optional<Property> &now) {
    if (!before.value) return !now;
    return now && now->classes == before.classes && std::ranges::equal(now->value, *before.value);
}

class Comparison {
  public:
    Comparison(const Before &before, bool first) : before_(before), first_(first) {}

    std::vector<Mend> run() {
        const bool portsets = std::any_of(before_.switches.begin(), before_.switches.end(),
                                          [](const auto &sw) { return !sw.there || sw.whole; });
        if (portsets) kernel_ = askKernelSwitches();
        for (const SwitchBefore &sw : before_.switches)
            sw.there ? compareSwitch(sw) : compareNewSwitch(sw);
        std::vector<Mend> all;
        for (std::vector<Mend> *some : {&mends_.switches, &mends_.ports, &mends_.mtus, &mends_.properties,
                                        &mends_.surplusPorts, &mends_.surplusSwitches})
            std::move(some->begin(), some->end(), std::back_inserter(all));
        return all;
    }

  private:
    bool isStray(const std::string &portset) const {
        return kernel_ && hasPortset(*kernel_, portset) && ownerOfPortset(portset) == nullptr;
    }

    void compareNewSwitch(const SwitchBefore &sw) {
        const bool portset = isStray(sw.portset);
        if (findSwitchById(sw.id) != nullptr) {
            mends_.surplusSwitches.push_back({named(sw.alias) + " is still there", [&sw] {
                                                  call<DVSHYP_SwitchDissociate>(sw.id.c_str());
                                                  return call<DVSHYP_SwitchRemove>(sw.id.c_str());
                                              }});
        }
        if (findSwitchById(sw.id) == nullptr && !portset) return;
        mends_.surplusSwitches.push_back(
            {fmt::format("portset {} is still there", inQuotes(sw.portset)), [&sw, portset] {
                 // Behind its switch, a portset may be gone already.
                 return destroyPortset(sw.portset) || !portset ? HYP_OK : HYP_FAILURE;
             }});
    }

    void compareSwitch(const SwitchBefore &sw) {
        DVSSwitch *now = findSwitchById(sw.id);
        if (now == nullptr) {
            const bool stray = isStray(sw.portset);
            mends_.switches.push_back({named(sw.alias) + " is missing", [&sw, stray] {
                                           if (stray) destroyPortset(sw.portset);
                                           return call<VSDVS_CreateVSwitch>(
                                               sw.alias.c_str(), sw.id.c_str(), sw.portset.c_str(),
                                               sw.version, uint8_t{sw.opaque}, sw.maxPorts, 0u, 0u);
                                       }});
        } else if (sw.whole && kernel_ && hasPortset(*kernel_, sw.portset) && isVswitch(now) &&
                   !hasAlias(*kernel_, sw.alias)) {
            mends_.switches.push_back({named(sw.alias) + " is not associated with its portset",
                                       [&sw] { return call<DVSHYP_SwitchAssociate>(sw.id.c_str()); }});
        }
        if (sw.mtu && now != nullptr) compareMtu(sw);
        comparePart(sw, "", sw.global, {Scope::Global, now}, now != nullptr);
        comparePart(sw, "", sw.host, {Scope::Host, now}, now != nullptr);
        for (const PortBefore &port : sw.ports)
            comparePort(sw, port, now);
        if (sw.whole && now != nullptr) compareOtherPorts(sw, now);
    }

    static bool isVswitch(DVSSwitch *sw) { return std::string_view(DVS_ClassName(sw)) == "vswitch"; }

    // The NICs are set before the portset: what is set half way shows only there.
    void compareMtu(const SwitchBefore &sw) {
        int now = 0;
        const HYP_ReturnStatus status = call<VSDVS_GetMTU>(sw.alias.c_str(), &now);
        const bool same = status == HYP_OK && static_cast<uint32_t>(now) == *sw.mtu;
        if (same && !(first_ && sw.setsMtu)) return;
        mends_.mtus.push_back({fmt::format("{}: the MTU is not {}", named(sw.alias), *sw.mtu),
                               [&sw] { return call<VSDVS_SetMTU>(sw.alias.c_str(), *sw.mtu); }});
    }

    void comparePart(const SwitchBefore &sw, const std::string &port, const PartBefore &part,
                     const Place &place, bool there) {
        const std::string subject = port.empty() ? named(sw.alias) : named(sw.alias, port);
        const Scope scope = place.scope;
        for (const PropertyBefore &property : part.properties) {
            if (part.whole && !isConfiguration(property.classes)) continue;
            if (isSame(property, there ? findProperty(place, property.key) : std::nullopt)) continue;
            mends_.properties.push_back({fmt::format("{}: property {} is {}", subject, inQuotes(property.key),
                                                     property.value ? "not as it was" : "still stored"),
                                         [&sw, port, scope, &property] {
                                             return property.value
                                                        ? setProperty(scope, sw.id, port, property)
                                                        : clearProperty(scope, sw.id, port, property.key);
                                         }});
        }
        if (part.whole && there) compareOthers(sw, port, part, place, subject);
    }

    void compareOthers(const SwitchBefore &sw, const std::string &port, const PartBefore &part,
                       const Place &place, const std::string &subject) {
        std::set<std::string_view> kept;
        for (const PropertyBefore &property : part.properties)
            kept.insert(property.key);
        const Scope scope = place.scope;
        forEachProperty(place, [&](const Property &property) {
            if (!isConfiguration(property.classes) || kept.contains(property.key)) return true;
            mends_.properties.push_back(
                {fmt::format("{}: property {} is still stored", subject, inQuotes(property.key)),
                 [&sw, port, scope, key = std::string(property.key)] {
                     return clearProperty(scope, sw.id, port, key);
                 }});
            return true;
        });
    }

    void comparePort(const SwitchBefore &sw, const PortBefore &port, DVSSwitch *now) {
        DVSPort *handle = now == nullptr ? nullptr : DVSState_PortFind(sw.id.c_str(), port.id.c_str());
        if (!port.there) {
            if (handle != nullptr) removePort(sw, port.id);
            return;
        }
        if (handle == nullptr && port.part.whole) {
            mends_.ports.push_back(
                {named(sw.alias, port.id) + " is missing", [&sw, &port] { return addPort(sw.id, port); }});
            return;
        }
        comparePart(sw, port.id, port.part, placeOf(handle), handle != nullptr);
    }

    void compareOtherPorts(const SwitchBefore &sw, DVSSwitch *now) {
        std::set<std::string_view> kept;
        for (const PortBefore &port : sw.ports)
            kept.insert(port.id);
        forEachPort(now, [&](DVSPort *port) {
            if (!kept.contains(DVS_PortId(port))) removePort(sw, DVS_PortId(port));
            return true;
        });
    }

    void removePort(const SwitchBefore &sw, const std::string &port) {
        mends_.surplusPorts.push_back({named(sw.alias, port) + " is still there", [&sw, port] {
                                           return call<DVSHYP_PortRemove>(sw.id.c_str(), port.c_str());
                                       }});
    }

    // With all its properties at once, to the byte.
    static HYP_ReturnStatus addPort(const std::string &id, const PortBefore &port) {
        DVSData *raw = nullptr;
        if (const HYP_ReturnStatus status = DVSData_Alloc(&raw, std::malloc, std::free); status != HYP_OK)
            return status;
        const std::unique_ptr<DVSData, decltype(&DVSData_Free)> data(raw, DVSData_Free);
        for (const PropertyBefore &property : port.part.properties) {
            if (!property.value) continue;
            const HYP_ReturnStatus status =
                DVSData_Update(raw, property.key.c_str(), property.value->data(),
                               static_cast<uint32_t>(property.value->size()), property.classes);
            if (status != HYP_OK) return status;
        }
        void *buffer = nullptr;
        uint32_t length = 0;
        if (const HYP_ReturnStatus status = DVSData_Serialize(raw, &buffer, &length, DVS_DATA_FORMAT);
            status != HYP_OK)
            return status;
        const std::unique_ptr<void, Releaser<std::free>> serialised(buffer);
        return call<DVSHYP_PortAdd>(id.c_str(), port.id.c_str(), buffer, length);
    }

    const Before &before_;
    bool first_;
    std::optional<KernelSwitches> kernel_;
    Mends mends_;
};

void leave(Restored &restored, const std::vector<Mend> &mends, size_t from) {
    for (size_t i = from; i < mends.size(); i++)
        restored.left.push_back(mends[i].what);
}

}  // namespace

Restored restore(const Before &before) {
    const SignalsHeld held;
    Restored restored;
    for (int pass = 1;; pass++) {
        if (const HYP_ReturnStatus status = loadSnapshot(); status != HYP_OK) {
            restored.problem = libraryFailure("switch state", status).message;
            restored.left.push_back("the host does not answer, so that nothing is known of it");
            return restored;
        }
        const std::vector<Mend> mends = Comparison(before, pass == 1).run();
        if (mends.empty()) return restored;
        if (pass == kMostPasses) {
            leave(restored, mends, 0);
            return restored;
        }
        for (size_t i = 0; i < mends.size(); i++) {
            const HYP_ReturnStatus status = mends[i].run();
            if (status == HYP_OK) {
                restored.changes++;
                continue;
            }
            if (restored.problem.empty()) restored.problem = libraryFailure(mends[i].what, status).message;
            if (status != kTimedOut && status != kNoConnection) continue;
            leave(restored, mends, i);
            return restored;
        }
    }
}

}  // namespace qvs::config

// SPDX-License-Identifier: Apache-2.0
// Applies a lab to the host.
#include "daemon/front/lab.h"

#include <algorithm>

#include <fmt/format.h>

#include "daemon/devices/json_members.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kDefaultMaxPorts = 128;
constexpr uint32_t kDefaultVersion = 105;
constexpr uint32_t kPolicy = 8;

constexpr std::pair<Status, const char *> kReasons[] = {
    {Status::NotFound, "not found"},
    {Status::Busy, "in use"},
    {Status::Exists, "exists already"},
    {Status::LimitExceeded, "the switch has no room for it"},
    {Status::BadParameter, "not a valid name or value"},
};

[[noreturn]] void fail(const std::string &what, Status status) {
    const auto known = std::find_if(std::begin(kReasons), std::end(kReasons),
                                    [&](const auto &reason) { return reason.first == status; });
    const char *reason = known == std::end(kReasons) ? "cannot be applied" : known->second;
    throw LabError(fmt::format("{}: {}", what, reason));
}

void require(Status status, const std::string &what) {
    if (status != Status::Ok) fail(what, status);
}

std::string terminated(std::string_view text) {
    return std::string(text) + '\0';
}

std::string u32Bytes(uint32_t value) {
    return Record(sizeof value).put(0, value).take();
}

// Returns the identifier that a management tool derives from an alias: 16 bytes in hexadecimal digits.
std::string identifierOf(std::string_view alias) {
    std::string id;
    for (size_t i = 0; i < 16; ++i) {
        const auto byte = static_cast<uint8_t>(i < 15 && i < alias.size() ? alias[i] : 0);
        id += fmt::format("{}{:02x}", i == 0 ? "" : i == 8 ? "-" : " ", byte);
    }
    return id;
}

// Returns a list of names: a u32 count, followed by a field of this width for each name.
std::string nameList(const std::vector<std::string> &names, size_t width) {
    std::string bytes = u32Bytes(static_cast<uint32_t>(names.size()));
    for (const std::string &name : names) {
        std::string field = name.substr(0, width - 1);
        field.resize(width);
        bytes += field;
    }
    return bytes;
}

class Laboratory {
  public:
    explicit Laboratory(Model &model) : model_(model) {}

    void apply(const Lab &lab) {
        if (lab.nics) setUpNics(*lab.nics);
        for (const auto &part : lab.switches)
            setUpSwitch(part);
        for (const auto &client : lab.clients)
            attach(client);
        if (lab.nics) attachNics(*lab.nics);
        if (lab.network) enableNetwork(model_, *lab.network);
        if (lab.seed) model_.seedCounters(*lab.seed);
        Members members(lab.devices, "lab");
        for (const DevicePart *part : deviceParts()) {
            for (const LabMember &member : part->lab) {
                if (lab.devices.contains(member.name)) member.apply(members, model_);
            }
        }
    }

  private:
    void setUpNics(const std::vector<Lab::NicPart> &parts) {
        const bool fresh = model_.inventory.empty();
        if (fresh) model_.uplinks.clearNics();
        uint8_t index = 0;
        for (const Lab::NicPart &part : parts) {
            Nic *known = fresh ? nullptr : model_.inventory.findNic(part.name);
            if (known == nullptr && !fresh)
                throw LabError(fmt::format("NIC {}: NICs can be added only to an empty host", part.name));
            Nic nic;
            if (known != nullptr) nic = *known;
            if (known == nullptr) nic.mac = {2, 0, 0, 0, 0, index++};
            nic.name = part.name;
            nic.link = part.link.value_or(nic.link);
            nic.speedMbps = part.speedMbps.value_or(nic.speedMbps);
            nic.mtu = part.mtu.value_or(nic.mtu);
            nic.mac = part.mac.value_or(nic.mac);
            require(known != nullptr ? model_.uplinks.setNic(*known, nic) : model_.uplinks.addNic(nic),
                    "NIC " + part.name);
        }
    }

    void setUpSwitch(const Lab::SwitchPart &part) {
        Switch *sw =
            part.id.empty() ? model_.inventory.findAlias(part.alias) : model_.inventory.findSwitch(part.id);
        if (sw == nullptr) {
            sw = &createSwitch(part);
        } else {
            compare(*sw, part);
        }
        for (const std::string &port : part.ports)
            addPort(*sw, port, std::string(8, '\0'));
        addUplinks(*sw, part.uplinks);
        for (const auto &property : part.properties) {
            require(model_.properties.set({property.scope, sw->id, property.port},
                                          {property.key, property.value, property.type}),
                    fmt::format("switch {}, property {}", part.alias, property.key));
        }
    }

    Switch &createSwitch(const Lab::SwitchPart &part) {
        const std::string what = "switch " + part.alias;
        const std::string id = part.id.empty() ? identifierOf(part.alias) : part.id;
        const std::string portset = part.portset.value_or(part.alias);
        const uint32_t version = part.version.value_or(kDefaultVersion);
        const uint32_t maxPorts = part.maxPorts.value_or(kDefaultMaxPorts);
        if (model_.inventory.findPortset(portset) == nullptr) {
            require(model_.dataPaths.addPortset(portset, maxPorts), "portset " + portset);
        }
        require(model_.dataPaths.addSwitch(id, part.className.value_or("vswitch"), maxPorts, version), what);
        set(id, Scope::Global, kAliasKey, terminated(part.alias));
        set(id, Scope::Global, "com.quillon.common.version", u32Bytes(version));
        set(id, Scope::Global, "com.quillon.common.opaqueDvs", terminated("false"));
        set(id, Scope::Host, kPortsetKey, terminated(portset));
        require(model_.dataPaths.associate(id), "portset " + portset);
        return *model_.inventory.findSwitch(id);
    }

    // Checks that an existing switch has the attributes of the lab. A lab can be applied again, but it does
    // not change the attributes of a switch.
    void compare(const Switch &sw, const Lab::SwitchPart &part) {
        const std::string_view portset = sw.host.text(kPortsetKey);
        const bool same = sw.alias() == part.alias && part.className.value_or(sw.className) == sw.className &&
                          part.version.value_or(sw.version) == sw.version &&
                          part.maxPorts.value_or(sw.maxPorts) == sw.maxPorts &&
                          part.portset.value_or(std::string(portset)) == portset;
        if (!same) throw LabError(fmt::format("switch {}: exists already with other attributes", part.alias));
    }

    // Adds a port with the properties that a management tool sets.
    void addPort(Switch &sw, const std::string &name, std::string_view vlan) {
        if (sw.port(name) != nullptr) return;
        const std::string alias = terminated(name);
        const std::string connect = u32Bytes(1);
        const std::string block = terminated("false");
        const std::string statistics(128, '\0');
        const std::vector<PropertyView> properties = {
            {"com.quillon.common.port.alias", alias, kConfig},
            {kConnectIdKey, connect, kConfig},
            {kPortBlockKey, block, kConfig},
            {kStatisticsKey, statistics, kRuntime},
            {kPortVlanKey, vlan, kPolicy},
        };
        require(model_.dataPaths.addPort(sw.id, name, properties), "port " + name);
    }

    void addUplinks(Switch &sw, const std::vector<std::string> &wanted) {
        // Trunk over the VLANs 1 to 4094.
        constexpr std::string_view kTrunk("\1\0\0\0\0\0\1\0\1\0\xfe\x0f", 12);
        std::vector<std::string> names = sw.uplinks;
        for (const std::string &name : wanted) {
            if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
            addPort(sw, name, kTrunk);
        }
        if (names.size() == sw.uplinks.size()) return;
        set(sw.id, Scope::Global, "com.quillon.common.uplinkPorts", nameList(names, 81));
        set(sw.id, Scope::Host, kUplinkPortsKey, nameList(names, 48));
    }

    void attach(const Lab::Client &client) {
        const Switch *sw = model_.inventory.findByName(client.sw);
        if (sw == nullptr) fail("switch " + client.sw, Status::NotFound);
        Port *port = sw->port(client.port);
        if (port == nullptr) fail("port " + client.port, Status::NotFound);
        require(model_.dataPaths.setClient(*port, client.name, client.link), "port " + client.port);
        if (client.mac) setClientMac(model_, *port, *client.mac);
        if (client.attachment) require(attachPort(model_, *port, *client.attachment), "port " + client.port);
    }

    void attachNics(const std::vector<Lab::NicPart> &parts) {
        for (const Lab::NicPart &part : parts) {
            if (part.attachment) attachNic(model_, *model_.inventory.findNic(part.name), *part.attachment);
        }
    }

    void set(const std::string &id, Scope scope, const char *key, const std::string &value) {
        require(model_.properties.set({scope, id, {}}, {key, value, kConfig}), key);
    }

    Model &model_;
};

}  // namespace

void applyLab(const Lab &lab, Model &model, Store &store) {
    bool entered = false;
    try {
        Transaction transaction(store);
        entered = true;
        Laboratory(model).apply(lab);
        transaction.commit();
    } catch (const JsonError &error) {
        model.load();
        throw LabError(error.what());
    } catch (...) {
        // Memory contains changes that were rolled back in the store.
        if (entered) model.load();
        throw;
    }
}

}  // namespace qvs::kernel

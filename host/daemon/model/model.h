// The emulated kernel's switches, ports, portsets and physical NICs. Every change is validated, stored, and
// only then applied to memory.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "daemon/model/counters.h"
#include "daemon/model/device_table.h"
#include "daemon/model/property.h"
#include "daemon/model/status.h"
#include "daemon/model/store.h"
#include "wire/protocol.h"

namespace qvs::kernel {

using wire::Scope;

constexpr char kAliasKey[] = "com.quillon.common.alias";
constexpr char kPortsetKey[] = "com.quillon.common.host.portset";
constexpr char kUplinkPortsKey[] = "com.quillon.common.host.uplinkPorts";
constexpr char kPortBlockKey[] = "com.quillon.common.port.block";
constexpr char kPortStatusKey[] = "com.quillon.common.port.volatile.status";
constexpr size_t kMaxSwitchId = 63;
constexpr size_t kMaxPortId = 47;
constexpr size_t kMaxPortsetName = 127;
constexpr size_t kMaxNicName = 31;
constexpr size_t kMaxAlias = 80;
constexpr uint32_t kMinMtu = 1280;
constexpr uint32_t kMaxMtu = 9000;
constexpr uint32_t kDefaultMtu = 1500;

// Flags of the status property and of port records.
constexpr uint32_t kPortInUse = 1;
constexpr uint32_t kPortLinkUp = 2;
constexpr uint32_t kPortBlocked = 4;

struct Switch;
struct Port;

struct Nic {
    std::string name;
    bool link = true;
    bool admin = true;
    uint32_t speedMbps = 10000;
    uint32_t mtu = kDefaultMtu;
    std::array<uint8_t, 6> mac{};
    Port *port = nullptr;  // the uplink port it is bound to

    bool up() const { return link && admin; }
};

struct Portset {
    uint32_t number = 0;
    std::string name;
    uint32_t capacity = 0;
    uint32_t mtu = kDefaultMtu;
    Switch *owner = nullptr;
};

struct Port {
    // Who answers for the status property: the kernel, until a client sets or clears it, and again from the
    // next change of the port's state on.
    enum class StatusFrom { Kernel, Client };

    uint32_t number = 0;
    Switch *owner = nullptr;
    std::string id;
    PropertyList properties;  // changed by set and clear below
    bool blocked = false;     // as one of them says
    std::string client;
    bool clientLink = false;
    StatusFrom statusFrom = StatusFrom::Kernel;
    bool changed = false;  // has rows of its own among the stored properties
    const Nic *nic = nullptr;
    mutable uint32_t snapshotIndex = 0;  // where the snapshot has put it

    void set(PropertyRef property);
    void clear(std::string_view key);
    bool inUse() const { return nic != nullptr || !client.empty(); }
    bool linkUp() const { return nic != nullptr ? nic->up() : !client.empty() && clientLink; }
    std::string_view clientName() const { return nic != nullptr ? nic->name : client; }
    uint32_t flags() const;
    // The value of the status property as the kernel has it; it is not among `properties` then.
    std::string statusRecord() const;
};

struct Switch {
    int64_t row = 0;
    std::string id;
    std::string className;
    uint32_t maxPorts = 0;
    uint32_t version = 0;
    PropertyList global;
    PropertyList host;
    Portset *portset = nullptr;                   // while associated
    std::pmr::unsynchronized_pool_resource pool;  // keeps what a walk over the ports visits together
    std::pmr::map<uint32_t, std::unique_ptr<Port>> ports{&pool};  // by number: in the order of their creation
    std::unordered_map<std::string_view, Port *> portsById;
    // The entries of the uplink list, in order and for look-up.
    std::vector<std::string> uplinks;
    std::unordered_set<std::string> uplinkSet;
    mutable uint32_t snapshotIndex = 0;

    void setUplinks(std::vector<std::string> names);
    Port *port(std::string_view portId) const;
    std::string_view alias() const { return global.text(kAliasKey); }
};

// Where a property lives.
struct Place {
    Scope scope = Scope::Global;
    std::string_view switchId;
    std::string_view portId;
};

// The names in the host's uplink list: u32 count, then 48-byte names.
std::vector<std::string> parseUplinkPorts(std::string_view value);

class Model {
  public:
    // The tables that devices keep are read with everything else.
    Model(Store &store, std::vector<const AnyTable *> deviceTables);
    Model(const Model &) = delete;
    Model &operator=(const Model &) = delete;

    // Everything anew from the store, for start-up and after a rollback of more than one change.
    void load();
    // An empty host with its default NICs, as new.
    void reset();
    // True while no portset and no switch was made.
    bool empty() const { return switches_.empty() && portsets_.empty(); }

    // Grows with every change: what was derived from the model is stale when this differs.
    uint64_t generation() const { return generation_; }
    // What was changed since this was last asked for: properties of these alone, or anything.
    struct Touched {
        bool anything = true;
        std::vector<const Switch *> switches;
        std::vector<const Port *> ports;
    };
    Touched takeTouched() {
        return std::exchange(touched_, Touched{.anything = false, .switches = {}, .ports = {}});
    }

    Status addSwitch(std::string_view id, std::string_view className, uint32_t maxPorts, uint32_t version);
    Status associate(std::string_view id);
    Status dissociate(std::string_view id);
    Status removeSwitch(std::string_view id);
    Status addPort(std::string_view switchId, std::string_view portId,
                   const std::vector<PropertyView> &properties);
    Status removePort(std::string_view switchId, std::string_view portId);
    Status property(const Place &place, std::string_view key, std::string *value) const;
    // The stored one as it is, to be shared; null for none, and for what the kernel itself answers.
    PropertyRef sharedProperty(const Place &place, std::string_view key) const;
    Status setProperty(const Place &place, const PropertyView &property);
    Status clearProperty(const Place &place, std::string_view key);
    // Someone takes the port, or leaves it (empty name).
    Status setClient(Port &port, std::string_view name, bool link);

    Status addPortset(std::string_view name, uint32_t capacity);
    Status removePortset(std::string_view name);
    Status setPortsetMtu(Portset &portset, uint32_t mtu);

    // Stores and applies a NIC's new attributes; name and binding stay.
    Status setNic(Nic &nic, const Nic &to);
    Status addNic(const Nic &nic);
    // Only on a host without bound uplinks.
    void clearNics();

    // Switches in the order of their creation, portsets by number, NICs in order.
    const std::map<int64_t, std::unique_ptr<Switch>> &switches() const { return switches_; }
    const std::map<uint32_t, std::unique_ptr<Portset>> &portsets() const { return portsets_; }
    const std::vector<std::unique_ptr<Nic>> &nics() const { return nics_; }
    size_t portCount() const { return ports_.size(); }
    Switch *findSwitch(std::string_view id) const;
    // The first switch whose alias begins with the same kMaxAlias characters.
    Switch *findAlias(std::string_view alias) const;
    Portset *findPortset(std::string_view name) const;
    Port *findPort(uint32_t number) const;
    Nic *findNic(std::string_view name) const;
    // The bound NICs of a switch in the order of its uplink list.
    std::vector<const Nic *> boundNics(const Switch &sw) const;

    // What a device keeps beyond the model: the rows of its tables, stored like everything else.
    template <typename Key, typename Value>
    const std::map<Key, Value> &rows(const Table<Key, Value> &table) const {
        return storedRows(table).rows;
    }
    template <typename Key, typename Value>
    void setRow(const Table<Key, Value> &table, const std::type_identity_t<Key> &key,
                const std::type_identity_t<Value> &value) {
        setRows(table, {{key, value}});
    }
    template <typename Key, typename Value>
    void clearRow(const Table<Key, Value> &table, const std::type_identity_t<Key> &key) {
        clearRows(table, std::vector<Key>{key});
    }
    // Several rows as one change.
    template <typename Key, typename Value>
    void setRows(const Table<Key, Value> &table, const std::type_identity_t<std::map<Key, Value>> &changed) {
        Transaction transaction(store_);
        for (const auto &[key, value] : changed)
            storeRow(table, table.keyText(key), table.valueBytes(value));
        transaction.commit();
        for (const auto &[key, value] : changed)
            storedRows(table).rows.insert_or_assign(key, value);
    }
    template <typename Key, typename Value>
    void clearRows(const Table<Key, Value> &table, const std::type_identity_t<std::vector<Key>> &keys) {
        Transaction transaction(store_);
        for (const Key &key : keys)
            removeStoredRow(table, table.keyText(key));
        transaction.commit();
        for (const Key &key : keys)
            storedRows(table).rows.erase(key);
    }

    // What the counters of an object stand at now; each look moves them on.
    CounterRow readCounters(std::string_view object) { return counters_.read(object); }
    void seedCounters(uint32_t seed);
    // Someone is about to look at the statistics of a port, at a property, or at everything: the statistics
    // of busy ports have grown.
    void look(Port &port);
    void look(const Place &place, std::string_view key);
    void lookAtAll();

  private:
    // Which NIC is to serve which port number (0: none), where that changes.
    using Bindings = std::vector<std::pair<Nic *, uint32_t>>;
    using FindNumber = std::function<uint32_t(std::string_view portId)>;

    static FindNumber numbersOf(const Switch &sw);
    Bindings planBindings(const Switch &sw, const std::vector<std::string> &uplinks,
                          const FindNumber &find) const;
    void storeBindings(const Bindings &bindings);
    void applyBindings(const Bindings &bindings);
    void storeNic(const Nic &nic, const Nic &to, uint32_t port);
    void storeStatusReturn(const Port &port);
    void applyStatusReturn(Port &port);

    Port &insertPort(Switch &sw, uint32_t number, std::string_view id);
    Status portProperty(const Port &port, std::string_view key, std::string *value) const;
    void insertAlias(Switch &sw);
    void eraseAlias(Switch &sw);
    // `property` is null when the key is cleared.
    Status changeProperty(const Place &place, std::string_view key, const PropertyView *property);
    Status changeSwitchProperty(Switch &sw, Scope scope, std::string_view key, const PropertyView *property);
    Status changePortProperty(Port &port, std::string_view key, const PropertyView *property);
    void removeStoredPort(const Port &port);
    void changed();
    void touch(const Switch &sw);
    void touch(const Port &port);
    void limitTouched();

    template <typename Key, typename Value>
    typename Table<Key, Value>::Stored &storedRows(const Table<Key, Value> &table) const {
        return static_cast<typename Table<Key, Value>::Stored &>(*tables_.find(table.name())->second);
    }
    void storeRow(const AnyTable &table, std::string_view key, std::string_view value);
    void removeStoredRow(const AnyTable &table, std::string_view key);

    void loadTables();
    void loadSwitches();
    void loadPorts();
    void loadNics();

    Store &store_;
    std::vector<const AnyTable *> deviceTables_;
    PropertyPool pool_;
    std::map<int64_t, std::unique_ptr<Switch>> switches_;
    std::unordered_map<std::string_view, Switch *> switchesById_;
    std::unordered_map<std::string, std::vector<Switch *>> switchesByAlias_;
    std::map<uint32_t, std::unique_ptr<Portset>> portsets_;
    std::unordered_map<std::string_view, Portset *> portsetsByName_;
    std::unordered_map<uint32_t, Port *> ports_;
    std::vector<std::unique_ptr<Nic>> nics_;
    std::map<std::string_view, std::unique_ptr<AnyRows>> tables_;
    Counters counters_;
    uint32_t nextPort_ = 0;
    uint64_t generation_ = 0;
    Touched touched_;
};

}  // namespace qvs::kernel

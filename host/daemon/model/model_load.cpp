// The model read from the store, and an empty host.
#include <algorithm>
#include <cstring>

#include <fmt/format.h>

#include "daemon/model/model.h"
#include "daemon/model/stored_properties.h"
#include "daemon/model/text.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kFirstPort = 0x4000001;
constexpr uint8_t kDefaultNics = 4;

// What the host itself keeps among the tables of devices: the seed of its counters.
constexpr const char *kHostNames[] = {"seed"};
constexpr Table<std::string, uint64_t> kHostTable("host", kNameOf<kHostNames>, kDecimal);

[[noreturn]] void damaged(const Store &store, const std::string &what) {
    store.refuse("the database is inconsistent: " + what);
}

}  // namespace

Model::Model(Store &store, std::vector<const AnyTable *> deviceTables)
    : store_(store), deviceTables_(std::move(deviceTables)) {
    bool known = false;
    store_.each(Sql::GetNextPort, [&known](const Row &) { known = true; });
    if (known) {
        load();
    } else {
        reset();
    }
}

void Model::reset() {
    Transaction transaction(store_);
    for (const Sql sql : {Sql::ClearNics, Sql::ClearPortsets, Sql::ClearSwitches, Sql::ClearSwitchProperties,
                          Sql::ClearPorts, Sql::ClearPortProperties, Sql::ClearDeviceValues}) {
        store_.run(sql);
    }
    store_.run(Sql::SetNextPort, kFirstPort);
    for (uint8_t i = 0; i < kDefaultNics; ++i) {
        const char mac[] = {2, 0, 0, 0, 0, static_cast<char>(i)};
        const Nic nic;
        store_.run(Sql::AddNic, uint32_t{i}, std::string_view(fmt::format("pnic{}", i)), nic.link, nic.admin,
                   nic.speedMbps, nic.mtu, std::string_view(mac, sizeof mac), 0u);
    }
    transaction.commit();
    load();
}

void Model::load() {
    changed();
    switchesById_.clear();
    switchesByAlias_.clear();
    portsetsByName_.clear();
    ports_.clear();
    nics_.clear();
    switches_.clear();
    portsets_.clear();
    tables_.clear();

    store_.each(Sql::AllPortsets, [this](const Row &row) {
        auto portset = std::make_unique<Portset>();
        portset->number = row.u32(0);
        portset->name = row.text(1);
        portset->capacity = row.u32(2);
        portset->mtu = row.u32(3);
        portsetsByName_.emplace(portset->name, portset.get());
        portsets_.emplace(portset->number, std::move(portset));
    });
    loadSwitches();
    loadPorts();
    loadNics();
    loadTables();
    const auto &host = rows(kHostTable);
    counters_.seed(host.empty() ? 1 : host.begin()->second);
}

void Model::loadTables() {
    tables_.emplace(kHostTable.name(), kHostTable.noRows());
    for (const AnyTable *table : deviceTables_)
        tables_.emplace(table->name(), table->noRows());
    store_.each(Sql::AllDeviceValues, [this](const Row &row) {
        const std::string table = row.text(0);
        const std::string key = row.text(1);
        const auto known = tables_.find(table);
        if (known == tables_.end() || !known->second->read(key, row.bytes(2)))
            damaged(store_, fmt::format("row {} of the table {} makes no sense", quote(key), quote(table)));
    });
}

void Model::seedCounters(uint32_t seed) {
    setRow(kHostTable, kHostNames[0], seed);
    counters_.seed(seed);
}

void Model::loadSwitches() {
    store_.each(Sql::AllSwitches, [this](const Row &row) {
        auto sw = std::make_unique<Switch>();
        sw->row = row.integer(0);
        sw->id = row.text(1);
        sw->className = row.text(2);
        sw->maxPorts = row.u32(3);
        sw->version = row.u32(4);
        if (const uint32_t number = row.u32(5); number != 0) {
            const auto portset = portsets_.find(number);
            if (portset == portsets_.end()) damaged(store_, fmt::format("portset {} is missing", number));
            sw->portset = portset->second.get();
            sw->portset->owner = sw.get();
        }
        switchesById_.emplace(sw->id, sw.get());
        switches_.emplace(sw->row, std::move(sw));
    });
    store_.each(Sql::AllSwitchProperties, [this](const Row &row) {
        const auto sw = switches_.find(row.integer(0));
        if (sw == switches_.end()) damaged(store_, fmt::format("switch {} is missing", row.integer(0)));
        PropertyList &list =
            row.u32(1) == static_cast<uint32_t>(Scope::Global) ? sw->second->global : sw->second->host;
        list.set(pool_.intern({row.bytes(2), row.bytes(3), row.u32(4)}));
    });
    for (const auto &[row, sw] : switches_) {
        insertAlias(*sw);
        if (const Property *list = sw->host.find(kUplinkPortsKey))
            sw->setUplinks(parseUplinkPorts(list->value));
    }
}

void Model::loadPorts() {
    nextPort_ = kFirstPort;
    store_.each(Sql::GetNextPort, [this](const Row &row) { nextPort_ = std::max(nextPort_, row.u32(0)); });
    Switch *owner = nullptr;
    store_.each(Sql::AllPorts, [&](const Row &row) {
        const uint32_t number = row.u32(0);
        if (owner == nullptr || owner->row != row.integer(1)) {
            const auto sw = switches_.find(row.integer(1));
            if (sw == switches_.end())
                damaged(store_, fmt::format("port {:#x} belongs to no switch", number));
            owner = sw->second.get();
        }
        Port &port = insertPort(*owner, number, row.bytes(2));
        port.client = row.text(3);
        port.clientLink = row.integer(4) != 0;
        const bool whole = unpackStored(row.bytes(5), [&](const PropertyView &property) {
            if (property.key != kPortStatusKey) port.set(pool_.intern(property));
        });
        if (!whole) damaged(store_, fmt::format("the properties of port {:#x} are damaged", number));
        nextPort_ = std::max(nextPort_, number + 1);
    });
    store_.each(Sql::AllPortProperties, [this](const Row &row) {
        Port *port = findPort(row.u32(0));
        if (port == nullptr) damaged(store_, fmt::format("port {:#x} is missing", row.u32(0)));
        const std::string_view key = row.bytes(1);
        port->changed = true;
        if (key == kPortStatusKey) port->statusFrom = Port::StatusFrom::Client;
        if (row.null(2)) {
            port->clear(key);
        } else {
            // The key is passed on before the value's column is read, and both stay valid for this row.
            port->set(pool_.intern({key, row.bytes(2), row.u32(3)}));
        }
    });
}

void Model::loadNics() {
    store_.each(Sql::AllNics, [this](const Row &row) {
        auto nic = std::make_unique<Nic>();
        nic->name = row.text(0);
        nic->link = row.integer(1) != 0;
        nic->admin = row.integer(2) != 0;
        nic->speedMbps = row.u32(3);
        nic->mtu = row.u32(4);
        const std::string_view mac = row.bytes(5);
        if (mac.size() != nic->mac.size()) damaged(store_, fmt::format("the address of NIC {}", nic->name));
        std::memcpy(nic->mac.data(), mac.data(), mac.size());
        if (const uint32_t number = row.u32(6); number != 0) {
            nic->port = findPort(number);
            if (nic->port == nullptr) damaged(store_, fmt::format("NIC {} serves no port", nic->name));
            nic->port->nic = nic.get();
        }
        nics_.push_back(std::move(nic));
    });
}

}  // namespace qvs::kernel

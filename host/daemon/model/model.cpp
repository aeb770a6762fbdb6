// SPDX-License-Identifier: Apache-2.0
// The model as a whole: read from the store, emptied, seeded.
#include "daemon/model/model.h"

#include <fmt/format.h>

#include "daemon/model/text.h"

namespace qvs::kernel {

namespace {

constexpr uint8_t kDefaultNics = 4;

// What the host itself keeps among the tables of devices: the seed of its counters.
constexpr const char *kHostNames[] = {"seed"};
constexpr Table<std::string, uint64_t> kHostTable("host", kNameOf<kHostNames>, kDecimal);

std::vector<const AnyTable *> withHostTable(std::vector<const AnyTable *> tables) {
    tables.push_back(&kHostTable);
    return tables;
}

}  // namespace

Model::Model(Store &from, std::vector<const AnyTable *> deviceTables)
    : store(from), tables(from, withHostTable(std::move(deviceTables))) {
    bool known = false;
    store.each(Sql::GetNextPort, [&known](const Row &) { known = true; });
    if (known) {
        load();
    } else {
        reset();
    }
}

void Model::reset() {
    Transaction transaction(store);
    for (const Sql sql : {Sql::ClearNics, Sql::ClearPortsets, Sql::ClearSwitches, Sql::ClearSwitchProperties,
                          Sql::ClearPorts, Sql::ClearPortProperties, Sql::ClearDeviceValues}) {
        store.run(sql);
    }
    store.run(Sql::SetNextPort, Inventory::kFirstPort);
    for (uint8_t i = 0; i < kDefaultNics; ++i) {
        Nic nic;
        nic.mac = {2, 0, 0, 0, 0, i};
        store.run(Sql::AddNic, uint32_t{i}, std::string_view(fmt::format("pnic{}", i)), nic.link, nic.admin,
                  nic.speedMbps, nic.mtu, bytesOf(nic.mac), 0u);
    }
    transaction.commit();
    load();
}

void Model::load() {
    changes.all();
    inventory.clear();
    loadInventory(store, &inventory);
    tables.load();
    const uint64_t *seed = tables.only(kHostTable);
    counters.seed(seed == nullptr ? 1 : *seed);
}

void Model::seedCounters(uint32_t seed) {
    tables.setRow(kHostTable, kHostNames[0], seed);
    counters.seed(seed);
}

void DeviceTables::load() {
    rows_.clear();
    for (const AnyTable *table : tables_)
        rows_.emplace(table->name(), table->noRows());
    store_.each(Sql::AllDeviceValues, [this](const Row &row) {
        const std::string table = row.text(0);
        const std::string key = row.text(1);
        const auto known = rows_.find(table);
        if (known == rows_.end() || !known->second->read(key, row.bytes(2)))
            refuseDamaged(store_,
                          fmt::format("row {} of the table {} makes no sense", quote(key), quote(table)));
    });
}

}  // namespace qvs::kernel

// SPDX-License-Identifier: Apache-2.0
// Reads, empties and seeds the model.
#include "daemon/model/model.h"

#include <fmt/format.h>

#include "daemon/model/text.h"

namespace qvs::kernel {

namespace {

constexpr uint8_t kDefaultNics = 4;

// The seed of the counters is kept among the tables of the devices.
constexpr Setting<uint64_t> kSeed("host", "seed", kNumber<uint64_t>);

std::vector<const AnyTable *> withSeed(std::vector<const AnyTable *> tables) {
    tables.push_back(&kSeed);
    return tables;
}

}  // namespace

Model::Model(Store &from, std::vector<const AnyTable *> deviceTables)
    : store(from), tables(from, withSeed(std::move(deviceTables))) {
    bool known = false;
    store.each(kGetNextPort, [&known](const Row &) { known = true; });
    if (known) {
        load();
    } else {
        reset();
    }
}

void Model::reset() {
    Transaction transaction(store);
    store.clear();
    store.run(kSetNextPort, Inventory::kFirstPort);
    for (uint8_t i = 0; i < kDefaultNics; ++i) {
        Nic nic;
        nic.mac = {2, 0, 0, 0, 0, i};
        store.run(kAddNic, uint32_t{i}, std::string_view(fmt::format("pnic{}", i)), nic.link, nic.admin,
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
    counters.seed(tables.get(kSeed).value_or(1));
}

void Model::seedCounters(uint32_t seed) {
    tables.set(kSeed, seed);
    counters.seed(seed);
}

void DeviceTables::load() {
    rows_.clear();
    ++generation_;
    for (const AnyTable *table : tables_)
        rows_.emplace(table->name(), table->noRows());
    store_.each(kAllDeviceValues, [this](const Row &row) {
        const std::string table = row.text(0);
        const std::string key = row.text(1);
        const auto known = rows_.find(table);
        if (known == rows_.end() || !known->second->read(key, row.bytes(2)))
            refuseDamaged(store_, fmt::format("row {} of the table {} is invalid", quote(key), quote(table)));
    });
}

}  // namespace qvs::kernel

// SPDX-License-Identifier: Apache-2.0
// The rows of all tables of the devices, in memory and in the store.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <type_traits>
#include <vector>

#include "daemon/model/device_table.h"
#include "daemon/model/store.h"

namespace qvs::kernel {

class DeviceTables {
  public:
    DeviceTables(Store &store, std::vector<const AnyTable *> tables)
        : store_(store), tables_(std::move(tables)) {}
    // Reads all rows from the store again.
    void load();
    // Returns a number that grows with every change of a row.
    uint64_t generation() const { return generation_; }

    template <typename Key, typename Value>
    const std::map<Key, Value> &rows(const Table<Key, Value> &table) const {
        return stored(table).rows;
    }
    template <typename Value>
    const std::optional<Value> &get(const Setting<Value> &setting) const {
        return stored(setting).value;
    }
    template <typename Value>
    void set(const Setting<Value> &setting, const std::type_identity_t<Value> &value) {
        store_.change(kSetDeviceValue, std::string_view(setting.name()), std::string_view(setting.key()),
                      std::string_view(setting.valueBytes(value)));
        stored(setting).value = value;
        ++generation_;
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
    // Change several rows in one transaction.
    template <typename Key, typename Value>
    void setRows(const Table<Key, Value> &table, const std::type_identity_t<std::map<Key, Value>> &changed) {
        Transaction transaction(store_);
        for (const auto &[key, value] : changed)
            store_.run(kSetDeviceValue, std::string_view(table.name()), std::string_view(table.keyText(key)),
                       std::string_view(table.valueBytes(value)));
        transaction.commit();
        for (const auto &[key, value] : changed)
            stored(table).rows.insert_or_assign(key, value);
        ++generation_;
    }
    template <typename Key, typename Value>
    void clearRows(const Table<Key, Value> &table, const std::type_identity_t<std::vector<Key>> &keys) {
        Transaction transaction(store_);
        for (const Key &key : keys)
            store_.run(kRemoveDeviceValue, std::string_view(table.name()),
                       std::string_view(table.keyText(key)));
        transaction.commit();
        for (const Key &key : keys)
            stored(table).rows.erase(key);
        ++generation_;
    }

  private:
    template <typename Kind>
    typename Kind::Stored &stored(const Kind &table) const {
        return static_cast<typename Kind::Stored &>(*rows_.find(table.name())->second);
    }

    Store &store_;
    std::vector<const AnyTable *> tables_;
    uint64_t generation_ = 0;
    std::map<std::string_view, std::unique_ptr<AnyRows>> rows_;
};

}  // namespace qvs::kernel

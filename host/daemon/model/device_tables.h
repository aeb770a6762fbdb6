// SPDX-License-Identifier: Apache-2.0
// The rows of all tables that devices keep, in memory and in the store.
#pragma once

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
    // Everything anew from the store.
    void load();

    template <typename Key, typename Value>
    const std::map<Key, Value> &rows(const Table<Key, Value> &table) const {
        return stored(table).rows;
    }
    // The value of a table with one row at most; null for none.
    template <typename Key, typename Value>
    const Value *only(const Table<Key, Value> &table) const {
        return rows(table).empty() ? nullptr : &rows(table).begin()->second;
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
            store_.run(Sql::SetDeviceValue, std::string_view(table.name()),
                       std::string_view(table.keyText(key)), std::string_view(table.valueBytes(value)));
        transaction.commit();
        for (const auto &[key, value] : changed)
            stored(table).rows.insert_or_assign(key, value);
    }
    template <typename Key, typename Value>
    void clearRows(const Table<Key, Value> &table, const std::type_identity_t<std::vector<Key>> &keys) {
        Transaction transaction(store_);
        for (const Key &key : keys)
            store_.run(Sql::RemoveDeviceValue, std::string_view(table.name()),
                       std::string_view(table.keyText(key)));
        transaction.commit();
        for (const Key &key : keys)
            stored(table).rows.erase(key);
    }

  private:
    template <typename Key, typename Value>
    typename Table<Key, Value>::Stored &stored(const Table<Key, Value> &table) const {
        return static_cast<typename Table<Key, Value>::Stored &>(*rows_.find(table.name())->second);
    }

    Store &store_;
    std::vector<const AnyTable *> tables_;
    std::map<std::string_view, std::unique_ptr<AnyRows>> rows_;
};

}  // namespace qvs::kernel

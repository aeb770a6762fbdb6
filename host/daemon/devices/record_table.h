// SPDX-License-Identifier: Apache-2.0
// Tables of numbered records. A record starts with the number of its port (0: none) and is ignored when that
// port no longer exists.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "daemon/devices/device.h"

namespace qvs::kernel {

using RecordTable = Table<uint32_t, std::string>;

inline bool isAlive(const Model &model, std::string_view record) {
    const uint32_t port = u32At(record, 0);
    return port == 0 || model.inventory.findPort(port) != nullptr;
}

// Calls `visit` with number and record of each record whose port exists.
template <typename Visit>
void eachRecord(const Model &model, const RecordTable &table, const Visit &visit) {
    for (const auto &[number, record] : model.tables.rows(table)) {
        if (isAlive(model, record)) visit(number, std::string_view(record));
    }
}

inline size_t countRecords(const Model &model, const RecordTable &table) {
    size_t count = 0;
    eachRecord(model, table, [&](uint32_t, std::string_view) { ++count; });
    return count;
}

// Adds a record under the next number.
inline void appendRecord(Model &model, const RecordTable &table, std::string_view record) {
    model.tables.setRow(table, nextNumber(model.tables.rows(table)), std::string(record));
}

// Returns the number of rows that can be added.
template <typename Key, typename Value>
size_t roomIn(const Model &model, const Table<Key, Value> &table) {
    return table.room() - model.tables.rows(table).size();
}

// Removes the rows that satisfy the condition, in one transaction.
template <typename Key, typename Value, typename Condition>
void removeRows(Model &model, const Table<Key, Value> &table, const Condition &condition) {
    std::vector<Key> gone;
    for (const auto &[key, value] : model.tables.rows(table)) {
        if (condition(key, value)) gone.push_back(key);
    }
    if (!gone.empty()) model.tables.clearRows(table, gone);
}

template <typename Key, typename Value>
void clearTable(Model &model, const Table<Key, Value> &table) {
    removeRows(model, table, [](const auto &, const auto &) { return true; });
}

// Removes the records whose port no longer exists.
inline void dropDeadRecords(Model &model, const RecordTable &table) {
    removeRows(model, table, [&](uint32_t, std::string_view record) { return !isAlive(model, record); });
}

}  // namespace qvs::kernel

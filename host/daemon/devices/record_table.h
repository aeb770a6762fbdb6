// SPDX-License-Identifier: Apache-2.0
// Rows of tables that go when a condition says so, and tables of numbered records: each begins with the
// kernel's number of the port that it belongs to, 0 for none, and goes when that port goes.
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

// Visits number and record of all that are left, in order.
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

// Numbers are given from 1 up; that of the last record is the highest that is taken.
inline void appendRecord(Model &model, const RecordTable &table, std::string_view record) {
    model.tables.setRow(table, nextNumber(model.tables.rows(table)), std::string(record));
}

// How many rows there is room for.
template <typename Key, typename Value>
size_t roomIn(const Model &model, const Table<Key, Value> &table) {
    return table.room() - model.tables.rows(table).size();
}

// The rows of any table that the condition finds by key and value go, as one change.
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

// Records whose port is gone make room.
inline void dropDeadRecords(Model &model, const RecordTable &table) {
    removeRows(model, table, [&](uint32_t, std::string_view record) { return !isAlive(model, record); });
}

}  // namespace qvs::kernel

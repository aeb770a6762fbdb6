// Tables among the values of devices, and those of numbered records, with the number as their key: each
// record begins with the kernel's number of the port that it belongs to, 0 for none: it goes when that port
// goes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "kernel/device.h"

namespace qvs::kernel {

inline bool isAlive(const Model &model, std::string_view record) {
    const uint32_t port = u32At(record, 0);
    return port == 0 || model.findPort(port) != nullptr;
}

// Visits number and record of all that are left, in order.
template <typename Visit>
void eachRecord(const Model &model, std::string_view table, const Visit &visit) {
    for (const auto &[number, record] : model.deviceValues(table)) {
        if (isAlive(model, record))
            visit(static_cast<uint32_t>(std::stoul(number)), std::string_view(record));
    }
}

inline size_t countRecords(const Model &model, std::string_view table) {
    size_t count = 0;
    eachRecord(model, table, [&](uint32_t, std::string_view) { ++count; });
    return count;
}

// Numbers are given from 1 up; that of the last record is the highest that is taken.
inline void appendRecord(Model &model, std::string_view table, std::string_view record) {
    const auto &records = model.deviceValues(table);
    const unsigned long number = records.empty() ? 1 : std::stoul(records.rbegin()->first) + 1;
    model.setDeviceValue(table, fmt::format("{:010}", number), record);
}

// The rows of any table that the condition finds by key and value go, as one change.
template <typename Condition>
void removeRows(Model &model, std::string_view table, const Condition &condition) {
    std::vector<std::string> gone;
    for (const auto &[key, value] : model.deviceValues(table)) {
        if (condition(key, value)) gone.push_back(key);
    }
    if (!gone.empty()) model.clearDeviceValues(table, gone);
}

inline void clearTable(Model &model, std::string_view table) {
    removeRows(model, table, [](const auto &, const auto &) { return true; });
}

// Records whose port is gone make room.
inline void dropDeadRecords(Model &model, std::string_view table) {
    removeRows(model, table, [&](const auto &, std::string_view record) { return !isAlive(model, record); });
}

}  // namespace qvs::kernel

// SPDX-License-Identifier: Apache-2.0
#include "config/api/report.h"

#include <cstdlib>

#include "config/library/status.h"

namespace {

// As the state library says that there is no host.
constexpr HYP_ReturnStatus kNoConnection = 0xbad0040u;

// The report that receives warnings; null when no function of the interface runs.
QVSConfig_Report *collecting = nullptr;

void collect(std::string_view text) {
    constexpr std::string_view kPrefix = "warning: ";
    if (text.starts_with(kPrefix)) text.remove_prefix(kPrefix.size());
    if (collecting != nullptr) collecting->add(QVSCONFIG_WARNING, text);
}

uint32_t kindOf(const qvs::config::Change &change) {
    switch (change.kind) {
        case qvs::config::Change::Kind::Added:
            return QVSCONFIG_ADDED;
        case qvs::config::Change::Kind::Removed:
            return QVSCONFIG_REMOVED;
        case qvs::config::Change::Kind::Changed:
            break;
    }
    return QVSCONFIG_CHANGED;
}

}  // namespace

void QVSConfig_Report::add(uint32_t kind, std::string_view text) {
    entries.push_back({kind, 0, 0, {}, std::string(text), {}, {}});
}

void QVSConfig_Report::add(const qvs::config::Problem &problem, uint32_t kind) {
    Entry entry;
    entry.kind = kind;
    entry.line = static_cast<uint32_t>(problem.line);
    entry.column = static_cast<uint32_t>(problem.column);
    entry.path = problem.path;
    entry.text = problem.text;
    entries.push_back(std::move(entry));
}

void QVSConfig_Report::add(const qvs::config::Change &change) {
    entries.push_back({kindOf(change), 0, 0, change.path(), {}, change.beforeText, change.afterText});
}

namespace qvs::config {

HYP_ReturnStatus statusOf(const Failure &failure) {
    switch (failure.exit) {
        case Exit::Success:
            return HYP_OK;
        case Exit::Usage:
            return HYP_BAD_PARAM;
        case Exit::NotFound:
            return HYP_NOT_FOUND;
        case Exit::Differs:
        case Exit::Locked:
        case Exit::NotConfirmed:
            return HYP_EXISTS;
        case Exit::NoHost:
            return kNoConnection;
        case Exit::NoAnswer:
            return kTimedOut;
        case Exit::Failed:
            break;
    }
    return HYP_FAILURE;
}

WarningsInto::WarningsInto(QVSConfig_Report &report) {
    collecting = &report;
    onWarning = collect;
}

WarningsInto::~WarningsInto() {
    onWarning = nullptr;
    collecting = nullptr;
}

}  // namespace qvs::config

void QVSConfig_FreeText(char *text) {
    std::free(text);
}

void QVSConfig_FreeReport(QVSConfig_Report *report) {
    delete report;
}

uint32_t QVSConfig_CountEntries(const QVSConfig_Report *report) {
    return report == nullptr ? 0 : static_cast<uint32_t>(report->entries.size());
}

HYP_ReturnStatus QVSConfig_GetEntry(const QVSConfig_Report *report, uint32_t index, QVSConfig_Entry *entry) {
    if (report == nullptr || entry == nullptr) return HYP_BAD_PARAM;
    if (index >= report->entries.size()) return HYP_NOT_FOUND;
    const QVSConfig_Report::Entry &from = report->entries[index];
    *entry = {from.kind,         from.line,           from.column,       from.path.c_str(),
              from.text.c_str(), from.before.c_str(), from.after.c_str()};
    return HYP_OK;
}

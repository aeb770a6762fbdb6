// SPDX-License-Identifier: Apache-2.0
// Reports of the C interface, and the frame of the functions that make them.
#pragma once

#include <qvs/config.h>

#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "config/document/diff.h"
#include "config/document/problem.h"

struct QVSConfig_Report {
    struct Entry {
        uint32_t kind = QVSCONFIG_ERROR;
        uint32_t line = 0;
        uint32_t column = 0;
        std::string path;
        std::string text;
        std::string before;
        std::string after;
    };
    std::vector<Entry> entries;

    void add(uint32_t kind, std::string_view text);
    void add(const qvs::config::Problem &problem, uint32_t kind = QVSCONFIG_ERROR);
    void add(const qvs::config::Change &change);
};

namespace qvs::config {

// Returns the status that corresponds to a failure.
HYP_ReturnStatus statusOf(const Failure &failure);

// Collects the warnings of the libraries in a report while it exists.
class WarningsInto {
  public:
    explicit WarningsInto(QVSConfig_Report &report);
    ~WarningsInto();
    WarningsInto(const WarningsInto &) = delete;
    WarningsInto &operator=(const WarningsInto &) = delete;
};

// Runs body(report), which returns a status, and passes the report to the caller. An exception becomes an
// error in the report, and a status.
template <typename Body>
HYP_ReturnStatus reported(QVSConfig_Report **out, Body body) noexcept {
    if (out != nullptr) *out = nullptr;
    try {
        auto report = std::make_unique<QVSConfig_Report>();
        HYP_ReturnStatus status = HYP_OK;
        try {
            const WarningsInto collected(*report);
            status = body(*report);
        } catch (const Failure &failure) {
            report->add(QVSCONFIG_ERROR, failure.message);
            status = statusOf(failure);
        }
        if (out != nullptr) *out = report.release();
        return status;
    } catch (const std::bad_alloc &) {
        return HYP_NO_MEMORY;
    } catch (...) {
        return HYP_FAILURE;
    }
}

}  // namespace qvs::config

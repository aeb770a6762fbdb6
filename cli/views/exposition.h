// SPDX-License-Identifier: Apache-2.0
// Metrics in the text format of Prometheus, version 0.0.4.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "views/metric_table.h"

namespace qvs::cli {

// The labels of a line as the format writes them: switch="sw1",port="web". A name is shown as elsewhere and
// then escaped, so that what is not UTF-8 or does not print does not spoil the page.
std::string labelled(std::initializer_list<std::pair<std::string_view, std::string_view>> labels);

// The lines of a page. A page has each family in one piece, whatever the order in which its lines come.
class Exposition {
  public:
    Exposition() : lines_(std::size(kMetrics)) {}

    void add(size_t metric, std::string_view labels, uint64_t value) { add(metric, labels, {}, value); }
    // With two runs of labels, either of which may be empty.
    void add(size_t metric, std::string_view labels, std::string_view more, uint64_t value);
    void addSeconds(size_t metric, double seconds);
    // A line for people, behind the families.
    void remark(std::string_view text);

    void appendTo(fmt::memory_buffer &page) const;

  private:
    fmt::memory_buffer &begin(size_t metric, std::string_view labels, std::string_view more);

    std::vector<fmt::memory_buffer> lines_;  // of each metric
    std::string remarks_;
};

}  // namespace qvs::cli

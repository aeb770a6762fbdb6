// SPDX-License-Identifier: Apache-2.0
#include "views/exposition.h"

#include <iterator>

#include "base/text.h"

namespace qvs::cli {
namespace {

void append(fmt::memory_buffer &out, std::string_view text) {
    out.append(text.data(), text.data() + text.size());
}

// Texts that have been shown have no line ends.
void appendEscaped(std::string &out, std::string_view text) {
    for (const char c : text) {
        if (c == '\\' || c == '"') out += '\\';
        out += c;
    }
}

}  // namespace

std::string labelled(std::initializer_list<std::pair<std::string_view, std::string_view>> labels) {
    std::string text;
    for (const auto &[name, value] : labels) {
        if (!text.empty()) text += ',';
        text.append(name).append("=\"");
        appendEscaped(text, shown(value));
        text += '"';
    }
    return text;
}

fmt::memory_buffer &Exposition::begin(size_t metric, std::string_view labels, std::string_view more) {
    fmt::memory_buffer &out = lines_[metric];
    append(out, kMetrics[metric].name);
    if (!labels.empty() || !more.empty()) {
        out.push_back('{');
        append(out, labels);
        if (!labels.empty() && !more.empty()) out.push_back(',');
        append(out, more);
        out.push_back('}');
    }
    out.push_back(' ');
    return out;
}

void Exposition::add(size_t metric, std::string_view labels, std::string_view more, uint64_t value) {
    fmt::memory_buffer &out = begin(metric, labels, more);
    append(out, fmt::format_int(value).c_str());
    out.push_back('\n');
}

void Exposition::addSeconds(size_t metric, double seconds) {
    fmt::format_to(std::back_inserter(begin(metric, {}, {})), "{:.6f}\n", seconds);
}

void Exposition::remark(std::string_view text) {
    remarks_ += fmt::format("# {}\n", text);
}

void Exposition::appendTo(fmt::memory_buffer &page) const {
    for (size_t i = 0; i < lines_.size(); i++) {
        if (lines_[i].size() == 0) continue;
        const Metric &metric = kMetrics[i];
        fmt::format_to(std::back_inserter(page), "# HELP {0} {1}\n# TYPE {0} {2}\n", metric.name, metric.help,
                       metric.type());
        append(page, {lines_[i].data(), lines_[i].size()});
    }
    append(page, remarks_);
}

}  // namespace qvs::cli

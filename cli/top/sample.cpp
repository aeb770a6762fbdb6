// SPDX-License-Identifier: Apache-2.0
#include "top/sample.h"

#include <fmt/format.h>

#include <charconv>
#include <iterator>
#include <system_error>
#include <utility>

#include "base/text.h"

namespace qvs::top {
namespace {

constexpr std::string_view kPort = "port";
constexpr std::string_view kEnd = "end";
constexpr std::string_view kGone = "gone";
constexpr size_t kNames = 5;

std::vector<std::string_view> fieldsOf(std::string_view line) {
    std::vector<std::string_view> fields;
    for (;;) {
        const size_t tab = line.find('\t');
        fields.push_back(line.substr(0, tab));
        if (tab == std::string_view::npos) return fields;
        line.remove_prefix(tab + 1);
    }
}

}  // namespace

void appendSample(std::string &out, const Sample &sample) {
    auto to = std::back_inserter(out);
    for (const Port &port : sample.ports) {
        fmt::format_to(to, "{}\t{}\t{}\t{}\t{}\t{}", kPort, shown(port.owner), shown(port.id),
                       shown(port.client), port.vlan, port.state);
        if (port.rates)
            for (const double rate : *port.rates)
                fmt::format_to(to, "\t{:.3f}", rate);
        out += '\n';
    }
    if (sample.gone.empty()) {
        fmt::format_to(to, "{}\t{}\n", kEnd, sample.time);
    } else {
        fmt::format_to(to, "{}\t{}\n", kGone, sample.gone);
    }
}

bool SampleReader::take(std::string_view piece) {
    bool complete = false;
    rest_ += piece;
    size_t begin = 0;
    for (size_t end = rest_.find('\n'); end != std::string::npos; end = rest_.find('\n', begin)) {
        complete = takeLine(std::string_view(rest_).substr(begin, end - begin)) || complete;
        begin = end + 1;
    }
    rest_.erase(0, begin);
    return complete;
}

bool SampleReader::takeLine(std::string_view line) {
    const std::vector<std::string_view> fields = fieldsOf(line);
    if (fields[0] == kPort && fields.size() > kNames) {
        Port &port = open_.ports.emplace_back();
        port.owner = fields[1];
        port.id = fields[2];
        port.client = fields[3];
        port.vlan = fields[4];
        port.state = fields[5];
        if (fields.size() != 1 + kNames + kRateKinds) return false;
        port.rates.emplace();
        for (size_t i = 0; i < kRateKinds; i++) {
            const std::string_view text = fields[1 + kNames + i];
            std::from_chars(text.data(), text.data() + text.size(), (*port.rates)[i]);
        }
        return false;
    }
    if (fields.size() < 2 || (fields[0] != kEnd && fields[0] != kGone)) return false;
    if (fields[0] == kEnd) {
        open_.time = fields[1];
        last_ = std::exchange(open_, {});
    } else {
        // The ports of the last look stay.
        last_.gone = fields[1];
        open_ = {};
    }
    return true;
}

}  // namespace qvs::top

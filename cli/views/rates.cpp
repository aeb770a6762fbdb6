// SPDX-License-Identifier: Apache-2.0
#include "views/rates.h"

#include <iterator>
#include <string_view>

#include "base/format.h"
#include "base/quantity.h"

namespace qvs::cli {

std::string Rates::keyOf(std::string_view switchId, std::string_view port) {
    return fmt::format("{}\n{}", switchId, port);
}

void Rates::look(const std::vector<SwitchFacts> &switches, uint64_t time) {
    look_++;
    for (const SwitchFacts &facts : switches) {
        for (const PortFacts &port : facts.ports) {
            if (!port.counters) continue;
            const auto [found, fresh] = counted_.try_emplace(keyOf(facts.id, port.id));
            Counted &counted = found->second;
            const CounterValues before = counted.values;
            const double seconds = static_cast<double>(time - counted.time) / 1e9;
            counted.values = *port.counters;
            counted.time = time;
            counted.look = look_;
            counted.rates.reset();
            if (fresh || seconds <= 0) continue;
            RateValues rates{};
            bool fell = false;
            for (size_t i = 0; i < rates.size(); i++) {
                fell = fell || counted.values[i] < before[i];
                rates[i] = static_cast<double>(counted.values[i] - before[i]) / seconds;
            }
            if (!fell) counted.rates = rates;
        }
    }
    std::erase_if(counted_, [&](const auto &each) { return each.second.look != look_; });
}

std::optional<RateValues> Rates::rateOf(std::string_view switchId, std::string_view port) const {
    const auto found = counted_.find(keyOf(switchId, port));
    return found == counted_.end() ? std::nullopt : found->second.rates;
}

void appendJson(fmt::memory_buffer &out, const Rate &rate) {
    if (!rate.perSecond) {
        out.append(std::string_view("null"));
    } else {
        fmt::format_to(std::back_inserter(out), "{:.1f}", *rate.perSecond);
    }
}

void appendText(fmt::memory_buffer &out, const Rate &rate) {
    if (rate.perSecond) out.append(std::string_view(quantityText(*rate.perSecond)));
}

}  // namespace qvs::cli

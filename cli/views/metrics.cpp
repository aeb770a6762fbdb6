// SPDX-License-Identifier: Apache-2.0
// qvs metrics: what runs, in numbers, as monitoring systems read them.
#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "access/opaque.h"
#include "config/library/directory.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"
#include "views/http.h"
#include "views/nouns.h"
#include "views/scrape.h"

namespace qvs::cli {
namespace {

constexpr const char *kPath = "/metrics";

void metrics(const Arguments &arguments, Output &out) {
    const PortChoice ports = arguments.given("--ports")
                                 ? static_cast<PortChoice>(chosen(arguments, "--ports", kPortChoices))
                                 : PortChoice::All;
    // A wrong file is a usage failure, and not one of each part.
    if (arguments.given(kLayout.name)) openLayout(arguments.text(kLayout.name));
    uint32_t failures = 0;
    auto page = [&](fmt::memory_buffer &text) {
        Exposition exposition;
        failures = scrape(arguments, ports, exposition);
        exposition.appendTo(text);
    };
    if (arguments.given("--http")) {
        const Resource resource{kPath, kMetricsType, page};
        return answerRequest({&resource, 1});
    }
    fmt::memory_buffer own;
    fmt::memory_buffer &text = arguments.given("--output") ? own : out.buffer();
    page(text);
    if (arguments.given("--output")) writePublicFile(arguments.text("--output"), {own.data(), own.size()});
    if (failures > 0) out.exitWith(static_cast<int>(Exit::Failed));
}

std::vector<std::string_view> wordsIn(std::string_view text) {
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const size_t end = std::min(text.find(' '), text.size());
        words.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

void list(const Arguments &, Output &out) {
    Listing listing(out,
                    {{"metric", "METRIC"}, {"type", "TYPE"}, {"labels", "LABELS"}, {"meaning", "MEANING"}});
    for (const Metric &metric : kMetrics) {
        if (out.json()) {
            listing.row(metric.name, metric.type(), Words{wordsIn(metric.labels)}, metric.help);
        } else {
            listing.row(metric.name, metric.type(), metric.labels, metric.help);
        }
    }
    listing.finish();
}

const Command kRows[] = {
    {.words = "metrics list",
     .summary = "list the metrics with type, labels and meaning",
     .example = "qvs metrics list",
     .run = local(list)},
    {.words = "metrics",
     .summary = "print measurements of the host in the text format of Prometheus",
     .options = {{.name = "--ports",
                  .value = "WHICH",
                  .summary = "the ports that have lines of their own: none, uplinks or all (all)",
                  .choices = kPortChoices},
                 {.name = "--output",
                  .value = "FILE",
                  .summary = "write to FILE, which everyone may read; it is replaced as a whole",
                  .kind = Kind::File,
                  .excludes = "--http"},
                 {"--http", nullptr, "answer one HTTP request on standard input and output instead"},
                 kLayout},
     .details = "A request that fails is counted in qvs_scrape_failures and does not stop the others; the "
                "exit status is then 1. Statistics that only the kernel defines are left out without a "
                "layout, and a comment line at the end says so. With --http, GET and HEAD of /metrics are "
                "answered; without a host the status is 503.",
     .example = "qvs metrics --ports uplinks --output /var/lib/prometheus/node-exporter/qvs.prom",
     .json = false,
     .run = local(metrics)},
};

}  // namespace

const std::span<const Command> kMetricsCommands = kRows;

}  // namespace qvs::cli

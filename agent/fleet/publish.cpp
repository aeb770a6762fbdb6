// SPDX-License-Identifier: Apache-2.0
#include "agent/fleet/publish.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "agent/store/digest.h"
#include "base/failure.h"
#include "config/library/clock.h"
#include "tool/failure.h"

namespace qvs::fleet {
namespace {

using cli::Arguments;
using cli::Option;
using cli::Output;

constexpr Option kOptions[] = {
    {"--dry-run", nullptr, "only show what changes on each host"},
    {"--canary", "N", "the first wave has N hosts"},
    {"--batch", "N", "each other wave has N hosts (all)"},
    {"--max-unavailable", "N", "go on when at most N hosts of the open waves are away (0)"},
    {"--rollback-on-failure", nullptr, "take the revision back from all hosts when one refuses it"},
    {"--prune", nullptr, "remove ports and settings of these switches that no document names"},
    {"--keep", "N", "keep the newest N revisions, and those that hosts have (100)"},
    {"--message", "TEXT", "what the revision is for, for the history"},
    {"--detach", nullptr, "do not wait for the end of the rollout"},
};

// The names of the hosts of each wave.
using Waves = std::vector<std::vector<std::string>>;

Waves wavesOf(const Fleet &fleet, const View &view, const Arguments &arguments) {
    std::vector<std::string> hosts;
    for (const auto &[host, labels] : fleet.hosts())
        if (!view.drained.contains(host)) hosts.push_back(host);
    const size_t canary = arguments.number("--canary", 0, 0, 100'000);
    const size_t batch = arguments.number("--batch", 0, 1, 100'000);
    Waves waves;
    for (size_t at = 0; at < hosts.size();) {
        const size_t most = at == 0 && canary != 0 ? canary : batch == 0 ? hosts.size() : batch;
        const size_t end = std::min(hosts.size(), at + most);
        waves.emplace_back(hosts.begin() + static_cast<ptrdiff_t>(at),
                           hosts.begin() + static_cast<ptrdiff_t>(end));
        at = end;
    }
    if (waves.empty()) waves.emplace_back();
    return waves;
}

// Writes in as few transactions as the store allows. An existing document is identical, because its key is a
// digest.
void putAll(Store &store, const std::vector<Put> &puts) {
    Transaction transaction;
    size_t bytes = 0;
    const auto send = [&] {
        if (!transaction.puts.empty()) (void)store.commit(transaction);
        transaction = {};
        bytes = 0;
    };
    for (const Put &put : puts) {
        const size_t size = put.key.size() + put.value.size();
        if (size > kMostRequestBytes)
            fail(Exit::Usage, "a document has more than {} bytes", kMostRequestBytes);
        if (bytes + size > kMostRequestBytes || transaction.puts.size() + 1 > kMostOperations) send();
        transaction.puts.push_back(put);
        bytes += size;
    }
    send();
}

std::string userName() {
    const passwd *entry = getpwuid(getuid());
    return entry == nullptr ? fmt::to_string(getuid()) : entry->pw_name;
}

// The transaction that publishes the revision. If two are published at once, one of them succeeds.
void announce(Fleet &fleet, const Manifest &manifest) {
    const KeyNames &keys = fleet.keys();
    const Head head{manifest.revision, fleet.view().head.base, 0, State::Running, {}};
    Transaction transaction;
    transaction.comparisons = {{keys.head(), Comparison::What::Modified, fleet.view().headModified},
                               {keys.revision(manifest.revision), Comparison::What::Created, 0}};
    transaction.puts = {{keys.revision(manifest.revision), write(manifest)}, {keys.head(), write(head)}};
    if (fleet.store().commit(transaction)) return;
    // The answer to a first attempt may have been lost.
    const Found found = fleet.store().range({keys.revision(manifest.revision)});
    if (found.entries.empty() || found.entries.front().value != write(manifest))
        fail(Exit::Differs, "another revision was published meanwhile; nothing was changed");
}

void requireIdle(const Head &head) {
    if (head.isUnderWay())
        fail(Exit::Locked,
             "revision {} is being rolled out; wait for its end, or end it with 'qvs fleet stop'",
             head.revision);
}

void followRollout(Fleet &fleet, uint64_t revision, Output &out) {
    const bool terminal = isatty(STDERR_FILENO) == 1;
    using Clock = std::chrono::steady_clock;
    std::string last;
    std::string lastStep;
    Clock::time_point next;
    uint32_t alone = 0;  // seconds without a coordinator
    fleet.read();
    while (fleet.view().head.revision == revision && fleet.view().head.isUnderWay()) {
        const std::string line = progressLine(fleet.view());
        // Prints no line per host, which would fill a log.
        const std::string step = line.substr(0, line.find(": ", line.find(": ") + 1));
        if (terminal && line != last) {
            fmt::print(stderr, "\r\033[K{}", line);
            std::fflush(stderr);
        } else if (!terminal && (step != lastStep || Clock::now() >= next)) {
            cli::complain("{}", line);
            next = Clock::now() + std::chrono::seconds(2);
        }
        last = line;
        lastStep = step;
        if (!fleet.await() && fleet.view().coordinator.empty() && ++alone == 5)
            warn("no agent coordinates; start one with 'coordinate: on'");
    }
    if (terminal) std::fputs("\r\033[K", stderr);
    const Head &head = fleet.view().head;
    if (head.revision != revision) fail(Exit::Failed, "revision {} was published meanwhile", head.revision);
    cli::Record record(out);
    record.field("revision", "revision", head.revision);
    record.field("state", "state", std::string_view(wordOf(head.state)));
    if (out.json() || !head.reason.empty())
        record.field("reason", "reason",
                     head.reason.empty() ? std::nullopt : std::optional<std::string_view>(head.reason));
    record.finish();
    if (head.state != State::Done) out.exitWith(static_cast<int>(Exit::Failed));
}

}  // namespace

const std::span<const Option> kRolloutOptions = kOptions;

std::string progressLine(const View &view) {
    const Progress progress = progressOf(view);
    std::string line = fmt::format("revision {}: {}, wave {} of {}: {} of {} hosts", view.head.revision,
                                   wordOf(view.head.state), view.head.wave + 1,
                                   std::max(view.manifest.waves, 1u), progress.done, progress.hosts);
    const auto add = [&](const char *what, const std::set<std::string> &hosts) {
        if (!hosts.empty()) line += fmt::format(", {} {}", what, listed({hosts.begin(), hosts.end()}));
    };
    add("waits for", progress.waiting);
    add("away:", progress.away);
    add("refused by", progress.failed);
    return line;
}

void publish(Fleet &fleet, Manifest manifest, const std::map<std::string, std::string> &texts,
             const Arguments &arguments, Output &out) {
    const View &view = fleet.view();
    const Waves waves = wavesOf(fleet, view, arguments);
    std::vector<std::string> hosts;
    for (const auto &wave : waves)
        hosts.insert(hosts.end(), wave.begin(), wave.end());
    const uint32_t keep = arguments.number("--keep", 100, 1, 100'000);
    const bool dry = arguments.given("--dry-run");
    if (dry || !out.json()) print(plansFor(fleet, hosts, manifest.documents), out);
    if (dry) return;
    requireIdle(view.head);
    manifest.revision = view.head.revision + 1;
    manifest.message = arguments.given("--message") ? arguments.text("--message") : "";
    manifest.author = userName();
    manifest.time = utcTime();
    manifest.waves = static_cast<uint32_t>(waves.size());
    manifest.unavailable = arguments.number("--max-unavailable", 0);
    manifest.rollsBack = arguments.given("--rollback-on-failure");
    manifest.prunes = arguments.given("--prune");

    std::string plan;
    for (size_t i = 0; i < waves.size(); i++)
        for (const std::string &host : waves[i])
            plan += fmt::format("{} {}\n", i, host);
    manifest.plan = digestOf(plan);
    std::vector<Put> puts;
    puts.reserve(texts.size() + hosts.size());
    for (const auto &[digest, text] : texts)
        puts.push_back({fleet.keys().document(digest), text});
    for (size_t i = 0; i < waves.size(); i++)
        for (const std::string &host : waves[i])
            puts.push_back({fleet.keys().plan(manifest.plan) + host, fmt::to_string(i)});
    putAll(fleet.store(), puts);
    announce(fleet, manifest);
    out.flush();
    try {
        removeOld(fleet, keep);
    } catch (const Failure &failure) {
        warn("old revisions stay in the store: {}", failure.message);
    }
    if (!arguments.given("--detach")) return followRollout(fleet, manifest.revision, out);
    cli::Record record(out);
    record.field("revision", "revision", manifest.revision);
    record.finish();
}

}  // namespace qvs::fleet

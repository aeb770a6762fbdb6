// SPDX-License-Identifier: Apache-2.0
// Generated configurations, with values of every setting: what was applied is what is exported, applying it
// again changes nothing, and a request that fails leaves the configuration from before. QVS_RUNS=500 for more
// of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "config/apply/apply.h"
#include "config/document/export.h"
#include "config/document/reader.h"
#include "config/document/write.h"
#include "config/draw.h"
#include "config/library/host.h"
#include "config/library/snapshot.h"
#include "support/host.h"

namespace qvs::test {
namespace {

using config::ApplyResult;
using config::Document;
using Outcome = config::ApplyResult::Outcome;

// Names and identities come back in each document, so that one is a change of the other.
Document drawHost(Random &random) {
    Document document;
    for (const char *alias : {"hall", "yard"}) {
        if (drawChance(random, 4)) continue;
        config::SwitchEntry &entry = document.switches.emplace_back();
        entry.alias = alias;
        entry.maxPorts = 16;
        entry.uplinks.emplace();
        for (const char *uplink : {"left", "right"})
            if (drawChance(random, 2)) entry.uplinks->push_back({uplink, uplink});
        drawPart(entry.global, Scope::Global, random);
        drawPart(entry.host, Scope::Host, random);
        for (const char *id : {"db", "mail", "web"}) {
            if (drawChance(random, 3)) continue;
            config::PortEntry &port = entry.ports.emplace_back();
            port.id = id;
            if (drawChance(random, 2)) port.blocked = drawChance(random, 2);
            drawPart(port.part, Scope::Port, random);
        }
    }
    return document;
}

ApplyResult apply(const Document &document) {
    config::ApplyOptions options;
    options.prune = true;
    return config::applyDocument(document, options);
}

Document exported() {
    requireState(loadSnapshot());
    std::vector<std::string> warnings;
    return config::exportDocument({}, {}, warnings);
}

void expectExported(const Document &wanted) {
    const Document now = exported();
    for (const config::Change &change : compare(now, wanted, true))
        ADD_FAILURE() << change.path() << ": " << change.beforeText << " -> " << change.afterText;
    std::vector<config::Problem> problems;
    const Document read = config::readDocument(writeYaml(now), "export", problems);
    EXPECT_TRUE(problems.empty()) << messageOf(problems[0]);
    EXPECT_EQ(apply(read).outcome, Outcome::Unchanged);
}

// A request of those that the second document needs fails, once or from then on.
void applyWithFault(const Document &document, Random &random) {
    const std::string before = hostState();
    addFault("state ", R"("status":"0xbad00d7")", static_cast<int>(drawNumber(random, 1, 60)),
             drawChance(random, 2) ? kFromThenOn : 1);
    Outcome outcome = Outcome::Undone;
    try {
        outcome = apply(document).outcome;
    } catch (const Failure &) {
        // Refused before anything was changed.
    }
    clearFaults();
    const bool done = outcome == Outcome::Applied || outcome == Outcome::Unchanged;
    if (outcome == Outcome::NotUndone) {
        EXPECT_TRUE(config::recover().complete());
    }
    EXPECT_EQ(config::pendingJournal(), config::Pending::Nothing);
    if (done) {
        // libqvs takes a security mask that it could not read for one that denies, and notes that in the
        // record of MAC learning. The next run finds it.
        EXPECT_TRUE(apply(document).problem.empty());
        return expectExported(document);
    }
    EXPECT_EQ(hostState(), before);
}

TEST(Generated, AreAppliedWholeOrNotAtAll) {
    const char *asked = std::getenv("QVS_RUNS");
    const int runs = asked != nullptr ? std::atoi(asked) : 25;
    for (int run = 0; run < runs && !HasFailure(); run++) {
        SCOPED_TRACE(run);
        Random random(static_cast<uint32_t>(20261122 + run));
        resetHost();
        const Document document = drawHost(random);
        const ApplyResult result = apply(document);
        ASSERT_TRUE(result.problem.empty()) << result.problem;
        expectExported(document);
        applyWithFault(drawHost(random), random);
    }
}

}  // namespace
}  // namespace qvs::test

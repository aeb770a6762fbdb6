// SPDX-License-Identifier: Apache-2.0
#include "agent/daemon/switches.h"

#include <qvs/keys.h>

#include <cstdlib>
#include <memory>

#include "access/changes.h"
#include "base/failure.h"
#include "config/apply/apply.h"
#include "config/document/merge.h"
#include "config/document/references.h"
#include "config/library/call.h"
#include "config/library/hash.h"
#include "config/library/host.h"
#include "config/library/snapshot.h"

namespace qvs::fleet {
namespace {

using config::Change;
using config::Document;

}  // namespace

bool undoPending() {
    requireState(loadSnapshot());
    if (config::pendingJournal() == config::Pending::Nothing) return false;
    config::requireRestored(config::recover());
    return true;
}

bool change(const Document &before, const Document &wanted, bool prune, uint32_t confirmSeconds) {
    requireState(loadSnapshot());
    std::vector<std::string> warnings;
    const Document now = config::documentOfHost(wanted, false, warnings);
    const config::Findings findings = config::checkOnHost(now, wanted, prune, false, "");
    if (!findings.errors.empty()) fail(Exit::Usage, "{}", messageOf(findings.errors.front()));
    Document target = wanted;
    if (!prune) {
        Document both = before;
        config::overlay(both, wanted);
        target = config::documentOfHost(both, false, warnings);
        config::subtract(target, before);
        config::overlay(target, wanted);
    }
    config::ApplyOptions options;
    options.prune = true;
    options.keepsSwitches = true;
    options.confirmSeconds = confirmSeconds;
    // Changes that others make before this run holds the lock are not removed.
    const std::vector<Change> agreed = compare(config::documentOfHost(target, false, warnings), target, true);
    options.agreed = &agreed;
    const config::ApplyResult result = config::applyDocument(target, options);
    config::requireRestored(result.undone);
    if (result.outcome == config::ApplyResult::Outcome::Undone) fail(Exit::Failed, "{}", result.problem);
    return result.outcome == config::ApplyResult::Outcome::Applied;
}

bool confirmChange() {
    try {
        return config::confirm();
    } catch (const Failure &failure) {
        if (failure.exit != Exit::Failed) throw;
        return false;
    }
}

std::optional<uint64_t> stateSum() {
    void *bytes = nullptr;
    uint32_t length = 0;
    if (call<DVSHYP_StateGet>(&bytes, &length) != HYP_OK) return std::nullopt;
    const std::unique_ptr<void, void (*)(void *)> owner(bytes, std::free);
    return hashOf({static_cast<const char *>(bytes), length});
}

std::vector<std::string> differencesFrom(const Document &wanted) {
    requireState(loadSnapshot());
    std::vector<std::string> warnings;
    std::vector<std::string> lines;
    for (const Change &change : compare(config::documentOfHost(wanted, false, warnings), wanted, false))
        lines.push_back(cli::lineOf(change));
    return lines;
}

std::map<std::string, bool> uplinks() {
    requireState(loadSnapshot());
    std::map<std::string, bool> links;
    forEachSwitch([&](DVSSwitch *sw) {
        const std::string alias(findText({Scope::Global, sw, nullptr}, QVS_KEY_ALIAS).value_or(""));
        for (const std::string_view id : uplinkPorts(sw))
            if (DVSPort *port = lookUpPort(sw, std::string(id)))
                links[fmt::format("{}/{}", alias, id)] = portStatus(port).linkUp;
        return true;
    });
    return links;
}

}  // namespace qvs::fleet

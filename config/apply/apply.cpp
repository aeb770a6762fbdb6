// SPDX-License-Identifier: Apache-2.0
#include "config/apply/apply.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include "config/document/export.h"
#include "config/document/references.h"
#include "config/library/call.h"
#include "config/library/host.h"
#include "config/library/lock.h"
#include "config/library/snapshot.h"

namespace qvs::config {
namespace {

bool isSame(const Change &left, const Change &right) {
    return left.kind == right.kind && left.path() == right.path() && left.before == right.before &&
           left.after == right.after && left.beforeText == right.beforeText;
}

void requireAgreed(const std::vector<Change> &agreed, const std::vector<Change> &found) {
    if (std::equal(agreed.begin(), agreed.end(), found.begin(), found.end(), isSame)) return;
    fail(Exit::Differs,
         "the host was changed meanwhile, so that the plan is another one; nothing was changed");
}

// Runs the steps. Throws what ends them; `status` is that of the step that failed.
void runSteps(const Plan &plan, const ApplyOptions &options, const Progress &progress,
              HYP_ReturnStatus &status) {
    Stage stage = Stage::Switches;
    const size_t total = plan.steps.size();
    const auto stopAtSignal = [&](const std::string &next) {
        if (const char *signal = options.interrupted ? options.interrupted() : nullptr)
            fail(Exit::Failed, "{} came in before {}", signal, next);
    };
    for (size_t done = 0; done < total; done++) {
        const Step &step = plan.steps[done];
        stopAtSignal(step.what);
        if (std::exchange(stage, step.stage) != step.stage) requireState(loadSnapshot());
        if (progress) progress(done, total, step.what);
        const SignalsHeld held;
        const HYP_ReturnStatus stepStatus = step.run();
        if (stepStatus != HYP_OK) status = stepStatus;
        require(stepStatus, step.what);
    }
    stopAtSignal("the end");
    if (progress) progress(total, total, "");
}

// The snapshot is that of the lock.
ApplyResult carryOut(const Document &wanted, const ApplyOptions &options, const Progress &progress) {
    ApplyResult result;
    std::vector<std::string> warnings;
    const Document now = documentOfHost(wanted, options.prune && !options.keepsSwitches, warnings);
    result.changes = compare(now, wanted, options.prune);
    if (options.agreed != nullptr) requireAgreed(*options.agreed, result.changes);
    if (result.changes.empty()) return result;
    Plan plan = planOf(result.changes, wanted, options.prune);
    Transaction transaction(std::move(plan.before));
    try {
        runSteps(plan, options, progress, result.status);
        if (options.confirmSeconds != 0) {
            result.deadline = transaction.commitForNow(options.confirmSeconds);
        } else {
            transaction.commit();
        }
        result.outcome = ApplyResult::Outcome::Applied;
    } catch (const Failure &failure) {
        result.problem = failure.message;
    } catch (const std::exception &error) {
        result.problem = error.what();
    }
    if (result.outcome == ApplyResult::Outcome::Applied) return result;
    result.undone = transaction.undo();
    result.outcome =
        result.undone.complete() ? ApplyResult::Outcome::Undone : ApplyResult::Outcome::NotUndone;
    return result;
}

}  // namespace

Document documentOfHost(const Document &wanted, bool all, std::vector<std::string> &warnings) {
    if (all) return exportDocument({}, {}, warnings);
    std::vector<std::string> there;
    for (const SwitchEntry &sw : wanted.switches)
        if (DVSState_SwitchFindByAlias(sw.alias.c_str()) != nullptr) there.push_back(sw.alias);
    if (there.empty()) return {};
    return exportDocument(there, {}, warnings);
}

void addHostProblems(const Document &wanted, bool prune, bool strict, std::string_view origin,
                     std::vector<Problem> &problems) {
    std::vector<std::string> warnings;
    Findings findings;
    try {
        findings = checkOnHost(documentOfHost(wanted, false, warnings), wanted, prune, strict, origin);
    } catch (const Failure &) {
        // The problems of the document come first.
        return;
    }
    std::ranges::move(findings.errors, std::back_inserter(problems));
    sortByPlace(problems);
}

ApplyResult applyDocument(const Document &wanted, const ApplyOptions &options, const Progress &progress) {
    const Lock lock(Guard::Everything, "");
    requireState(loadSnapshot());
    if (pendingJournal() != Pending::Nothing) {
        settlePending();
        requireState(loadSnapshot());
    }
    return carryOut(wanted, options, progress);
}

}  // namespace qvs::config

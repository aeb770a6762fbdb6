// SPDX-License-Identifier: Apache-2.0
// qvs apply and confirm.
#include "commands/apply.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iterator>

#include "access/changes.h"
#include "access/detach.h"
#include "access/settle.h"
#include "access/wanted.h"
#include "commands/nouns.h"
#include "config/apply/apply.h"
#include "config/library/host.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

using config::ApplyOptions;
using config::ApplyResult;
using config::Change;
using config::Document;

// --- agreement and progress ---

bool isTerminal() {
    return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1;
}

void requireAgreement(size_t changes) {
    fmt::print(stderr, "Apply {}? [y/N] ",
               changes == 1 ? "this change" : fmt::format("these {} changes", changes));
    std::fflush(stderr);
    char answer[16] = {};
    const bool read = std::fgets(answer, sizeof answer, stdin) != nullptr;
    if (!read) std::fputc('\n', stderr);
    if (read && (answer[0] == 'y' || answer[0] == 'Y')) return;
    throw Failure{Exit::NotConfirmed, "nothing was changed"};
}

// A progress bar on a terminal, shown when a change takes longer than a second.
class Bar {
  public:
    ~Bar() {
        if (shown_) std::fputs("\r\033[K", stderr);
    }

    void step(size_t done, size_t total) {
        using namespace std::chrono;
        constexpr size_t kWidth = 40;
        const auto now = steady_clock::now();
        if (!terminal_ || now - start_ < seconds(1) || now - last_ < milliseconds(100)) return;
        last_ = now;
        shown_ = true;
        const size_t filled = kWidth * done / std::max<size_t>(total, 1);
        fmt::print(stderr, "\r[{:<{}}] {} of {} steps\033[K", std::string(filled, '#'), kWidth, done, total);
        std::fflush(stderr);
    }

  private:
    bool terminal_ = isatty(STDERR_FILENO) == 1;
    bool shown_ = false;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point last_;
};

// --- reports ---

// Reports each switch and port that was changed once.
void reportObjects(Output &out, const std::vector<Change> &changes) {
    const Change *last = nullptr;
    for (const Change &change : changes) {
        const bool same = last != nullptr && last->alias == change.alias && last->port == change.port;
        last = &change;
        if (same) continue;
        change.port.empty() ? reportSwitch(out, change.alias, true)
                            : reportPort(out, change.alias, change.port, true);
    }
}

const char *wordOf(ApplyResult::Outcome outcome) {
    switch (outcome) {
        case ApplyResult::Outcome::Unchanged:
            return "unchanged";
        case ApplyResult::Outcome::Applied:
            return "applied";
        case ApplyResult::Outcome::Undone:
            return "undone";
        case ApplyResult::Outcome::NotUndone:
            break;
    }
    return "notUndone";
}

void reportJson(Output &out, const char *outcome, const std::vector<Change> &changes) {
    fmt::format_to(std::back_inserter(out.buffer()), "{{\"outcome\":\"{}\",\"changes\":", outcome);
    printJson(changes, out);
    out.write("}\n");
}

void report(Output &out, const ApplyResult &result) {
    if (out.json()) {
        reportJson(out, wordOf(result.outcome), result.changes);
    } else if (result.outcome == ApplyResult::Outcome::Unchanged) {
        out.write("nothing to change\n");
    } else if (result.outcome == ApplyResult::Outcome::Applied) {
        reportObjects(out, result.changes);
    }
    if (result.problem.empty()) return;
    if (result.undone.complete()) throw Failure{Exit::Failed, result.problem + "\neverything was undone"};
    complain("{}", result.problem);
    config::requireRestored(result.undone);
}

}  // namespace

// --- for other commands ---

void requireSomebodyToAsk(const Arguments &arguments, bool inputIsTaken) {
    if (arguments.given("--yes") || arguments.given("--dry-run") || (isTerminal() && !inputIsTaken)) return;
    fail(Exit::Usage, "nobody can be asked{}; --yes applies the document without asking",
         inputIsTaken ? ", because standard input is the document" : " without a terminal");
}

void applyChanges(const Document &document, const Comparison &how, const Arguments &arguments, Output &out) {
    ApplyOptions options;
    options.prune = how.prune;
    options.keepsSwitches = how.keepsSwitches;
    options.confirmSeconds = arguments.number("--confirm", 0);
    if (!arguments.given("--dry-run")) settle();
    requireState(loadSnapshot());
    const std::vector<Change> changes = compareWithHost(document, how);
    if (!out.json()) printText(changes, out);
    if (arguments.given("--dry-run")) {
        if (out.json()) reportJson(out, "planned", changes);
        if (!out.json() && changes.empty()) out.write("nothing to change\n");
        return;
    }
    if (!arguments.given("--yes") && !changes.empty()) {
        out.flush();
        requireAgreement(changes.size());
        options.agreed = &changes;
    }
    config::Interruptions interruptions;
    options.interrupted = [&] { return interruptions.take(); };
    Bar bar;
    const ApplyResult result = config::applyDocument(
        document, options, [&](size_t done, size_t total, const std::string &) { bar.step(done, total); });
    if (result.deadline != 0) runAt(result.deadline, {"apply", "--recover", "--expired"});
    report(out, result);
    out.flush();
    if (result.deadline != 0)
        complain("'qvs confirm' keeps this; otherwise it is undone in {} s", options.confirmSeconds);
}

// --- the verbs ---

namespace {

void recoverPending(const Arguments &arguments, Output &out) {
    const bool pending = config::pendingJournal() != config::Pending::Nothing;
    config::requireRestored(
        config::recover(arguments.given("--expired") ? config::Recover::NotWhatWaits : config::Recover::All));
    const bool undone = pending && config::pendingJournal() == config::Pending::Nothing;
    if (out.json()) {
        if (!arguments.given("FILE")) reportJson(out, undone ? "undone" : "unchanged", {});
    } else {
        out.write(undone ? "undone\n" : "nothing to undo\n");
    }
}

void requireWork(const Arguments &arguments) {
    if (arguments.given("FILE")) return requireSomebodyToAsk(arguments, arguments.text("FILE") == "-");
    if (!arguments.given("--recover")) fail(Exit::Usage, "FILE or --recover is needed");
}

void apply(const Arguments &arguments, Output &out) {
    if (!arguments.given("FILE")) return recoverPending(arguments, out);
    const Document document = readWanted(arguments);
    if (arguments.given("--recover")) recoverPending(arguments, out);
    applyChanges(document, comparisonOf(arguments), arguments, out);
}

void confirmChange(const Arguments &, Output &out) {
    if (!config::confirm()) fail(Exit::NotFound, "nothing waits to be confirmed");
    out.write(out.json() ? "{\"confirmed\":true}\n" : "confirmed\n");
}

const Command kRows[] = {
    {.words = "apply",
     .summary = "make the host match a document, or change nothing",
     .arguments = {{"FILE", "document, or - for standard input", Kind::File, true}},
     .options = {kYes,
                 kDryRun,
                 {"--prune", nullptr, "remove what the document does not name"},
                 kOnlySwitch,
                 kStrict,
                 kConfirm,
                 {"--recover", nullptr,
                  "first undo what an earlier run has left, or what waits to be confirmed"},
                 {"--expired", nullptr,
                  "with --recover: let a change wait while its time to confirm is not over"}},
     .details =
         "All of the document is checked before anything is changed. What it does not name stays as it is, "
         "unless --prune is given. Before the first change, what is there is written to a journal on disk. "
         "When a change fails, or a signal ends the run, everything is made as it was, to the byte. After a "
         "run that was killed, the next run that changes anything undoes it first; --recover without FILE "
         "does only that. No other run changes anything meanwhile.",
     .example = "qvs apply host.yaml --yes",
     .run = writes(apply),
     .guard = Guard::None,
     .agrees = requireWork},
    {.words = "confirm",
     .summary = "keep what qvs apply --confirm has changed",
     .details = "When the time is over, the change is undone instead, and the exit status is 1.",
     .example = "qvs confirm",
     .run = writes(confirmChange),
     .guard = Guard::None},
};

}  // namespace

const std::span<const Command> kApplyCommands = kRows;

}  // namespace qvs::cli

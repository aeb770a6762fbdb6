// SPDX-License-Identifier: Apache-2.0
#include "config/apply/transaction.h"

#include <ctime>
#include <utility>

namespace qvs::config {
namespace {

bool running = false;

}  // namespace

Transaction::Transaction(Before before) : before_(std::move(before)) {
    writeJournal({0, {}, before_});
    running = true;
}

Transaction::~Transaction() {
    running = false;
}

bool Transaction::underWay() {
    return running;
}

Restored Transaction::undo() {
    Restored restored = restore(before_);
    if (restored.complete()) removeJournal();
    return restored;
}

void Transaction::commit() {
    removeJournal();
}

uint64_t Transaction::commitForNow(uint32_t seconds) {
    const Journal journal = waiting(before_, seconds);
    writeJournal(journal);
    return journal.deadline;
}

Interruptions::Interruptions() {
    sigemptyset(&watched_);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction now {};
        // A signal that is ignored is not to end the run.
        if (sigaction(signal, nullptr, &now) == 0 && now.sa_handler != SIG_IGN) sigaddset(&watched_, signal);
    }
    sigprocmask(SIG_BLOCK, &watched_, &before_);
}

Interruptions::~Interruptions() {
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

const char *Interruptions::take() {
    constexpr timespec kAtOnce{};
    switch (sigtimedwait(&watched_, nullptr, &kAtOnce)) {
        case SIGINT:
            return "SIGINT";
        case SIGTERM:
            return "SIGTERM";
        case SIGHUP:
            return "SIGHUP";
        default:
            return nullptr;
    }
}

}  // namespace qvs::config

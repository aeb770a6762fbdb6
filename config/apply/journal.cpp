// SPDX-License-Identifier: Apache-2.0
#include "config/apply/journal.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <optional>

#include "base/failure.h"
#include "base/text.h"
#include "config/apply/journal_text.h"
#include "config/library/directory.h"
#include "config/library/lock.h"
#include "config/library/snapshot.h"

namespace qvs::config {
namespace {

// Outlives a restart of the machine, as what is stored does.
constexpr const char *kSystemDirectory = "/var/lib/qvs";
constexpr const char *kName = "qvs.journal";
constexpr uint64_t kSecond = 1'000'000'000;
constexpr DirectoryUse kUse{.file = "journal", .advice = "; move it away", .ofHost = true};

std::string directoryPath() {
    return emulatedHostDirectory().value_or(kSystemDirectory);
}

std::string bootId() {
    std::string id;
    std::getline(std::ifstream("/proc/sys/kernel/random/boot_id"), id);
    return id;
}

PrivateDirectory directory() {
    return {directoryPath(), false, kUse};
}

}  // namespace

bool Journal::expired() const {
    return waits() && (bootId != config::bootId() || bootTime() >= deadline);
}

uint64_t Journal::secondsLeft() const {
    const uint64_t now = bootTime();
    return expired() || now >= deadline ? 0 : (deadline - now + kSecond - 1) / kSecond;
}

std::string journalPath() {
    return directoryPath() + "/" + kName;
}

bool journalExists() {
    struct stat found;
    return lstat(journalPath().c_str(), &found) == 0;
}

Journal readJournal() {
    const auto about = [](std::string_view reason) {
        return fmt::format("journal {}: {}", inQuotes(journalPath()), reason);
    };
    const std::optional<std::string> text = directory().read(kName);
    if (!text) fail(Exit::Failed, "{}", about(std::strerror(ENOENT)));
    try {
        return parseJournal(*text);
    } catch (Failure &failure) {
        failure.message = about(failure.message);
        throw;
    }
}

void writeJournal(const Journal &journal) {
    // The directory of an emulated host is there as long as the host is.
    const PrivateDirectory made(directoryPath(), !emulatedHostDirectory(), kUse);
    [[maybe_unused]] const bool written = made.write(kName, textOf(journal), true);
}

void removeJournal() {
    const PrivateDirectory opened = directory();
    opened.remove(kName);
    opened.removeUnfinished(kName);
}

void removeUnfinishedJournal() {
    directory().removeUnfinished(kName);
}

Journal waiting(Before before, uint32_t seconds) {
    return {bootTime() + seconds * kSecond, bootId(), std::move(before)};
}

}  // namespace qvs::config

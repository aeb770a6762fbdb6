// SPDX-License-Identifier: Apache-2.0
// Runs side by side: a change locks what it changes, so that no other run of the tool does between its
// reading and its storing.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "base/guard.h"

namespace qvs {

// The directory of the emulated host that this process belongs to, known by its socket; nothing on a real
// host.
std::optional<std::string> emulatedHostDirectory();

// Why a directory is not trusted with files that other users must not put there; null when it is. Tells to
// whom it belongs.
const char *distrust(int directory, struct stat &owner);

// How long a run waits, in seconds: for the host to answer, and for other runs to end.
inline constexpr uint32_t kMostPatience = 86400;
uint32_t patience();
void setPatience(uint32_t seconds);

// Holds what a guard names as long as it lives. The constructor throws when another run does not release it
// in time. If the host's lock file cannot be opened, it warns and holds nothing.
class Lock {
  public:
    Lock(Guard guard, const std::string &alias);
    ~Lock();
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;

    // Whether another run has changed something since the snapshot was loaded.
    bool behind() const { return behind_; }

  private:
    bool held_ = false;
    bool behind_ = false;
    long at_ = 0;
    long size_ = 0;
};

// The directory of the lock file, and what keeps runs from locking in it; empty when nothing does. Creates
// nothing.
struct LockPlace {
    std::string directory;
    std::string problem;
};
LockPlace lockPlace();

// Waits until no other run changes the switch, unless this one does.
void awaitOtherRuns(const std::string &alias);

}  // namespace qvs

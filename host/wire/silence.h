// SPDX-License-Identifier: Apache-2.0
// Remembers a daemon that did not answer in time, so that each further request fails at once.
#pragma once

#include <atomic>
#include <cstdint>

namespace qvs::wire {

// A process has one object: qvsHostSilence of the interposer, which the state library finds by this name. The
// object is zero-initialised and has neither constructor nor destructor, because it is used before and after
// they would run.
class Silence {
  public:
    // Records that the daemon at `path` did not answer a request in time. Does not change errno.
    void begin(const char *path);
    bool begun() const { return socketAndOne_ != 0 || unasked_; }
    // Returns true until the daemon answers again. Does not change errno.
    bool lasts(const char *path);

  private:
    bool ask(const char *path);
    bool isOurs(int socket) const;

    // A connection on which a Ping was sent. Its answer ends the silence. The descriptor is stored plus one,
    // so that zero means none. The inode shows whether the program has reused the descriptor for another
    // file.
    std::atomic<int> socketAndOne_;
    std::atomic<uint64_t> inode_;
    // Whether the daemon could not be asked because its queue was full.
    std::atomic<bool> unasked_;
};

}  // namespace qvs::wire

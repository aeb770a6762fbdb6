// SPDX-License-Identifier: Apache-2.0
// A daemon that did not answer in time, remembered so that each further request fails at once.
#pragma once

#include <atomic>
#include <cstdint>

namespace qvs::wire {

// One in a process, the interposer's qvsHostSilence, which the state library finds by that name.
// Zero-initialised, without constructor and destructor: it is used before the one and after the other could
// run.
class Silence {
  public:
    // A request to the daemon at `path` was not answered in time. Leaves errno alone.
    void begin(const char *path);
    bool begun() const { return socketAndOne_ != 0 || unasked_; }
    // True as long as the daemon has not answered anything since. Leaves errno alone.
    bool lasts(const char *path);

  private:
    bool ask(const char *path);
    bool isOurs(int socket) const;

    // A connection with a Ping on its way, whose answer ends the silence: its descriptor and one, so that
    // zero is none, and its inode, by which it is known when the program has closed the number and used it
    // again.
    std::atomic<int> socketAndOne_;
    std::atomic<uint64_t> inode_;
    // The daemon could not even be asked: its queue is full.
    std::atomic<bool> unasked_;
};

}  // namespace qvs::wire

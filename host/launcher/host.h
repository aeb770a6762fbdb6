// SPDX-License-Identifier: Apache-2.0
// A daemon and this process's part in it: started or joined, leased, left.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "launcher/error.h"
#include "wire/client.h"

namespace qvs::launcher {

struct HostOptions {
    std::string directory;
    std::string lab;
    std::string trace;
    unsigned maxStateMib = 0;
    bool whileLeased = false;
    bool isPrivate = false;  // the daemon removes the directory when it ends
};

// How long the launcher waits for a daemon to begin or to end, and for a lab to be applied. Other answers
// have the wait of every client.
constexpr std::chrono::seconds kBeginsWithin{30};
constexpr std::chrono::seconds kEndsWithin{30};
constexpr std::chrono::seconds kChangesWithin{60};
inline int millisecondsOf(std::chrono::milliseconds time) {
    return static_cast<int>(time.count());
}

// Starts a daemon and waits until it serves; its process. Throws when it does not, or when another one serves
// the directory. One that was killed just now does not count.
pid_t startAlone(const std::string &program, const HostOptions &options);

// The host of a directory while this object lives.
class Host {
  public:
    // Joins the daemon that serves the directory, or starts one that ends with its last lease.
    Host(const std::string &program, const HostOptions &options);

    // Gives the lease back. When it was the last one, waits until the daemon is gone; a private one that does
    // not go is killed.
    void leave();

  private:
    bool join();

    std::string socket_;
    std::string who_;  // serves the directory, for messages
    bool isPrivate_;
    wire::Client lease_;
    pid_t daemon_ = 0;  // when this process started it
};

// A control request at the given socket; the answer, after its "ok" was checked.
nlohmann::json control(const std::string &socket, const nlohmann::json &request,
                       std::chrono::milliseconds within = std::chrono::milliseconds(wire::hostTimeout()));
// Connects or throws with the remedy.
void connectTo(wire::Client *client, const std::string &socket);
// " (process 123)", or nothing where that cannot be known.
std::string processBehind(const wire::Client &client);
// What to say of a host after a call failed.
Error noAnswer(const std::string &socket, const std::string &who);
// A file that holds JSON, such as a lab.
nlohmann::json readJson(const std::string &path);

}  // namespace qvs::launcher

// A daemon and this process's part in it: started or joined, leased, left.
#pragma once

#include <sys/types.h>

#include <string>

#include <nlohmann/json_fwd.hpp>

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

// Starts a daemon and waits until it serves; its process. Throws when it does not.
pid_t startDaemon(const std::string &program, const HostOptions &options);

// The host of a directory while this object lives.
class Host {
  public:
    // Joins the daemon that serves the directory, or starts one that ends with its last lease.
    Host(const std::string &program, const HostOptions &options);

    // Gives the lease back. When it was the last one, waits until the daemon is gone.
    void leave();

  private:
    bool join();
    // False when another daemon has the directory.
    bool start(const std::string &program, const HostOptions &options);

    std::string socket_;
    wire::Client lease_;
    pid_t daemon_ = 0;  // when this process started it
};

// A control request at the given socket; the answer, after its "ok" was checked.
nlohmann::json control(const std::string &socket, const nlohmann::json &request);
// Connects or throws with the remedy.
void connectTo(wire::Client *client, const std::string &socket, int timeoutSeconds = wire::kTimeoutSeconds);
// A file that holds JSON, such as a lab.
nlohmann::json readJson(const std::string &path);

}  // namespace qvs::launcher

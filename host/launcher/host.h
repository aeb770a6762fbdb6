// SPDX-License-Identifier: Apache-2.0
// Starts, joins and leaves daemons, and sends them control requests.
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
    bool network = false;
    bool isPrivate = false;  // whether the daemon removes the directory when it ends
};

// The times that the launcher waits for a daemon to start, to end, and to apply a lab. It waits for other
// answers as long as every client.
constexpr std::chrono::seconds kBeginsWithin{30};
constexpr std::chrono::seconds kEndsWithin{30};
constexpr std::chrono::seconds kChangesWithin{60};
inline int millisecondsOf(std::chrono::milliseconds time) {
    return static_cast<int>(time.count());
}

// Starts a daemon, waits until it serves and returns its process. Throws if it fails or if another daemon
// serves the directory. A daemon that was just killed is ignored.
pid_t startAlone(const std::string &program, const HostOptions &options);

// A lease of the host of a directory.
class Host {
  public:
    // Joins the daemon that serves the directory, or starts one that ends with its last lease.
    Host(const std::string &program, const HostOptions &options);

    // Ends the lease. If it was the last one, waits until the daemon ends. A private daemon that does not end
    // is killed.
    void leave();

  private:
    bool join();

    std::string socket_;
    std::string who_;  // the process that serves, for messages
    bool isPrivate_;
    wire::Client lease_;
    pid_t daemon_ = 0;  // 0 unless this process started it
};

// A connection to a running host.
struct HostClient {
    // Connects. Throws an error that names the remedy if no host answers.
    explicit HostClient(const std::string &socket);
    // Sends a request and returns the reply. Throws if the host does not answer.
    std::string call(wire::Writer &request);

    wire::Client client;
    std::string who;  // the process that serves, for messages

  private:
    std::string socket_;
};

// Sends a control request and returns the answer. Throws if the request failed.
nlohmann::json control(const std::string &socket, const nlohmann::json &request,
                       std::chrono::milliseconds within = std::chrono::milliseconds(wire::hostTimeout()));
// Returns " (process 123)", or an empty text if the process is unknown.
std::string processBehind(const wire::Client &client);
// Returns the error about a host after a failed call.
Error noAnswer(const std::string &socket, const std::string &who);
// Reads a JSON file, such as a lab.
nlohmann::json readJson(const std::string &path);

}  // namespace qvs::launcher

// SPDX-License-Identifier: Apache-2.0
// The network of the host: sends policies to the data path, and receives its facts.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <nlohmann/json_fwd.hpp>

#include "daemon/network/compile.h"
#include "daemon/network/process.h"
#include "daemon/network/slots.h"
#include "wire/message.h"

namespace qvs::kernel {

// A host without the network has no process and no memory of counters.
class Network : private wire::Noncopyable {
  public:
    struct Options {
        std::string directory;  // of the state
        std::string program;    // of the data path
    };

    Network(asio::io_context &io, Model &model, Options options);
    ~Network();

    // Sends what changed since the last call. Starts or ends the data path if the host has a network now, or
    // no longer. Returns the generation that is to be in force, or 0 if there is nothing to wait for.
    [[nodiscard]] uint64_t publish();
    // Calls `then` when this generation is in force, or when the data path has ended.
    void wait(uint64_t generation, std::function<void()> then);
    // Ends the data path. The stored attachments stay.
    void stop();
    // Returns true if the data path still has to answer.
    bool settling() const { return !owed_.empty(); }

    nlohmann::json describe() const;

  private:
    struct Owed {
        uint64_t generation = 0;
        std::chrono::steady_clock::time_point until;
    };
    struct Carrier {
        bool up = false;
        std::string problem;
    };
    // The configuration of the data path, as packed bytes.
    struct SentSwitch {
        std::string head;
        std::map<uint32_t, std::string> ports;
    };

    void begin();
    void end();

    uint64_t sendChanges();
    void compileAll(policy::ConfigurationT *configuration);
    void compileTouched(const Changes::Touched &touched, policy::ConfigurationT *configuration);
    void compileInto(const Switch &sw, policy::ConfigurationT *configuration);
    void compileInto(const Port &port, policy::ConfigurationT *configuration);
    void addAttachments(policy::ConfigurationT *configuration);
    void send(policy::ConfigurationT *configuration);

    void processStarted();
    void processEnded();
    void received(uint32_t kind, std::string_view payload, int file);
    bool inForce(wire::Reader reader);
    bool keep(wire::Reader reader, int file);
    bool carrier(wire::Reader reader);
    bool learnt(wire::Reader reader);
    bool joined(wire::Reader reader);
    bool told(wire::Reader reader);
    void takeCheck(uint32_t number, std::string found);
    void applyCarriers();
    void applyCarrier(Port &port, bool up);
    void answer(uint64_t generation);
    void watch();

    Model &model_;
    Options options_;
    std::unique_ptr<Slots> slots_;
    Process process_;
    bool on_ = false;

    // The changes that are known.
    uint64_t changes_ = UINT64_MAX;
    uint64_t tables_ = UINT64_MAX;
    StaticMacs macs_;
    // What was sent.
    bool whole_ = true;  // the data path has nothing
    std::map<uint32_t, SentSwitch> sent_;
    std::string sentAttachments_;
    uint64_t generation_ = 0;
    uint64_t inForce_ = 0;
    std::deque<Owed> owed_;
    std::multimap<uint64_t, std::function<void()>> waiting_;
    asio::steady_timer timer_;
    // What was received.
    std::map<std::string, int> kept_;
    std::map<uint32_t, Carrier> carriers_;        // by port
    std::map<uint32_t, std::string> neighbours_;  // by port, as LLDP tells them
    std::set<uint32_t> stored_;                   // the ports with a stored attachment
};

}  // namespace qvs::kernel

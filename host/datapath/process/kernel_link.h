// SPDX-License-Identifier: Apache-2.0
// The socket to the emulated kernel. Sending never blocks: facts that the kernel has not read yet are merged
// into the latest state.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "datapath/frame.h"
#include "datapath/protocol.h"
#include "wire/file.h"
#include "wire/message.h"

namespace qvs::datapath {

class Loop;

// What the kernel asks for.
struct KernelRequests {
    std::function<void(const std::string &directory, wire::File memory)> start;
    std::function<void(const std::string &name, wire::File file)> kept;
    std::function<void(std::string_view configuration)> configure;
};

class KernelLink : private wire::Noncopyable {
  public:
    KernelLink(Loop &loop, wire::File socket, KernelRequests requests);
    ~KernelLink();

    // Messages of protocol.h.
    void inForce(uint64_t generation);
    void keep(const std::string &name, int file);
    void carrier(uint32_t port, bool up, const std::string &problem);
    void learnt(uint32_t number, MacAddress address, uint16_t vlan, uint32_t port, bool here);
    void joined(uint32_t port, std::span<const uint8_t> group, bool joined);
    void told(uint32_t port, Topic topic, std::span<const uint8_t> state);

    // Sends waiting messages, as far as the socket takes them.
    void flush();

  private:
    struct Message {
        std::string bytes;
        size_t sent = 0;
        wire::File file;
    };
    struct Change {
        bool here;
        uint32_t port;
    };

    void receive();
    [[nodiscard]] bool take(size_t *at);
    void perform(Kind kind, std::string_view payload);
    wire::File nextFile();
    void queue(wire::Writer &message, wire::File file = {});
    void queueCarriers();
    void queueFacts();
    // Returns false if the socket is full.
    [[nodiscard]] bool sendFront();

    Loop &loop_;
    wire::File socket_;
    KernelRequests requests_;
    std::string unread_;
    std::deque<wire::File> files_;
    std::deque<Message> unsent_;
    bool waits_ = false;  // for the kernel to read
    std::map<uint32_t, std::pair<bool, std::string>> carriers_;
    std::map<std::tuple<uint32_t, uint16_t, MacAddress>, Change> learnt_;  // by switch, VLAN, address
    std::map<std::pair<uint32_t, std::string>, bool> joined_;              // by port, group
    std::map<std::pair<uint32_t, Topic>, std::string> told_;
};

}  // namespace qvs::datapath

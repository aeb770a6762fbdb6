// SPDX-License-Identifier: Apache-2.0
// The data path: the switches of a configuration, and the endpoints and sessions at their ports.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "datapath/process/endpoint.h"
#include "datapath/process/exporter.h"
#include "datapath/process/kernel_link.h"
#include "datapath/process/loop.h"
#include "datapath/process/namespaces.h"
#include "datapath/switch.h"

#include <policy_generated.h>

namespace qvs::datapath {

// A receiver of complete frames that joins a port beside its endpoint.
class Guest : private wire::Noncopyable {
  public:
    virtual ~Guest() = default;
    // Returns false if the guest does not read, and the frame is lost.
    virtual bool deliver(std::span<const uint8_t> frame) = 0;
    // Called when the port is removed.
    virtual void portRemoved() = 0;
};

// What a guest wants: to be a client of the port, or copies of what goes out of it or comes in by it.
enum class Role : uint8_t { Client, WatchOut, WatchIn };

class DataPath : private wire::Noncopyable {
  public:
    DataPath(Loop &loop, KernelLink &kernel, Namespaces &namespaces);
    ~DataPath();

    // Takes the state directory, and the memory with the counters. Returns false if the memory cannot be
    // used.
    [[nodiscard]] bool start(const std::string &directory, const wire::File &memory);
    // Applies a configuration. One that is malformed is logged, and changes nothing.
    void configure(std::string_view bytes);
    // Runs timers, and answers configurations whose attachments are open or have failed.
    void endOfTurn();

    // Finds a port by its identifier or the name of its client; by a switch's name if it is not empty. Throws
    // an AttachmentError that says why there is none.
    uint32_t findPort(const std::string &switchName, const std::string &port) const;
    void join(uint32_t port, Guest &guest, Role role);
    void leave(uint32_t port, Guest &guest);
    // A client sends a frame into the switch.
    void receive(uint32_t port, const Frame &frame);

  private:
    struct Owner {
        std::unique_ptr<policy::SwitchT> policy;
        std::unique_ptr<Switch> forwarding;
        std::set<uint32_t> ports;
    };
    struct Attached {
        uint32_t owner = 0;  // number of the switch; 0: none
        std::string id;
        std::string client;
        size_t mtu = 1500;
        bool link = true;  // as the kernel wants it
        std::unique_ptr<policy::AttachmentT> attachment;
        std::unique_ptr<Endpoint> endpoint;
        std::optional<bool> carrier;  // none until the attachment says it
        std::string problem;
        MacAddress address = 0;   // of the client's adapter, if the attachment knows it
        bool promiscuous = true;  // what the endpoint asks for
        std::vector<Guest *> guests[3];
    };

    void replaceSwitch(std::unique_ptr<policy::SwitchT> policy);
    void changePort(const policy::ChangedPort &changed, std::set<uint32_t> *named);
    void forget(const policy::ForgottenMac &forgotten);
    void learnPorts(Owner &owner);
    Attached &learnPort(const policy::SwitchT &policy, const policy::PortT &port);
    void removeSwitch(uint32_t number);
    void removePort(uint32_t port);
    void attach(const policy::Configuration &configuration);
    [[nodiscard]] static bool couldNotOpen(const Attached &attached);
    void open(uint32_t port, Attached &attached);
    void changeCarrier(uint32_t port, bool up, const std::string &problem);
    void countGuests(uint32_t port);
    [[nodiscard]] bool attachmentsSettled() const;
    bool send(uint32_t port, const Frame &frame);
    [[nodiscard]] Switch *switchOf(const Attached &attached);
    void tellSwitch(uint32_t port, const Attached &attached);

    Loop &loop_;
    KernelLink &kernel_;
    Namespaces &namespaces_;
    std::string directory_;
    Slot *slots_ = nullptr;
    Exporter exporter_;
    std::map<uint32_t, Owner> switches_;
    std::unordered_map<uint32_t, Attached> ports_;
    std::vector<uint64_t> unanswered_;  // generations
    Time answerBy_ = 0;
    Time tickAt_ = 0;
    uint64_t tickTimer_ = 0;
};

}  // namespace qvs::datapath

// SPDX-License-Identifier: Apache-2.0
// The sockets by which messages of flow records leave: UDP of this machine, in its own network.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "wire/file.h"

namespace qvs::policy {
struct IpfixT;
struct CollectorT;
}  // namespace qvs::policy

namespace qvs::datapath {

class Exporter : private wire::Noncopyable {
  public:
    // Sends a message as the next one of its observation domain. Returns false if the machine does not take
    // it.
    bool send(const policy::IpfixT &policy, const policy::CollectorT &collector, std::span<uint8_t> message,
              uint32_t records);

  private:
    using Address = std::vector<uint8_t>;
    int socketFor(const Address &source, bool isVersion4);

    std::map<std::pair<Address, bool>, wire::File> sockets_;
    // Records sent before, by source, collector with its port, and observation domain.
    std::map<std::string, uint32_t> sequences_;
};

}  // namespace qvs::datapath

// SPDX-License-Identifier: Apache-2.0
// Compiles stored policies for the data path. A stored record that is malformed compiles to the safe default
// that docs/datapath.md names.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "daemon/model/bytes.h"
#include "daemon/model/model.h"
#include "daemon/network/slots.h"
#include "policy_generated.h"

namespace qvs::kernel {

// The static addresses of all switches, by the number of the portset.
using StaticMacs = std::map<uint32_t, std::vector<policy::StaticMacT>>;
StaticMacs compileStaticMacs(Model &model);

// Compiles a switch that has a portset, without its ports.
std::unique_ptr<policy::SwitchT> compileSwitch(const Model &model, const Switch &sw, const StaticMacs &macs,
                                               const std::string &directory, Slots &slots);
std::unique_ptr<policy::PortT> compilePort(const Model &model, const Port &port, Slots &slots);
// Compiles the attachments of all ports. Names of files are relative to the directory of the state.
std::vector<std::unique_ptr<policy::AttachmentT>> compileAttachments(const Model &model,
                                                                     const std::string &directory);

// The parts of `compileSwitch` and `compilePort`, one for each family of policies.
std::unique_ptr<policy::VlanT> compileVlan(const Port &port);
std::vector<std::unique_ptr<policy::PrivateVlanT>> compilePrivateVlans(const Switch &sw);
std::unique_ptr<policy::SecurityT> compileSecurity(const Port &port);
std::unique_ptr<policy::ReceiveFilterT> compileFilter(const Port &port);
std::unique_ptr<policy::LearningT> compileLearning(const Model &model, const Port &port);
// Compiles a stored teaming policy. Returns null if none is stored.
std::unique_ptr<policy::TeamingT> compileTeaming(const Model &model, const Switch &sw,
                                                 const Property *stored);
std::vector<std::unique_ptr<policy::MirrorSessionT>> compileMirrors(const Model &model, const Switch &sw,
                                                                    Slots &slots);
std::vector<std::unique_ptr<policy::GroupT>> compileGroups(const Model &model, const Port &port,
                                                           Slots &slots);
// Compiles a list of addresses of multicast groups. Returns false if none is stored.
bool compileMulticastList(const Property *stored, std::vector<policy::Mac> *list);
// Adds the health check and LLDP. The directory of the state names the host.
void compileControl(const Switch &sw, const std::string &directory, policy::SwitchT *compiled);
std::unique_ptr<policy::IpfixT> compileIpfix(const Port &port, Slots &slots);

// Returns the port of a switch that has this identifier, or this NIC or client. Returns null for an unknown
// name.
const Port *portNamed(const Model &model, const Switch &sw, std::string_view name);

inline policy::Mac macFrom(uint64_t address) {
    std::array<uint8_t, 6> bytes{};
    for (size_t i = bytes.size(); i-- != 0; address >>= 8)
        bytes[i] = static_cast<uint8_t>(address);
    return policy::Mac(flatbuffers::span<const uint8_t, 6>(bytes));
}
inline policy::Mac macFrom(std::string_view bytes) {
    uint8_t copy[6] = {};
    std::memcpy(copy, bytes.data(), std::min(bytes.size(), sizeof copy));
    return policy::Mac(flatbuffers::span<const uint8_t, 6>(copy));
}
inline std::vector<uint8_t> bytesFrom(std::string_view bytes) {
    return {bytes.begin(), bytes.end()};
}

}  // namespace qvs::kernel

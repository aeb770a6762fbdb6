// SPDX-License-Identifier: Apache-2.0
// The offloads of the interface of a client.
#include "datapath/process/interface_features.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstring>
#include <string_view>
#include <vector>

#include "wire/file.h"

namespace qvs::datapath {

namespace {

constexpr std::string_view kUnusual[] = {
    "tx-udp-segmentation",
    "tx-sctp-segmentation",
    "tx-checksum-sctp",
    "tx-gre-segmentation",
    "tx-gre-csum-segmentation",
    "tx-ipxip4-segmentation",
    "tx-ipxip6-segmentation",
    "tx-udp_tnl-segmentation",
    "tx-udp_tnl-csum-segmentation",
    "tx-tunnel-remcsum-segmentation",
    "tx-esp-segmentation",
    "tx-fcoe-segmentation",
    "tx-gso-list",
    "tx-gso-partial",
    "tx-vlan-hw-insert",
    "tx-vlan-stag-hw-insert",
};

bool isUnusual(std::string_view name) {
    for (const std::string_view unusual : kUnusual) {
        if (name == unusual) return true;
    }
    return false;
}

bool call(int socket, const char *interface, void *command) {
    ifreq request{};
    strncpy(request.ifr_name, interface, sizeof request.ifr_name - 1);
    request.ifr_data = static_cast<char *>(command);
    return ioctl(socket, SIOCETHTOOL, &request) == 0;
}

// A structure of the interface that ends with an array, in memory with room for the array.
template <typename T>
struct WithArray {
    explicit WithArray(size_t arrayBytes) : memory((sizeof(T) + arrayBytes + 7) / 8) {}
    T *operator->() { return reinterpret_cast<T *>(memory.data()); }
    std::vector<uint64_t> memory;
};

}  // namespace

void disableUnusualOffloads(const char *interface) {
    const wire::File socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    WithArray<ethtool_sset_info> sets(sizeof(uint32_t));
    sets->cmd = ETHTOOL_GSSET_INFO;
    sets->sset_mask = 1ull << ETH_SS_FEATURES;
    if (!socket || !call(socket.get(), interface, sets.memory.data()) || sets->sset_mask == 0) return;
    const uint32_t count = sets->data[0];

    WithArray<ethtool_gstrings> names(size_t{count} * ETH_GSTRING_LEN);
    names->cmd = ETHTOOL_GSTRINGS;
    names->string_set = ETH_SS_FEATURES;
    names->len = count;
    if (!call(socket.get(), interface, names.memory.data())) return;

    const uint32_t blocks = (count + 31) / 32;
    WithArray<ethtool_sfeatures> features(blocks * sizeof(ethtool_set_features_block));
    features->cmd = ETHTOOL_SFEATURES;
    features->size = blocks;
    for (uint32_t i = 0; i < count; ++i) {
        const char *name = reinterpret_cast<const char *>(names->data) + size_t{i} * ETH_GSTRING_LEN;
        if (isUnusual({name, strnlen(name, ETH_GSTRING_LEN)}))
            features->features[i / 32].valid |= 1u << (i % 32);
    }
    call(socket.get(), interface, features.memory.data());
}

}  // namespace qvs::datapath

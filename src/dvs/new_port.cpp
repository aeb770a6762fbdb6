// SPDX-License-Identifier: Apache-2.0
// The initial properties of a port, collected in a container and passed to the kernel in one request.
#include "dvs/new_port.h"

#include <cstdlib>
#include <cstring>

#include "qvs/mesh_public.h"
#include "qvs/records.h"
#include "qvs/vsdvs.h"

namespace qvs {
namespace {

constexpr QVS_PortStatistics kNoStatistics = {};
constexpr VSDVS_PortVLAN kNoVlan = {};
// A trunk of all VLANs but 0.
constexpr struct {
    VSDVS_PortVLAN policy;
    VSDVS_VLANRange range;
} kUplinkVlan = {{VSDVS_VLAN_TRUNK, 0, 0, 1}, {1, QVS_VLAN_MAX}};
static_assert(sizeof kUplinkVlan == 12);

struct Initial {
    const char *key;
    const void *value;
    size_t length;
    uint32_t propType;
};

class Container {
  public:
    Container() = default;
    Container(const Container &) = delete;
    Container &operator=(const Container &) = delete;
    ~Container() {
        if (data_ != nullptr) DVSData_Free(data_);
    }

    HYP_ReturnStatus allocate() {
        const HYP_ReturnStatus status = DVSData_Alloc(&data_, std::malloc, std::free);
        if (status != HYP_OK) data_ = nullptr;
        return status;
    }
    HYP_ReturnStatus add(const Initial &property) {
        return DVSData_Update(data_, property.key, property.value, static_cast<uint32_t>(property.length),
                              property.propType);
    }
    HYP_ReturnStatus serialise(void **buffer, uint32_t *length) {
        return DVSData_Serialize(data_, buffer, length, DVS_DATA_FORMAT);
    }

  private:
    DVSData *data_ = nullptr;
};

HYP_ReturnStatus serialiseInitial(const char *name, uint32_t connectId, PortKind kind, void **buffer,
                                  uint32_t *length) {
    const bool uplink = kind == PortKind::Uplink;
    const Initial properties[] = {
        {QVS_KEY_PORT_ALIAS, name, std::strlen(name) + 1, DVS_PROP_CONFIG},
        {QVS_KEY_PORT_CONNECT_ID, &connectId, sizeof connectId, DVS_PROP_CONFIG},
        {QVS_KEY_PORT_BLOCK, "false", sizeof "false", DVS_PROP_CONFIG},
        {QVS_KEY_PORT_STATISTICS, &kNoStatistics, sizeof kNoStatistics, DVS_PROP_RUNTIME},
        uplink ? Initial{QVS_KEY_PORT_VLAN, &kUplinkVlan, sizeof kUplinkVlan, DVS_PROP_POLICY}
               : Initial{QVS_KEY_PORT_VLAN, &kNoVlan, sizeof kNoVlan, DVS_PROP_POLICY},
    };
    Container container;
    if (const HYP_ReturnStatus status = container.allocate(); status != HYP_OK) return status;
    for (const Initial &property : properties) {
        if (const HYP_ReturnStatus status = container.add(property); status != HYP_OK) return status;
    }
    return container.serialise(buffer, length);
}

HYP_ReturnStatus checkPort(const Place &port) {
    if (port.status() != HYP_OK) return port.status();
    return port.portId() != nullptr ? HYP_OK : HYP_BAD_PARAM;
}

}  // namespace

HYP_ReturnStatus addPort(const Place &port, uint32_t connectId, PortKind kind) {
    if (const HYP_ReturnStatus status = checkPort(port); status != HYP_OK) return status;
    void *buffer = nullptr;
    uint32_t length = 0;
    HYP_ReturnStatus status = serialiseInitial(port.portId(), connectId, kind, &buffer, &length);
    if (status != HYP_OK) return status;
    status = DVSHYP_PortAdd(port.switchId(), port.portId(), buffer, length);
    std::free(buffer);
    return status;
}

HYP_ReturnStatus removePort(const Place &port) {
    if (const HYP_ReturnStatus status = checkPort(port); status != HYP_OK) return status;
    return DVSHYP_PortRemove(port.switchId(), port.portId());
}

}  // namespace qvs

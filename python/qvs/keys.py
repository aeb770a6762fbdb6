# SPDX-License-Identifier: Apache-2.0
# Written by scripts/checks/python-module --update from src/abi.txt and config/abi.txt: do not edit.
"""The keys of the stored properties."""
from typing import Final

ALIAS: Final = "com.quillon.common.alias"
COMMON_PREFIX: Final = "com.quillon.common."
DISCOVERY: Final = "com.quillon.etherswitch.cdp"
ETHERSWITCH_IPFIX: Final = "com.quillon.etherswitch.ipfix"
ETHERSWITCH_MIRROR_SESSIONS: Final = "com.quillon.etherswitch.mirrorSessions"
ETHERSWITCH_MTU: Final = "com.quillon.etherswitch.mtu"
ETHERSWITCH_PORT_FILTER: Final = "com.quillon.etherswitch.port.extraEthFRP"
ETHERSWITCH_PORT_MIRROR_SESSIONS: Final = "com.quillon.etherswitch.port.mirrorSessions"
ETHERSWITCH_PORT_SECURITY: Final = "com.quillon.etherswitch.port.security"
ETHERSWITCH_PORT_TEAMING: Final = "com.quillon.etherswitch.port.teaming"
ETHERSWITCH_PORT_VLAN: Final = "com.quillon.etherswitch.port.vlan"
ETHERSWITCH_PRIVATE_VLAN_MAP: Final = "com.quillon.etherswitch.pvlanMap"
HOST_PORTSET: Final = "com.quillon.common.host.portset"
HOST_STATUS: Final = "com.quillon.common.host.volatile.status"
IPV4_ADDRESS: Final = "com.quillon.etherswitch.ipv4addr"
LACP: Final = "com.quillon.etherswitch.lacp"
LEARN_STATIC: Final = "com.quillon.vswitch.macLearning.learnStatic"
LS_TEAMING: Final = "com.quillon.vswitch.logicalswitch.teaming"
MAC_LEARNING: Final = "com.quillon.vswitch.macLearning"
MTU: Final = "com.quillon.vswitch.mtu"
MULTICAST_ADDRESSES: Final = "com.quillon.vswitch.mcast.user.addresses"
MULTICAST_FILTER: Final = "com.quillon.vswitch.multicastFilter"
OPAQUE: Final = "com.quillon.common.opaqueDvs"
OVERLAY: Final = "com.quillon.common.overlay"
OVERLAY_CACHE: Final = "com.quillon.vswitch.macLearning.overlay.cache"
PORT_ALIAS: Final = "com.quillon.common.port.alias"
PORT_BLOCK: Final = "com.quillon.common.port.block"
PORT_CONNECT_ID: Final = "com.quillon.common.port.connectid"
PORT_DVFILTER: Final = "com.quillon.common.port.dvfilter"
PORT_EXTERNAL_ID: Final = "com.quillon.port.extraConfig.vnic.external.id"
PORT_FILTER: Final = "com.quillon.vswitch.port.extraEthFRP"
PORT_IPFIX: Final = "com.quillon.net.ipfix.port"
PORT_LACP: Final = "com.quillon.etherswitch.port.lacp"
PORT_LINK_STATUS: Final = "com.quillon.common.port.linkstatus"
PORT_LS_TEAMING: Final = "com.quillon.vswitch.port.logicalswitch.teaming"
PORT_MAC_MANAGEMENT: Final = "com.quillon.vswitch.port.macManagement"
PORT_MIRROR_SESSIONS: Final = "com.quillon.vswitch.port.mirrorSessions"
PORT_MTU_CHECK_RESULT: Final = "com.quillon.common.port.volatile.mtuchkresult"
PORT_MULTICAST_ADDRESSES: Final = "com.quillon.vswitch.port.mcast.user.addresses"
PORT_MULTICAST_OVERRIDE: Final = "com.quillon.vswitch.port.mcast.user.addresses.override"
PORT_NESTED_TAG: Final = "com.quillon.vswitch.port.vlanNestedTag"
PORT_OVERLAY: Final = "com.quillon.common.port.overlay"
PORT_PASS_THROUGH_STATUS: Final = "com.quillon.common.port.volatile.ptstatus"
PORT_PRIORITY: Final = "com.quillon.vswitch.port.priority"
PORT_PRIORITY_RETAIN: Final = "com.quillon.vswitch.port.priority.retain"
PORT_RESPOOL: Final = "com.quillon.common.port.respool.assoc"
PORT_RESPOOLS: Final = "com.quillon.common.port.respools.cfg"
PORT_SECURITY: Final = "com.quillon.vswitch.port.security"
PORT_SERVICE_PROFILE: Final = "com.quillon.common.port.serviceprofile"
PORT_SHAPER_BROADCAST: Final = "com.quillon.common.port.shaper.broadcast"
PORT_SHAPER_INPUT: Final = "com.quillon.common.port.shaper.input"
PORT_SHAPER_OUTPUT: Final = "com.quillon.common.port.shaper.output"
PORT_STATISTICS: Final = "com.quillon.common.port.statistics"
PORT_STATUS: Final = "com.quillon.common.port.volatile.status"
PORT_TEAMING: Final = "com.quillon.vswitch.port.teaming.policy"
PORT_TEAMING_OVERRIDE: Final = "com.quillon.vswitch.port.teaming.override"
PORT_TX_UPLINK: Final = "com.quillon.vswitch.port.txUplink"
PORT_VLAN: Final = "com.quillon.vswitch.port.vlan"
PORT_VLAN_CHECK_RESULT: Final = "com.quillon.common.port.volatile.vlanchkresult"
PORT_VLAN_IN_FORCE: Final = "com.quillon.common.port.volatile.vlan"
PRIVATE_VLAN_MAP: Final = "com.quillon.vswitch.pvlanMap"
RCF_TYPE: Final = "com.quillon.vswitch.rcf.INSNType"
RESPOOLS: Final = "com.quillon.common.respools.cfg"
RESPOOL_LIST: Final = "com.quillon.common.respools.list"
RESPOOL_SCHEDULER: Final = "com.quillon.common.respools.sched"
SERVICE_INSTANCE: Final = "com.quillon.common.serviceinstance"
STATIC_MAC_ALLOW: Final = "com.quillon.vswitch.macLearning.staticMACAllow"
TEAMING: Final = "com.quillon.vswitch.teaming"
TEAM_CHECK_DEPLOYMENT: Final = "com.quillon.common.teamcheck.deploy"
TEAM_CHECK_PARAMETER: Final = "com.quillon.mesh.teamcheck.param"
TRACEFLOW_ENABLED: Final = "com.quillon.tarnData.traceflow.enabled"
UPLINK_MIRROR_SESSIONS: Final = "com.quillon.vswitch.uplinkMirrorSessions"
UPLINK_NAMES: Final = "com.quillon.common.uplinkPorts"
UPLINK_PORTS: Final = "com.quillon.common.host.uplinkPorts"
VERSION: Final = "com.quillon.common.version"
VLAN_MTU_CHECK_DEPLOYMENT: Final = "com.quillon.common.vlanmtucheck.deploy"
VLAN_MTU_CHECK_PARAMETER: Final = "com.quillon.mesh.vlanmtucheck.param"

# Of each key the scope, QVS_SCOPE_..., and the class that the library stores it with, 0 if it never does.
KEYS: Final[dict[str, tuple[int, int]]] = {
    ALIAS: (0, 16),
    HOST_PORTSET: (1, 16),
    UPLINK_PORTS: (1, 16),
    HOST_STATUS: (1, 0),
    OPAQUE: (0, 16),
    OVERLAY: (0, 0),
    PORT_ALIAS: (2, 16),
    PORT_BLOCK: (2, 16),
    PORT_CONNECT_ID: (2, 16),
    PORT_DVFILTER: (2, 0),
    PORT_LINK_STATUS: (2, 0),
    PORT_OVERLAY: (2, 0),
    PORT_RESPOOL: (2, 0),
    PORT_RESPOOLS: (2, 0),
    PORT_SERVICE_PROFILE: (2, 0),
    PORT_SHAPER_BROADCAST: (2, 0),
    PORT_SHAPER_INPUT: (2, 0),
    PORT_SHAPER_OUTPUT: (2, 0),
    PORT_STATISTICS: (2, 32),
    PORT_MTU_CHECK_RESULT: (2, 0),
    PORT_PASS_THROUGH_STATUS: (2, 0),
    PORT_STATUS: (2, 0),
    PORT_VLAN_IN_FORCE: (2, 0),
    PORT_VLAN_CHECK_RESULT: (2, 0),
    RESPOOLS: (0, 0),
    RESPOOL_LIST: (0, 0),
    RESPOOL_SCHEDULER: (0, 0),
    SERVICE_INSTANCE: (0, 0),
    TEAM_CHECK_DEPLOYMENT: (0, 16),
    UPLINK_NAMES: (0, 16),
    VERSION: (0, 16),
    VLAN_MTU_CHECK_DEPLOYMENT: (0, 16),
    DISCOVERY: (0, 16),
    ETHERSWITCH_IPFIX: (0, 0),
    IPV4_ADDRESS: (0, 0),
    LACP: (0, 0),
    ETHERSWITCH_MIRROR_SESSIONS: (1, 0),
    ETHERSWITCH_MTU: (0, 16),
    ETHERSWITCH_PORT_FILTER: (2, 0),
    PORT_LACP: (2, 0),
    ETHERSWITCH_PORT_MIRROR_SESSIONS: (2, 0),
    ETHERSWITCH_PORT_SECURITY: (2, 0),
    ETHERSWITCH_PORT_TEAMING: (2, 0),
    ETHERSWITCH_PORT_VLAN: (2, 0),
    ETHERSWITCH_PRIVATE_VLAN_MAP: (0, 0),
    TEAM_CHECK_PARAMETER: (0, 8),
    VLAN_MTU_CHECK_PARAMETER: (0, 8),
    PORT_IPFIX: (2, 8),
    PORT_EXTERNAL_ID: (2, 16),
    TRACEFLOW_ENABLED: (1, 16),
    LS_TEAMING: (0, 16),
    LEARN_STATIC: (1, 16),
    OVERLAY_CACHE: (1, 16),
    STATIC_MAC_ALLOW: (1, 16),
    MAC_LEARNING: (1, 16),
    MULTICAST_ADDRESSES: (1, 16),
    MTU: (0, 16),
    MULTICAST_FILTER: (0, 16),
    PORT_FILTER: (2, 16),
    PORT_LS_TEAMING: (2, 16),
    PORT_MAC_MANAGEMENT: (2, 16),
    PORT_MULTICAST_OVERRIDE: (2, 16),
    PORT_MULTICAST_ADDRESSES: (2, 0),
    PORT_MIRROR_SESSIONS: (2, 8),
    PORT_PRIORITY_RETAIN: (2, 0),
    PORT_PRIORITY: (2, 8),
    PORT_SECURITY: (2, 16),
    PORT_TEAMING_OVERRIDE: (2, 16),
    PORT_TEAMING: (2, 16),
    PORT_TX_UPLINK: (2, 16),
    PORT_VLAN: (2, 8),
    PORT_NESTED_TAG: (2, 16),
    PRIVATE_VLAN_MAP: (0, 8),
    RCF_TYPE: (0, 16),
    TEAMING: (0, 16),
    UPLINK_MIRROR_SESSIONS: (1, 8),
}

/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The keys of the stored properties, each with its scope, the class it is stored with, and the limits of its
 * value.
 *
 * Programs that walk the snapshot or read properties by key use these names. The typed operations of
 * <qvs/vsdvs.h>, <qvs/healthcheck.h>, <qvs/discovery.h> and <qvs/ipfixdvs.h> read and store the same keys.
 * <qvs/qvs.h> does not include this header.
 */
#ifndef QVS_KEYS_H
#define QVS_KEYS_H

#include <qvs/hyp.h>
#include <qvs/mesh_public.h>

/* Scopes of a property: the switch, with the same value on all hosts; the part of the switch on this host; a
 * port. */
#define QVS_SCOPE_GLOBAL 0u
#define QVS_SCOPE_HOST 1u
#define QVS_SCOPE_PORT 2u

/* ------------------------------------------------------------------------------------------------------- *
 * Identity of switches and ports. Texts are stored with their NUL, numbers in 32 bits.
 * ------------------------------------------------------------------------------------------------------- */

#define QVS_KEY_ALIAS "com.quillon.common.alias"                    /* readable name of the switch */
#define QVS_KEY_VERSION "com.quillon.common.version"                /* number: switch version */
#define QVS_KEY_OPAQUE "com.quillon.common.opaqueDvs"               /* "true" or "false" */
#define QVS_KEY_HOST_PORTSET "com.quillon.common.host.portset"      /* name of the data path on this host */
#define QVS_KEY_PORT_ALIAS "com.quillon.common.port.alias"          /* readable name of the port */
#define QVS_KEY_PORT_CONNECT_ID "com.quillon.common.port.connectid" /* number */
#define QVS_KEY_PORT_BLOCK "com.quillon.common.port.block"          /* "true" or "false" */
#define QVS_KEY_PORT_EXTERNAL_ID "com.quillon.port.extraConfig.vnic.external.id" /* text, opaque ports */
#define QVS_KEY_UPLINK_NAMES "com.quillon.common.uplinkPorts"      /* list of VSDVS_UplinkName */
#define QVS_KEY_UPLINK_PORTS "com.quillon.common.host.uplinkPorts" /* list of VSDVS_UplinkPort */

#define QVS_KEY_COMMON_PREFIX "com.quillon.common." /* what the keys of identity begin with */
#define QVS_SWITCH_VERSION_DEFAULT 105u             /* the version that qvs gives a new switch */
#define QVS_MAX_PORTS_DEFAULT 128u /* room of a switch that is created without saying how much */

/* ------------------------------------------------------------------------------------------------------- *
 * State that the kernel writes; records: <qvs/records.h>, results of checks: <qvs/healthcheck.h>
 * ------------------------------------------------------------------------------------------------------- */

#define QVS_KEY_PORT_STATUS "com.quillon.common.port.volatile.status"
#define QVS_KEY_PORT_PASS_THROUGH_STATUS "com.quillon.common.port.volatile.ptstatus"
#define QVS_KEY_PORT_STATISTICS "com.quillon.common.port.statistics"
#define QVS_KEY_PORT_LINK_STATUS "com.quillon.common.port.linkstatus"
#define QVS_KEY_PORT_VLAN_IN_FORCE "com.quillon.common.port.volatile.vlan"
#define QVS_KEY_PORT_VLAN_CHECK_RESULT "com.quillon.common.port.volatile.vlanchkresult"
#define QVS_KEY_PORT_MTU_CHECK_RESULT "com.quillon.common.port.volatile.mtuchkresult"
#define QVS_KEY_HOST_STATUS "com.quillon.common.host.volatile.status"
#define QVS_KEY_TRACEFLOW_ENABLED "com.quillon.tarnData.traceflow.enabled" /* "true", or absent */

/* ------------------------------------------------------------------------------------------------------- *
 * Settings that libqvs reads and stores
 * ------------------------------------------------------------------------------------------------------- */

#define QVS_KEY_MTU "com.quillon.vswitch.mtu"                 /* number, bytes */
#define QVS_KEY_ETHERSWITCH_MTU "com.quillon.etherswitch.mtu" /* the same number, for older readers */
#define QVS_MTU_MIN 1280u
#define QVS_MTU_MAX 9000u

#define QVS_KEY_PORT_MIRROR_SESSIONS "com.quillon.vswitch.port.mirrorSessions" /* VSDVS_MirrorHeader, ... */
#define QVS_KEY_UPLINK_MIRROR_SESSIONS "com.quillon.vswitch.uplinkMirrorSessions"

#define QVS_KEY_PRIVATE_VLAN_MAP "com.quillon.vswitch.pvlanMap"   /* VSDVS_PrivateVLAN each */
#define QVS_KEY_PORT_VLAN "com.quillon.vswitch.port.vlan"         /* VSDVS_PortVLAN, VSDVS_VLANRange each */
#define QVS_KEY_PORT_PRIORITY "com.quillon.vswitch.port.priority" /* number, the tag's priority */
#define QVS_KEY_PORT_NESTED_TAG "com.quillon.vswitch.port.vlanNestedTag" /* number: 1 enabled, 0 disabled */
#define QVS_VLAN_MAX 4094u
#define QVS_PRIORITY_MAX 7u

#define QVS_KEY_PORT_SECURITY "com.quillon.vswitch.port.security"  /* number: VSDVS_SECURITY_... */
#define QVS_KEY_PORT_FILTER "com.quillon.vswitch.port.extraEthFRP" /* VSDVS_ExtraEthFilter */

#define QVS_KEY_TEAMING "com.quillon.vswitch.teaming"                             /* VSDVS_TeamingPolicy */
#define QVS_KEY_PORT_TEAMING "com.quillon.vswitch.port.teaming.policy"            /* VSDVS_TeamingPolicy */
#define QVS_KEY_PORT_TEAMING_OVERRIDE "com.quillon.vswitch.port.teaming.override" /* text */
#define QVS_KEY_LS_TEAMING "com.quillon.vswitch.logicalswitch.teaming"            /* list, 2748 bytes each */
#define QVS_KEY_PORT_LS_TEAMING "com.quillon.vswitch.port.logicalswitch.teaming"  /* text */
#define QVS_KEY_PORT_TX_UPLINK "com.quillon.vswitch.port.txUplink"                /* "always" or "normal" */

#define QVS_KEY_MAC_LEARNING "com.quillon.vswitch.macLearning"                /* VSDVS_MACLearning */
#define QVS_KEY_PORT_MAC_MANAGEMENT "com.quillon.vswitch.port.macManagement"  /* VSDVS_PortMACManagement */
#define QVS_KEY_LEARN_STATIC "com.quillon.vswitch.macLearning.learnStatic"    /* "true" or "false" */
#define QVS_KEY_OVERLAY_CACHE "com.quillon.vswitch.macLearning.overlay.cache" /* "true" or "false" */
#define QVS_KEY_STATIC_MAC_ALLOW "com.quillon.vswitch.macLearning.staticMACAllow" /* "true" or "false" */
#define QVS_MAC_AGING_MAX 1000000u                                                /* seconds */

#define QVS_KEY_MULTICAST_FILTER "com.quillon.vswitch.multicastFilter" /* "legacyFiltering" or "snooping" */
#define QVS_KEY_RCF_TYPE "com.quillon.vswitch.rcf.INSNType"            /* "cbpf" or "ebpf" */
#define QVS_KEY_MULTICAST_ADDRESSES "com.quillon.vswitch.mcast.user.addresses" /* VSDVS_McastList */
#define QVS_KEY_PORT_MULTICAST_OVERRIDE "com.quillon.vswitch.port.mcast.user.addresses.override"

#define QVS_KEY_TEAM_CHECK_DEPLOYMENT "com.quillon.common.teamcheck.deploy" /* HealthCheck_Deployment */
#define QVS_KEY_TEAM_CHECK_PARAMETER "com.quillon.mesh.teamcheck.param"     /* 1 byte */
#define QVS_KEY_VLAN_MTU_CHECK_DEPLOYMENT "com.quillon.common.vlanmtucheck.deploy" /* the same record */
#define QVS_KEY_VLAN_MTU_CHECK_PARAMETER "com.quillon.mesh.vlanmtucheck.param"     /* 512 bytes */

#define QVS_KEY_DISCOVERY "com.quillon.etherswitch.cdp" /* Discovery_Param */
#define QVS_KEY_PORT_IPFIX "com.quillon.net.ipfix.port" /* IPFIXDVS_Port and an observation id */

/* ------------------------------------------------------------------------------------------------------- *
 * Properties of other programs, which NetDVS_Dump prints by field where their layout is known; those records
 * that no typed operation has: <qvs/records.h>
 * ------------------------------------------------------------------------------------------------------- */

#define QVS_KEY_OVERLAY "com.quillon.common.overlay"
#define QVS_KEY_PORT_OVERLAY "com.quillon.common.port.overlay"
#define QVS_KEY_PORT_SHAPER_INPUT "com.quillon.common.port.shaper.input"
#define QVS_KEY_PORT_SHAPER_OUTPUT "com.quillon.common.port.shaper.output"
#define QVS_KEY_PORT_SHAPER_BROADCAST "com.quillon.common.port.shaper.broadcast"
#define QVS_KEY_PORT_DVFILTER "com.quillon.common.port.dvfilter"
#define QVS_KEY_PORT_RESPOOLS "com.quillon.common.port.respools.cfg"
#define QVS_KEY_PORT_RESPOOL "com.quillon.common.port.respool.assoc"
#define QVS_KEY_PORT_SERVICE_PROFILE "com.quillon.common.port.serviceprofile"
#define QVS_KEY_RESPOOL_LIST "com.quillon.common.respools.list"
#define QVS_KEY_RESPOOLS "com.quillon.common.respools.cfg"
#define QVS_KEY_RESPOOL_SCHEDULER "com.quillon.common.respools.sched"
#define QVS_KEY_SERVICE_INSTANCE "com.quillon.common.serviceinstance"
#define QVS_KEY_ETHERSWITCH_IPFIX "com.quillon.etherswitch.ipfix"
#define QVS_KEY_IPV4_ADDRESS "com.quillon.etherswitch.ipv4addr"
#define QVS_KEY_LACP "com.quillon.etherswitch.lacp"
#define QVS_KEY_PORT_LACP "com.quillon.etherswitch.port.lacp"
#define QVS_KEY_ETHERSWITCH_MIRROR_SESSIONS "com.quillon.etherswitch.mirrorSessions"
#define QVS_KEY_ETHERSWITCH_PORT_MIRROR_SESSIONS "com.quillon.etherswitch.port.mirrorSessions"
#define QVS_KEY_ETHERSWITCH_PRIVATE_VLAN_MAP "com.quillon.etherswitch.pvlanMap"
#define QVS_KEY_ETHERSWITCH_PORT_FILTER "com.quillon.etherswitch.port.extraEthFRP"
#define QVS_KEY_ETHERSWITCH_PORT_SECURITY "com.quillon.etherswitch.port.security"
#define QVS_KEY_ETHERSWITCH_PORT_TEAMING "com.quillon.etherswitch.port.teaming"
#define QVS_KEY_ETHERSWITCH_PORT_VLAN "com.quillon.etherswitch.port.vlan"
#define QVS_KEY_PORT_MULTICAST_ADDRESSES "com.quillon.vswitch.port.mcast.user.addresses"
#define QVS_KEY_PORT_PRIORITY_RETAIN "com.quillon.vswitch.port.priority.retain"

/*
 * Every key with its scope and the class that libqvs stores it with; 0 for what libqvs never stores. Expands
 * X(KEY, SCOPE, CLASS) for each, so that a program can make a table of its own:
 *
 *   #define NAME(key, scope, propType) key,
 *   static const char *const names[] = {QVS_KEYS(NAME)};
 */
#define QVS_KEYS(X)                                                         \
    X(QVS_KEY_ALIAS, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)                     \
    X(QVS_KEY_VERSION, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)                   \
    X(QVS_KEY_OPAQUE, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)                    \
    X(QVS_KEY_HOST_PORTSET, QVS_SCOPE_HOST, DVS_PROP_CONFIG)                \
    X(QVS_KEY_PORT_ALIAS, QVS_SCOPE_PORT, DVS_PROP_CONFIG)                  \
    X(QVS_KEY_PORT_CONNECT_ID, QVS_SCOPE_PORT, DVS_PROP_CONFIG)             \
    X(QVS_KEY_PORT_BLOCK, QVS_SCOPE_PORT, DVS_PROP_CONFIG)                  \
    X(QVS_KEY_PORT_EXTERNAL_ID, QVS_SCOPE_PORT, DVS_PROP_CONFIG)            \
    X(QVS_KEY_UPLINK_NAMES, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)              \
    X(QVS_KEY_UPLINK_PORTS, QVS_SCOPE_HOST, DVS_PROP_CONFIG)                \
    X(QVS_KEY_PORT_STATUS, QVS_SCOPE_PORT, 0)                               \
    X(QVS_KEY_PORT_PASS_THROUGH_STATUS, QVS_SCOPE_PORT, 0)                  \
    X(QVS_KEY_PORT_STATISTICS, QVS_SCOPE_PORT, DVS_PROP_RUNTIME)            \
    X(QVS_KEY_PORT_LINK_STATUS, QVS_SCOPE_PORT, 0)                          \
    X(QVS_KEY_PORT_VLAN_IN_FORCE, QVS_SCOPE_PORT, 0)                        \
    X(QVS_KEY_PORT_VLAN_CHECK_RESULT, QVS_SCOPE_PORT, 0)                    \
    X(QVS_KEY_PORT_MTU_CHECK_RESULT, QVS_SCOPE_PORT, 0)                     \
    X(QVS_KEY_HOST_STATUS, QVS_SCOPE_HOST, 0)                               \
    X(QVS_KEY_TRACEFLOW_ENABLED, QVS_SCOPE_HOST, DVS_PROP_CONFIG)           \
    X(QVS_KEY_MTU, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)                       \
    X(QVS_KEY_ETHERSWITCH_MTU, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)           \
    X(QVS_KEY_PORT_MIRROR_SESSIONS, QVS_SCOPE_PORT, DVS_PROP_POLICY)        \
    X(QVS_KEY_UPLINK_MIRROR_SESSIONS, QVS_SCOPE_HOST, DVS_PROP_POLICY)      \
    X(QVS_KEY_PRIVATE_VLAN_MAP, QVS_SCOPE_GLOBAL, DVS_PROP_POLICY)          \
    X(QVS_KEY_PORT_VLAN, QVS_SCOPE_PORT, DVS_PROP_POLICY)                   \
    X(QVS_KEY_PORT_PRIORITY, QVS_SCOPE_PORT, DVS_PROP_POLICY)               \
    X(QVS_KEY_PORT_NESTED_TAG, QVS_SCOPE_PORT, DVS_PROP_CONFIG)             \
    X(QVS_KEY_PORT_SECURITY, QVS_SCOPE_PORT, DVS_PROP_CONFIG)               \
    X(QVS_KEY_PORT_FILTER, QVS_SCOPE_PORT, DVS_PROP_CONFIG)                 \
    X(QVS_KEY_TEAMING, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)                   \
    X(QVS_KEY_PORT_TEAMING, QVS_SCOPE_PORT, DVS_PROP_CONFIG)                \
    X(QVS_KEY_PORT_TEAMING_OVERRIDE, QVS_SCOPE_PORT, DVS_PROP_CONFIG)       \
    X(QVS_KEY_LS_TEAMING, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)                \
    X(QVS_KEY_PORT_LS_TEAMING, QVS_SCOPE_PORT, DVS_PROP_CONFIG)             \
    X(QVS_KEY_PORT_TX_UPLINK, QVS_SCOPE_PORT, DVS_PROP_CONFIG)              \
    X(QVS_KEY_MAC_LEARNING, QVS_SCOPE_HOST, DVS_PROP_CONFIG)                \
    X(QVS_KEY_PORT_MAC_MANAGEMENT, QVS_SCOPE_PORT, DVS_PROP_CONFIG)         \
    X(QVS_KEY_LEARN_STATIC, QVS_SCOPE_HOST, DVS_PROP_CONFIG)                \
    X(QVS_KEY_OVERLAY_CACHE, QVS_SCOPE_HOST, DVS_PROP_CONFIG)               \
    X(QVS_KEY_STATIC_MAC_ALLOW, QVS_SCOPE_HOST, DVS_PROP_CONFIG)            \
    X(QVS_KEY_MULTICAST_FILTER, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)          \
    X(QVS_KEY_RCF_TYPE, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)                  \
    X(QVS_KEY_MULTICAST_ADDRESSES, QVS_SCOPE_HOST, DVS_PROP_CONFIG)         \
    X(QVS_KEY_PORT_MULTICAST_OVERRIDE, QVS_SCOPE_PORT, DVS_PROP_CONFIG)     \
    X(QVS_KEY_TEAM_CHECK_DEPLOYMENT, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)     \
    X(QVS_KEY_TEAM_CHECK_PARAMETER, QVS_SCOPE_GLOBAL, DVS_PROP_POLICY)      \
    X(QVS_KEY_VLAN_MTU_CHECK_DEPLOYMENT, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG) \
    X(QVS_KEY_VLAN_MTU_CHECK_PARAMETER, QVS_SCOPE_GLOBAL, DVS_PROP_POLICY)  \
    X(QVS_KEY_DISCOVERY, QVS_SCOPE_GLOBAL, DVS_PROP_CONFIG)                 \
    X(QVS_KEY_PORT_IPFIX, QVS_SCOPE_PORT, DVS_PROP_POLICY)                  \
    X(QVS_KEY_OVERLAY, QVS_SCOPE_GLOBAL, 0)                                 \
    X(QVS_KEY_PORT_OVERLAY, QVS_SCOPE_PORT, 0)                              \
    X(QVS_KEY_PORT_SHAPER_INPUT, QVS_SCOPE_PORT, 0)                         \
    X(QVS_KEY_PORT_SHAPER_OUTPUT, QVS_SCOPE_PORT, 0)                        \
    X(QVS_KEY_PORT_SHAPER_BROADCAST, QVS_SCOPE_PORT, 0)                     \
    X(QVS_KEY_PORT_DVFILTER, QVS_SCOPE_PORT, 0)                             \
    X(QVS_KEY_PORT_RESPOOLS, QVS_SCOPE_PORT, 0)                             \
    X(QVS_KEY_PORT_RESPOOL, QVS_SCOPE_PORT, 0)                              \
    X(QVS_KEY_PORT_SERVICE_PROFILE, QVS_SCOPE_PORT, 0)                      \
    X(QVS_KEY_RESPOOL_LIST, QVS_SCOPE_GLOBAL, 0)                            \
    X(QVS_KEY_RESPOOLS, QVS_SCOPE_GLOBAL, 0)                                \
    X(QVS_KEY_RESPOOL_SCHEDULER, QVS_SCOPE_GLOBAL, 0)                       \
    X(QVS_KEY_SERVICE_INSTANCE, QVS_SCOPE_GLOBAL, 0)                        \
    X(QVS_KEY_ETHERSWITCH_IPFIX, QVS_SCOPE_GLOBAL, 0)                       \
    X(QVS_KEY_IPV4_ADDRESS, QVS_SCOPE_GLOBAL, 0)                            \
    X(QVS_KEY_LACP, QVS_SCOPE_GLOBAL, 0)                                    \
    X(QVS_KEY_PORT_LACP, QVS_SCOPE_PORT, 0)                                 \
    X(QVS_KEY_ETHERSWITCH_MIRROR_SESSIONS, QVS_SCOPE_HOST, 0)               \
    X(QVS_KEY_ETHERSWITCH_PORT_MIRROR_SESSIONS, QVS_SCOPE_PORT, 0)          \
    X(QVS_KEY_ETHERSWITCH_PRIVATE_VLAN_MAP, QVS_SCOPE_GLOBAL, 0)            \
    X(QVS_KEY_ETHERSWITCH_PORT_FILTER, QVS_SCOPE_PORT, 0)                   \
    X(QVS_KEY_ETHERSWITCH_PORT_SECURITY, QVS_SCOPE_PORT, 0)                 \
    X(QVS_KEY_ETHERSWITCH_PORT_TEAMING, QVS_SCOPE_PORT, 0)                  \
    X(QVS_KEY_ETHERSWITCH_PORT_VLAN, QVS_SCOPE_PORT, 0)                     \
    X(QVS_KEY_PORT_MULTICAST_ADDRESSES, QVS_SCOPE_PORT, 0)                  \
    X(QVS_KEY_PORT_PRIORITY_RETAIN, QVS_SCOPE_PORT, 0)

#endif

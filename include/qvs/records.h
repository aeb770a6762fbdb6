/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Records that the kernel and other programs store and that NetDVS_Dump prints by field: the state of ports
 * and hosts, overlays, traffic shaping, IPFIX and link aggregation of a switch.
 *
 * No typed operation reads or stores them: they are read by key (<qvs/keys.h>), with the generic getters of
 * <qvs/vsdvs.h> or in the snapshot. Like all records they are packed and little-endian. A stored value may be
 * shorter than its record: compare the length before you read a field.
 */
#ifndef QVS_RECORDS_H
#define QVS_RECORDS_H

#include <qvs/hyp.h>

/* ------------------------------------------------------------------------------------------------------- *
 * State that the kernel writes
 * ------------------------------------------------------------------------------------------------------- */

/* Flags of a port's state. */
#define QVS_PORT_IN_USE 0x1u
#define QVS_PORT_LINK_UP 0x2u
#define QVS_PORT_BLOCKED 0x4u

/* The state of a port, QVS_KEY_PORT_STATUS. The name of the client follows, a NUL-terminated text whose
 * length the kernel bounds. Of a free port the flags alone mean something. */
typedef struct QVS_PACKED QVS_PortStatus {
    uint64_t flags; /* QVS_PORT_... */
    uint8_t reserved[8];
    uint32_t portNumber; /* the port's number in the kernel */
} QVS_PortStatus;
QVS_ASSERT_SIZE(QVS_PortStatus, 20);
QVS_ASSERT_OFFSET(QVS_PortStatus, portNumber, 16);

#define QVS_PASS_THROUGH_ACTIVE 0x8u

/* Whether pass-through is active on a port, QVS_KEY_PORT_PASS_THROUGH_STATUS. */
typedef struct QVS_PACKED QVS_PassThroughStatus {
    uint64_t flags;  /* QVS_PASS_THROUGH_ACTIVE */
    uint64_t reason; /* the kernel's number for why not, when it is not active */
} QVS_PassThroughStatus;
QVS_ASSERT_SIZE(QVS_PassThroughStatus, 16);

/* The counters of a port, QVS_KEY_PORT_STATISTICS: packets and bytes. */
typedef struct QVS_PACKED QVS_PortStatistics {
    uint64_t pktsInUnicast;
    uint64_t bytesInUnicast;
    uint64_t pktsInMulticast;
    uint64_t bytesInMulticast;
    uint64_t pktsInBroadcast;
    uint64_t bytesInBroadcast;
    uint64_t pktsOutUnicast;
    uint64_t bytesOutUnicast;
    uint64_t pktsOutMulticast;
    uint64_t bytesOutMulticast;
    uint64_t pktsOutBroadcast;
    uint64_t bytesOutBroadcast;
    uint64_t pktsInDropped;
    uint64_t pktsOutDropped;
    uint64_t pktsInException;
    uint64_t pktsOutException;
} QVS_PortStatistics;
QVS_ASSERT_SIZE(QVS_PortStatistics, 128);
QVS_ASSERT_OFFSET(QVS_PortStatistics, pktsOutUnicast, 48);
QVS_ASSERT_OFFSET(QVS_PortStatistics, pktsInDropped, 96);

#define QVS_HEALTH_GREEN 0u
#define QVS_HEALTH_YELLOW 1u
#define QVS_HEALTH_RED 2u

/* The health of a host's part of a switch, QVS_KEY_HOST_STATUS. The reason follows, a NUL-terminated text
 * whose length the kernel bounds. */
typedef struct QVS_PACKED QVS_HostStatus {
    uint32_t health; /* QVS_HEALTH_...; any other number is unknown */
} QVS_HostStatus;
QVS_ASSERT_SIZE(QVS_HostStatus, 4);

/* Speeds and duplex modes of a link, each a bit of its own; they are not in the order of the speeds. */
#define QVS_SPEED_AUTO 0x1u
#define QVS_SPEED_10_HALF 0x2u /* Mb/s, up to QVS_SPEED_1000_FULL */
#define QVS_SPEED_10_FULL 0x4u
#define QVS_SPEED_100_HALF 0x8u
#define QVS_SPEED_100_FULL 0x10u
#define QVS_SPEED_1000_HALF 0x20u
#define QVS_SPEED_1000_FULL 0x40u
#define QVS_SPEED_10G_FULL 0x80u
#define QVS_SPEED_2500_FULL 0x100u /* Mb/s */
#define QVS_SPEED_20G_FULL 0x200u
#define QVS_SPEED_40G_FULL 0x400u
#define QVS_SPEED_100G_FULL 0x800u

/* The link of a port, QVS_KEY_PORT_LINK_STATUS. */
typedef struct QVS_PACKED QVS_LinkStatus {
    uint8_t up; /* non-zero: up */
    uint8_t reserved;
    uint16_t speed; /* one of QVS_SPEED_... */
} QVS_LinkStatus;
QVS_ASSERT_SIZE(QVS_LinkStatus, 4);
QVS_ASSERT_OFFSET(QVS_LinkStatus, speed, 2);

/* The VLAN in force on a port, QVS_KEY_PORT_VLAN_IN_FORCE; rangeCount VSDVS_VLANRange follow. */
typedef struct QVS_PACKED QVS_VLANInForce {
    uint16_t vlan;
    uint16_t rangeCount;
} QVS_VLANInForce;
QVS_ASSERT_SIZE(QVS_VLANInForce, 4);

/* ------------------------------------------------------------------------------------------------------- *
 * Settings of other programs
 * ------------------------------------------------------------------------------------------------------- */

/* An overlay of a switch, QVS_KEY_OVERLAY: a QVS_ListHead and these. */
typedef struct QVS_PACKED QVS_Overlay {
    uint32_t number; /* shown in parentheses */
    char name[32];   /* NUL-terminated */
} QVS_Overlay;
QVS_ASSERT_SIZE(QVS_Overlay, 36);

/* An overlay binding of a port, QVS_KEY_PORT_OVERLAY: a QVS_ListHead and these. */
typedef struct QVS_PACKED QVS_PortOverlay {
    uint32_t number; /* shown behind "@" */
    uint64_t value;  /* shown in hexadecimal */
} QVS_PortOverlay;
QVS_ASSERT_SIZE(QVS_PortOverlay, 12);

/* How the traffic of a port is shaped, QVS_KEY_PORT_SHAPER_INPUT and its kin. */
typedef struct QVS_PACKED QVS_Shaper {
    uint64_t averageBandwidth; /* bytes per second */
    uint64_t peakBandwidth;    /* bytes per second */
    uint64_t burstSize;        /* bytes */
} QVS_Shaper;
QVS_ASSERT_SIZE(QVS_Shaper, 24);

/* Flow sampling of a switch, QVS_KEY_ETHERSWITCH_IPFIX. That of a port is IPFIXDVS_Port of <qvs/ipfixdvs.h>.
 */
typedef struct QVS_PACKED QVS_SwitchIpfix {
    uint32_t idleTimeout;   /* seconds */
    uint32_t activeTimeout; /* seconds */
    uint8_t address[16];    /* of the collector, network order; an IPv4 address in the first 4 bytes */
    uint16_t port;          /* of the collector */
    uint32_t samplingRate;
    uint8_t internalFlowsOnly; /* non-zero: true */
    uint8_t isIPv6;            /* non-zero: all 16 bytes are the address */
    uint32_t obsDomainID;
} QVS_SwitchIpfix;
QVS_ASSERT_SIZE(QVS_SwitchIpfix, 36);
QVS_ASSERT_OFFSET(QVS_SwitchIpfix, samplingRate, 26);
QVS_ASSERT_OFFSET(QVS_SwitchIpfix, obsDomainID, 32);

/* Modes of link aggregation; any other number is none. */
#define QVS_LACP_ACTIVE 1u
#define QVS_LACP_PASSIVE 2u

/* A link aggregation group of a switch, QVS_KEY_LACP: a QVS_ListHead and these. */
typedef struct QVS_PACKED QVS_Lag {
    char name[65];        /* NUL-terminated */
    char key[16];         /* NUL-terminated */
    uint32_t mode;        /* QVS_LACP_... */
    uint32_t loadBalance; /* 0 to 20, in the order in which the dump names them */
    int32_t portNumber;
} QVS_Lag;
QVS_ASSERT_SIZE(QVS_Lag, 93);
QVS_ASSERT_OFFSET(QVS_Lag, mode, 81);

#define QVS_LACP_ENABLED 1u /* any other status is disabled */

/* Link aggregation of a port, QVS_KEY_PORT_LACP. */
typedef struct QVS_PACKED QVS_PortLacp {
    uint32_t status; /* QVS_LACP_ENABLED */
    uint32_t mode;   /* QVS_LACP_... */
} QVS_PortLacp;
QVS_ASSERT_SIZE(QVS_PortLacp, 8);

#endif

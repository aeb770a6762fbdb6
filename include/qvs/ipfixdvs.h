/* SPDX-License-Identifier: Apache-2.0 */
/*
 * IPFIX flow sampling of a port.
 *
 *   void *record = NULL;
 *   if (IPFIXDVS_GetIpfixGranular("sw1", "port0", &record) == HYP_OK && record != NULL) ...
 *   IPFIXDVS_FreeMemory(record);
 */
#ifndef QVS_IPFIXDVS_H
#define QVS_IPFIXDVS_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

#define IPFIXDVS_MAX_COLLECTORS 8u

#define IPFIXDVS_INTERNAL_FLOWS_ONLY 0x1u
#define IPFIXDVS_VNIC_SAMPLING_ONLY 0x2u

typedef struct QVS_PACKED IPFIXDVS_Collector {
    uint8_t address[16]; /* network order; an IPv4 address in the first 4 bytes */
    uint16_t port;
    uint8_t isIPv6; /* non-zero: all 16 bytes are the address */
    uint8_t reserved;
} IPFIXDVS_Collector;
QVS_ASSERT_SIZE(IPFIXDVS_Collector, 20);

/* The stored record, class POLICY. virtualObsIDLength bytes of text without a NUL follow it. */
typedef struct QVS_PACKED IPFIXDVS_Port {
    uint32_t idleTimeout;   /* seconds */
    uint32_t activeTimeout; /* seconds */
    uint32_t samplingRate;
    uint8_t flags;
    uint8_t collectorCount;
    uint16_t virtualObsIDLength;
    uint32_t obsDomainID;
    uint32_t srcIPv4; /* network order */
    IPFIXDVS_Collector collectors[IPFIXDVS_MAX_COLLECTORS];
} IPFIXDVS_Port;
QVS_ASSERT_SIZE(IPFIXDVS_Port, 184);
QVS_ASSERT_OFFSET(IPFIXDVS_Port, virtualObsIDLength, 14);

/* Releases a record of an IPFIXDVS getter. Do not use free. Null is passed on to the state library. */
QVS_API void IPFIXDVS_FreeMemory(void *pointer);

/*
 * Returns the IPFIX record of a port.
 *
 *   alias   alias of the switch, which must have class "vswitch"; borrowed
 *   port    port identifier, borrowed
 *   record  receives the IPFIXDVS_Port and its text, or null when none is stored (the status is then HYP_OK);
 *           the caller releases it with IPFIXDVS_FreeMemory; unchanged on failure
 *
 * HYP_NOT_SUPPORTED: the switch has another class. HYP_NOT_FOUND: the snapshot does not contain the switch or
 * the port. HYP_FAILURE: the stored record has a wrong size. HYP_BAD_PARAM: an argument is null. Any other
 * status comes from the state library.
 */
QVS_API HYP_ReturnStatus IPFIXDVS_GetIpfixGranular(const char *alias, const char *port, void **record);

/*
 * Stores the IPFIX record of a port, or clears it when record is null.
 *
 *   alias   alias of the switch, which must have class "vswitch"; borrowed
 *   port    port identifier, borrowed
 *   record  184 bytes and virtualObsIDLength bytes of text, borrowed; their values are not checked
 *
 * Clearing returns HYP_OK when nothing is stored. It first reads the record; when that fails, it returns the
 * status of reading.
 *
 * HYP_NOT_SUPPORTED: the switch has another class. HYP_NOT_FOUND: the snapshot does not contain the switch or
 * the port. HYP_BAD_PARAM: alias or port is null. Any other status comes from the state library.
 */
QVS_API HYP_ReturnStatus IPFIXDVS_SetIpfixGranular(const char *alias, const char *port, const void *record);

QVS_EXTERN_C_END

#endif

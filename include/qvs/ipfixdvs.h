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

/* The record, class POLICY; virtualObsIDLength bytes of text without a NUL follow. */
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

/* Releases a record that an IPFIXDVS getter handed out (never with free); null is passed on to the state
 * library. */
QVS_API void IPFIXDVS_FreeMemory(void *pointer);

/*
 * Hands out the record of a port; null and success when there is none. The caller gives it back with
 * IPFIXDVS_FreeMemory; a failure leaves the pointer as it was.
 *
 * HYP_NOT_SUPPORTED: the switch is of another class. HYP_NOT_FOUND: no such switch or port in the snapshot.
 * HYP_FAILURE: a stored record of the wrong size. HYP_BAD_PARAM: null argument. Otherwise the status of the
 * state library.
 */
QVS_API HYP_ReturnStatus IPFIXDVS_GetIpfixGranular(const char *alias, const char *port, void **record);

/*
 * Stores a record of 184 bytes and what its virtualObsIDLength adds, or with null clears what is stored
 * (nothing stored is a success; a failure to read it is the answer).
 *
 * HYP_NOT_SUPPORTED: the switch is of another class. HYP_NOT_FOUND: no such switch or port in the snapshot.
 * HYP_BAD_PARAM: null alias or port. Otherwise the status of the state library. What the record holds is not
 * checked.
 */
QVS_API HYP_ReturnStatus IPFIXDVS_SetIpfixGranular(const char *alias, const char *port, const void *record);

QVS_EXTERN_C_END

#endif

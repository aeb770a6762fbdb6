// SPDX-License-Identifier: Apache-2.0
// The release functions of each family. Values of the state library are returned to the state library; memory
// of the library is released with free.
#include <cstdlib>

#include "qvs/healthcheck.h"
#include "qvs/ipfixdvs.h"
#include "qvs/mesh_public.h"
#include "qvs/netdvs.h"
#include "qvs/vsdvs.h"
#include "qvs/vshyp.h"

extern "C" void VSDVS_FreeMemory(void *pointer) {
    DVSHYP_DataFree(pointer);
}
extern "C" void HealthCheck_FreeMemory(void *pointer) {
    DVSHYP_DataFree(pointer);
}
extern "C" void IPFIXDVS_FreeMemory(void *pointer) {
    DVSHYP_DataFree(pointer);
}
extern "C" void NetDVS_FreeMemory(void *text) {
    std::free(text);
}
extern "C" void VSHYP_FreeMemory(void *pointer) {
    std::free(pointer);
}

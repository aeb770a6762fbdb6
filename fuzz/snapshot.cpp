// SPDX-License-Identifier: Apache-2.0
// Loads any bytes as a snapshot, searches it and dumps what comes of it.
#include <cstdint>

#include "qvs/qvs.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (DVSState_ConfigDeserialize(data, static_cast<uint32_t>(size)) != HYP_OK) return 0;
    DVSState_SwitchFindByAlias("sw1");
    DVSState_PortFind("73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00", "port0");
    char *text = nullptr;
    if (NetDVS_Dump(nullptr, &text) == HYP_OK) NetDVS_FreeMemory(text);
    return 0;
}

// SPDX-License-Identifier: Apache-2.0
// Calls any function of libqvs on a kernel whose values, answers of devices and output of the shell are the
// input. A failure leaves no pointer and no part of an answer in the caller's memory.
#include "kernel.h"
#include "qvs/qvs.h"
#include "steps/functions.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace qvs;
    fuzz::Bytes input(data, size);
    fuzz::fuzzedKernel().answers = nullptr;
    fuzz::loadSnapshot();
    const test::Function &function = test::kFunctions[input.u8() % test::kFunctions.size()];
    fuzz::fuzzedKernel().answers = &input;
    const uint32_t status = function.call();
    fuzz::fuzzedKernel().answers = nullptr;
    // HYPIoctl has the kernel write to the memory of the caller itself.
    if (status == 0 || function.name == std::string_view("HYPIoctl")) return 0;
    fuzz::require(!test::pointerLeft());
    const std::string record = test::callerRecord();
    fuzz::require(record.find_first_not_of('\xee', record.find_first_not_of('\0')) == std::string::npos);
    return 0;
}

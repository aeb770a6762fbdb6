// SPDX-License-Identifier: Apache-2.0
// A host on which every device has something to tell, and the trace lines of requests to devices.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/frame.h"
#include "support/intercept.h"

namespace qvs::test {

// Switch "sw1", identifier "id", portset "ps1": port0 (number 0x4000001) and the uplinks uplink0 (2) and
// uplink1 (3) on pnic0 and pnic1. Switch "two" with its portset of that name: ports a (4) and b (5).
class RuntimeHost : public testing::Test {
  protected:
    void SetUp() override;

  private:
    CallsReset reset_;
};

// All of the trace that one request leaves, which begins with an open; that each open has its close is
// checked by taking the trace. The line has the command's number and name, the lengths of what is sent and
// asked for, and what is sent, as OFFSET:BYTES: "1010 GetSwitchInfo 268 220 0:707331".
std::string request(const std::string &path, const std::string &line, const std::string &answer = "0");

// Replaces bytes of the answer of the nth request from now on.
void patchAnswer(const std::string &path, uint32_t offset, const std::string &bytes, int nth = 1);

}  // namespace qvs::test

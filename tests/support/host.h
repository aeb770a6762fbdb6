// SPDX-License-Identifier: Apache-2.0
// The emulated host as a test sees it: faults, labs, the trace, and all its state as text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qvs::test {

// Sends one request of the control interface; a refused one fails the test. Returns the answer's JSON.
std::string control(std::string_view request);

// The nth request whose trace line matches the glob, and `count` - 1 more (0: all that follow), meets the
// action, which is the JSON member that names it, as in R"("errno":"EIO")".
void addFault(std::string_view match, std::string_view action, int nth = 1, int count = 1);
constexpr int kFromThenOn = 0;
void clearFaults();

void seed(std::string_view labJson);
// An empty host without faults, an empty snapshot and a fresh trace.
void resetHost();

// The trace lines since the last call of either function, each with its line end, but for the lines that tell
// of closed devices: the kernel notices those in its own time. That every device is closed again is checked
// instead.
std::string takeTrace();
void clearTrace();
// Lengths that the state library's own format decides, replaced by "*".
std::string maskLengths(std::string_view trace, std::string_view operation);

// Everything the host holds, in sorted lines: "portset NAME", "ID CLASS MAXPORTS VERSION", "ID global KEY
// TYPE HEX", "ID host KEY TYPE HEX", "ID port PORT" and "ID port PORT KEY TYPE HEX", but for the volatile
// properties unless they are asked for. Clears faults and trace and leaves a current snapshot behind.
std::string hostState(bool withVolatile = false);

// Stored properties, read from the kernel side; nothing when there is none.
std::optional<std::string> globalProp(const char *switchId, const char *key);
std::optional<std::string> hostProp(const char *switchId, const char *key);
std::optional<std::string> portProp(const char *switchId, const char *portId, const char *key);

// Stores one, as the kernel side would.
uint32_t setGlobalProp(const char *switchId, const char *key, std::string_view value, uint32_t type = 16);
uint32_t setHostProp(const char *switchId, const char *key, std::string_view value, uint32_t type = 16);
uint32_t setPortProp(const char *switchId, const char *portId, const char *key, std::string_view value,
                     uint32_t type = 16);

// The switch "sw1" with the identifier "id" and, where the number of ports is not enough, room for more; it
// is in the snapshot, and the trace is fresh.
void createSwitch(uint32_t maxPorts, uint32_t uplinks, uint32_t ports);
// A switch "hub" of another class.
void createHub();

// Descriptors that the process has open.
int openDescriptors();

}  // namespace qvs::test

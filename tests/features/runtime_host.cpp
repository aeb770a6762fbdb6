// SPDX-License-Identifier: Apache-2.0
// The lab behind the tests of device requests.
#include <sstream>

#include "features/runtime_host.h"
#include "support/mirror.h"
#include "support/test.h"

namespace qvs::test {
namespace {

// The first session mirrors to port0 and to uplink0.
std::string mirrorSessions() {
    return encode({{"one", {"port0", "uplink0"}}, {"two"}});
}

std::string lab() {
    const std::string policies = u32(2) + zeros(2 * 2748);
    return R"({"switches":[
      {"alias":"sw1","id":"id","portset":"ps1","maxPorts":16,"uplinks":["uplink0","uplink1"],"ports":["port0"],
       "properties":[{"scope":"global","key":"com.quillon.vswitch.logicalswitch.teaming","hex":")" +
           toHex(policies) + R"("},
                     {"scope":"port","port":"port0","key":"com.quillon.vswitch.port.mirrorSessions","hex":")" +
           toHex(mirrorSessions()) + R"("}]},
      {"alias":"two","ports":["a","b"]}],
     "clients":[{"switch":"sw1","port":"port0","name":"web.eth0"}],
     "macEntries":[
      {"switch":"sw1","port":"port0","mac":"02:00:00:00:00:01","count":2,"kind":"static"},
      {"switch":"sw1","port":"uplink1","mac":"02:00:00:00:00:09","kind":"static"},
      {"switch":"sw1","port":"uplink0","mac":"02:00:00:00:01:00","count":2}],
     "mcastFilters":[
      {"switch":"sw1","port":"port0","group":"01:00:5e:00:00:01","count":3},
      {"switch":"sw1","port":"port0","group":"224.1.2.251","count":3,
       "sources":["10.0.0.1","10.0.0.2","10.0.0.3","10.0.0.4","10.0.0.5"]},
      {"switch":"sw1","port":"port0","group":"ff02::fb","count":3,
       "sources":["2001:db8::1","2001:db8::2","2001:db8::3","2001:db8::4","2001:db8::5"]}],
     "spfPorts":[{"switch":"two","port":"a","mac":"02:00:00:00:02:01"},
                 {"switch":"two","port":"b","mac":"02:00:00:00:02:02"}],
     "liveTrace":[{"switch":"sw1","port":"port0"},{"switch":"two","port":"a"}],
     "kcp":{"interfaces":[{"name":"vif","count":2}],"containerInterfaces":[{"name":"cif","count":2}],
            "hypervisorInterfaces":[{"name":"hyp","count":2}],"hypervisorNics":[{"name":"nic","count":3}],
            "containers":[{"count":2}]}})";
}

}  // namespace

void RuntimeHost::SetUp() {
    seed(lab());
    ASSERT_STATUS(DVSLoadConfig(), 0);
    clearTrace();
}

std::string request(const std::string &path, const std::string &line, const std::string &answer) {
    std::istringstream words(line);
    std::string command, name, in, out, input;
    words >> command >> name >> in >> out >> std::ws;
    std::getline(words, input);
    const std::string device = "\"" + path + "\" ";
    return "device open " + device + "-> 0\ndevice ioctl " + device + "0x" + command + " " + name +
           " in=" + in + " out=" + out + " input=[" + input + "] -> " + answer + "\n";
}

void patchAnswer(const std::string &path, uint32_t offset, const std::string &bytes, int nth) {
    addFault(path.empty() ? "device ioctl" : "device ioctl \"" + path,
             R"("output":[{"offset":)" + std::to_string(offset) + R"(,"hex":")" + toHex(bytes) + R"("}])",
             nth);
}

}  // namespace qvs::test

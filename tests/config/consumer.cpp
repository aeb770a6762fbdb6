// SPDX-License-Identifier: Apache-2.0
// The same as a C++17 program: <qvs/config.hpp>.
#include <qvs/config.hpp>

#include <cstdio>
#include <string>

namespace config = qvs::config;

int main() {
    const std::string before = config::exportText();
    const std::string wanted = "switches: {sw2: {ports: {a: {vlan: {id: 5}}}}}";
    const config::Report changes = config::apply(wanted);
    const bool same = config::compare(wanted, QVSCONFIG_PRUNE).empty();
    try {
        config::validate("switches: [1");
    } catch (const config::Error &error) {
        std::printf("%x %u\n", error.status(), error.report()[0].line);
    }
    for (uint32_t i = 0; i < changes.size(); i++)
        std::printf("%s %s\n", changes[i].path, changes[i].after);
    return same && before != config::exportText({"sw2"}) ? 0 : 1;
}

// SPDX-License-Identifier: Apache-2.0
// Creates ports and checks them, for the durability test: `ports create SWITCH FROM TO` adds the ports
// "portN" and prints the first one that was not acknowledged; `ports check SWITCH COUNT` prints how many
// there are and fails unless the first COUNT are among them, whole.
#include <qvs/mesh_public.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

namespace {

constexpr char kAliasKey[] = "com.quillon.common.port.alias";
constexpr char kStatusKey[] = "com.quillon.common.port.volatile.status";

int create(const char *sw, int from, int to) {
    for (int i = from; i < to; ++i) {
        const std::string name = "port" + std::to_string(i);
        DVSData *data = nullptr;
        void *buffer = nullptr;
        uint32_t length = 0;
        DVSData_Alloc(&data, malloc, free);
        DVSData_Update(data, kAliasKey, name.c_str(), static_cast<uint32_t>(name.size() + 1),
                       DVS_PROP_CONFIG);
        DVSData_Serialize(data, &buffer, &length, DVS_DATA_FORMAT);
        DVSData_Free(data);
        const HYP_ReturnStatus status = DVSHYP_PortAdd(sw, name.c_str(), buffer, length);
        free(buffer);
        if (status != HYP_OK) to = i;
    }
    printf("%d\n", to);
    return 0;
}

std::string value(const char *sw, const std::string &port, const char *key) {
    void *bytes = nullptr;
    uint32_t length = 0;
    if (DVSHYP_PortDataGet(sw, port.c_str(), key, &bytes, &length) != HYP_OK) return {};
    std::string result(static_cast<const char *>(bytes), length);
    DVSHYP_DataFree(bytes);
    return result;
}

int check(const char *sw, int count) {
    std::set<std::string> numbers;
    int found = 0;
    for (;; ++found) {
        const std::string name = "port" + std::to_string(found);
        const std::string status = value(sw, name, kStatusKey);
        if (status.empty()) break;
        if (value(sw, name, kAliasKey) != name + '\0' || !numbers.insert(status.substr(16, 4)).second) {
            fprintf(stderr, "%s is damaged\n", name.c_str());
            return 1;
        }
    }
    printf("%d\n", found);
    return found >= count ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 5 && strcmp(argv[1], "create") == 0) return create(argv[2], atoi(argv[3]), atoi(argv[4]));
    if (argc == 4 && strcmp(argv[1], "check") == 0) return check(argv[2], atoi(argv[3]));
    if (argc == 3 && strcmp(argv[1], "add") == 0)
        return DVSHYP_SwitchAdd(argv[2], "vswitch", 100000, 105) != HYP_OK;
    return 2;
}

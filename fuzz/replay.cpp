// SPDX-License-Identifier: Apache-2.0
// Runs a fuzz target once with each file of the directory that the command line names.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv) {
    int files = 0;
    for (const auto &entry : std::filesystem::directory_iterator(argc == 2 ? argv[1] : ".")) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string input{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(input.data()), input.size());
        ++files;
    }
    printf("%d inputs\n", files);
    return files == 0;
}

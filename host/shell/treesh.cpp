// SPDX-License-Identifier: Apache-2.0
// treesh: the information shell of the kernel. It sends its arguments to the emulated kernel, prints the
// output and exits with the code of the kernel. It starts fast, because programs run it several times for one
// operation.
#include <unistd.h>

#include <cerrno>
#include <string>

#include "wire/client.h"

namespace {

void print(int descriptor, std::string_view text) {
    qvs::wire::writeAll(descriptor, text.data(), text.size());
}

int complain(std::string_view text) {
    print(STDERR_FILENO, text);
    return 1;
}

constexpr const char kSilent[] = "treesh: the hypercore does not answer\n";

const char *whyNoHost() {
    switch (errno) {
        case ETIMEDOUT:
            return kSilent;
        case EACCES:
        case EPERM:
            return "treesh: no permission to reach the hypercore\n";
        default:
            return "treesh: no hypercore\n";
    }
}

}  // namespace

int main(int argc, char **argv) {
    using namespace qvs::wire;
    Client kernel;
    if (!kernel.connectToHost()) return complain(whyNoHost());

    Writer request(Kind::Shell);
    request.u32(argc > 0 ? static_cast<uint32_t>(argc - 1) : 0);
    for (int i = 1; i < argc; ++i)
        request.text(argv[i]);
    std::string payload;
    if (!kernel.call(request, &payload))
        return complain(errno == ETIMEDOUT ? kSilent : "treesh: connection lost\n");

    Reader reply(payload);
    const uint32_t code = reply.u32();
    const std::string_view output = reply.text();
    const std::string_view errors = reply.text();
    if (!reply.complete()) return complain("treesh: broken answer\n");
    print(STDOUT_FILENO, output);
    print(STDERR_FILENO, errors);
    return static_cast<int>(code);
}

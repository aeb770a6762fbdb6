// qvs: the command-line tool.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

#include "run.h"

namespace {

// A closed standard descriptor would be given to the next file or device that is opened, and what is printed
// would go there. It is filled with one that cannot be written, before any library has run.
void fillStandardDescriptors(int, char **, char **) {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; fd++) {
        if (fcntl(fd, F_GETFD) < 0) (void)open("/dev/null", O_RDONLY);
    }
}
[[gnu::section(".preinit_array"), gnu::used]] void (*const kPreinit)(int, char **,
                                                                     char **) = fillStandardDescriptors;

}  // namespace

int main(int argc, char **argv) {
    std::signal(SIGPIPE, SIG_IGN);
    std::vector<std::string> words(argv + 1, argv + (argc > 0 ? argc : 1));
    return static_cast<int>(qvs::cli::run(words));
}

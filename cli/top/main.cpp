// SPDX-License-Identifier: Apache-2.0
// qvs-top: the screen of `qvs top`. Reads samples from the descriptor that its argument names, and keys from
// the terminal.
#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "base/failure.h"
#include "base/text.h"
#include "top/sample.h"
#include "top/screen.h"

namespace {

using qvs::top::SampleReader;
using qvs::top::Screen;

volatile std::sig_atomic_t ended = 0;

void end(int) {
    ended = 1;
}

// They are held but while the program waits, so that none is missed; returns the mask to wait with.
sigset_t holdEndings() {
    struct sigaction action {};
    action.sa_handler = end;
    sigset_t held;
    sigset_t before;
    sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        sigaddset(&held, signal);
        sigaction(signal, &action, nullptr);
    }
    sigprocmask(SIG_BLOCK, &held, &before);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        sigdelset(&before, signal);
    return before;
}

// Takes what waits in the pipe. False at its end.
bool takeSamples(int pipe, SampleReader &reader, Screen &screen) {
    std::array<char, 65536> piece;
    for (;;) {
        const ssize_t size = read(pipe, piece.data(), piece.size());
        if (size < 0) return errno == EAGAIN || errno == EINTR;
        if (size == 0) return false;
        if (reader.take({piece.data(), static_cast<size_t>(size)})) screen.take(reader.sample());
    }
}

void watch(int pipe) {
    const sigset_t waiting = holdEndings();
    fcntl(pipe, F_SETFL, O_NONBLOCK);
    Screen screen;
    SampleReader reader;
    for (;;) {
        screen.draw();
        std::array<struct pollfd, 2> inputs = {{{STDIN_FILENO, POLLIN, 0}, {pipe, POLLIN, 0}}};
        // A change of the size interrupts this, and comes as a key.
        const int ready = ppoll(inputs.data(), inputs.size(), nullptr, &waiting);
        if (ended != 0 || (ready < 0 && errno != EINTR)) return;
        if ((inputs[0].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) return;
        if (ready > 0 && inputs[1].revents != 0 && !takeSamples(pipe, reader, screen)) return;
        if (!screen.handleKeys()) return;
    }
}

}  // namespace

int main(int argc, char **argv) {
    std::setlocale(LC_ALL, "");
    const auto pipe = argc == 2 ? qvs::parseNumber(argv[1]) : std::nullopt;
    if (!pipe || fcntl(static_cast<int>(*pipe), F_GETFD) < 0 || isatty(STDIN_FILENO) != 1) {
        fmt::print(stderr, "qvs-top: is started by 'qvs top'\n");
        return 2;
    }
    try {
        watch(static_cast<int>(*pipe));
    } catch (const qvs::Failure &failure) {
        fmt::print(stderr, "qvs: {}\n", failure.message);
        return static_cast<int>(failure.exit);
    }
    return 0;
}

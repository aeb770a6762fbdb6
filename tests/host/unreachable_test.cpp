// SPDX-License-Identifier: Apache-2.0
// A host that cannot be reached, does not answer, or is slow on purpose, as the state library, the devices
// and the shell tell of it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <qvs/mesh_public.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

#include "host/device.h"
#include "support/bytes.h"
#include "support/host.h"
#include "wire/client.h"
#include "wire/message.h"
#include "wire/protocol.h"
#include "wire/stream.h"

namespace qvs::test {
namespace {

// That it took so long, and no more than a busy machine adds to that.
testing::AssertionResult took(double seconds, const std::function<void()> &action) {
    const auto begin = std::chrono::steady_clock::now();
    action();
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    if (elapsed >= seconds - 0.01 && elapsed < seconds + 1.2) return testing::AssertionSuccess();
    return testing::AssertionFailure() << elapsed << " s, not " << seconds << " s";
}

uint32_t loadState() {
    void *blob = nullptr;
    uint32_t length = 0;
    const uint32_t status = DVSHYP_StateGet(&blob, &length);
    EXPECT_EQ(blob != nullptr, status == 0);
    std::free(blob);
    return status;
}

int openError() {
    const int device = open("/dev/vswitch", O_RDWR);
    if (device < 0) return errno;
    close(device);
    return 0;
}

int requestError(int device) {
    const std::string input = field("net1", 268);
    char output[8];
    const Frame frame = {268, 8, input.data(), output};
    return requestError(device, kGetUplinks, &frame);
}

std::string shellAnswer() {
    return shellOutput("/bin/treesh -e get /net/portsets/net1/mtu 2>&1");
}

class Unreachable : public testing::Test {
  protected:
    void SetUp() override {
        std::ifstream(std::string(std::getenv("QVS_HOST_STATE")) + "/lock") >> daemon_;
        ASSERT_GT(daemon_, 1);
        setenv("QVS_HOST_TIMEOUT", "0.4", 1);
        ASSERT_EQ(std::system("/bin/treesh -e set /net/create net1 '8\n' vswitch"), 0);
        ASSERT_STATUS(loadState(), 0);
    }
    void TearDown() override { kill(daemon_, SIGCONT); }

    // Until the daemon has really stopped.
    void stop() {
        kill(daemon_, SIGSTOP);
        std::string state;
        while (state != "T") {
            std::ifstream status("/proc/" + std::to_string(daemon_) + "/stat");
            status >> state >> state >> state;
        }
    }

    // Until it answers, which it does when it gets to it.
    void resume() {
        kill(daemon_, SIGCONT);
        for (int tries = 0; openError() == ETIMEDOUT && tries < 1000; ++tries)
            usleep(1000);
    }

    pid_t daemon_ = 0;
};

TEST_F(Unreachable, IsWaitedForOnceAndUsedAgainWhenItAnswers) {
    const int device = open("/dev/vswitch", O_RDWR);
    ASSERT_GE(device, 0);
    stop();
    EXPECT_TRUE(took(0.4, [] { EXPECT_STATUS(loadState(), 0xbad0021); }));
    EXPECT_TRUE(took(0, [device] {
        for (int i = 0; i < 20; ++i) {
            EXPECT_STATUS(loadState(), 0xbad0021);
            EXPECT_STATUS(DVSHYP_SwitchRemove("s"), 0xbad0021);
            EXPECT_EQ(openError(), ETIMEDOUT);
            EXPECT_EQ(requestError(device), ETIMEDOUT);
        }
    }));
    EXPECT_EQ(shellAnswer(), "treesh: the hypercore does not answer\n1");

    resume();
    EXPECT_EQ(openError(), 0);
    EXPECT_EQ(requestError(device), 0);
    EXPECT_STATUS(loadState(), 0);
    close(device);
}

TEST_F(Unreachable, IsWaitedForNoLongerThanItsTimeInEachKindOfRequest) {
    // Interruptions neither end nor prolong a wait.
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
    const itimerval often = {{0, 20'000}, {0, 20'000}};
    setitimer(ITIMER_REAL, &often, nullptr);

    const int device = open("/dev/vswitch", O_RDWR);
    stop();
    EXPECT_TRUE(took(0.4, [device] { EXPECT_EQ(requestError(device), ETIMEDOUT); }));
    EXPECT_TRUE(took(0, [] { EXPECT_STATUS(loadState(), 0xbad0021); }));
    resume();
    // Half a dialogue is behind this one.
    EXPECT_EQ(requestError(device), EIO);
    close(device);

    stop();
    setenv("QVS_HOST_TIMEOUT", "0.2", 1);
    EXPECT_TRUE(took(0.2, [] { EXPECT_EQ(openError(), ETIMEDOUT); }));
    const itimerval never = {};
    setitimer(ITIMER_REAL, &never, nullptr);
}

TEST_F(Unreachable, MayBeAsSlowAsAFaultSays) {
    addFault("StateGet", R"("delayMs":600)");
    addFault("device open", R"("delayMs":600)");
    addFault("GetUplinks", R"("delayMs":1600)");
    addFault("treesh", R"("delayMs":600)");
    const auto expectSlow = [](const std::function<void()> &action) { EXPECT_TRUE(took(0.6, action)); };
    std::thread shell([&] { expectSlow([] { EXPECT_EQ(shellAnswer(), "mtu:1500\n0"); }); });
    std::thread state([&] { expectSlow([] { EXPECT_STATUS(loadState(), 0); }); });
    int device = -1;
    expectSlow([&device] { device = open("/dev/vswitch", O_RDWR); });
    EXPECT_TRUE(took(1.6, [device] { EXPECT_EQ(requestError(device), 0); }));
    shell.join();
    state.join();

    // A kernel that answers that it had no answer has answered.
    addFault("device open", R"("errno":"ETIMEDOUT")");
    EXPECT_EQ(openError(), ETIMEDOUT);
    EXPECT_EQ(openError(), 0);

    // The longer wait was for that answer alone.
    stop();
    EXPECT_TRUE(took(0.4, [device] { EXPECT_EQ(requestError(device), ETIMEDOUT); }));
    close(device);
}

// Each in a child, which connects anew.
TEST_F(Unreachable, SaysWhy) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "stale");
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    close(listener);
    struct Case {
        const char *what;
        std::function<void()> prepare;
        int error;
        uint32_t status;
    };
    const Case cases[] = {
        {"none named", [] { unsetenv("QVS_HOST_SOCKET"); }, ENOENT, 0xbad0040},
        {"none there", [] { setenv("QVS_HOST_SOCKET", "nowhere", 1); }, ENOENT, 0xbad0040},
        {"below a file", [] { setenv("QVS_HOST_SOCKET", "stale/socket", 1); }, ENOENT, 0xbad0040},
        {"nobody listens", [] { setenv("QVS_HOST_SOCKET", "stale", 1); }, ENOENT, 0xbad0040},
        {"no permission",
         [] {
             // Root may do everything, but nobody may not.
             EXPECT_EQ(geteuid() == 0 ? seteuid(65534) : chmod("state", 0), 0);
         },
         EACCES, 0xbad005a},
        {"silent", [this] { stop(); }, ETIMEDOUT, 0xbad0021},
    };
    for (const Case &one : cases) {
        const int ended = inChild([&] {
            one.prepare();
            EXPECT_EQ(openError(), one.error) << one.what;
            EXPECT_STATUS(loadState(), one.status) << one.what;
            return HasFailure();
        });
        EXPECT_EQ(ended, 0) << one.what;
        chmod("state", 0700);
    }
}

TEST_F(Unreachable, AnswersOthersBeforeItHasWrittenALargeState) {
    setenv("QVS_HOST_TIMEOUT", "20", 1);
    const std::string large(20 << 20, 'x');
    ASSERT_STATUS(DVSHYP_SwitchAdd("73 77", "vswitch", 128, 105), 0);
    ASSERT_STATUS(DVSHYP_GlobalPropSet("73 77", "k", large.data(), 20 << 20, 8), 0);
    wire::Client loads;
    wire::Client asks;
    ASSERT_TRUE(loads.connectToHost() && asks.connectToHost());
    wire::Writer state(wire::Kind::StateGet);
    wire::Writer ping(wire::Kind::Ping);
    // Both requests have arrived when the daemon goes on.
    stop();
    ASSERT_TRUE(loads.send(state.u8(1)) && asks.send(ping));
    // Tells of the connections in the order in which they were answered.
    const int answers = epoll_create1(EPOLL_CLOEXEC);
    for (const wire::Client *client : {&loads, &asks}) {
        epoll_event readable = {EPOLLIN, {.fd = client->socket()}};
        ASSERT_EQ(epoll_ctl(answers, EPOLL_CTL_ADD, client->socket(), &readable), 0);
    }
    kill(daemon_, SIGCONT);
    epoll_event first = {};
    ASSERT_EQ(epoll_wait(answers, &first, 1, 20000), 1);
    EXPECT_EQ(first.data.fd, asks.socket());
    close(answers);
    std::string payload;
    ASSERT_TRUE(loads.receive(wire::Kind::Reply, &payload));
    EXPECT_EQ(payload.substr(0, 4), std::string(4, '\0'));
    const int file = loads.takeFile();
    struct stat status;
    ASSERT_EQ(fstat(file, &status), 0);
    EXPECT_EQ(static_cast<size_t>(status.st_size), wire::Reader(payload.substr(4)).u32());
    EXPECT_EQ(fcntl(file, F_GET_SEALS), F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE);
    close(file);
}

TEST_F(Unreachable, IsWaitedForAsLongAsTheEnvironmentSays) {
    const struct {
        const char *given;
        int milliseconds;
    } cases[] = {{"2", 2000},
                 {"0.25", 250},
                 {".5", 500},
                 {"1.", 1000},
                 {"1.2345", 1234},
                 {"", 10000},
                 {"0", 10000},
                 {"-1", 10000},
                 {"1s", 10000},
                 {"1e3", 10000},
                 {"0.0001", 10000},
                 {" 1", 10000},
                 {"99999999999999", 86400000}};
    for (const auto &[given, milliseconds] : cases) {
        setenv("QVS_HOST_TIMEOUT", given, 1);
        EXPECT_EQ(wire::hostTimeout(), milliseconds) << given;
    }
    unsetenv("QVS_HOST_TIMEOUT");
    EXPECT_EQ(wire::hostTimeout(), 10000);
}

}  // namespace
}  // namespace qvs::test

// SPDX-License-Identifier: Apache-2.0
// Devices and the shell as programs meet them on an emulated host: descriptors, errno, memory, children.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "host/device.h"
#include "support/bytes.h"
#include "wire/protocol.h"

namespace qvs::test {
namespace {

constexpr unsigned long kGetLagTable = 0x100e;
constexpr size_t kLagTable = 35588;

std::string request(std::string_view switchName) {
    return field(switchName, 268);
}

// errno of a request, 0 for success; the calls leave errno alone when they succeed.
int control(int device, unsigned long command, const void *frame) {
    errno = ELOOP;
    const int error = requestError(device, command, frame);
    EXPECT_TRUE(error != 0 || errno == ELOOP);
    return error;
}

class Interposer : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(std::system("/bin/treesh -e set /net/create net1 '8\n' vswitch"), 0);
        device_ = open("/dev/vswitch", O_RDWR);
        ASSERT_GE(device_, 0);
    }
    void TearDown() override { close(device_); }

    // What the kernel answers a count request on net1: no uplinks, so eight zero bytes.
    int countUplinks(int device) {
        const std::string input = request("net1");
        char output[8];
        std::memset(output, 0xee, sizeof output);
        const Frame frame = {268, 8, input.data(), output};
        const int error = control(device, kGetUplinks, &frame);
        EXPECT_BYTES(bytesAt(output, 8), error == 0 ? zeros(8) : std::string(8, '\xee'));
        return error;
    }

    int device_ = -1;
};

TEST_F(Interposer, OpensTheDevicesAndNothingElse) {
    for (const char *path : {"/dev/vswitch", "/dev/ipfix", "/dev/traceflow", "/dev/livetrace",
                             "/crate/devices/char/hypdriver/rtm", "/crate/devices/char/hypdriver/tarn_bfd",
                             "/crate/devices/char/hypdriver/kcp", "/crate/devices/char/hypdriver/tarn-spf"}) {
        errno = ELOOP;
        const int plain = open(path, O_RDWR);
        const int closing = openat(-1, path, O_RDWR | O_CLOEXEC);
        EXPECT_EQ(errno, ELOOP) << path;
        EXPECT_EQ(fcntl(plain, F_GETFD), 0) << path;
        EXPECT_EQ(fcntl(closing, F_GETFD), FD_CLOEXEC) << path;
        EXPECT_EQ(ioctl(plain, FIOCLEX), 0);
        EXPECT_EQ(fcntl(plain, F_GETFD), FD_CLOEXEC);
        close(plain);
        close(closing);
    }
    for (const char *path : {"/dev/vswitch2", "/dev//vswitch", "/crate/devices"}) {
        EXPECT_EQ(open(path, O_RDWR), -1);
        EXPECT_EQ(errno, ENOENT) << path;
    }
    const int file = open("created", O_RDWR | O_CREAT, 0600);
    EXPECT_EQ(ioctl(file, kGetUplinks, nullptr), -1);
    EXPECT_EQ(errno, ENOTTY);
    close(file);
    EXPECT_EQ(ioctl(file, kGetUplinks, nullptr), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST_F(Interposer, AnswersWithTheKernelsErrno) {
    const std::string known = request("net1");
    const std::string unknown = request("net2");
    const std::string large = field("net1", 5000);
    const void *nowhere = reinterpret_cast<void *>(1);
    static const char readOnly[8] = {};
    char output[8];
    const struct {
        const char *what;
        unsigned long command;
        Frame frame;
        int error;
    } cases[] = {
        {"good", kGetUplinks, {268, 8, known.data(), output}, 0},
        {"unknown switch", kGetUplinks, {268, 8, unknown.data(), output}, ENOENT},
        {"short input", kGetUplinks, {267, 8, known.data(), output}, EINVAL},
        {"unknown command", 0x7777, {268, 8, known.data(), output}, ENOTTY},
        {"input nowhere", kGetUplinks, {268, 8, nowhere, output}, EFAULT},
        {"output nowhere", kGetUplinks, {268, 8, known.data(), const_cast<void *>(nowhere)}, EFAULT},
        {"output read-only", kGetUplinks, {268, 8, known.data(), const_cast<char *>(readOnly)}, EFAULT},
        {"large input", kGetUplinks, {5000, 8, large.data(), output}, 0},
        {"large input nowhere", kGetUplinks, {5000, 8, nowhere, output}, EFAULT},
        {"no room", kGetUplinks, {268, 0, known.data(), nullptr}, 0},
    };
    for (const auto &[what, command, frame, error] : cases) {
        EXPECT_EQ(control(device_, command, &frame), error) << what;
    }
    EXPECT_EQ(control(device_, kGetUplinks, nowhere), EFAULT);
    EXPECT_EQ(control(device_, kGetUplinks, nullptr), EFAULT);
    EXPECT_EQ(countUplinks(device_), 0);
}

// A large answer that runs into memory that is not there.
TEST_F(Interposer, ChecksEveryPageOfAnAnswer) {
    constexpr size_t kPage = 4096;
    constexpr size_t kPages = 10;
    auto *pages = static_cast<char *>(
        mmap(nullptr, kPages * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    std::memset(pages, 0xee, kPages * kPage);
    const std::string input = request("net1");
    const Frame frame = {268, kLagTable, input.data(), pages};
    EXPECT_EQ(control(device_, kGetLagTable, &frame), 0);
    EXPECT_BYTES(bytesAt(pages + kLagTable - 1, 2), hex("00 ee"));
    for (const size_t missing : {size_t{0}, size_t{4}, kPages - 2}) {
        mprotect(pages + missing * kPage, kPage, PROT_NONE);
        EXPECT_EQ(control(device_, kGetLagTable, &frame), EFAULT) << missing;
        mprotect(pages + missing * kPage, kPage, PROT_READ | PROT_WRITE);
    }
    EXPECT_EQ(control(device_, kGetLagTable, &frame), 0);
    munmap(pages, kPages * kPage);
}

TEST_F(Interposer, SharesADeviceAmongThreadsDescriptorsAndChildren) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            for (int turn = 0; turn < 100; ++turn)
                EXPECT_EQ(countUplinks(device_), 0);
        });
    }
    // A child that is made while other threads are in the middle of a request opens a device of its own.
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(inChild([this] { return countUplinks(open("/dev/vswitch", O_RDWR)); }), 0);
    }
    for (std::thread &thread : threads)
        thread.join();

    const int copy = dup(device_);
    EXPECT_EQ(countUplinks(copy), 0);
    close(copy);
    EXPECT_EQ(inChild([this] { return clearenv() == 0 ? countUplinks(device_) : 1; }), 0);
    EXPECT_EQ(countUplinks(device_), 0);
}

// Each process asks something else, so that an answer that reaches the wrong one shows.
TEST_F(Interposer, SharesADescriptorWithAChildBothAtOnce) {
    ASSERT_EQ(std::system("/bin/treesh -e set /net/create net3 '8\n' vswitch"), 0);
    const auto ask = [this](const char *switchName, int expected) {
        const std::string input = request(switchName);
        std::string output(kLagTable, '\xee');
        const Frame frame = {268, kLagTable, input.data(), output.data()};
        int wrong = 0;
        for (int turn = 0; turn < 300; ++turn) {
            const int error = control(device_, kGetLagTable, &frame);
            wrong += error != expected || output != std::string(kLagTable, error == 0 ? '\0' : '\xee');
        }
        return wrong;
    };
    fcntl(device_, F_SETFD, FD_CLOEXEC);
    const int copy = dup(device_);
    const pid_t children[] = {fork(), fork()};
    for (const pid_t child : children) {
        if (child != 0) continue;
        int wrong = ask("net2", ENOENT);
        wrong += fcntl(device_, F_GETFD) != FD_CLOEXEC;
        wrong += countUplinks(copy) != 0 || fcntl(copy, F_GETFD) != 0;
        _exit(wrong != 0);
    }
    EXPECT_EQ(ask("net3", 0), 0);
    for (const pid_t child : children) {
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(countUplinks(device_), 0);
    close(copy);
}

// What programs call that were linked with an older C library.
extern "C" int __xstat(int version, const char *path, struct stat *status);
extern "C" int __lxstat64(int version, const char *path, struct stat64 *status);
extern "C" int __fxstatat(int version, int directory, const char *path, struct stat *status, int flags);

// The mode of a file as a call tells it; 0 for what is not there.
template <typename Record>
std::function<mode_t(const char *)> modeBy(int (*call)(const char *, Record *)) {
    return [call](const char *path) {
        Record record;
        return call(path, &record) == 0 ? record.st_mode : 0;
    };
}

TEST_F(Interposer, ShowsTheDevicesAndTheShellToWhoLooks) {
    const struct {
        const char *name;
        std::function<mode_t(const char *)> mode;
    } looks[] = {
        {"stat", modeBy<struct stat>(stat)},
        {"stat64", modeBy<struct stat64>(stat64)},
        {"lstat", modeBy<struct stat>(lstat)},
        {"lstat64", modeBy<struct stat64>(lstat64)},
        {"fstatat", modeBy<struct stat>([](auto path, auto s) { return fstatat(-1, path, s, 0); })},
        {"fstatat64",
         modeBy<struct stat64>([](auto path, auto s) { return fstatat64(AT_FDCWD, path, s, 0); })},
        {"__xstat", modeBy<struct stat>([](auto path, auto s) { return __xstat(1, path, s); })},
        {"__lxstat64", modeBy<struct stat64>([](auto path, auto s) { return __lxstat64(1, path, s); })},
        {"__fxstatat", modeBy<struct stat>([](auto path, auto s) { return __fxstatat(1, -1, path, s, 0); })},
        {"statx",
         [](const char *path) {
             struct statx s;
             return statx(-1, path, 0, STATX_BASIC_STATS, &s) == 0 ? mode_t{s.stx_mode} : 0;
         }},
        {"open and fstat", modeBy<struct stat>([](auto path, auto s) {
             const int file = open(path, O_RDONLY);
             const int result = file < 0 ? -1 : fstat(file, s);
             close(file);
             return result;
         })},
    };
    const struct {
        const char *name;
        int (*allowed)(const char *path, int mode);
    } questions[] = {
        {"access", [](const char *path, int mode) { return access(path, mode); }},
        {"faccessat", [](const char *path, int mode) { return faccessat(-1, path, mode, 0); }},
        {"AT_EACCESS", [](const char *path, int mode) { return faccessat(-1, path, mode, AT_EACCESS); }},
        {"euidaccess", [](const char *path, int mode) { return euidaccess(path, mode); }},
        {"eaccess", [](const char *path, int mode) { return eaccess(path, mode); }},
    };
    std::set<dev_t> numbers;
    for (const wire::DeviceNode &node : wire::kDevices) {
        const char *path = node.path;
        for (const auto &[name, mode] : looks)
            EXPECT_EQ(mode(path), mode_t{S_IFCHR | 0600}) << name << " " << path;
        for (const auto &[name, allowed] : questions)
            EXPECT_EQ(allowed(path, R_OK | W_OK), 0) << name << " " << path;
        struct stat looked, opened;
        ASSERT_EQ(stat(path, &looked), 0);
        const int device = open(path, O_RDWR);
        ASSERT_EQ(fstatat(device, "", &opened, AT_EMPTY_PATH), 0);
        close(device);
        EXPECT_TRUE(looked.st_dev == opened.st_dev && looked.st_ino == opened.st_ino) << path;
        EXPECT_EQ(looked.st_uid, geteuid());
        numbers.insert(looked.st_rdev);
    }
    EXPECT_EQ(numbers.size(), 8u);
    for (const auto &[name, mode] : looks) {
        const bool opens = std::string_view(name) == "open and fstat";
        EXPECT_EQ(mode("/bin/treesh") & 0170111, opens ? 0u : mode_t{S_IFREG | 0111}) << name;
        EXPECT_EQ(mode("/dev/null") & S_IFMT, mode_t{S_IFCHR}) << name;
        EXPECT_EQ(mode("/dev/vswitch2"), 0u) << name;
    }
    for (const auto &[name, allowed] : questions) {
        EXPECT_EQ(allowed("/bin/treesh", X_OK), 0) << name;
        EXPECT_EQ(allowed("/dev/vswitch2", F_OK), -1) << name;
    }
    EXPECT_EQ(std::system("test -c /dev/vswitch && test -w /dev/vswitch && test -x /bin/treesh && "
                          "ls -l /dev/vswitch | grep -q '^crw-------'"),
              0);
    const std::string socket = std::getenv("QVS_HOST_SOCKET");
    unsetenv("QVS_HOST_SOCKET");
    EXPECT_EQ(access("/dev/vswitch", F_OK), -1);
    EXPECT_EQ(errno, ENOENT);
    setenv("QVS_HOST_SOCKET", socket.c_str(), 1);
}

TEST_F(Interposer, RunsTheShellUnderItsOneName) {
    EXPECT_EQ(shellOutput("/bin/treesh -e get /net/portsets/net1/mtu"), "mtu:1500\n0");
    EXPECT_EQ(shellOutput("treesh -e ls /net//portsets"), "net1/\n0");
    EXPECT_EQ(shellOutput("/bin/treesh -e get /net/portsets/net2/mtu 2>/dev/null"), "1");
    EXPECT_EQ(shellOutput("/bin/./treesh 2>/dev/null"), "127");
    EXPECT_EQ(shellOutput("QVS_HOST_SOCKET= /bin/treesh -e ls /net 2>&1"), "treesh: no hypercore\n1");

    char *const arguments[] = {const_cast<char *>("/bin/treesh"), const_cast<char *>("-e"),
                               const_cast<char *>("ls"), const_cast<char *>("/nowhere"), nullptr};
    pid_t child = -1;
    int status = -1;
    ASSERT_EQ(posix_spawn(&child, "/bin/treesh", nullptr, nullptr, arguments, environ), 0);
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_EQ(WEXITSTATUS(inChild([&] { return execv("/bin/treesh", arguments) + 100; })), 1);
}

}  // namespace
}  // namespace qvs::test

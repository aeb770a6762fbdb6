// SPDX-License-Identifier: Apache-2.0
// The one-shot device request: the status of every errno, what is asked of the kernel, and what is left open.
#include <fcntl.h>
#include <qvs/reporting.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>

#include "support/intercept.h"
#include "support/test.h"

namespace qvs::test {
namespace {

constexpr char kDevice[] = "/dev/vswitch";

// Every errno with a status of its own, and what is added to 0xbad0000.
constexpr char kErrnos[] = R"(
EPERM 5b ENOENT 3 ESRCH 62 EINTR 32 EIO 8 ENXIO 11 E2BIG b4 ENOEXEC 9b EBADF e ECHILD 61 EAGAIN 2
ENOMEM 14 EACCES 5a EFAULT 13 EBUSY 4 EEXIST 5 EXDEV 64 ENODEV f ENOTDIR 54 EISDIR 55 EINVAL 1 ENFILE 19
EMFILE 18 ENOTTY 86 ETXTBSY 10d EFBIG 6 ENOSPC 1a ESPIPE 66 EROFS 22 EPIPE 53 ERANGE 5d EDEADLK a9
ENAMETOOLONG d ENOLCK e7 ENOSYS 20 ENOTEMPTY 56 ELOOP 63 EOVERFLOW 113 EUSERS a7 ENOTSOCK 65
EDESTADDRREQ fd EMSGSIZE 129 EPROTOTYPE 144 EPROTONOSUPPORT 104 EOPNOTSUPP 3c EAFNOSUPPORT 67
EADDRINUSE 24 EADDRNOTAVAIL fc ENETDOWN 47 ENETUNREACH 48 ENETRESET 49 ECONNABORTED 4a ECONNRESET 4b
ENOBUFS 125 EISCONN 68 ENOTCONN 2e ESHUTDOWN 4d ETOOMANYREFS 4e ETIMEDOUT 21 ECONNREFUSED 4f
EHOSTDOWN 50 EHOSTUNREACH 51 EALREADY da EINPROGRESS 88 ESTALE 147 EDQUOT 164 ECANCELED 38
)";

std::map<std::string, uint32_t> statusByErrno() {
    std::map<std::string, uint32_t> statuses;
    std::istringstream words(kErrnos);
    uint32_t status = 0;
    for (std::string name; words >> name >> std::hex >> status;)
        statuses[name] = 0xbad0000 + status;
    return statuses;
}

// A request frame of the switch device that asks for 8 bytes and sends nothing.
struct Frame {
    uint32_t inLength = 268;
    uint32_t outLength = 8;
    uint64_t in;
    uint64_t out;
};

class DeviceRequest : public testing::Test {
  protected:
    HYP_ReturnStatus request() {
        Frame frame;
        frame.in = reinterpret_cast<uint64_t>(input_);
        frame.out = reinterpret_cast<uint64_t>(output_);
        return HYPIoctl(kDevice, 0x100b, &frame);
    }

    char input_[268] = "sw1";
    char output_[8] = {};
    CallsReset reset_;
};

// One open, one ioctl and one close each, EINTR and EAGAIN included, and no descriptor stays open.
TEST_F(DeviceRequest, EveryErrnoOfTheDeviceHasItsStatus) {
    clearTrace();  // opens the connection to the host
    const int descriptors = openDescriptors();
    auto statuses = statusByErrno();
    ASSERT_EQ(statuses.size(), 67u);
    for (int errnoValue = EPERM; errnoValue <= EHWPOISON; ++errnoValue) {
        const char *known = strerrorname_np(errnoValue);
        if (known == nullptr) continue;  // a gap between the numbers
        const std::string name = known;
        const uint32_t status = statuses.emplace(name, 0xbad0001).first->second;
        SCOPED_TRACE(name);
        clearTrace();

        addFault("device open", R"("errno":")" + name + R"(")");
        EXPECT_STATUS(request(), status);
        EXPECT_EQ(takeTrace(), "device open \"/dev/vswitch\" -> " + name + "\n");

        addFault("device ioctl", R"("errno":")" + name + R"(")");
        EXPECT_STATUS(request(), status);
        EXPECT_EQ(takeTrace(),
                  "device open \"/dev/vswitch\" -> 0\n"
                  "device ioctl \"/dev/vswitch\" 0x100b GetUplinks in=268 out=8 input=[0:737731] -> " +
                      name + "\n");
        EXPECT_EQ(openDescriptors(), descriptors);
    }
}

TEST_F(DeviceRequest, PositiveResultIsSuccess) {
    const int descriptors = openDescriptors();
    calls().ioctlResults = {7};
    EXPECT_STATUS(request(), 0);
    EXPECT_NE(calls().descriptorFlags & FD_CLOEXEC, 0)
        << "a child of another thread would inherit the device";
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(DeviceRequest, CloseDoesNotHideTheErrnoOfIoctl) {
    addFault("device ioctl", R"("errno":"EBUSY")");
    calls().closeErrno = EIO;
    EXPECT_STATUS(request(), 0xbad0004);
}

TEST_F(DeviceRequest, DescriptorZeroIsAsGoodAsAnyOther) {
    const int input = dup(0);
    close(0);
    calls().ioctlResults = {0};
    EXPECT_STATUS(request(), 0);
    EXPECT_EQ(calls().descriptor, 0);
    EXPECT_EQ(fcntl(0, F_GETFD), -1);
    dup2(input, 0);
    close(input);
}

TEST_F(DeviceRequest, KernelJudgesPathAndArgument) {
    EXPECT_STATUS(HYPIoctl("/dev/no-such-device", 1, nullptr), 0xbad0003);
    EXPECT_STATUS(HYPIoctl("/dev", 1, nullptr), 0xbad0055);  // a directory cannot be opened for writing
    EXPECT_STATUS(HYPIoctl("/dev/null", 1, nullptr), 0xbad0086);
    EXPECT_STATUS(HYPIoctl(nullptr, 1, nullptr), 0xbad0013);
    EXPECT_EQ(takeTrace().find("device"), std::string::npos);

    EXPECT_STATUS(HYPIoctl(kDevice, 0x100b, nullptr), 0xbad0013);
    EXPECT_STATUS(HYPIoctl(kDevice, 0x7fff, nullptr), 0xbad0086);
}

TEST(Reporting, PrintsNothingAndReturns) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    // Arguments that would crash whoever looked at them.
    for (const auto report : {Log, Warning, Panic}) {
        report("%s %n");
        report(nullptr);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace qvs::test

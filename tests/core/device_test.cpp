// The one-shot device request: the status of every errno, what is asked of the kernel, and what is left open.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <qvs/hyp.h>
#include <qvs/reporting.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "support/bytes.h"
#include "support/host.h"
#include "support/intercept.h"

namespace qvs::test {
namespace {

constexpr char kDevice[] = "/dev/vswitch";

struct ErrnoRow {
    int errnoValue;
    uint32_t status;
};

// Every errno with a status of its own, and in the end some without.
constexpr ErrnoRow kErrnoRows[] = {{EPERM, 0xbad005b},        {ENOENT, 0xbad0003},
                                   {ESRCH, 0xbad0062},        {EINTR, 0xbad0032},
                                   {EIO, 0xbad0008},          {ENXIO, 0xbad0011},
                                   {E2BIG, 0xbad00b4},        {ENOEXEC, 0xbad009b},
                                   {EBADF, 0xbad000e},        {ECHILD, 0xbad0061},
                                   {EAGAIN, 0xbad0002},       {ENOMEM, 0xbad0014},
                                   {EACCES, 0xbad005a},       {EFAULT, 0xbad0013},
                                   {EBUSY, 0xbad0004},        {EEXIST, 0xbad0005},
                                   {EXDEV, 0xbad0064},        {ENODEV, 0xbad000f},
                                   {ENOTDIR, 0xbad0054},      {EISDIR, 0xbad0055},
                                   {EINVAL, 0xbad0001},       {ENFILE, 0xbad0019},
                                   {EMFILE, 0xbad0018},       {ENOTTY, 0xbad0086},
                                   {ETXTBSY, 0xbad010d},      {EFBIG, 0xbad0006},
                                   {ENOSPC, 0xbad001a},       {ESPIPE, 0xbad0066},
                                   {EROFS, 0xbad0022},        {EPIPE, 0xbad0053},
                                   {ERANGE, 0xbad005d},       {EDEADLK, 0xbad00a9},
                                   {ENAMETOOLONG, 0xbad000d}, {ENOLCK, 0xbad00e7},
                                   {ENOSYS, 0xbad0020},       {ENOTEMPTY, 0xbad0056},
                                   {ELOOP, 0xbad0063},        {EOVERFLOW, 0xbad0113},
                                   {EUSERS, 0xbad00a7},       {ENOTSOCK, 0xbad0065},
                                   {EDESTADDRREQ, 0xbad00fd}, {EMSGSIZE, 0xbad0129},
                                   {EPROTOTYPE, 0xbad0144},   {EPROTONOSUPPORT, 0xbad0104},
                                   {EOPNOTSUPP, 0xbad003c},   {EAFNOSUPPORT, 0xbad0067},
                                   {EADDRINUSE, 0xbad0024},   {EADDRNOTAVAIL, 0xbad00fc},
                                   {ENETDOWN, 0xbad0047},     {ENETUNREACH, 0xbad0048},
                                   {ENETRESET, 0xbad0049},    {ECONNABORTED, 0xbad004a},
                                   {ECONNRESET, 0xbad004b},   {ENOBUFS, 0xbad0125},
                                   {EISCONN, 0xbad0068},      {ENOTCONN, 0xbad002e},
                                   {ESHUTDOWN, 0xbad004d},    {ETOOMANYREFS, 0xbad004e},
                                   {ETIMEDOUT, 0xbad0021},    {ECONNREFUSED, 0xbad004f},
                                   {EHOSTDOWN, 0xbad0050},    {EHOSTUNREACH, 0xbad0051},
                                   {EALREADY, 0xbad00da},     {EINPROGRESS, 0xbad0088},
                                   {ESTALE, 0xbad0147},       {EDQUOT, 0xbad0164},
                                   {ECANCELED, 0xbad0038},    {ENOTBLK, 0xbad0001},
                                   {EMLINK, 0xbad0001},       {EDOM, 0xbad0001},
                                   {ENOMSG, 0xbad0001},       {EPROTO, 0xbad0001},
                                   {ENOPROTOOPT, 0xbad0001},  {EPFNOSUPPORT, 0xbad0001},
                                   {EREMOTEIO, 0xbad0001},    {ENOKEY, 0xbad0001},
                                   {EKEYEXPIRED, 0xbad0001},  {EHWPOISON, 0xbad0001}};

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
    for (const auto &[errnoValue, status] : kErrnoRows) {
        const std::string name = strerrorname_np(errnoValue);
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

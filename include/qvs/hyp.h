/* SPDX-License-Identifier: Apache-2.0 */
/* Statuses, the kernel device request, and the definitions that all headers of the library share. */
#ifndef QVS_HYP_H
#define QVS_HYP_H

#include <stddef.h>
#include <stdint.h>

/* QVS_API marks an exported function. */
#ifdef __cplusplus
#define QVS_EXTERN_C_BEGIN extern "C" {
#define QVS_EXTERN_C_END }
#else
#define QVS_EXTERN_C_BEGIN
#define QVS_EXTERN_C_END
#endif

#if defined(__GNUC__)
#define QVS_API __attribute__((visibility("default")))
#define QVS_PACKED __attribute__((packed))
#else
#define QVS_API
#define QVS_PACKED
#endif

/* The size of a record is part of a format. The header verifies it where the language allows this. */
#if defined(__cplusplus)
#define QVS_ASSERT_SIZE(type, size) static_assert(sizeof(type) == (size), "layout of " #type)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define QVS_ASSERT_SIZE(type, size) _Static_assert(sizeof(type) == (size), "layout of " #type)
#else
#define QVS_ASSERT_SIZE(type, size) struct QvsLayoutNotChecked
#endif
#if defined(__cplusplus)
#define QVS_ASSERT_OFFSET(type, member, offset) \
    static_assert(offsetof(type, member) == (offset), "layout of " #type)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define QVS_ASSERT_OFFSET(type, member, offset) \
    _Static_assert(offsetof(type, member) == (offset), "layout of " #type)
#else
#define QVS_ASSERT_OFFSET(type, member, offset) struct QvsLayoutNotChecked
#endif

QVS_EXTERN_C_BEGIN

/*
 * The result of nearly every function: 0 means success, a failure is 0xbad0000 plus a small number.
 * The library itself generates only the constants below. Every other value comes unchanged from the kernel or
 * from the state library. ReturnStatusToString returns the text of a status.
 */
typedef uint32_t HYP_ReturnStatus;

#define HYP_OK ((HYP_ReturnStatus)0)
#define HYP_FAILURE ((HYP_ReturnStatus)0xbad0001u)        /* "Failure" */
#define HYP_NOT_FOUND ((HYP_ReturnStatus)0xbad0003u)      /* "Not found" */
#define HYP_EXISTS ((HYP_ReturnStatus)0xbad0005u)         /* "Already exists" */
#define HYP_LIMIT_EXCEEDED ((HYP_ReturnStatus)0xbad0006u) /* "Limit exceeded" */
#define HYP_BAD_PARAM ((HYP_ReturnStatus)0xbad0007u)      /* "Bad parameter" */
#define HYP_NO_MEMORY ((HYP_ReturnStatus)0xbad0014u)      /* "Out of memory" */
#define HYP_NOT_SUPPORTED ((HYP_ReturnStatus)0xbad0020u)  /* "Not supported" */

/* A switch identifier: at most 63 characters and a NUL. When the library fills the buffer, byte 63 is always
 * NUL. */
typedef char SwitchIdString[64];

/* An alias or a portset name. A name of 128 characters or more fills the buffer WITHOUT a NUL. */
typedef char SwitchAliasName[128];

/* The head of a counted list: count entries of one size follow, packed. */
typedef struct QVS_PACKED QVS_ListHead {
    uint32_t count;
} QVS_ListHead;
QVS_ASSERT_SIZE(QVS_ListHead, 4);

/*
 * Opens a device read-write, issues ioctl(fd, request, argument) once, and closes the device.
 *
 *   devicePath  path of a character device of the kernel, borrowed
 *   request     ioctl request number, 32 bits
 *   argument    request record, owned by the caller; the kernel reads and writes it in place
 *
 * Returns HYP_OK when ioctl returned 0 or more. Otherwise returns the status of the errno of open or ioctl.
 * EINVAL, and any errno without a status of its own, give HYP_FAILURE. ENOENT gives HYP_NOT_FOUND: this is
 * the result on a machine without the device, and therefore also without a host.
 *
 * The function passes null pointers to the kernel. Bytes that the kernel wrote into the argument before it
 * failed remain there. The function does not retry the request, prints nothing, and is thread-safe.
 *
 *   struct Frame frame = {...};
 *   HYP_ReturnStatus status = HYPIoctl("/dev/vswitch", 0x1026, &frame);
 */
QVS_API HYP_ReturnStatus HYPIoctl(const char *devicePath, int request, void *argument);

/*
 * Returns the English text of a status: a constant, NUL-terminated string, never null. Do not release it.
 * A value without a text of its own gives "General error". The function cannot fail.
 */
QVS_API const char *ReturnStatusToString(HYP_ReturnStatus status);

/*
 * Initialise the library. The loader calls both functions, in this order, when it loads the library.
 * SharedObjectInit sorts the printer registry of the dump. LibraryInit loads the first snapshot with
 * DVSLoadConfig and ignores its status; without a host, the snapshot is empty. A second call does the same
 * again.
 */
QVS_API void SharedObjectInit(void);
QVS_API void LibraryInit(void);

QVS_EXTERN_C_END

#endif

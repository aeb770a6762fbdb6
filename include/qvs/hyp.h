/* Statuses, the one-shot kernel device request, and what every header of the library shares. */
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

/* A record's size is part of a format; where the language can, the header proves it. */
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
 * The result of nearly every operation: 0 is success, a failure is 0xbad0000 plus a small number.
 * The constants below are the ones the library makes itself; every other value comes unchanged from the
 * kernel or from the state library. ReturnStatusToString gives the text of all of them.
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

/* A switch identifier: at most 63 characters and a NUL; byte 63 of a buffer the library fills is always NUL.
 */
typedef char SwitchIdString[64];

/* An alias or a portset name. A name of 128 characters or more fills the buffer WITHOUT a NUL. */
typedef char SwitchAliasName[128];

/*
 * Opens devicePath read-write, issues ioctl(fd, request, argument) once and closes the descriptor again.
 *
 *   devicePath  path of a character device of the kernel, borrowed
 *   request     ioctl request number, 32 bits
 *   argument    the request record, owned by the caller; the kernel reads and writes it in place
 *
 * Returns 0 when ioctl answered 0 or more, otherwise the status of the errno that open or ioctl left
 * (an errno without a status of its own, and EINVAL, give HYP_FAILURE). HYP_NOT_FOUND, of ENOENT, is the
 * answer on a machine without the device, so without a host, too. Null pointers are the kernel's to judge.
 * What the kernel writes into the argument before it fails stays there. Never retried, never printed. Safe
 * from any thread.
 *
 *   struct Frame frame = {...};
 *   HYP_ReturnStatus status = HYPIoctl("/dev/vswitch", 0x1026, &frame);
 */
QVS_API HYP_ReturnStatus HYPIoctl(const char *devicePath, int request, void *argument);

/*
 * The English text of a status: a constant NUL-terminated string that is never freed and never null.
 * Values without a text of their own give "General error". Cannot fail.
 */
QVS_API const char *ReturnStatusToString(HYP_ReturnStatus status);

/*
 * What the loader runs, in this order, when the library is loaded: SharedObjectInit sorts the printer
 * registry of the dump, LibraryInit loads the first snapshot (DVSLoadConfig) and ignores its status: without
 * a host the snapshot is empty. Calling them again does the same again.
 */
QVS_API void SharedObjectInit(void);
QVS_API void LibraryInit(void);

QVS_EXTERN_C_END

#endif

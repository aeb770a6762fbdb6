/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The configuration of a host as a text document: export, validation, comparison, and application with undo.
 *
 * The functions are in libqvs-config.so.0 (pkg-config: qvs-config). <qvs/qvs.h> does not include this header.
 * A document is YAML 1.2 or JSON, in UTF-8; qvs-document(5) describes it, and `qvs schema` prints its JSON
 * Schema. Every function loads the snapshot of the switches (dvs.h) again, so that handles and views from
 * before the call are void. The functions may be called from one thread at a time.
 *
 * Reports: a function that takes `report` stores a report there, on success and on failure, unless it returns
 * HYP_BAD_PARAM for a null argument, a flag or a number, or HYP_NO_MEMORY; it stores null then. The caller
 * releases the report with QVSConfig_FreeReport. `report` may be null when the caller does not want it.
 *
 * Example, without the checks of the statuses:
 *
 *   QVSConfig_Report *report = NULL;
 *   HYP_ReturnStatus status = QVSConfig_Apply(text, strlen(text), 0, 0, &report);
 *   for (uint32_t i = 0; i < QVSConfig_CountEntries(report); i++) {
 *       QVSConfig_Entry entry;
 *       QVSConfig_GetEntry(report, i, &entry);
 *       printf("%s: %s\n", entry.path, entry.text);
 *   }
 *   QVSConfig_FreeReport(report);
 */
#ifndef QVS_CONFIG_H
#define QVS_CONFIG_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/* Flags of the functions below. A function answers HYP_BAD_PARAM to a flag that it does not take. */
#define QVSCONFIG_JSON 1u     /* export JSON instead of YAML */
#define QVSCONFIG_DEFAULTS 2u /* export what holds, also where nothing is stored */
#define QVSCONFIG_PRUNE 4u    /* compare, apply: remove what the document does not name */
#define QVSCONFIG_STRICT 8u   /* treat references to objects that do not exist as errors, not as warnings */

/* What an entry of a report is about. */
#define QVSCONFIG_ERROR 0u
#define QVSCONFIG_WARNING 1u
#define QVSCONFIG_ADDED 2u   /* the object or setting is missing on the host, and the document has it */
#define QVSCONFIG_REMOVED 3u /* the host has it, and it is to be removed */
#define QVSCONFIG_CHANGED 4u /* both have it, with different values */

/* A report: errors, warnings and changes in their order. */
typedef struct QVSConfig_Report QVSConfig_Report;

/* One entry of a report. The texts are UTF-8, NUL-terminated, belong to the report, and are never null. */
typedef struct QVSConfig_Entry {
    uint32_t kind;      /* QVSCONFIG_ERROR and the constants after it */
    uint32_t line;      /* place in the document, from 1; 0 when there is none */
    uint32_t column;    /* in bytes, from 1; 0 when there is none */
    const char *path;   /* the object or member: "switches.sw1.ports.web.vlan.id"; empty for the host */
    const char *text;   /* the error or warning in words; empty for a change */
    const char *before; /* value on the host; empty when there is none */
    const char *after;  /* value in the document; empty when there is none */
} QVSConfig_Entry;

/* Releases a text of QVSConfig_Export. Null is allowed. */
QVS_API void QVSConfig_FreeText(char *text);

/* Releases a report. Null is allowed. */
QVS_API void QVSConfig_FreeReport(QVSConfig_Report *report);

/* Returns the number of entries of a report; 0 for null. */
QVS_API uint32_t QVSConfig_CountEntries(const QVSConfig_Report *report);

/* Reads one entry of a report into entry, owned by the caller. HYP_BAD_PARAM: a pointer is null.
 * HYP_NOT_FOUND: index is not below the number of entries. */
QVS_API HYP_ReturnStatus QVSConfig_GetEntry(const QVSConfig_Report *report, uint32_t index,
                                            QVSConfig_Entry *entry);

/*
 * Writes switches with their uplinks, ports, settings and other stored properties as a document. Volatile and
 * runtime properties are left out.
 *
 *   aliases, count  the switches, borrowed; null and 0 for all
 *   flags           QVSCONFIG_JSON, QVSCONFIG_DEFAULTS
 *   text            receives the document, NUL-terminated; the caller releases it with QVSConfig_FreeText
 *   report          receives a warning for each record that no setting can express and that the document
 *                   therefore holds by its key
 *
 * HYP_NOT_FOUND: there is no switch of one of the names. HYP_BAD_PARAM: text is null, aliases is null and
 * count is not 0, or a flag is another one. Statuses of DVSLoadConfig are returned unchanged.
 */
QVS_API HYP_ReturnStatus QVSConfig_Export(const char *const *aliases, uint32_t count, uint32_t flags,
                                          char **text, QVSConfig_Report **report);

/*
 * Checks a document. No host is needed; references are checked only by the functions below.
 *
 *   text, length  the document, borrowed, length in bytes; at most 64 MiB
 *   report        receives every error with its line and column
 *
 * HYP_BAD_PARAM: text is null, or the document has an error.
 */
QVS_API HYP_ReturnStatus QVSConfig_Validate(const char *text, size_t length, QVSConfig_Report **report);

/*
 * Compares a document with the host.
 *
 *   text, length  as in QVSConfig_Validate
 *   flags         QVSCONFIG_PRUNE, QVSCONFIG_STRICT
 *   report        receives the changes that QVSConfig_Apply would make, none when they agree
 *
 * HYP_BAD_PARAM: as in QVSConfig_Validate; a switch has more ports than there is room for; a reference to
 * nothing with QVSCONFIG_STRICT. Statuses of DVSLoadConfig are returned unchanged.
 */
QVS_API HYP_ReturnStatus QVSConfig_Compare(const char *text, size_t length, uint32_t flags,
                                           QVSConfig_Report **report);

/*
 * Makes the host match a document, all or nothing. A journal on disk holds the state from before; a step that
 * fails undoes the steps before it. A second call with the same document changes nothing.
 *
 *   text, length    as in QVSConfig_Validate
 *   flags           QVSCONFIG_PRUNE, QVSCONFIG_STRICT
 *   confirmSeconds  0, or the time in which QVSConfig_Confirm must be called, at most 604800. The library
 *                   starts no process and no thread, so that nothing happens by itself when the time is over:
 *                   the caller then calls QVSConfig_Recover. If it ends before that, the change stays until
 *                   the next change of the host, by this library or by qvs, which undoes it first.
 *   report          receives the changes that were made, or the errors
 *
 * HYP_BAD_PARAM: as in QVSConfig_Compare; nothing was changed. HYP_EXISTS: another process holds the lock of
 * the host, or a change waits for its confirmation; nothing was changed. HYP_FAILURE: the undo failed as
 * well; the report names what is left, and QVSConfig_Recover goes on. Any other failure is the status of the
 * step that failed, after everything was undone.
 */
QVS_API HYP_ReturnStatus QVSConfig_Apply(const char *text, size_t length, uint32_t flags,
                                         uint32_t confirmSeconds, QVSConfig_Report **report);

/* Keeps the change that waits for its confirmation. HYP_NOT_FOUND: no change is waiting. HYP_FAILURE: the
 * time was over, and the change was undone. */
QVS_API HYP_ReturnStatus QVSConfig_Confirm(void);

/* Undoes a change that was interrupted, or that waits for its confirmation, even if its time is not over.
 * HYP_NOT_FOUND: there is nothing to undo. HYP_FAILURE: something could not be undone; the report names it,
 * and the journal is kept. */
QVS_API HYP_ReturnStatus QVSConfig_Recover(QVSConfig_Report **report);

QVS_EXTERN_C_END

#endif

// SPDX-License-Identifier: Apache-2.0
// The functions of <qvs/config.h>.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "config/api/report.h"
#include "config/apply/apply.h"
#include "config/document/export.h"
#include "config/document/reader.h"
#include "config/document/references.h"
#include "config/document/write.h"
#include "config/library/snapshot.h"

namespace qvs::config {
namespace {

// Loads the snapshot; a status that is not HYP_OK is in the report.
HYP_ReturnStatus load(QVSConfig_Report &report) {
    const HYP_ReturnStatus status = loadSnapshot();
    if (status != HYP_OK) report.add(QVSCONFIG_ERROR, libraryFailure("switch state", status).message);
    return status;
}

char *copyOf(std::string_view text) {
    char *copy = static_cast<char *>(std::malloc(text.size() + 1));
    if (copy == nullptr) throw std::bad_alloc();
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

void addWarnings(QVSConfig_Report &report, const std::vector<std::string> &warnings) {
    for (const std::string &warning : warnings)
        report.add(QVSCONFIG_WARNING, warning);
}

constexpr uint32_t kExportFlags = QVSCONFIG_JSON | QVSCONFIG_DEFAULTS;
constexpr uint32_t kChangeFlags = QVSCONFIG_PRUNE | QVSCONFIG_STRICT;

bool prunes(uint32_t flags) {
    return (flags & QVSCONFIG_PRUNE) != 0;
}

// Reads a document and checks it on the host. What is wrong with it is in the report.
HYP_ReturnStatus readForHost(QVSConfig_Report &report, std::string_view text, uint32_t flags,
                             Document &document) {
    const bool strict = (flags & QVSCONFIG_STRICT) != 0;
    Findings findings;
    document = readDocument(text, "", findings.errors);
    if (!findings.errors.empty()) {
        if (loadSnapshot() == HYP_OK) addHostProblems(document, prunes(flags), strict, "", findings.errors);
    } else {
        if (const HYP_ReturnStatus status = load(report); status != HYP_OK) return status;
        // The warnings of the comparison are those of this export.
        std::vector<std::string> repeated;
        findings =
            checkOnHost(documentOfHost(document, false, repeated), document, prunes(flags), strict, "");
    }
    for (const Problem &problem : findings.warnings)
        report.add(problem, QVSCONFIG_WARNING);
    for (const Problem &problem : findings.errors)
        report.add(problem);
    return findings.errors.empty() ? HYP_OK : HYP_BAD_PARAM;
}

// What functions about a document and the host have in common: body(entries, document) runs when the document
// may be used on this host.
template <typename Body>
HYP_ReturnStatus withDocument(const char *text, size_t length, uint32_t flags, QVSConfig_Report **report,
                              Body body) {
    if (report != nullptr) *report = nullptr;
    if (text == nullptr || (flags & ~kChangeFlags) != 0) return HYP_BAD_PARAM;
    return reported(report, [&](QVSConfig_Report &entries) {
        Document document;
        const HYP_ReturnStatus status = readForHost(entries, {text, length}, flags, document);
        return status == HYP_OK ? body(entries, document) : status;
    });
}

ApplyOptions optionsOf(uint32_t flags, uint32_t confirmSeconds) {
    ApplyOptions options;
    options.prune = prunes(flags);
    options.confirmSeconds = confirmSeconds;
    return options;
}

void addAll(QVSConfig_Report &report, const std::vector<Change> &changes) {
    for (const Change &change : changes)
        report.add(change);
}

void addRestored(QVSConfig_Report &report, const Restored &restored) {
    for (const std::string &left : restored.left)
        report.add(QVSCONFIG_ERROR, left);
    if (!restored.problem.empty()) report.add(QVSCONFIG_ERROR, restored.problem);
}

}  // namespace
}  // namespace qvs::config

using namespace qvs::config;

HYP_ReturnStatus QVSConfig_Export(const char *const *aliases, uint32_t count, uint32_t flags, char **text,
                                  QVSConfig_Report **report) {
    if (text != nullptr) *text = nullptr;
    const bool named = aliases != nullptr && std::find(aliases, aliases + count, nullptr) == aliases + count;
    if (text == nullptr || (count != 0 && !named) || (flags & ~kExportFlags) != 0) {
        if (report != nullptr) *report = nullptr;
        return HYP_BAD_PARAM;
    }
    return reported(report, [&](QVSConfig_Report &entries) {
        if (const HYP_ReturnStatus status = load(entries); status != HYP_OK) return status;
        std::vector<std::string> names;
        if (count != 0) names.assign(aliases, aliases + count);
        std::vector<std::string> warnings;
        const Document document =
            exportDocument(names, {.withDefaults = (flags & QVSCONFIG_DEFAULTS) != 0}, warnings);
        addWarnings(entries, warnings);
        *text = copyOf((flags & QVSCONFIG_JSON) != 0 ? writeJson(document) : writeYaml(document));
        return HYP_OK;
    });
}

HYP_ReturnStatus QVSConfig_Validate(const char *text, size_t length, QVSConfig_Report **report) {
    if (report != nullptr) *report = nullptr;
    if (text == nullptr) return HYP_BAD_PARAM;
    return reported(report, [&](QVSConfig_Report &entries) {
        std::vector<Problem> problems;
        readDocument({text, length}, "", problems);
        for (const Problem &problem : problems)
            entries.add(problem);
        return problems.empty() ? HYP_OK : HYP_BAD_PARAM;
    });
}

HYP_ReturnStatus QVSConfig_Compare(const char *text, size_t length, uint32_t flags,
                                   QVSConfig_Report **report) {
    return withDocument(
        text, length, flags, report, [&](QVSConfig_Report &entries, const Document &document) {
            std::vector<std::string> warnings;
            const std::vector<Change> changes =
                compare(documentOfHost(document, prunes(flags), warnings), document, prunes(flags));
            addWarnings(entries, warnings);
            addAll(entries, changes);
            return HYP_OK;
        });
}

HYP_ReturnStatus QVSConfig_Apply(const char *text, size_t length, uint32_t flags, uint32_t confirmSeconds,
                                 QVSConfig_Report **report) {
    if (report != nullptr) *report = nullptr;
    if (confirmSeconds > kMostConfirmSeconds) return HYP_BAD_PARAM;
    return withDocument(
        text, length, flags, report, [&](QVSConfig_Report &entries, const Document &document) {
            const ApplyResult result = applyDocument(document, optionsOf(flags, confirmSeconds));
            switch (result.outcome) {
                case ApplyResult::Outcome::Unchanged:
                case ApplyResult::Outcome::Applied:
                    addAll(entries, result.changes);
                    return HYP_OK;
                case ApplyResult::Outcome::Undone:
                case ApplyResult::Outcome::NotUndone:
                    break;
            }
            entries.add(QVSCONFIG_ERROR, result.problem);
            addRestored(entries, result.undone);
            return result.outcome == ApplyResult::Outcome::Undone ? result.status : HYP_FAILURE;
        });
}

HYP_ReturnStatus QVSConfig_Confirm(void) {
    return reported(nullptr, [](QVSConfig_Report &) { return confirm() ? HYP_OK : HYP_NOT_FOUND; });
}

HYP_ReturnStatus QVSConfig_Recover(QVSConfig_Report **report) {
    return reported(report, [](QVSConfig_Report &entries) {
        if (const HYP_ReturnStatus status = load(entries); status != HYP_OK) return status;
        if (pendingJournal() == Pending::Nothing) return HYP_NOT_FOUND;
        const Restored restored = recover();
        addRestored(entries, restored);
        return restored.complete() ? HYP_OK : HYP_FAILURE;
    });
}

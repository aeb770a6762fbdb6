// SPDX-License-Identifier: Apache-2.0
// The documents of a revision: reads them from files, and merges those of a host.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/rollout/records.h"
#include "agent/store/store.h"
#include "config/document/document.h"
#include "config/document/problem.h"

namespace qvs::fleet {

// A file of a fleet is a document of qvs apply that may begin with `group: NAME` and `labels: {...}`, or with
// `host: NAME`. Without them, it is for all hosts.
struct FleetFile {
    DocumentOf of;
    std::string text;  // as it is stored: with blank lines for those of the head
    config::Document document;
};
FleetFile readFleetFile(std::string_view text, std::string_view origin, std::string_view name,
                        std::vector<config::Problem> &problems);

// A document from the store, which is checked like a file, and against the digest in the revision. Throws
// Failure.
config::Document readDocumentOf(Store &store, const KeyNames &keys, const DocumentOf &of);

// Whether a document is for a host.
bool isFor(const DocumentOf &document, std::string_view host, const Labels &labels);

// The configuration of a host: the documents for all hosts, then those of its groups, then its own. What
// comes later wins, setting by setting. `read` returns the document of a digest.
config::Document composed(const std::vector<DocumentOf> &documents, std::string_view host,
                          const Labels &labels,
                          const std::function<config::Document(const DocumentOf &)> &read);

}  // namespace qvs::fleet

// SPDX-License-Identifier: Apache-2.0
// Reads any text as a document. One without problems is the same when it is written and read again.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "config/document/reader.h"
#include "config/document/write.h"

namespace {

using qvs::config::Document;
using qvs::config::Problem;

void requireSame(const std::string &text, const Document &document) {
    std::vector<Problem> problems;
    const Document again = qvs::config::readDocument(text, "again", problems);
    if (!problems.empty() || again != document) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::vector<Problem> problems;
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    const Document document = qvs::config::readDocument(text, "input", problems);
    if (!problems.empty()) {
        for (const Problem &problem : problems)
            if (messageOf(problem).empty()) std::abort();
        return 0;
    }
    requireSame(writeYaml(document), document);
    // The parser takes no key of JSON that is longer than this.
    constexpr size_t kLongKey = 1000;
    if (size < kLongKey / 4) requireSame(writeJson(document), document);
    return 0;
}

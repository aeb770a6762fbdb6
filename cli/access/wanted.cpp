// SPDX-License-Identifier: Apache-2.0
#include "access/wanted.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "config/apply/apply.h"
#include "config/document/reader.h"
#include "config/document/references.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

using config::Document;

std::string_view nameOfFile(const Arguments &arguments) {
    const std::string &path = arguments.text("FILE");
    return path == "-" ? std::string_view("standard input") : path;
}

std::string messageOf(const std::vector<config::Problem> &problems) {
    std::string message;
    for (const config::Problem &problem : problems)
        message += (message.empty() ? "" : "\n") + messageOf(problem);
    return message;
}

Document readFileOf(const Arguments &arguments) {
    const std::vector<uint8_t> bytes = readFile(arguments.text("FILE"), config::kMostDocumentBytes);
    std::vector<config::Problem> problems;
    Document document = config::readDocument({reinterpret_cast<const char *>(bytes.data()), bytes.size()},
                                             nameOfFile(arguments), problems);
    if (!problems.empty()) throw Failure{Exit::Usage, messageOf(problems)};
    return document;
}

void reportReferences(const std::vector<config::Problem> &problems, const Arguments &arguments) {
    if (!problems.empty() && arguments.given("--strict")) throw Failure{Exit::Usage, messageOf(problems)};
    for (const config::Problem &problem : problems)
        warn("{}", messageOf(problem));
}

// Leaves those switches that --switch names.
void narrow(Document &document, const Arguments &arguments) {
    if (!arguments.given("--switch")) return;
    const std::vector<std::string> &names = arguments.all("--switch");
    for (const std::string &name : names)
        if (document.findSwitch(name) == nullptr)
            fail(Exit::NotFound, "{}: the document has no such switch", named(name));
    std::erase_if(document.switches, [&](const config::SwitchEntry &entry) {
        return std::ranges::find(names, entry.alias) == names.end();
    });
}

}  // namespace

Document readWanted(const Arguments &arguments) {
    Document wanted = readFileOf(arguments);
    narrow(wanted, arguments);
    return wanted;
}

std::vector<config::Change> compareWithHost(const Document &wanted, const Arguments &arguments) {
    const bool prune = arguments.given("--prune");
    std::vector<std::string> warnings;
    const Document now = config::documentOfHost(wanted, prune && !arguments.given("--switch"), warnings);
    for (const std::string &warning : warnings)
        warn("{}", warning);
    reportReferences(danglingReferences(now, wanted, prune, nameOfFile(arguments)), arguments);
    return compare(now, wanted, prune);
}

}  // namespace qvs::cli

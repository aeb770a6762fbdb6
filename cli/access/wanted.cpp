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

void report(const config::Findings &findings) {
    for (const config::Problem &problem : findings.warnings)
        warn("{}", messageOf(problem));
    if (!findings.errors.empty()) throw Failure{Exit::Usage, messageOf(findings.errors)};
}

void requireSwitches(const Document &document, const Arguments &arguments) {
    if (!arguments.given("--switch")) return;
    for (const std::string &name : arguments.all("--switch"))
        if (document.findSwitch(name) == nullptr)
            fail(Exit::NotFound, "{}: the document has no such switch", named(name));
}

// Leaves those switches that --switch names.
void narrow(Document &document, const Arguments &arguments) {
    if (!arguments.given("--switch")) return;
    const std::vector<std::string> &names = arguments.all("--switch");
    std::erase_if(document.switches, [&](const config::SwitchEntry &entry) {
        return std::ranges::find(names, entry.alias) == names.end();
    });
}

}  // namespace

Document checkedDocument(std::string_view text, std::string_view origin) {
    std::vector<config::Problem> problems;
    Document document = config::readDocument(text, origin, problems);
    if (!problems.empty()) throw Failure{Exit::Usage, messageOf(problems)};
    return document;
}

Document readWanted(const Arguments &arguments) {
    const std::vector<uint8_t> bytes = readFile(arguments.text("FILE"), config::kMostDocumentBytes);
    std::vector<config::Problem> problems;
    Document wanted = config::readDocument({reinterpret_cast<const char *>(bytes.data()), bytes.size()},
                                           nameOfFile(arguments), problems);
    if (problems.empty()) requireSwitches(wanted, arguments);
    narrow(wanted, arguments);
    if (problems.empty()) return wanted;
    const Comparison how = comparisonOf(arguments);
    addHostProblems(wanted, how.prune, how.strict, how.origin, problems);
    throw Failure{Exit::Usage, messageOf(problems)};
}

Comparison comparisonOf(const Arguments &arguments) {
    return {arguments.given("--prune"), arguments.given("--switch"), arguments.given("--strict"),
            std::string(nameOfFile(arguments))};
}

std::vector<config::Change> compareWithHost(const Document &wanted, const Comparison &how) {
    std::vector<std::string> warnings;
    const Document now = config::documentOfHost(wanted, how.prune && !how.keepsSwitches, warnings);
    for (const std::string &warning : warnings)
        warn("{}", warning);
    report(checkOnHost(now, wanted, how.prune, how.strict, how.origin));
    return compare(now, wanted, how.prune);
}

}  // namespace qvs::cli

// SPDX-License-Identifier: Apache-2.0
// Fails each step of each function in turn, once and from then on: allocations of libqvs and of the state
// library, requests of the state library, requests to devices, commands of the shell. After each failure
// nothing leaks, no descriptor stays open, and the caller's record holds no part of an answer. The status is
// the one of the step and everything is as before, but for what exceptions.txt lists.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>

#include "features/runtime_host.h"
#include "steps/functions.h"
#include "support/alloc_fault.h"
#include "support/records.h"

namespace qvs::test {
namespace {

using Lines = std::set<std::string>;

std::string fileText(const char *path) {
    std::ifstream file(std::string(QVS_TEST_DATA) + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

Lines linesOf(const std::string &text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.insert(line);
    return lines;
}

// The state of the host, and what binds its parts to each other.
Lines wholeState() {
    Lines lines = linesOf(hostState());
    const auto status = nlohmann::json::parse(control(R"({"op":"status"})"));
    for (const auto &sw : status["switches"])
        lines.insert(sw["id"].get<std::string>() + " on " + sw["portset"].dump());
    for (const char *parts : {"nics", "portsets"}) {
        for (const auto &part : status[parts])
            lines.insert(part["name"].get<std::string>() + " " + part.dump());
    }
    return lines;
}

// What a line of the state tells of, without its value: "id port port0 com.quillon.vswitch.port.vlan".
std::string subjectOf(const std::string &line) {
    static const std::regex subject(
        "(portset \\S+|.* (?:global|host) \\S+|.* port \\S+ \\S+(?= \\d)|.* port \\S+|\\S+)(.*)");
    return std::regex_replace(line, subject, "$1");
}

// "+" for what is new, "-" for what has gone, "~" for what is not the same; an object stands for all of it.
std::string difference(const Lines &before, const Lines &after) {
    Lines gone, added;
    for (const std::string &line : before)
        if (!after.contains(line)) gone.insert(subjectOf(line));
    for (const std::string &line : after)
        if (!before.contains(line)) added.insert(subjectOf(line));
    std::string text, object = "/";
    const auto add = [&](char sign, const std::string &subject) {
        if (subject.starts_with(object + " ")) return;
        text += std::string(" ") + sign + subject;
        if (sign != '~') object = subject;
    };
    for (const std::string &subject : gone)
        add(added.contains(subject) ? '~' : '-', subject);
    object = "/";
    for (const std::string &subject : added)
        if (!gone.contains(subject)) add('+', subject);
    return text;
}

std::string statusText(uint32_t status) {
    std::ostringstream text;
    PrintTo(StatusText(status), &text);
    return status == kNull ? "null" : text.str();
}

// A step of a function, as exceptions.txt names it: the trace line without lengths and input.
std::string stepName(const std::string &line) {
    static const std::regex noise(
        "( -> .*| (length|type|in|out|maxPorts|version)=\\d+| input=.*|com\\.quillon\\.|\\w+=|\"| 0x\\w+)");
    return std::regex_replace(line, noise, "");
}

// Whether a trace has more than reads.
bool changes(const std::string &trace) {
    static const std::regex reads("(state \\w+Get|device open|device ioctl \\S+ \\S+ (Get|DVSAlias)).*");
    const Lines lines = linesOf(trace);
    return !std::ranges::all_of(lines, [](const std::string &line) { return std::regex_match(line, reads); });
}

// A lab with every record that a getter reads, and with a property of each scope that has no meaning.
std::string records() {
    auto properties = nlohmann::json::array();
    const auto add = [&](char letter, const std::string &key, const std::string &value) {
        const char *scope = letter == 'g' ? "global" : letter == 'h' ? "host" : "port";
        properties.push_back({{"scope", scope}, {"key", key}, {"hex", toHex(value)}});
        if (letter == 'p') properties.back()["port"] = "port0";
    };
    for (const auto &[key, value] : kRecords)
        add(key[0], keyOf(key), value);
    for (const char letter : {'g', 'h', 'p'})
        add(letter, "com.example.key", "value");
    return nlohmann::json{{"switches", {{{"alias", "sw1"}, {"id", "id"}, {"properties", properties}}}}}
        .dump();
}

// Whether the line is the pattern, in which each "*" stands for any text.
bool isLike(const char *line, const char *pattern) {
    if (*pattern == '*') return isLike(line, pattern + 1) || (*line != '\0' && isLike(line + 1, pattern));
    return *line == *pattern && (*line == '\0' || isLike(line + 1, pattern + 1));
}

class Steps : public RuntimeHost {
  protected:
    // The lab of the device requests, every record that a getter reads, and a switch without uplinks.
    void SetUp() override {
        resetHost();
        RuntimeHost::SetUp();
        static const std::string kLab = records();
        seed(kLab);
        ASSERT_STATUS(VSDVS_CreateVSwitch("none", "none", nullptr, 105, 0, 0, 0, 0), 0);
        ASSERT_STATUS(VSHYP_SetRuntimeOptions(reinterpret_cast<const uint32_t *>(kOptions.data())), 0);
        ASSERT_STATUS(DVSLoadConfig(), 0);
        clearTrace();
        if (before_.empty()) before_ = wholeState();
    }

    // Whatever happens in a call, what it used is given back, and a failure leaves no answer.
    uint32_t run(const std::function<uint32_t()> &call) {
        const int descriptors = openDescriptors();
        const long blocks = liveBlocks();
        const uint32_t status = call();
        calls().commands = {};
        EXPECT_LE(liveBlocks(), blocks);
        EXPECT_LE(openDescriptors(), descriptors);
        if (status != 0) {
            EXPECT_FALSE(pointerLeft());
            const std::string record = callerRecord();
            const size_t untouched = record.find_first_not_of('\0');
            EXPECT_EQ(record.find_first_not_of('\xee', untouched), std::string::npos);
        }
        return status;
    }

    // The steps of a call that nothing disturbs. The first call allocates what the libraries keep.
    std::vector<std::string> stepsOf(const Function &function) {
        run(function.call);
        SetUp();
        const uint32_t status = run(function.call);
        if (status != 0) report(function, "none", statusText(status));
        std::vector<std::string> steps;
        const std::string trace = takeTrace();
        std::istringstream lines(trace);
        for (std::string line; std::getline(lines, line);)
            steps.push_back(stepName(line));
        changes_ = changes(trace);
        SetUp();
        return steps;
    }

    // Calls the function with a step that fails. Returns what the rules do not say, the status in front.
    std::string fail(const Function &function, const std::string &step, uint32_t expected,
                     const std::function<uint32_t()> &call) {
        SCOPED_TRACE(std::string(function.name) + ", " + step);
        static_cast<void>(hostProp("id", "connects again where a failure has cut the connection"));
        const uint32_t status = call();
        clearFaults();
        const bool asExpected = status == expected || (status == kNull && expected != 0);
        const std::string left = changes_ ? difference(before_, wholeState()) : "";
        if (changes_) {
            SetUp();
        } else if (DVSLoadConfig() != HYP_OK) {
            ADD_FAILURE() << "the host is gone";
        }
        ++failures_;
        return asExpected && left.empty() ? "" : statusText(status) + left;
    }

    // Calls the function with the step failing once, together with the one after it, and with all that
    // follow.
    void failInTurn(const Function &function, const std::string &step, uint32_t expected,
                    const std::function<uint32_t(int count)> &call) {
        const auto outcome = [&](int count) {
            return fail(function, step + "..." + std::to_string(count), expected,
                        [&] { return call(count); });
        };
        const std::string once = outcome(1), all = outcome(kFromThenOn);
        const std::string two = changes_ ? outcome(2) : once;
        if (once == all) {
            report(function, step + "[...]", once);
        } else {
            report(function, step, once);
            report(function, step + "...", all);
        }
        if (two != once && two != all) report(function, step + "..", two.empty() ? "as before" : two);
    }

    void report(const Function &function, const std::string &step, const std::string &what) {
        if (!what.empty()) report_.insert(std::string(function.name) + ": " + step + ": " + what);
    }

    // Each line of the section is reported, and no other.
    void compare(const std::string &section) const {
        std::string text = fileText("/steps/exceptions.txt");
        text.erase(0, text.find("[" + section + "]\n"));
        text.erase(text.find("\n["));
        Lines expected = linesOf(text);
        expected.erase("[" + section + "]");
        expected.erase("");
        const auto has = [](const Lines &lines, const auto &matches) {
            return std::ranges::any_of(lines, matches);
        };
        for (const std::string &line : report_) {
            const bool listed = has(
                expected, [&](const std::string &pattern) { return isLike(line.c_str(), pattern.c_str()); });
            EXPECT_TRUE(listed) << "[" << section << "] lacks: " << line;
        }
        for (const std::string &pattern : expected) {
            const bool needed =
                has(report_, [&](const std::string &line) { return isLike(line.c_str(), pattern.c_str()); });
            EXPECT_TRUE(needed) << "[" << section << "] has, in vain: " << pattern;
        }
        printf("%s: %d failures of %zu calls\n", section.c_str(), failures_, kFunctions.size());
    }

    // Every allocation of a library fails in turn.
    void failAllocations(const char *library) {
        for (const Function &function : kFunctions) {
            stepsOf(function);
            int allocations = 0;
            {
                const AllocFault counting(0, 1, library);
                run(function.call);
                allocations = counting.seen();
            }
            SetUp();
            for (int nth = 1; nth <= allocations; ++nth) {
                failInTurn(function, "allocation " + std::to_string(nth), 0xbad0014, [&](int count) {
                    const AllocFault fault(nth, count, library);
                    return run(function.call);
                });
            }
        }
    }

    Lines before_, report_;
    bool changes_ = false;
    int failures_ = 0;
};

TEST_F(Steps, TableHasEveryExport) {
    Lines exported, listed;
    const std::regex name("export (\\w+).*");
    for (const std::string &line : linesOf(fileText("/../src/abi.txt")))
        if (std::regex_match(line, name)) exported.insert(std::regex_replace(line, name, "$1"));
    for (const Function &function : kFunctions)
        listed.insert(function.name);
    EXPECT_EQ(listed, exported);
}

TEST_F(Steps, Requests) {
    for (const Function &function : kFunctions) {
        int nth = 0;
        for (const std::string &step : stepsOf(function)) {
            ++nth;
            const uint32_t expected = step.starts_with("state")    ? 0xbad00d7
                                      : step.starts_with("device") ? 0xbad0004
                                                                   : 0xbad0001;
            failInTurn(function, step, expected, [&](int count) {
                addFault("", R"("status":"0xbad00d7","errno":"EBUSY","exit":1)", nth, count);
                return run(function.call);
            });
        }
    }
    compare("requests");
}

// A pointer that is null is refused before anything is changed; a switch that nobody knows, and one of
// another class, before anyone is asked.
TEST_F(Steps, Refusals) {
    createHub();
    for (const Function &function : kFunctions) {
        for (const auto &[what, call] : function.refusals) {
            SCOPED_TRACE(std::string(function.name) + ", " + what);
            const uint32_t expected = what.ends_with("sw9") ? 0xbad0003 : 0xbad0007, status = run(call);
            const std::string trace = takeTrace();
            const bool asks = what.ends_with("null") ? changes(trace) : !trace.empty();
            if (status == 0) {
                SetUp();
                createHub();
            }
            if ((status == expected || status == kNull) && !asks) continue;
            report(function, what, statusText(status) + (asks ? " asks" : ""));
            ++failures_;
        }
    }
    compare("refusals");
}

TEST_F(Steps, Allocations) {
    SKIP_WITHOUT_ALLOC_FAULT();
    failAllocations("libqvs.so");
    compare("allocations");
}

TEST_F(Steps, AllocationsOfTheStateLibrary) {
    SKIP_WITHOUT_ALLOC_FAULT();
    failAllocations("libmeshPublic.so");
    compare("allocations of the state library");
}

// The page names each function that can leave something behind.
TEST_F(Steps, PageNamesWhatCanStayIncomplete) {
    Lines found, named;
    const std::regex leaves("(\\w+): .*: \\w+ [-+~].*"), row(" +\\| `.*\\| .* \\|"), name("`(\\w+_?\\w+)`");
    for (const std::string &line : linesOf(fileText("/steps/exceptions.txt")))
        if (std::regex_match(line, leaves)) found.insert(std::regex_replace(line, leaves, "$1"));
    const std::string page = fileText("/../docs/rules.md");
    for (const std::string &line : linesOf(page.substr(0, page.find("## Null pointers")))) {
        if (!std::regex_match(line, row)) continue;
        const std::string cell = line.substr(0, line.find('|', line.find('|') + 1));
        for (std::sregex_iterator at(cell.begin(), cell.end(), name), end; at != end; ++at)
            named.insert((*at)[1]);
    }
    EXPECT_EQ(named, found);
}

}  // namespace
}  // namespace qvs::test

// SPDX-License-Identifier: Apache-2.0
// qvs batch: many commands in one run.
#include <qvs/qvs.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>
#include <span>
#include <sstream>

#include "access/library.h"
#include "access/record.h"
#include "access/settle.h"
#include "commands/nouns.h"
#include "config/apply/recover.h"
#include "config/apply/transaction.h"
#include "config/library/host.h"
#include "config/library/lock.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/run.h"
#include "tool/values.h"

namespace qvs::cli {

// Every name is followed by a NUL, so that a path is a prefix of those below it and of nothing else.
std::string touchedPath(std::initializer_list<std::string_view> names) {
    std::string path;
    for (std::string_view name : names) {
        path += name;
        path += '\0';
    }
    return path;
}

namespace {

// The words of a line as a shell would see them, without any expansion: blanks separate, quotes and
// backslashes keep, "#" at the start of a word begins a comment.
std::vector<std::string> splitWords(std::string_view line) {
    std::vector<std::string> words;
    bool inWord = false;
    char quote = 0;
    for (size_t i = 0; i < line.size(); i++) {
        char c = line[i];
        if (quote == 0 && !inWord && c == '#') break;
        if (quote == 0 && (c == ' ' || c == '\t' || c == '\r')) {
            inWord = false;
            continue;
        }
        if (!inWord) words.emplace_back();
        inWord = true;
        if (quote == 0 && (c == '\'' || c == '"')) {
            quote = c;
        } else if (c == quote) {
            quote = 0;
        } else if (c == '\\' && quote != '\'' && i + 1 < line.size()) {
            words.back() += line[++i];
        } else {
            words.back() += c;
        }
    }
    if (quote != 0) fail(Exit::Usage, "a quote is not closed");
    return words;
}

constexpr size_t kMostBytes = size_t{1} << 30;

struct Line {
    size_t number = 0;
    Call call;
};

[[noreturn]] void failLine(size_t number, Failure failure) {
    failure.message = fmt::format("line {}: {}", number, failure.message);
    throw Failure(std::move(failure));
}

std::vector<Line> readLines(std::istream &in, bool json) {
    // The options of the batch that apply to each line.
    std::vector<std::string> inherited;
    if (json) inherited.emplace_back("--json");
    if (onCall != nullptr) inherited.emplace_back("--trace");
    std::vector<Line> lines;
    std::string text;
    for (size_t number = 1; std::getline(in, text); number++) {
        try {
            if (text.find('\0') != std::string::npos) fail(Exit::Usage, "a NUL is no text");
            std::vector<std::string> words = splitWords(text);
            if (!words.empty() && words.front() == "qvs") words.erase(words.begin());
            if (words.empty()) continue;
            words.insert(words.begin(), inherited.begin(), inherited.end());
            Call call = parseCall(words);
            const std::string_view asked = call.command != nullptr ? call.command->words : "help";
            if (call.arguments.given("--help") || asked == "help" || asked == "batch") {
                fail(Exit::Usage, "neither help nor a batch can be asked for in a batch");
            }
            lines.push_back({number, std::move(call)});
        } catch (const Failure &failure) {
            failLine(number, failure);
        }
    }
    return lines;
}

// The paths that earlier lines have changed. The snapshot is loaded once, and again only before a line that
// reads such a path.
class Touched {
  public:
    using Paths = std::vector<std::string>;

    static Paths pathsOf(const Call &call) {
        const Touches touches = call.command->run.touches;
        return touches == nullptr ? Paths{touchedPath({})} : touches(call.arguments);
    }
    // The paths are those of the call.
    bool overlaps(const Call &call, const Paths &paths) const {
        if (overlaps(all_, paths)) return true;
        return call.command->run.looksAtSwitch &&
               overlaps(wide_, {touchedPath({call.arguments.text("SWITCH")})});
    }
    void add(const Call &call, Paths paths) {
        if (call.command->run.access != Access::Writes) return;
        std::ranges::copy_if(paths, std::inserter(wide_, wide_.end()), std::not_fn(isOfPort));
        std::ranges::move(paths, std::inserter(all_, all_.end()));
    }
    void forget() {
        all_.clear();
        wide_.clear();
    }

  private:
    // A path finds those below it without a copy of its beginning.
    using PathSet = std::set<std::string, std::less<>>;

    // Whether the path names a property of one port, which nothing else in the switch refers to: a switch,
    // the word, a port and a key.
    static bool isOfPort(const std::string &path) {
        return std::ranges::count(path, '\0') > 3 && path.compare(path.find('\0'), kPort.size(), kPort) == 0;
    }
    static bool overlaps(const PathSet &touched, const Paths &looks) {
        for (const std::string_view path : looks) {
            auto below = touched.lower_bound(path);
            if (below != touched.end() && below->starts_with(path)) return true;
            for (size_t i = 0; i < path.size(); i++) {
                if ((i == 0 || path[i - 1] == '\0') && touched.contains(path.substr(0, i))) return true;
            }
        }
        return false;
    }

    static constexpr std::string_view kPort{"\0port", 6};

    PathSet all_;
    PathSet wide_;  // without the properties of single ports
};

// Runs the lines. The failure of a line goes to `failed`, which throws it, or returns to continue with the
// next line.
void runLines(std::span<const Line> lines, Touched &touched,
              const std::function<void(const Failure &)> &failed) {
    const uint32_t wait = patience();
    for (const Line &line : lines) {
        try {
            Touched::Paths paths = Touched::pathsOf(line.call);
            if (line.call.command->run.access != Access::Local && touched.overlaps(line.call, paths)) {
                requireState(loadSnapshot());
                touched.forget();
            }
            // A change that fails may have been carried out in part.
            touched.add(line.call, std::move(paths));
            setPatience(wait);
            execute(line.call);
        } catch (Failure &failure) {
            failure.message = fmt::format("line {}: {}", line.number, failure.message);
            failed(failure);
        }
    }
}

// Runs all lines or none. The state of all switches that they name is recorded before the first line runs.
void runAtomic(const std::vector<Line> &lines) {
    settle();
    const Lock lock(Guard::Everything, "");
    if (lock.behind()) requireState(loadSnapshot());
    config::Recorder recorder;
    for (const Line &line : lines) {
        try {
            recordSwitches(recorder, line.call);
        } catch (Failure &failure) {
            failLine(line.number, std::move(failure));
        }
    }
    Touched touched;
    config::Interruptions interruptions;
    config::Transaction transaction(recorder.before());
    try {
        for (const Line &line : lines) {
            runLines({&line, 1}, touched, [](const Failure &failure) { throw Failure(failure); });
            if (const char *signal = interruptions.take())
                fail(Exit::Failed, "line {}: {} came in", line.number, signal);
        }
    } catch (Failure &failure) {
        const config::Restored restored = transaction.undo();
        complain("{}", failure.message);
        config::requireRestored(restored);
        throw Failure{failure.exit, "all lines were undone"};
    }
    transaction.commit();
}

void runBatch(const Arguments &arguments, Output &out) {
    // Reading stops at the first NUL, so that a device such as /dev/zero is refused at once.
    auto hasNul = [](Bytes piece) { return std::find(piece.begin(), piece.end(), 0) != piece.end(); };
    std::vector<uint8_t> bytes = readFile(arguments.text("FILE"), kMostBytes, hasNul);
    std::istringstream text(std::string(bytes.begin(), bytes.end()));
    std::vector<Line> lines = readLines(text, out.json());

    if (arguments.given("--atomic")) return runAtomic(lines);
    const bool goesOn = arguments.given("--keep-going");
    Touched touched;
    runLines(lines, touched, [&](const Failure &failure) {
        if (!goesOn || failure.exit == Exit::NoHost || failure.exit == Exit::NoAnswer) throw failure;
        complain("{}", failure.message);
        out.exitWith(static_cast<int>(Exit::Failed));
    });
}

const Command kRows[] = {
    {.words = "batch",
     .summary = "run the commands of a file, one a line, up to the first that fails",
     .arguments = {{"FILE", "file of commands, or - for standard input", Kind::File}},
     .options = {{.name = "--atomic",
                  .value = nullptr,
                  .summary = "undo all lines when one fails or the run is ended",
                  .excludes = "--keep-going"},
                 {"--keep-going", nullptr, "run the lines behind one that fails, too, and exit with 1"}},
     .details =
         "All lines are read before the first runs, and their commands, options and numbers of arguments are "
         "checked; a value is checked when its line runs, behind the changes of the lines before it. Words "
         "are separated by blanks; quotes and backslashes work as in a shell, nothing is expanded, # begins "
         "a comment. With --json every command prints its own JSON. With --atomic the lines keep other runs "
         "from changing anything meanwhile, and only change what is stored: a line whose change cannot be "
         "undone is refused before the first line runs. A run that was killed is undone by the next run that "
         "changes anything.",
     .example = "qvs batch changes.txt",
     .run = writes(runBatch),
     .guard = Guard::None},
};

}  // namespace

const std::span<const Command> kBatchCommands = kRows;

}  // namespace qvs::cli

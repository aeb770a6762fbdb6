// SPDX-License-Identifier: Apache-2.0
// Parses any command line of qvs. Words end with a NUL byte, and one of the bytes 1 to 200 is the first words
// of a command. No command runs.
#include <cstdint>
#include <string>
#include <vector>

#include "base/failure.h"
#include "input.h"
#include "tool/program.h"
#include "tool/run.h"

namespace {

using qvs::fuzz::require;

const std::vector<const qvs::cli::Command *> &commands() {
    static const auto all = [] {
        std::vector<const qvs::cli::Command *> found;
        for (const qvs::cli::Noun &noun : qvs::cli::program().nouns)
            for (const qvs::cli::Command &command : noun.commands)
                found.push_back(&command);
        return found;
    }();
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::vector<std::string> words;
    qvs::fuzz::Bytes input(data, size);
    if (const uint8_t first = input.u8(); first != 0)
        for (const std::string_view word : wordsOf(*commands()[first % commands().size()]))
            words.emplace_back(word);
    while (!input.empty()) {
        words.emplace_back();
        while (const uint8_t byte = input.u8())
            words.back().push_back(static_cast<char>(byte));
    }
    try {
        const qvs::cli::Call call = qvs::cli::parseCall(words);
        require(call.command != nullptr || call.arguments.given("--help"));
        if (call.command == nullptr) return 0;
        // What was given can be asked for.
        for (const qvs::cli::Option &option : optionsOf(*call.command))
            if (call.arguments.given(option.name) && option.value != nullptr)
                require(!call.arguments.all(option.name).empty());
    } catch (const qvs::Failure &failure) {
        require(failure.exit == qvs::Exit::Usage && !failure.message.empty());
    }
    return 0;
}

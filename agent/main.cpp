// SPDX-License-Identifier: Apache-2.0
// qvs-agent and qvs-fleet are one file under two names, because most of their code is the same.
#include <cerrno>
#include <csignal>
#include <string_view>

#include "agent/programs.h"
#include "tool/failure.h"
#include "tool/run.h"

namespace {

bool isFleet() {
    return std::string_view(program_invocation_short_name) == "qvs-fleet";
}

}  // namespace

const qvs::cli::Program &qvs::cli::program() {
    return isFleet() ? fleet::fleetProgram() : fleet::agentProgram();
}

int main(int argc, char **argv) {
    if (isFleet()) {
        std::signal(SIGPIPE, SIG_IGN);
        qvs::onWarning = [](std::string_view text) { qvs::cli::complainLines(text); };
    }
    return qvs::cli::run(argc, argv);
}

// SPDX-License-Identifier: Apache-2.0
// Runs commands in the network namespaces of clients.
#pragma once

#include <string>
#include <vector>

namespace qvs::launcher {

// Enters the network namespace of a client and becomes the command. Throws if that fails.
[[noreturn]] void enterClient(const std::string &hostSocket, const std::string &client,
                              const std::vector<std::string> &command);

}  // namespace qvs::launcher

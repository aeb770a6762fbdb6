// SPDX-License-Identifier: Apache-2.0
// Who may have put a state directory and its files there.
#pragma once

#include <string>

namespace qvs::kernel {

// Makes the directory when it is missing. Throws unless it belongs to this user and nobody else can write to
// it: others could put files there that the daemon then opens.
void prepareDirectory(const std::string &directory);

// Opens a file in it, or makes it, and throws for what is no plain file of this user, a link above all.
int openOwnFile(const std::string &path, int flags);

// Throws when the path is there and is no such file, for those that others open.
void requireOwnFile(const std::string &path);

}  // namespace qvs::kernel

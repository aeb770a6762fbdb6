// SPDX-License-Identifier: Apache-2.0
// Documents from texts, for tests.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "config/document/reader.h"

namespace qvs::test {

inline std::string messagesOf(const std::vector<config::Problem> &problems) {
    std::string all;
    for (const config::Problem &problem : problems)
        all += (all.empty() ? "" : "\n") + messageOf(problem);
    return all;
}

inline config::Document documentOf(std::string_view text) {
    std::vector<config::Problem> problems;
    config::Document document = config::readDocument(text, "f", problems);
    EXPECT_EQ(messagesOf(problems), "") << text;
    return document;
}

}  // namespace qvs::test

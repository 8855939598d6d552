// The tool, run as users run it, and the pictures that it is given.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/scratch_home.h"
#include "tests/support/program.h"

using nlohmann::json;

inline Ended vorn(const Arguments& arguments, const ProgramOptions& options = {}) {
    return run(joined({VORN_TOOL}, arguments), options);
}

// Expects that the run has done what it should, without a word on standard error.
inline void expectDone(const Ended& ended) {
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.err, "");
}

// Expects one line "vorn: FILE: text (code, subcode)" on standard error, and exit status 1.
inline void expectFailure(const Ended& ended, const std::string& file, const std::string& numbers) {
    EXPECT_EQ(ended.status, 1);
    const std::string head = "vorn: " + file + ": ";
    const std::string tail = " (" + numbers + ")\n";
    EXPECT_TRUE(ended.err.starts_with(head) && ended.err.ends_with(tail)) << ended.err;
    EXPECT_GT(ended.err.size(), head.size() + tail.size()) << "a reason in words";
    EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << ended.err;
}

// What the command shows with "--json".
inline json shownAsJson(const Arguments& arguments) {
    const Ended ended = vorn(joined(arguments, {"--json"}));
    expectDone(ended);
    return json::parse(ended.out);
}

// A raw anymap of 8 bits: "P5" or "P6".
inline std::string anymap(const std::string& kind,
                          int width,
                          int height,
                          const std::vector<uint8_t>& samples) {
    return kind + "\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n" +
           std::string(samples.begin(), samples.end());
}

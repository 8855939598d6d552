#include "tests/tools/tool.h"

#include <gtest/gtest.h>

#include <algorithm>

Ended vorn(Arguments arguments, const ProgramOptions& options) {
    return run(joined({VORN_TOOL}, arguments), options);
}

void expectDone(const Ended& ended) {
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.err, "");
}

void expectFailure(const Ended& ended, const std::string& file, const std::string& numbers) {
    EXPECT_EQ(ended.status, 1);
    const std::string head = "vorn: " + file + ": ";
    const std::string tail = " (" + numbers + ")\n";
    EXPECT_TRUE(ended.err.starts_with(head) && ended.err.ends_with(tail)) << ended.err;
    EXPECT_GT(ended.err.size(), head.size() + tail.size()) << "a reason in words";
    EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << ended.err;
}

json shownAsJson(Arguments arguments) {
    const Ended ended = vorn(joined(std::move(arguments), {"--json"}));
    expectDone(ended);
    return json::parse(ended.out);
}

std::string anymap(const std::string& kind,
                   int width,
                   int height,
                   const std::vector<uint8_t>& samples) {
    return kind + "\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n" +
           std::string(samples.begin(), samples.end());
}

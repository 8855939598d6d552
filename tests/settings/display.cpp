#include "tests/settings/display.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

namespace {

void tellUser(const Arguments& command) {
    const Ended ended = run(joined({XDOTOOL}, command));
    EXPECT_EQ(ended.status, 0) << command[0] << ": " << ended.err;
}

}  // namespace

// The server chooses a number that is free and writes it when it is ready.
TestDisplay::TestDisplay() {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    server_.emplace(
        Arguments{XVFB, "-displayfd", std::to_string(ends[1]), "-nolisten", "tcp", "-noreset"});
    ::close(ends[1]);
    std::string number;
    char digit = 0;
    while (::read(ends[0], &digit, 1) == 1 && digit != '\n') number += digit;
    ::close(ends[0]);
    EXPECT_NE(number, "") << "no display";
    ::setenv("DISPLAY", (':' + number).c_str(), 1);
}

void TestDisplay::focus(const std::string& title) const {
    tellUser({"search", "--sync", "--onlyvisible", "--name", title, "windowfocus", "--sync"});
}

void TestDisplay::press(const Arguments& keys) const { tellUser(joined({"key"}, keys)); }

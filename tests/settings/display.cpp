#include "tests/settings/display.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace {

void tellUser(std::vector<std::string> command) {
    command.insert(command.begin(), XDOTOOL);
    const Ended ended = run(command);
    EXPECT_EQ(ended.status, 0) << command[1] << ": " << ended.err;
}

}  // namespace

// The server chooses a number that is free and writes it when it is ready.
TestDisplay::TestDisplay() {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    const std::string writeEnd = std::to_string(ends[1]);
    server_ = ::fork();
    if (server_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // it never outlives the test
        ::close(ends[0]);
        ::dup2(::open("/dev/null", O_RDWR), STDERR_FILENO);
        ::execl(XVFB, XVFB, "-displayfd", writeEnd.c_str(), "-nolisten", "tcp", "-noreset",
                nullptr);
        ::_exit(127);
    }
    ::close(ends[1]);
    std::string number;
    char digit = 0;
    while (::read(ends[0], &digit, 1) == 1 && digit != '\n') number += digit;
    ::close(ends[0]);
    EXPECT_NE(number, "") << "no display";
    ::setenv("DISPLAY", (':' + number).c_str(), 1);
}

void TestDisplay::end() {
    if (server_ < 0) return;
    ::kill(server_, SIGKILL);
    ::waitpid(server_, nullptr, 0);
    server_ = -1;
}

void TestDisplay::focus(const std::string& title) const {
    tellUser({"search", "--sync", "--onlyvisible", "--name", title, "windowfocus", "--sync"});
}

void TestDisplay::press(const std::vector<std::string>& keys) const {
    std::vector<std::string> command = {"key"};
    command.insert(command.end(), keys.begin(), keys.end());
    tellUser(command);
}

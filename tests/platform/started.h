// A program that a test has started, and the line to it.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "platform/connection.h"
#include "platform/process.h"

class Started {
  public:
    // `inherited`: descriptors beside the socket.
    explicit Started(std::string action, std::vector<int32_t> inherited = {}) {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) throw errno;
        socket = aboveStandardStreams(ends[0]);
        theirs = aboveStandardStreams(ends[1]);
        std::string number = std::to_string(theirs);
        char* arguments[] = {action.data(), number.data(), nullptr};
        inherited.push_back(theirs);

        vorn::platform::ProcessStart start;
        start.path = STARTED_PROGRAM;
        start.arguments = arguments;
        start.inherited = inherited.data();
        start.inheritedCount = inherited.size();
        error = vorn::platform::startProcess(start, process);
        ::close(theirs);
    }
    ~Started() {
        vorn::platform::killProcess(process);
        vorn::platform::releaseProcess(process);
        ::close(socket);
    }
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;

    void say() const { EXPECT_EQ(::write(socket, "x", 1), 1); }

    // The next line, empty at the end.
    std::string hear() const {
        std::string line;
        char letter = 0;
        while (::read(socket, &letter, 1) == 1 && letter != '\n') line += letter;
        return line;
    }

    std::vector<std::string> hearAll() const {
        std::vector<std::string> lines;
        for (std::string line = hear(); !line.empty(); line = hear()) lines.push_back(line);
        return lines;
    }

    void waitForEnd() const {
        const int32_t never = vorn::platform::createSemaphore();
        vorn::platform::WaitHistory history;
        EXPECT_FALSE(vorn::platform::waitSemaphore(never, process.watch,
                                                   vorn::platform::kNoDescriptor, history));
        vorn::platform::closeDescriptor(never);
    }

    // A test may have closed those.
    static int aboveStandardStreams(int descriptor) {
        const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
        ::close(descriptor);
        return moved;
    }

    int32_t error = -1;
    vorn::platform::Process process;
    int socket = -1;
    int theirs = -1;  // the socket's number in the program
};

#include "tests/support/program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace {

// Output goes to a file in memory: however much it is, the program never waits for its reader.
int outputFile() { return ::memfd_create("output", MFD_CLOEXEC); }

std::string contents(int file) {
    std::string text(static_cast<size_t>(::lseek(file, 0, SEEK_END)), '\0');
    EXPECT_EQ(::pread(file, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    return text;
}

// A terminal has little room: it is read while the program runs. The last writer's end is an error
// here.
std::string terminalContents(int terminal) {
    std::string text;
    char piece[4096];
    for (ssize_t got; (got = ::read(terminal, piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<size_t>(got));
    }
    return text;
}

std::vector<char*> pointers(const std::vector<std::string>& strings) {
    std::vector<char*> list;
    for (const std::string& text : strings) {
        list.push_back(const_cast<char*>(text.c_str()));
    }
    list.push_back(nullptr);
    return list;
}

std::vector<std::string> environmentOf(const ProgramOptions& options) {
    std::vector<std::string> all = options.environment;
    for (char** entry = environ; !options.cleanEnvironment && *entry != nullptr; ++entry) {
        all.emplace_back(*entry);
    }
    return all;
}

[[noreturn]] void become(char* const* command, char* const* environment, int out, int err) {
    ::setpgid(0, 0);
    const int empty = ::open("/dev/null", O_RDONLY);
    ::dup2(empty, STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    ::execvpe(command[0], command, environment);
    ::_exit(127);
}

}  // namespace

Program::Program(const std::vector<std::string>& command, const ProgramOptions& options)
    : out_(outputFile()), errorIsTerminal_(options.errorIsTerminal) {
    int programsErr = -1;
    if (errorIsTerminal_) {
        const winsize size{25, 100, 0, 0};
        EXPECT_EQ(::openpty(&err_, &programsErr, nullptr, nullptr, &size), 0);
        ::fcntl(err_, F_SETFD, FD_CLOEXEC);
    } else {
        err_ = programsErr = outputFile();
    }
    const std::vector<std::string> environment = environmentOf(options);
    const std::vector<char*> arguments = pointers(command);
    const std::vector<char*> variables = pointers(environment);
    id_ = ::fork();
    if (id_ == 0) {
        become(arguments.data(), variables.data(), out_, programsErr);
    }
    ::setpgid(id_, id_);
    if (errorIsTerminal_) {
        ::close(programsErr);
    }
}

Program::~Program() {
    if (id_ > 0) {
        signal(SIGKILL);
        ::waitpid(id_, nullptr, 0);
    }
    ::close(out_);
    ::close(err_);
}

void Program::signal(int number) const { ::kill(-id_, number); }

Ended Program::wait() {
    Ended ended;
    if (errorIsTerminal_) {
        ended.err = terminalContents(err_);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(id_, &status, 0), id_);
    id_ = -1;
    ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    ended.out = contents(out_);
    if (!errorIsTerminal_) {
        ended.err = contents(err_);
    }
    return ended;
}

Ended run(const std::vector<std::string>& command, const ProgramOptions& options) {
    return Program(command, options).wait();
}

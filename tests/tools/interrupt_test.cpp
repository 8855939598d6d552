#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "tests/tools/tool.h"

namespace {

// A home whose only loader stops in the middle of a picture until the test goes on.
class Interrupt : public testing::Test {
  protected:
    Interrupt() {
        const std::filesystem::path built = VORN_BUILT_HOME;
        std::filesystem::create_symlink(VORN_WAITING_LOADER, home_.path("Loaders/waiting"));
        for (const char* name : {"Errors", "Savers/pnm", "Savers/pnm.cap"}) {
            home_.remove(name);
            std::filesystem::create_symlink(built / name, home_.path(name));
        }
        EXPECT_EQ(::mkfifo(pipe_.c_str(), 0600), 0);
    }

    // Converts a picture, sends signals in the middle of it, and expects this failure.
    void expectEnd(const std::string& then,
                   const std::vector<int>& signals,
                   const std::string& numbers,
                   const Arguments& options = {}) {
        Program program(
            joined({VORN_TOOL, "convert", in_, out_, "--loader", "waiting"}, options),
            {.environment = {"WAITING_LOADER_PIPE=" + pipe_, "WAITING_LOADER_THEN=" + then,
                             "WAITING_LOADER_TOLD=" + told_}});
        // Opening a pipe waits for the other end; reading it then waits for the loader's end.
        const int reader = ::open(pipe_.c_str(), O_RDONLY | O_CLOEXEC);
        for (const int number : signals) program.signal(number);
        expectFailure(program.wait(), in_, numbers);
        char byte = 0;
        EXPECT_EQ(::read(reader, &byte, 1), 0);
        EXPECT_EQ(contentOf(out_), "as it was");
        ::close(reader);
    }

    ScratchHome home_;
    ScratchDirectory scratch_;
    std::string pipe_ = scratch_.path("pipe");
    std::string told_ = scratch_.path("told");
    std::string in_ = scratch_.write("in", "a picture");
    std::string out_ = scratch_.write("out.pgm", "as it was");
};

TEST_F(Interrupt, EndsATransferInOrder) {
    expectEnd("send", {SIGINT}, "27, 0");
    EXPECT_TRUE(std::filesystem::exists(told_)) << "the terminal's signal is not for the module";
}

TEST_F(Interrupt, StopsAModuleThatHangs) {
    expectEnd("hang", {SIGTERM}, "27, 0");
    // Another one: a signal that comes twice before it is taken counts once.
    expectEnd("hang", {SIGTERM, SIGHUP}, "27, 0");
}

TEST_F(Interrupt, IsNotNeededForAModuleThatMeetsItsLimit) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the sanitizer holds signals back until a program calls the system again";
#endif
    expectEnd("spin", {}, "75, 0", {"--time-limit", "1"});
#ifndef VORN_SANITIZED
    expectEnd("allocate", {}, "76, 0", {"--memory-limit", "256M"});
#endif
}

}  // namespace

#include <fcntl.h>
#include <gtest/gtest.h>
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

    ~Interrupt() override { ::close(reader_); }

    Program start(const std::string& then, const Arguments& options = {}) {
        return Program(
            joined({VORN_TOOL, "convert", in_, out_, "--loader", "waiting"}, options),
            {.environment = {"WAITING_LOADER_PIPE=" + pipe_, "WAITING_LOADER_THEN=" + then,
                             "WAITING_LOADER_TOLD=" + told_}});
    }

    // Opening a pipe waits for the other end.
    void waitForTheMiddle() {
        ::close(reader_);
        reader_ = ::open(pipe_.c_str(), O_RDONLY | O_CLOEXEC);
    }

    // Reading it then waits for the loader's end.
    void expectEnd(Program& program, const std::string& numbers) {
        expectFailure(program.wait(), in_, numbers);
        char byte = 0;
        EXPECT_EQ(::read(reader_, &byte, 1), 0);
        EXPECT_EQ(contentOf(out_), "as it was");
    }

    ScratchHome home_;
    ScratchDirectory scratch_;
    std::string pipe_ = scratch_.path("pipe");
    std::string told_ = scratch_.path("told");
    std::string in_ = scratch_.write("in", "a picture");
    std::string out_ = scratch_.write("out.pgm", "as it was");
    int reader_ = -1;
};

TEST_F(Interrupt, EndsATransferInOrder) {
    Program program = start("send");
    waitForTheMiddle();
    program.signal(SIGINT);
    expectEnd(program, "27, 0");
    EXPECT_TRUE(std::filesystem::exists(told_)) << "the terminal's signal is not for the module";
}

TEST_F(Interrupt, StopsAModuleThatHangs) {
    for (const bool twice : {false, true}) {
        Program program = start("hang");
        waitForTheMiddle();
        program.signal(SIGTERM);
        // Another one: a signal that comes twice before it is taken counts once.
        if (twice) program.signal(SIGHUP);
        expectEnd(program, "27, 0");
    }
}

TEST_F(Interrupt, IsNotNeededForAModuleThatMeetsItsLimit) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the sanitizer holds signals back until a program calls the system again";
#endif
    const struct {
        const char* then;
        std::vector<std::string> limit;
        const char* code;
    } cases[] = {
        {"spin", {"--time-limit", "1"}, "75, 0"},
#ifndef VORN_SANITIZED
        {"allocate", {"--memory-limit", "256M"}, "76, 0"},
#endif
    };
    for (const auto& c : cases) {
        Program program = start(c.then, c.limit);
        waitForTheMiddle();
        expectEnd(program, c.code);
    }
}

}  // namespace

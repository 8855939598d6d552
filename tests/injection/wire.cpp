#include "tests/injection/wire.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vorn/library.h>

#include <chrono>

long long steadyNanoseconds() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

Wire::Wire() {
    for (const std::string& path : {pipePath_, leashPath_}) {
        std::filesystem::remove(path);
        EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    }
    // Both ends of each: nobody who opens one has to wait.
    pipe_ = ::open(pipePath_.c_str(), O_RDWR | O_CLOEXEC);
    leash_ = ::open(leashPath_.c_str(), O_RDWR | O_CLOEXEC);
}

Wire::~Wire() {
    ::close(pipe_);
    ::close(leash_);
    std::filesystem::remove(pipePath_);
    std::filesystem::remove(leashPath_);
}

std::optional<StepNews> Wire::await() const {
    StepNews news{};
    if (::read(pipe_, &news, sizeof news) != sizeof news || news.time == 0) return std::nullopt;
    return news;
}

std::optional<StepNews> Wire::news() const {
    pollfd wait{pipe_, POLLIN, 0};
    return ::poll(&wait, 1, 0) == 1 ? await() : std::nullopt;
}

void Wire::giveUp() const {
    const StepNews none{};
    EXPECT_EQ(::write(pipe_, &none, sizeof none), static_cast<ssize_t>(sizeof none));
}

void Wire::releaseChild() const { EXPECT_EQ(::write(leash_, "r", 1), 1); }

Stopper::Stopper(const Wire& wire, VORN_Image* image)
    : wire_(wire), thread_([this, image] {
          news_ = wire_.await();
          if (!news_) return;
          stoppedAt_ = steadyNanoseconds();
          VORN_L_ShutDownHandle(image);
      }) {}

std::optional<StepNews> Stopper::finish() {
    if (thread_.joinable()) {
        wire_.giveUp();
        thread_.join();
        wire_.news();  // nobody has taken it when the module had given word
    }
    return news_;
}

// Modules that do one thing at step 1, 2, 3, ... of a conversation, until one ends without it.
#include <algorithm>
#include <cstdio>
#include <ctime>

#include "tests/injection/talk.h"
#include "tests/injection/wire.h"

namespace {

// What must come of it.
enum class Expect {
    EndsInOrder,   // the program ends: the call fails with error 3, and the next open works
    Stopped,       // the program hangs: the emergency stop has the same effect, and ends it
    Right,         // nothing comes of it
    ErrorOrRight,  // an error or the right picture, within the program's life
    // The same, but the picture may be the program's own: the pixels of a block that the host has
    // just been told to take are the module's to change, and so is the turn of its messages.
    ErrorOrTheirs
};

struct Injection {
    const char* action;
    Expect expect;
};
void PrintTo(const Injection& injection, std::ostream* out) { *out << injection.action; }

constexpr Injection kInjections[] = {
    {"kill", Expect::EndsInOrder},
    {"segv", Expect::EndsInOrder},
    {"abort", Expect::EndsInOrder},
    {"exit0", Expect::EndsInOrder},
    {"exit7", Expect::EndsInOrder},
    {"forkexit", Expect::EndsInOrder},
    {"sleep", Expect::Stopped},
    {"stop", Expect::Stopped},
    {"endthread", Expect::Stopped},
    {"tell", Expect::Stopped},
    {"zeros", Expect::ErrorOrTheirs},
    {"ones", Expect::ErrorOrTheirs},
    {"random", Expect::ErrorOrTheirs},
    {"shrink", Expect::ErrorOrTheirs},
    {"blocking", Expect::Right},
    {"take", Expect::ErrorOrTheirs},
    {"post", Expect::ErrorOrTheirs},
    {"fill", Expect::ErrorOrTheirs},
    {"close", Expect::ErrorOrRight},
    {"leaveout", Expect::ErrorOrTheirs},
    {"fillkill", Expect::ErrorOrTheirs},
    {"fillsleep", Expect::ErrorOrTheirs},
    {"fork", Expect::Right},
};

double threadMilliseconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

// Milliseconds of work. A conversation takes a host about one, and some ten with sanitizers; a
// module that hangs lives longer than this.
constexpr double kMostWork = 250;

using Injected = InjectedTest;

class Modules : public Injected, public testing::WithParamInterface<std::tuple<Injection, Kind>> {
  protected:
    // One run with the injection at a step. False when it ended without the injection.
    bool runWith(int step);
    void expectCode(Talk& talk) const;
    // Whether the conversation's end shows that the program was ended, or stopped.
    bool endsProgram() const {
        return injection_.expect == Expect::EndsInOrder || injection_.expect == Expect::Stopped;
    }

    const Injection injection_ = std::get<0>(GetParam());
    const std::string action_ = injection_.action;
    const Kind kind_ = std::get<1>(GetParam());
    const Wire wire_;
    ScopedVariable order_{"VORN_TEST_STEP", std::nullopt};
    double longestEnd_ = 0, mostWork_ = 0;  // for the log, in milliseconds
    int failures_ = 0;
};

void Modules::expectCode(Talk& talk) const {
    const int32_t code = talk.error();
    if (!endsProgram()) {
        EXPECT_TRUE(code != 0 && injection_.expect != Expect::Right) << code;
        return;
    }
    // A handle whose program was stopped says so with error 4 before it sends a block.
    const bool stopped = injection_.expect == Expect::Stopped && code == 4;
    EXPECT_TRUE(code == 3 || stopped || (kind_ == Kind::Aborting && code == 27)) << code;
}

bool Modules::runWith(int step) {
    order_.set(action_ + " " + std::to_string(step));
    Talk talk(kind_, directory_);
    std::optional<StepNews> news;
    double work = threadMilliseconds();
    {
        std::optional<Stopper> stopper;
        if (injection_.expect == Expect::Stopped) stopper.emplace(wire_, talk);
        const bool whole = talk.whole();
        const long long end = steadyNanoseconds();
        EXPECT_TRUE(!talk.isWrong() || injection_.expect == Expect::ErrorOrTheirs);
        if (!whole && !talk.isWrong()) expectCode(talk);
        if (!whole) ++failures_;
        talk.close();
        // A failed connection need not be closed to serve again: every other time it is not.
        if (whole || step % 2 == 0 || !endsProgram()) talk.closeConnection();
        work = threadMilliseconds() - work;
        mostWork_ = std::max(mostWork_, work);
        EXPECT_LT(work, kMostWork) << "the host never waits by asking again and again";
        news = stopper ? stopper->finish() : wire_.news();
        const long long begin = stopper ? stopper->stoppedAt() : news ? news->time : 0;
        if (!whole && news && endsProgram())
            longestEnd_ = std::max(longestEnd_, 1e-6 * static_cast<double>(end - begin));
    }
    order_.set(std::nullopt);
    // A program that has been closed can't reach the next one: it is tried now and then.
    if (endsProgram() || step % 8 == 1) {
        EXPECT_TRUE(talk.whole()) << "the next one: " << talk.error() << talk.isWrong();
        talk.close();
    }
    if (news && action_.starts_with("fork")) wire_.releaseChild();
    if (HasFailure()) std::printf("at step %d: %s\n", step, news ? news->description : "none");
    return news.has_value();
}

TEST_P(Modules, ThatGoWrongCostOnePicture) {
    int step = 1;
    while (runWith(step) && !HasFailure()) ++step;
    std::printf("%s while %s: %d steps, %d failed, after %.2f ms at most; host's work %.2f ms\n",
                injection_.action, nameOf(kind_), step - 1, failures_, longestEnd_, mostWork_);
}

TEST_F(Injected, ModulesHaveTimeToEndInOrderAndNoMore) {
    const Wire wire;
    for (const char* action : {
             "hanglast 9",
#ifndef __SANITIZE_THREAD__  // which may keep the signal of the host's end back until it has
                             // stopped
             "stoplast 9",
#endif
             "tidylast 9",
         }) {
        for (const Kind kind : {Kind::Loading, Kind::Saving}) {
            const ScopedVariable order("VORN_TEST_STEP", action);
            Talk talk(kind, directory_);
            EXPECT_TRUE(talk.whole() && wire.await());
            talk.closeConnection();
        }
    }
    awaitProgramsIn(moduleHome().path());
    EXPECT_TRUE(wire.news() && wire.news()) << "from those that were tidy";
}

// The stop at every step of the host's own side, from where the module's program is not even
// started.
TEST_F(Injected, HandlesStoppedAnywhereEndWithErrorThreeAndTheNextOneWorks) {
    for (const Kind kind : {Kind::Loading, Kind::Saving}) {
        bool stopped = true;
        for (int step = 1; stopped && !HasFailure(); ++step) {
            SCOPED_TRACE(std::string(nameOf(kind)) + " " + std::to_string(step));
            stopped = false;
            Talk talk(kind, directory_);
            atStep(step, [&] {
                stopped = true;
                VORN_L_ShutDownHandle(talk);
            });
            const bool whole = talk.whole();
            EXPECT_TRUE(!talk.isWrong());
            EXPECT_TRUE(whole || talk.error() == 3 || talk.error() == 4) << talk.error();
            EXPECT_TRUE(!whole || !stopped || step > 20) << "a stop in the middle is never lost";
            talk.close();
            atStep(0, nullptr);
            EXPECT_TRUE(talk.whole()) << talk.error();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Each,
    Modules,
    testing::Combine(testing::ValuesIn(kInjections),
                     testing::Values(Kind::Loading, Kind::Aborting, Kind::Saving)),
    [](const auto& row) {
        return std::string(std::get<0>(row.param).action) + nameOf(std::get<1>(row.param));
    });

}  // namespace

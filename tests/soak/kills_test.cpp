// Hosts with many connections, whose modules are killed at random meanwhile.
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <random>
#include <sstream>

#include "tests/conversation/host.h"
#include "tests/soak/amounts.h"
#include "tests/support/program.h"

namespace {

using Soak = ConversationTest;

std::string programOf(const std::string& process) {
    std::error_code error;
    return std::filesystem::read_symlink(process + "/exe", error).string();
}

// The number is opened before it is looked at: so no other program can have taken it meanwhile.
bool killModule(int number, const std::string& directory) {
    const int watch = watchProgram(number);
    if (watch < 0) return false;
    const bool ours = programOf("/proc/" + std::to_string(number)).rfind(directory, 0) == 0;
    const bool killed = ours && ::syscall(SYS_pidfd_send_signal, watch, SIGKILL, nullptr, 0u) == 0;
    ::close(watch);
    return killed;
}

// Kills so many module programs, whichever. Some it leaves alone: else it would be faster than
// modules can be started. Fewer it kills only when there are none any more.
int killAtRandom(const std::string& directory, size_t spared, int wanted) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    std::mt19937 random(1);
    int killed = 0;
    while (killed < wanted && std::chrono::steady_clock::now() < deadline) {
        std::vector<int> numbers;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            if (programOf(entry.path()).rfind(directory, 0) == 0)
                numbers.push_back(std::stoi(entry.path().filename()));
        }
        std::shuffle(numbers.begin(), numbers.end(), random);
        for (size_t i = spared; i < numbers.size() && killed < wanted; i += 8)
            killed += killModule(numbers[i], directory);
    }
    return killed;
}

TEST_F(Soak, OfKilledModulesLosesNoPictureButTheirs) {
    const int connections = amount(64, 8);
    const int pictures = amount(100, 20);
    {
        Loader alone;
        for (int i = 0; i < pictures; ++i) EXPECT_TRUE(alone.reads(soakPicture(i)));
    }
    const int killed = amount(400, 20);
    const std::string done = moduleHome().path("done");
    std::filesystem::remove(done);
    int arrived = 0;
    int lost = 0;
    {
        const std::vector<std::string> command = {SOAK_HOST, std::to_string(connections),
                                                  std::to_string(pictures), done};
        Program hosts[] = {Program(command), Program(command)};
        EXPECT_EQ(killAtRandom(moduleHome().path("Loaders"), static_cast<size_t>(connections / 4),
                               killed),
                  killed);
        moduleHome().write("done", "");
        for (Program& host : hosts) {
            const Ended ended = host.wait();
            EXPECT_EQ(ended.status, 0) << ended.err;
            int ofHost[2] = {0, 0};
            std::istringstream(ended.out) >> ofHost[0] >> ofHost[1];
            arrived += ofHost[0];
            lost += ofHost[1];
        }
    }
    std::printf("%d modules killed, %d pictures arrived, %d lost\n", killed, arrived, lost);
    EXPECT_GE(arrived + lost, 2 * connections * pictures);
    EXPECT_LE(lost, killed);
}

}  // namespace

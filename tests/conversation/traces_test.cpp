// What is left behind, and by whom: nothing.
#include <sys/stat.h>

#include <csignal>
#include <fstream>
#include <memory>

#include "tests/conversation/host.h"
#include "tests/support/program.h"

namespace {

class Traces : public ConversationTest {
  protected:
    // A host program in this one's home directory.
    static std::vector<std::string> host(const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {HOST_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return command;
    }
};

// Each read goes on inside the meter callback of the one before, so all are under way at once.
struct Chain {
    std::vector<std::unique_ptr<Loader>>& loaders;
    std::vector<Picture>& targets;
    size_t next = 0;
    bool good = true;
};

void readNext(VORN_Image*, VORN_Word data, int32_t) {
    auto& chain = *reinterpret_cast<Chain*>(data);
    if (chain.next == chain.loaders.size()) return;
    const size_t mine = chain.next++;
    const bool read = chain.loaders[mine]->read(
        chain.targets[mine],
        words(ITAG_MeterCallback, &readNext, ITAG_MeterCallbackUserData, data));
    chain.good = read && chain.good;
}

TEST_F(Traces, OfManyHandlesAtOnceAreKeptApart) {
    std::vector<std::unique_ptr<Loader>> loaders;
    std::vector<Picture> targets;
    for (int i = 0; i < 8; ++i) {
        loaders.push_back(std::make_unique<Loader>());
        targets.push_back(plainPicture({10, 50, 3, 1}));
        ASSERT_TRUE(loaders.back()->open("w=10,h=50,block=3,seed=" + std::to_string(i)));
    }
    Chain chain{loaders, targets};
    readNext(nullptr, reinterpret_cast<VORN_Word>(&chain), 0);
    EXPECT_TRUE(chain.good);
    for (size_t i = 0; i < targets.size(); ++i)
        EXPECT_TRUE(
            same(targets[i], loadersPicture("w=10,h=50,block=3,seed=" + std::to_string(i))));
}

// The module's program ends with its host, wherever the conversation is, and no file comes of it.
TEST_F(Traces, OfAHostThatIsKilledAreNone) {
    const std::string pipe = moduleHome().path("pipe");
    const std::string directory = moduleHome().makeDirectory("empty");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    installLoader("loader");
    installSaver("saver", "RGB");
    const ScopedVariable pipeVariable("VORN_TEST_PIPE", pipe);
    const ScopedVariable targetVariable("VORN_TEST_TARGET", directory + "/saved");
    for (const char* how : {"idle", "reading", "writing"}) {
        SCOPED_TRACE(how);
        Program program(host({how}));
        int hostNumber = 0;
        int moduleNumber = 0;
        std::ifstream(pipe) >> hostNumber >> moduleNumber;
        ASSERT_GT(moduleNumber, 0);
        const int watch = watchProgram(moduleNumber);
        ::kill(hostNumber, SIGKILL);
        awaitEnd(watch);
        EXPECT_EQ(program.wait().status, 128 + SIGKILL);
        EXPECT_TRUE(std::filesystem::is_empty(directory));
    }
    moduleHome().remove("pipe");
}

TEST_F(Traces, OfAHostThatLeavesWithoutAWordAreNone) {
    installLoader("loader");
    EXPECT_EQ(run(host({"leaving"})).status, 0);  // its module's end is awaited after every test
}

TEST_F(Traces, OfAHostThatIgnoresItsChildrenAreNone) {
    std::signal(SIGCHLD, SIG_IGN);
    {
        Loader loader;
        EXPECT_TRUE(loader.reads("w=9,h=9"));
        Loader crashing("segv-at-open");
        EXPECT_FALSE(crashing.open("x"));
        EXPECT_EQ(crashing.code(), 3);
    }
    std::signal(SIGCHLD, SIG_DFL);
}

}  // namespace

#include "platform/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <thread>

#include "tests/scratch_home.h"

namespace {

using namespace vorn;

int32_t put(platform::File& file, const std::string& text) {
    size_t moved = 0;
    const int32_t error = file.write(text.data(), text.size(), moved);
    EXPECT_EQ(moved, error ? moved : text.size());
    return error;
}

std::set<std::string> namesIn(const ScratchDirectory& directory) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
        names.insert(entry.path().filename());
    }
    return names;
}

mode_t modeOf(const std::string& path) {
    struct stat status {};
    ::stat(path.c_str(), &status);
    return status.st_mode & 07777;
}

// Runs the action in a thread for which the kernel refuses unnamed files, as some file systems do.
template <class Action>
void withoutUnnamedFiles(Action action) {
    std::thread([&] {
        constexpr unsigned kUnnamed = O_TMPFILE & ~O_DIRECTORY;
        sock_filter filter[] = {
            BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat, 0, 3),
            BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
            BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, kUnnamed, 0, 1),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EOPNOTSUPP),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        };
        const sock_fprog program{static_cast<unsigned short>(std::size(filter)), filter};
        ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
        ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0);
        action();
    }).join();
}

// Runs the action with an open file in a directory that holds "old", and checks what is there
// afterwards. On all file systems the same must come out.
template <class Action>
void expectAfter(const std::string& name, const std::set<std::string>& names, Action action) {
    const auto run = [&] {
        const ScratchDirectory scratch;
        scratch.write("old", "old");
        {
            platform::File file;
            ASSERT_EQ(file.openForReplacing(scratch.path(name).c_str()), 0);
            action(scratch, file);
        }
        EXPECT_EQ(namesIn(scratch), names);
    };
    run();
    withoutUnnamedFiles(run);
}

TEST(ReplacedFile, LeavesNoTraceWithoutACommitOrWhereADirectoryHasCome) {
    for (const char* name : {"old", "new"}) {
        expectAfter(name, {"old"}, [](const ScratchDirectory& scratch, platform::File& file) {
            EXPECT_EQ(put(file, "half"), 0);
            EXPECT_EQ(scratch.read("old"), "old");
        });
    }
    expectAfter("new", {"old", "new"}, [](const ScratchDirectory& scratch, platform::File& file) {
        scratch.makeDirectory("new");
        EXPECT_EQ(file.commit(), EISDIR);
    });
}

TEST(ReplacedFile, KeepsPermissionsAndLinks) {
    const ScratchDirectory elsewhere;
    const auto run = [&] {
        const ScratchDirectory scratch;
        const std::string path = elsewhere.write("picture", "old");
        ::chmod(path.c_str(), 0604);
        std::filesystem::create_symlink(path, scratch.path("link"));
        platform::File file;
        ASSERT_EQ(file.openForReplacing(scratch.path("link").c_str()), 0);
        EXPECT_EQ(put(file, "new"), 0);
        EXPECT_EQ(file.commit(), 0);
        EXPECT_TRUE(std::filesystem::is_symlink(scratch.path("link")));
        EXPECT_EQ(elsewhere.read("picture"), "new");
        EXPECT_EQ(modeOf(path), 0604u);
    };
    run();
    withoutUnnamedFiles(run);
}

TEST(ReplacedFile, IsNewWithTheUsersOwnPermissionsUnderAsLongANameAsNamesCanBe) {
    const std::string name(255, 'n');
    const mode_t before = ::umask(027);
    expectAfter(name, {name, "old"}, [&](const ScratchDirectory& scratch, platform::File& file) {
        EXPECT_EQ(file.commit(), 0);
        EXPECT_EQ(modeOf(scratch.path(name)), 0640u);
    });
    // What killed programs have left goes with the next file, what others are writing stays.
    expectAfter("new", {"new", "old"}, [&](const ScratchDirectory& scratch, auto& file) {
        for (const char* left : {".vorn-0.tmp", ".vorn-1.tmp", ".vorn-7.tmp"})
            if (!namesIn(scratch).contains(left)) scratch.write(left, "");
        platform::File second;
        EXPECT_EQ(second.openForReplacing(scratch.path("old").c_str()), 0);
        EXPECT_EQ(put(second, "2"), 0);
        EXPECT_EQ(file.commit(), 0);
        EXPECT_EQ(second.commit(), 0);
        EXPECT_EQ(scratch.read("old"), "2");
    });
    ::umask(before);
}

TEST(ReplacedFile, ThatCannotBeSaysWhy) {
    const ScratchDirectory scratch;
    scratch.write("file", "");
    const auto error = [&](const std::string& name) {
        return platform::File().openForReplacing(scratch.path(name).c_str());
    };
    const auto run = [&] {
        EXPECT_EQ(platform::File().openForReplacing(scratch.path().c_str()), EISDIR);
        EXPECT_EQ(error("missing/file"), ENOENT);
        EXPECT_EQ(error("file/below"), ENOTDIR);
        EXPECT_EQ(error(std::string(platform::kMaxPath, 'x')), ENAMETOOLONG);
        EXPECT_EQ(namesIn(scratch), std::set<std::string>{"file"});
    };
    run();
    withoutUnnamedFiles(run);
}

TEST(ReplacedFile, IsWrittenDirectlyWhenItIsADevice) {
    platform::File null;
    ASSERT_EQ(null.openForReplacing("/dev/null"), 0);
    EXPECT_EQ(put(null, "x"), 0);
    EXPECT_EQ(null.commit(), 0);
}

}  // namespace

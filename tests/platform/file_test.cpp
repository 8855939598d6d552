#include "platform/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
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

template <class Action>
void withAndWithoutUnnamedFiles(Action action) {
    action();
    withoutUnnamedFiles(action);
}

TEST(ReplacedFile, AppearsWholeAndOnlyWhenItIsCommitted) {
    withAndWithoutUnnamedFiles([] {
        const ScratchDirectory scratch;
        const std::string path = scratch.write("picture", "old");
        {
            platform::File file;
            ASSERT_EQ(file.openForReplacing(path.c_str()), 0);
            EXPECT_EQ(put(file, "new picture"), 0);
            EXPECT_EQ(scratch.read("picture"), "old");
            EXPECT_EQ(file.commit(), 0);
            EXPECT_EQ(scratch.read("picture"), "new picture");
        }
        EXPECT_EQ(namesIn(scratch), std::set<std::string>{"picture"});
        EXPECT_EQ(scratch.read("picture"), "new picture");
    });
}

TEST(ReplacedFile, LeavesNoTraceWithoutACommit) {
    withAndWithoutUnnamedFiles([] {
        const ScratchDirectory scratch;
        scratch.write("old", "old");
        for (const char* name : {"old", "new"}) {
            platform::File file;
            ASSERT_EQ(file.openForReplacing(scratch.path(name).c_str()), 0);
            EXPECT_EQ(put(file, "half"), 0);
        }
        EXPECT_EQ(namesIn(scratch), std::set<std::string>{"old"});
        EXPECT_EQ(scratch.read("old"), "old");
    });
}

TEST(ReplacedFile, KeepsPermissionsAndLinks) {
    withAndWithoutUnnamedFiles([] {
        const ScratchDirectory scratch;
        const ScratchDirectory elsewhere;
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
        EXPECT_EQ(namesIn(scratch), std::set<std::string>{"link"});
    });
}

TEST(ReplacedFile, IsNewWithTheUsersOwnPermissions) {
    withAndWithoutUnnamedFiles([] {
        const ScratchDirectory scratch;
        const mode_t before = ::umask(027);
        platform::File file;
        EXPECT_EQ(file.openForReplacing(scratch.path("new").c_str()), 0);
        EXPECT_EQ(file.commit(), 0);
        ::umask(before);
        EXPECT_EQ(modeOf(scratch.path("new")), 0640u);
    });
}

TEST(ReplacedFile, MayHaveANameAsLongAsNamesCanBe) {
    withAndWithoutUnnamedFiles([] {
        const ScratchDirectory scratch;
        const std::string name(255, 'n');
        platform::File file;
        ASSERT_EQ(file.openForReplacing(scratch.path(name).c_str()), 0);
        EXPECT_EQ(file.commit(), 0);
        EXPECT_EQ(namesIn(scratch), std::set<std::string>{name});
    });
}

TEST(ReplacedFile, SharesItsDirectoryWithOthers) {
    withAndWithoutUnnamedFiles([] {
        const ScratchDirectory scratch;
        platform::File first;
        platform::File second;
        ASSERT_EQ(first.openForReplacing(scratch.path("a").c_str()), 0);
        ASSERT_EQ(second.openForReplacing(scratch.path("b").c_str()), 0);
        const std::string left = ".vorn-" + std::to_string(::getpid()) + "-2";
        scratch.write(left, "left by another program of this number");
        EXPECT_EQ(put(first, "1"), 0);
        EXPECT_EQ(put(second, "2"), 0);
        EXPECT_EQ(second.commit(), 0);
        EXPECT_EQ(first.commit(), 0);
        EXPECT_EQ(scratch.read("a") + scratch.read("b"), "12");
        EXPECT_EQ(namesIn(scratch), (std::set<std::string>{"a", "b", left}));
    });
}

TEST(ReplacedFile, ThatCannotBeSaysWhy) {
    withAndWithoutUnnamedFiles([] {
        const ScratchDirectory scratch;
        scratch.write("file", "");
        scratch.makeDirectory("directory");
        const auto error = [&](const std::string& name) {
            return platform::File().openForReplacing(scratch.path(name).c_str());
        };
        EXPECT_EQ(error("directory"), EISDIR);
        EXPECT_EQ(error("missing/file"), ENOENT);
        EXPECT_EQ(error("file/below"), ENOTDIR);
        EXPECT_EQ(error(std::string(platform::kMaxPath, 'x')), ENAMETOOLONG);
        EXPECT_EQ(namesIn(scratch), (std::set<std::string>{"file", "directory"}));
    });
}

TEST(ReplacedFile, IsNotPutWhereADirectoryHasCome) {
    withAndWithoutUnnamedFiles([] {
        const ScratchDirectory scratch;
        {
            platform::File file;
            ASSERT_EQ(file.openForReplacing(scratch.path("picture").c_str()), 0);
            scratch.makeDirectory("picture");
            EXPECT_EQ(file.commit(), EISDIR);
        }
        EXPECT_EQ(namesIn(scratch), std::set<std::string>{"picture"});
    });
}

TEST(ReplacedFile, IsWrittenDirectlyWhenItIsADevice) {
    platform::File null;
    ASSERT_EQ(null.openForReplacing("/dev/null"), 0);
    EXPECT_EQ(put(null, "x"), 0);
    EXPECT_EQ(null.commit(), 0);
    platform::File full;
    ASSERT_EQ(full.openForReplacing("/dev/full"), 0);
    EXPECT_EQ(put(full, "x"), ENOSPC);
}

TEST(File, ReportsAWriteThatFindsNoRoom) {
    const ScratchDirectory scratch;
    platform::File file;
    ASSERT_EQ(file.openForReplacing(scratch.path("big").c_str()), 0);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{1000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &small);
    const std::string text(700, 't');
    size_t moved = 0;
    EXPECT_EQ(file.write(text.data(), text.size(), moved), 0);
    EXPECT_EQ(file.write(text.data(), text.size(), moved), EFBIG);
    EXPECT_EQ(moved, 300u);  // what could be written is counted
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
}

TEST(File, ReadsFromAnyPosition) {
    const ScratchDirectory scratch;
    platform::File file;
    EXPECT_EQ(file.openForReading(scratch.write("text", "0123456789").c_str()), 0);
    int64_t bytes = 0;
    EXPECT_EQ(file.size(bytes), 0);
    EXPECT_EQ(bytes, 10);
    char text[8] = {};
    size_t moved = 0;
    EXPECT_EQ(file.seek(7), 0);
    EXPECT_EQ(file.read(text, sizeof text, moved), 0);
    EXPECT_EQ(std::string(text, moved), "789");
    EXPECT_EQ(file.seek(-1), EINVAL);
    EXPECT_EQ(platform::File().openForReading(scratch.path().c_str()), EISDIR);
    EXPECT_EQ(platform::File().openForReading(scratch.path("missing").c_str()), ENOENT);
}

}  // namespace

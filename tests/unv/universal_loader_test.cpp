#include <gtest/gtest.h>
#include <vorn/unv.h>

#include <string>
#include <thread>

#include "tests/scratch_home.h"

namespace {

// The library remembers the home directory for as long as a thread lives.
std::string chosen(const std::string& file) {
    std::string answer;
    std::thread([&] {
        char buffer[VORN_UNIVERSAL_ANSWER_SIZE] = "left over";
        const bool found = VORN_M_UniversalLoader(file.c_str(), buffer, 0);
        answer = buffer;
        EXPECT_EQ(found, !answer.empty());
    }).join();
    return answer;
}

class UniversalLoader : public testing::Test {
  protected:
    void install(const std::string& loader, const std::string& capabilities) {
        home_.write("Loaders/" + loader, "");
        home_.write("Loaders/" + loader + ".cap", capabilities);
    }

    std::string choose(const std::string& name, const std::string& content) {
        return chosen(files_.write(name, content));
    }

    ScratchHome home_;
    ScratchDirectory files_;
};

TEST_F(UniversalLoader, ASignatureWinsOverTheFileEnding) {
    install("alpha", "Signatures=0:'ALPHA'\nExtensions=alp,al\n");
    install("beta", "# by ending only\nextensions=bet\n");
    EXPECT_EQ(choose("picture.bet", "ALPHA and pixels"), "alpha");
    EXPECT_EQ(choose("picture.bet", "something else"), "beta");
    EXPECT_EQ(choose("picture.AL", "ALPHA and pixels"), "alpha");
    EXPECT_EQ(choose("picture.AL", "something else"), "") << "which alpha doesn't know";
    EXPECT_EQ(choose("picture.xyz", "something else"), "");
    EXPECT_EQ(choose("empty.xyz", ""), "");
    EXPECT_EQ(choose("empty.alp", ""), "");
    EXPECT_EQ(choose("empty.bet", ""), "beta");
}

TEST_F(UniversalLoader, TheMostSpecificSignatureWins) {
    install("container", "Signatures=0:'RIFF'\n");
    install("picture", "Signatures=0:'RIFF'........'PICT'\n");
    install("zany", "Signatures=0:'R'[00-FF]\n");
    EXPECT_EQ(choose("a", "RIFF....PICT"), "picture");
    EXPECT_EQ(choose("a", "RIFF....WAVE"), "container");
    EXPECT_EQ(choose("a", "Raw"), "zany");
}

TEST_F(UniversalLoader, TheEndingDecidesBetweenEqualSignatures) {
    install("one", "Signatures=0:'II'2A00\nExtensions=tif\n");
    install("two", "Signatures=0:'II'2A00\nExtension=cr2\n");
    EXPECT_EQ(choose("a.cr2", std::string("II*\0", 4)), "two");
    EXPECT_EQ(choose("a.tif", std::string("II*\0", 4)), "one");
    EXPECT_EQ(choose("a", std::string("II*\0", 4)), "one");
}

TEST_F(UniversalLoader, AnswersNothingForWhatItCannotRead) {
    install("any", "Signatures=0:..,0:'A'\nExtensions=any\n");
    EXPECT_EQ(chosen(files_.path("missing.any")), "");
    EXPECT_EQ(chosen(files_.makeDirectory("directory.any")), "");
    char answer[VORN_UNIVERSAL_ANSWER_SIZE];
    EXPECT_FALSE(VORN_M_UniversalLoader(nullptr, answer, 0));
    EXPECT_FALSE(VORN_M_UniversalLoader("x", nullptr, 0));
}

}  // namespace

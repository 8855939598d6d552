#include <gtest/gtest.h>
#include <vorn/library.h>

#include <string>

namespace {

VORN_Word word(const void* pointer) { return reinterpret_cast<VORN_Word>(pointer); }

void parse(const std::string& text, uint32_t kind, void* value, VORN_Word defaultValue) {
    const VORN_ParseEntry table[] = {{"Key", kind, value, defaultValue}, {nullptr, 0, nullptr, 0}};
    VORN_u_ParseGUIResults(text.c_str(), table);
}

std::string readString(const std::string& text, const char* defaultValue = "default") {
    char value[PARSE_STRING_SIZE];
    parse(text, PARSE_String, value, word(defaultValue));
    return value;
}

int32_t readNumber(const std::string& text, uint32_t kind = PARSE_Long) {
    int32_t value = -1;
    parse(text, kind, &value, 77);
    return value;
}

std::string readFloats(const std::string& text, const float* defaultValue = nullptr) {
    float value[4] = {9, 9, 9, 9};
    parse(text, PARSE_Float4, value, word(defaultValue));
    char out[80];
    std::snprintf(out, sizeof out, "%g %g %g %g", value[0], value[1], value[2], value[3]);
    return out;
}

TEST(ParseTable, KeywordsMatchWithoutCaseAndOuterBlanks) {
    EXPECT_EQ(readString("Other=1\n\n  kEY\t=found"), "found");
    EXPECT_EQ(readString("#Key=comment\nKey2=no\nK ey=no\nKey=first\nKey=second"), "first");
    EXPECT_EQ(readString("==Key=skipped signs\n"), "skipped signs");
    EXPECT_EQ(readString("Key"), "");
    EXPECT_EQ(readString("=\n===\nKe=1\nKeyy=2"), "default");
    EXPECT_EQ(readString("", nullptr), "");
}

TEST(ParseTable, StringsKeepWhatTheLineHolds) {
    EXPECT_EQ(readString("Key= a = b \nnext"), "a = b ");
    EXPECT_EQ(readString("Key=dos \r\nnext"), "dos ");
    EXPECT_EQ(readString("Key=lone\r"), "lone\r");
    EXPECT_EQ(readString("Key= \"the \\\"best\\\" 'x' \\n\" tail"), "the \"best\" 'x' \\n");
    EXPECT_EQ(readString("Key='it\\'s'"), "it's");
    EXPECT_EQ(readString("Key=\"open \r\nnext"), "open ");
    EXPECT_EQ(readString("Key=\"\\"), "\\");
}

TEST(ParseTable, LongLinesAreReadInPieces) {
    EXPECT_EQ(readString("Key=" + std::string(400, 'x')), std::string(295, 'x'));
    EXPECT_EQ(readString(std::string(299, 'x') + "Key=piece\n"), "piece");
    EXPECT_EQ(readString(std::string(298, '#') + "x\nKey=after"), "after");
    EXPECT_EQ(readString("x", std::string(400, 'd').c_str()), std::string(299, 'd'));
}

TEST(ParseTable, NumbersAndTruthValues) {
    EXPECT_EQ(readNumber("Key= -12abc"), -12);
    EXPECT_EQ(readNumber("Key=none"), 0);
    EXPECT_EQ(readNumber("Key=99999999999999999999999"), INT32_MAX);
    EXPECT_EQ(readNumber("Key=-99999999999999999999999"), INT32_MIN);
    EXPECT_EQ(readNumber("Other=1"), 77);
    EXPECT_EQ(readNumber("Key = TRUE \r\n", PARSE_Bool), 1);
    for (const char* no : {"Key=yes", "Key=1", "Key=truely", "Key=", "Key"}) {
        EXPECT_EQ(readNumber(no, PARSE_Bool), 0) << no;
    }
}

TEST(ParseTable, FloatsThatAreNotReadKeepTheDefault) {
    const float given[] = {5, 6, 7, 8};
    EXPECT_EQ(readFloats("Key=(0.5, -1,2,  1e2)"), "0.5 -1 2 100");
    EXPECT_EQ(readFloats("Key=(0.5, 2; 3, 4)", given), "0.5 2 7 8");
    EXPECT_EQ(readFloats("Key=0.5, 2", given), "5 6 7 8");
    EXPECT_EQ(readFloats("Other=1"), "0 0 0 1");
}

}  // namespace

#include <gtest/gtest.h>

#include "tags/tag_dump.h"
#include "tests/tags/tag_builder.h"

namespace {

std::string dump(const VORN_TagItem* list) {
    testing::internal::CaptureStderr();
    VORN_L_DumpTagList(list);
    return testing::internal::GetCapturedStderr();
}

TEST(TagNames, ArePaddedSoThatTheyLineUp) {
    EXPECT_EQ(std::string(VORN_L_gettagid(ITAG_Width)), "ITAG_Width" + std::string(16, ' '));
    EXPECT_STREQ(VORN_L_gettagid(ITAG_MeterCallbackUserData), "ITAG_MeterCallbackUserData");
    EXPECT_STREQ(VORN_L_gettagid(MTAG_Version), "ID(x01000084) ");
}

// Every known name stands with its own id and has 26 characters.
TEST(TagNames, CatalogueHasFiftyFiveNames) {
    int known = 0;
    for (uint32_t type = 0; type <= 6; ++type) {
        for (uint32_t number = 0; number <= 0x200; ++number) {
            const std::string name = VORN_L_gettagid(type << 24 | number);
            if (name.starts_with("ID(")) continue;
            ++known;
            EXPECT_EQ(name.size(), 26u) << name;
        }
    }
    EXPECT_EQ(known, 55);
}

TEST(TagDump, PrintsOneLineAnItemAndCutsLongStrings) {
    EXPECT_EQ(dump(nullptr), "< null tag list >\n");
    TagBuilder builder;
    const double aspect = 0.5;
    builder.addLong(ITAG_Width, -640).add(TAG_SkipTag, "1234", 4).add(ITAG_Aspect, &aspect, 8);
    EXPECT_EQ(dump(builder.addText(ITAG_Artist, std::string(200, 'a')).end()),
              "\tTAG ID=ITAG_Width                , TAG Type: LONG, value: -640\n"
              "\tTAG ID=TAG_SkipTag               , TAG <unknown type>, value: <unknown value>\n"
              "\tTAG ID=ID(x06000001) , TAG Type: DOUBLE, value: 0.5\n"
              "\tTAG ID=ITAG_Artist               , TAG Type: STRING, value: " +
                  std::string(127, 'a') + "\n");
}

}  // namespace

// A host that runs out of memory: every call, with each of its allocations failing in turn.
#include <functional>

#include "tests/conversation/host.h"
#include "tests/conversation/saved.h"
#include "tests/support/failing_memory.h"
#include "tests/support/string_list.h"
#include "transport/image.h"

namespace {

using OutOfMemory = ConversationTest;

constexpr char kPicture[] = "w=9,h=7,seed=3";
// More colours than the memory that every handle has for messages.
constexpr char kColors[] = "w=9,h=7,c=1,space=CMAPPED,palette=2000,palbytes=2,b=2";

std::string savedFile() { return moduleHome().makeDirectory("out-of-memory") + "/saved"; }

struct LoaderCall {
    const char* name;
    std::function<bool(Loader&)> prepare;
    std::function<bool(Loader&)> call;
    bool hasError = true;  // a failure has an error number
};

bool opens(Loader& loader) { return loader.open(kPicture); }
bool opensColors(Loader& loader) {
    return loader.open(kColors) &&
           VORN_H_ImageVaSetTags(loader, ITAG_ColorSpace, VORN_Word(VORN_CS_RGB), TAG_End);
}

// What a call that claims to have succeeded has read must be the picture.
bool readsPicture(Loader& loader) {
    const Picture target = plainPicture({9, 7, 3, 1});
    if (!loader.read(target)) return false;
    EXPECT_TRUE(same(target, loadersPicture(kPicture)));
    return true;
}

bool readsColors(Loader& loader) {
    const Picture target = plainPicture({9, 7, 3, 2});
    if (!loader.read(target)) return false;
    const Picture palette = loadersPalette(kColors);
    EXPECT_TRUE(same(target, converted(target, loadersPicture(kColors), 7, &palette)));
    return true;
}

LoaderCall scaledRead(const char* name, const char* scaler) {
    return {name,
            [scaler](Loader& loader) {
                return loader.open(kPicture) &&
                       VORN_H_ImageVaSetTags(loader, ITAG_ScalerName, VORN_Word(scaler), TAG_End);
            },
            [](Loader& loader) {
                return loader.read(plainPicture({13, 11, 3, 1}));
            }};
}

bool asksForText(Loader& loader) {
    char* text = nullptr;
    char* again = nullptr;
    const bool asked = VORN_H_ImageVaGetTags(loader, ITAG_Filename, VORN_Word(&text),
                                             ITAG_DataFormat, VORN_Word(&again), TAG_End);
    EXPECT_EQ(asked, text && again);
    VORN_L_TagFreeString(text);
    VORN_L_TagFreeData(again);
    return asked;
}

bool setsManyTags(Loader& loader) {
    std::vector<VORN_Word> tags;
    for (int i = 0; i < 5; ++i)
        tags.insert(tags.end(), {ITAG_Artist, reinterpret_cast<VORN_Word>("somebody")});
    tags.push_back(TAG_End);
    return VORN_H_ImageSetTags(loader, tags.data());
}

bool sendsCommand(Loader& loader) {
    VORN_TagItem* answer =
        VORN_H_ModuleVaSendCommand(loader, CMD_Module, ITAG_PageNumber, VORN_Word(4), TAG_End);
    EXPECT_TRUE(!answer || VORN_L_TagGetLongVal(answer) == 5);
    FreeMemory(answer);
    return answer != nullptr;
}

TEST_F(OutOfMemory, InAnyCallOfALoadersHostIsErrorSeventeenAndThePictureAfterItComes) {
    const auto nothing = [](Loader&) { return true; };
    const LoaderCall calls[] = {
        {"open", nothing, opens},
        {"open with a large message", nothing, opensColors},
        {"set", opens, setsManyTags},
        {"get", opens, asksForText, false},
        {"read", opens, readsPicture},
        {"read colours", opensColors, readsColors},
        scaledRead("scale by copying", "qdscale"),
        scaledRead("scale by averaging", "avscale"),
        scaledRead("scale straight", "blscale"),
        scaledRead("scale smoothly", "bcscale"),
        {"command", opens, sendsCommand},
        {"close", opens, [](Loader& loader) { return loader.closeImage(); }},
    };
    for (const LoaderCall& c : calls) {
        SCOPED_TRACE(c.name);
        failAtEachAllocation([&](auto withFailure) {
            Loader loader;
            ASSERT_TRUE(c.prepare(loader));
            const auto [result, failed] = withFailure([&] { return c.call(loader); });
            EXPECT_TRUE(result || failed);
            if (!result && c.hasError) {
                EXPECT_EQ(loader.code(), 17);
            }
            // A handle that has lost its tags can only be closed.
            if (loader.closeImage() && VORN_L_TagFind(loader.image()->imageTags, MTAG_ModuleName)) {
                EXPECT_TRUE(loader.reads(kPicture));
            }
        });
    }
}

TEST_F(OutOfMemory, InAnyCallOfASaversHostIsErrorSeventeenAndThePictureAfterItIsSaved) {
    const Picture picture = plainPicture({9, 7, 3, 1});
    const std::function<bool(Saver&)> steps[] = {
        [](Saver& saver) { return saver.open(savedFile()); },
        [&](Saver& saver) {
            saver.describe(picture, VORN_CS_GRAY);
            return saver.number(ITAG_Width) == 9;
        },
        [&](Saver& saver) { return saver.write(picture); },
    };
    for (size_t failing = 0; failing < std::size(steps); ++failing) {
        SCOPED_TRACE(failing);
        failAtEachAllocation([&](auto withFailure) {
            Saver saver;
            for (size_t i = 0; i < failing; ++i) ASSERT_TRUE(steps[i](saver));
            const auto [result, failed] = withFailure([&] { return steps[failing](saver); });
            EXPECT_TRUE(result || failed);
            if (!result) {
                EXPECT_EQ(saver.code(), 17);
            }
            saver.closeImage();
            for (const auto& step : steps) EXPECT_TRUE(step(saver));
        });
    }
}

void failInEachAllocation(const std::function<bool()>& call, bool hasError = true) {
    failAtEachAllocation([&](auto withFailure) {
        VORN_L_SetErrorCode(nullptr, 0, 0);
        const auto [result, failed] = withFailure(call);
        EXPECT_TRUE(result || failed);
        if (!result && hasError) {
            EXPECT_EQ(VORN_ErrorPairCode(VORN_H_ImageGetError(nullptr)), 17);
        }
    });
}

TEST_F(OutOfMemory, InACallWithoutAHandleIsErrorSeventeen) {
    installLoader("loader");
    failInEachAllocation([] {
        char** list = nullptr;
        const bool made = VORN_H_ImageVaQueryModuleHandler(VORN_LOADER, MTAG_ModuleList,
                                                           VORN_Word(&list), TAG_End);
        EXPECT_NE(taken(list).empty(), made);
        return made;
    });
    const auto question = [] {
        char** list = nullptr;
        EXPECT_TRUE(VORN_H_ImageVaQueryModule("loader", VORN_LOADER, MTAG_ColorSpaces,
                                              VORN_Word(&list), TAG_End));
        return !taken(list).empty();
    };
    failInEachAllocation(question, false);
    const std::string file = moduleHome().write("file", "");
    failInEachAllocation([&] {
        char name[80];
        return VORN_H_ImageGetLoaderName(file.c_str(), "loader", name, sizeof name) != 0;
    });
}

TEST_F(OutOfMemory, WhileAModuleIsChosenOrClosedLeavesNothing) {
    installLoader("loader");
    failAtEachAllocation([](auto withFailure) {
        const auto [image, failed] =
            withFailure([] { return VORN_H_ModuleVaOpen("loader", VORN_LOADER, TAG_End); });
        EXPECT_EQ(image == nullptr, failed);
        if (failed) {
            EXPECT_EQ(VORN_ErrorPairCode(VORN_H_ImageGetError(nullptr)), 17);
        }
        VORN_H_ModuleClose(image);
    });
    failAtEachAllocation([](auto withFailure) {
        Loader loader;
        ASSERT_TRUE(loader.open(kPicture));
        withFailure([&] {
            loader.close();
            return true;
        });
    });
}

}  // namespace

// A host that runs out of memory: every call, with each of its allocations failing in turn.
#include <functional>
#include <memory>

#include "tests/conversation/host.h"
#include "tests/support/failing_memory.h"
#include "tests/support/string_list.h"
#include "transport/image.h"

namespace {

using OutOfMemory = ConversationTest;

constexpr char kPicture[] = "w=9,h=7,seed=3";
// More colours than the memory that every handle has for messages.
constexpr char kColors[] = "w=9,h=7,c=1,space=CMAPPED,palette=2000,palbytes=2,b=2";

std::string savedFile() { return moduleHome().makeDirectory("out-of-memory") + "/saved"; }

using Step = bool (*)(Module&);

bool nothing(Module&) { return true; }
bool opens(Module& loader) { return loader.open(kPicture); }
bool opensColors(Module& loader) {
    return loader.open(kColors) && loader.set(ITAG_ColorSpace, VORN_CS_RGB);
}

// What a call that claims to have succeeded has read must be the picture.
bool readsPicture(Module& loader) {
    const Picture target = plainPicture({9, 7, 3, 1});
    if (!loader.read(target)) return false;
    EXPECT_TRUE(same(target, loadersPicture(kPicture)));
    return true;
}

bool readsColors(Module& loader) {
    const Picture target = plainPicture({9, 7, 3, 2});
    if (!loader.read(target)) return false;
    const Picture palette = loadersPalette(kColors);
    EXPECT_TRUE(same(target, converted(target, loadersPicture(kColors), 7, &palette)));
    return true;
}

bool readsScaled(Module& loader) { return loader.read(plainPicture({13, 11, 3, 1})); }

bool asksForText(Module& loader) {
    char* text = nullptr;
    char* again = nullptr;
    const bool asked = VORN_H_ImageVaGetTags(loader, ITAG_Filename, VORN_Word(&text),
                                             ITAG_DataFormat, VORN_Word(&again), TAG_End);
    EXPECT_EQ(asked, text && again);
    VORN_L_TagFreeString(text);
    VORN_L_TagFreeData(again);
    return asked;
}

bool setsManyTags(Module& module) {
    const char* name = "somebody";
    return module.set(ITAG_Artist, name, ITAG_Artist, name, ITAG_Artist, name, ITAG_Artist, name,
                      ITAG_Artist, name);
}

bool sendsCommand(Module& loader) {
    VORN_TagItem* answer =
        VORN_H_ModuleVaSendCommand(loader, CMD_Module, ITAG_PageNumber, VORN_Word(4), TAG_End);
    EXPECT_TRUE(!answer || VORN_L_TagGetLongVal(answer) == 5);
    FreeMemory(answer);
    return answer != nullptr;
}

bool opensTarget(Module& saver) { return saver.open(savedFile()); }
bool describes(Module& saver) {
    saver.describe(plainPicture({9, 7, 3, 1}), VORN_CS_GRAY);
    return saver.number(ITAG_Width) == 9;
}
bool opensAndDescribes(Module& saver) { return opensTarget(saver) && describes(saver); }
bool writes(Module& saver) { return saver.write(plainPicture({9, 7, 3, 1})); }

TEST_F(OutOfMemory, InAnyCallIsErrorSeventeenAndThePictureAfterItComes) {
    const struct {
        const char* name;
        Step prepare, call;
        int32_t type = VORN_LOADER;
        bool hasError = true;  // a failure has an error number
        const char* scaler = nullptr;
    } cases[] = {
        {"open", nothing, opens},
        {"open with a large message", nothing, opensColors},
        {"set", opens, setsManyTags},
        {"get", opens, asksForText, VORN_LOADER, false},
        {"read", opens, readsPicture},
        {"read colours", opensColors, readsColors},
        {"scale by copying", opens, readsScaled, VORN_LOADER, true, "qdscale"},
        {"scale by averaging", opens, readsScaled, VORN_LOADER, true, "avscale"},
        {"scale straight", opens, readsScaled, VORN_LOADER, true, "blscale"},
        {"scale smoothly", opens, readsScaled, VORN_LOADER, true, "bcscale"},
        {"command", opens, sendsCommand},
        {"close", opens, [](Module& loader) { return loader.close(); }},
        {"open a saver", nothing, opensTarget, VORN_SAVER},
        {"describe", opensTarget, describes, VORN_SAVER},
        {"write", opensAndDescribes, writes, VORN_SAVER},
    };
    installLoader("loader");
    installSaver("saver", "RGB,Gray");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const bool loads = c.type == VORN_LOADER;
        failAtEachAllocation([&](auto withFailure) {
            Module module(loads ? "loader" : "saver", c.type);
            ASSERT_TRUE(c.prepare(module));
            if (c.scaler) module.set(ITAG_ScalerName, c.scaler);
            const auto [result, failed] = withFailure([&] { return c.call(module); });
            EXPECT_TRUE(result || failed);
            if (!result && c.hasError) {
                EXPECT_EQ(module.error(), 17);
            }
            if (!module.get()->tracker) {
                EXPECT_FALSE(module.set(ITAG_Width, 1));
            }
            // A handle that has lost its tags says so, and can only be closed.
            const bool hasTags = VORN_L_TagFind(module.get()->imageTags, MTAG_ModuleName);
            EXPECT_TRUE(hasTags || !result);
            if (!hasTags || !module.close()) return;
            EXPECT_TRUE(loads ? opens(module) && readsPicture(module)
                              : opensAndDescribes(module) && writes(module));
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
    failInEachAllocation([] {
        VORN_Image* image = VORN_H_ModuleVaOpen("loader", VORN_LOADER, TAG_End);
        VORN_H_ModuleClose(image);
        return image != nullptr;
    });
    failAtEachAllocation([](auto withFailure) {
        auto loader = std::make_unique<Loader>();
        ASSERT_TRUE(loader->open(kPicture));
        withFailure([&] {
            loader.reset();
            return true;
        });
    });
}

}  // namespace

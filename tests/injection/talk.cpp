#include "tests/injection/talk.h"

#include <fstream>
#include <iterator>

#include "tests/conversation/saved.h"

namespace {

const char* kPicture = "w=5,h=6,c=3,block=2";
const Shape kShape{5, 6, 3, 1};
constexpr int32_t kAborted = 27;

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Answers the question whether to stop: yes, before the second block.
int32_t abortInTheMiddle(VORN_Image*, VORN_Word data) {
    return ++*reinterpret_cast<int*>(data) == 2;
}

}  // namespace

const char* nameOf(Kind kind) {
    switch (kind) {
        case Kind::Loading:
            return "Loading";
        case Kind::Aborting:
            return "Aborting";
        case Kind::Saving:
            return "Saving";
    }
    return "";
}

Talk::Talk(Kind kind, const std::string& directory)
    : kind_(kind),
      target_(directory + "/saved"),
      module_("injected", kind == Kind::Saving ? VORN_SAVER : VORN_LOADER) {}

bool Talk::whole() {
    wrong_ = false;
    return kind_ == Kind::Saving ? save() : load();
}

bool Talk::command() {
    VORN_TagItem* answer =
        VORN_H_ModuleVaSendCommand(module_, CMD_Module, ITAG_PageNumber, VORN_Word{41}, TAG_End);
    const VORN_TagItem* page = answer ? VORN_L_TagFind(answer, ITAG_PageNumber) : nullptr;
    wrong_ = answer && !(page && VORN_L_TagGetLongVal(page) == 42);
    const bool answered = answer && !wrong_;
    VORN_L_TagFreeData(answer);
    return answered;
}

bool Talk::load() {
    if (!module_.open(kPicture) || !command()) return false;
    const Picture picture = plainPicture(kShape);
    const VORN_ImageBuffer buffer = bufferOf(picture);
    int questions = 0;
    std::vector<VORN_Word> tags = words();
    if (kind_ == Kind::Aborting)
        tags = words(ITAG_AbortCallback, &abortInTheMiddle, ITAG_AbortCallbackUserData, &questions);
    const bool done = VORN_H_ImageReadData(module_, &buffer, tags.data());
    if (kind_ == Kind::Aborting) {
        wrong_ = done;
        return !done && module_.code() == kAborted;
    }
    wrong_ = done && !same(picture, loadersPicture(kPicture));
    return done && !wrong_ && module_.code() == 0;
}

bool Talk::isWhole(const std::string& directory) {
    return same(Saved(directory + "/saved").picture(), loadersPicture(kPicture));
}

// The target is either what it was or the whole picture.
bool Talk::save() {
    std::ofstream(target_) << "old";
    if (!module_.open(target_)) return false;
    const Picture picture = loadersPicture(kPicture);
    VORN_H_ImageVaSetTags(module_, ITAG_Width, VORN_Word(kShape.width), ITAG_Height,
                          VORN_Word(kShape.height), ITAG_Channels, VORN_Word(kShape.channels),
                          ITAG_ColorSpace, VORN_Word{VORN_CS_RGB}, TAG_End);
    const VORN_ImageBuffer buffer = bufferOf(picture);
    const VORN_MeterCallback meter = [](VORN_Image*, VORN_Word, int32_t) {};
    const auto tags = words(ITAG_MeterCallback, meter, ITAG_MeterTicks, 1);  // makes two blocks
    const bool done = VORN_H_ImageWriteData(module_, &buffer, tags.data());
    const bool untouched = contents(target_) == "old";
    wrong_ = untouched ? done : !same(Saved(target_).picture(), picture);
    return done && !wrong_;
}

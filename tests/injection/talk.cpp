#include "tests/injection/talk.h"

#include <fstream>

#include "tests/conversation/saved.h"

namespace {

const char* kPicture = "w=5,h=6,c=3,block=2";
constexpr int32_t kAborted = 27;

}  // namespace

const char* nameOf(Kind kind) {
    constexpr const char* kNames[] = {"Loading", "Aborting", "Saving"};
    return kNames[static_cast<int>(kind)];
}

Talk::Talk(Kind kind, const std::string& directory)
    : Module("injected", kind == Kind::Saving ? VORN_SAVER : VORN_LOADER),
      kind_(kind),
      target_(directory + "/saved") {}

bool Talk::whole() {
    wrong_ = false;
    return kind_ == Kind::Saving ? save() : load();
}

bool Talk::command() {
    VORN_TagItem* answer =
        VORN_H_ModuleVaSendCommand(get(), CMD_Module, ITAG_PageNumber, VORN_Word{41}, TAG_End);
    const VORN_TagItem* page = answer ? VORN_L_TagFind(answer, ITAG_PageNumber) : nullptr;
    wrong_ = answer && !(page && VORN_L_TagGetLongVal(page) == 42);
    const bool answered = answer && !wrong_;
    VORN_L_TagFreeData(answer);
    return answered;
}

bool Talk::load() {
    if (!open(kPicture) || !command()) return false;
    const Picture picture = plainPicture({5, 6, 3, 1});
    Calls calls;
    calls.stopAt = kind_ == Kind::Aborting ? 2 : 0;  // before the second block
    const bool done = read(picture, calls.tags(false));
    if (kind_ == Kind::Aborting) {
        wrong_ = done;
        return !done && error() == kAborted;
    }
    wrong_ = done && !same(picture, loadersPicture(kPicture));
    return done && !wrong_ && error() == 0;
}

bool Talk::isWhole(const std::string& directory) {
    return same(Saved(directory + "/saved").picture(), loadersPicture(kPicture));
}

// The target is either what it was or the whole picture.
bool Talk::save() {
    std::ofstream(target_) << "old";
    if (!open(target_)) return false;
    const Picture picture = loadersPicture(kPicture);
    describe(picture, VORN_CS_RGB);
    Calls calls;
    const bool done = write(picture, calls.tags(true, 1));  // in two blocks
    const bool untouched = contentOf(target_) == "old";
    wrong_ = untouched ? done : !same(Saved(target_).picture(), picture);
    return done && !wrong_;
}

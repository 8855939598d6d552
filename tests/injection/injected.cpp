#include "tests/injection/injected.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>

#include "tests/conversation/saved.h"

namespace {

const char* kPicture = "w=5,h=6,c=3,block=2";
const Shape kShape{5, 6, 3, 1};
constexpr int32_t kAborted = 27;

std::string target() { return moduleHome().path("target/saved"); }

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

long long steadyNanoseconds() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

Talk::Talk(Kind kind)
    : kind_(kind),
      module_((installInjected(), "injected"), kind == Kind::Saving ? VORN_SAVER : VORN_LOADER) {
    moduleHome().makeDirectory("target");
}

bool Talk::whole() {
    wrong_ = false;
    return kind_ == Kind::Saving ? save() : load();
}

bool Talk::command() {
    VORN_TagItem* answer = VORN_H_ModuleVaSendCommand(module_, CMD_Module, ITAG_PageNumber,
                                                      VORN_Word{41}, TAG_End);
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

// The target is either what it was or the whole picture.
bool Talk::save() {
    const std::string old = moduleHome().write("target/saved", "old");
    if (!module_.open(target())) return false;
    const Picture picture = loadersPicture(kPicture);
    VORN_H_ImageVaSetTags(module_, ITAG_Width, VORN_Word(kShape.width), ITAG_Height,
                          VORN_Word(kShape.height), ITAG_Channels, VORN_Word(kShape.channels),
                          ITAG_ColorSpace, VORN_Word{VORN_CS_RGB}, TAG_End);
    const VORN_ImageBuffer buffer = bufferOf(picture);
    const VORN_MeterCallback meter = [](VORN_Image*, VORN_Word, int32_t) {};
    const auto tags = words(ITAG_MeterCallback, meter, ITAG_MeterTicks, 1);  // makes two blocks
    const bool done = VORN_H_ImageWriteData(module_, &buffer, tags.data());
    const bool untouched = moduleHome().read("target/saved") == "old";
    wrong_ = untouched ? done : !same(Saved(target()).picture(), picture);
    return done && !wrong_;
}

Wire::Wire() {
    for (const std::string& path : {pipePath_, leashPath_}) {
        std::filesystem::remove(path);
        EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    }
    // Both ends of each: nobody who opens one has to wait.
    pipe_ = ::open(pipePath_.c_str(), O_RDWR | O_CLOEXEC);
    leash_ = ::open(leashPath_.c_str(), O_RDWR | O_CLOEXEC);
}

Wire::~Wire() {
    ::close(pipe_);
    ::close(leash_);
    std::filesystem::remove(pipePath_);
    std::filesystem::remove(leashPath_);
}

std::optional<StepNews> Wire::await() const {
    StepNews news{};
    if (::read(pipe_, &news, sizeof news) != sizeof news || news.time == 0) return std::nullopt;
    return news;
}

std::optional<StepNews> Wire::news() const {
    pollfd wait{pipe_, POLLIN, 0};
    return ::poll(&wait, 1, 0) == 1 ? await() : std::nullopt;
}

void Wire::giveUp() const {
    const StepNews none{};
    EXPECT_EQ(::write(pipe_, &none, sizeof none), static_cast<ssize_t>(sizeof none));
}

void Wire::releaseChild() const { EXPECT_EQ(::write(leash_, "r", 1), 1); }

Stopper::Stopper(const Wire& wire, VORN_Image* image)
    : wire_(wire), thread_([this, image] {
          news_ = wire_.await();
          if (!news_) return;
          stoppedAt_ = steadyNanoseconds();
          VORN_L_ShutDownHandle(image);
      }) {}

std::optional<StepNews> Stopper::finish() {
    if (thread_.joinable()) {
        wire_.giveUp();
        thread_.join();
        wire_.news();  // nobody has taken it when the module had given word
    }
    return news_;
}

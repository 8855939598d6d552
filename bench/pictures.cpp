// Whole pictures: through modules, and by the same libpng calls in this program.
#include <sys/resource.h>
#include <unistd.h>
#include <vorn/vorn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "contest.h"
#include "png_in_process.h"
#include "rows.h"

namespace vorn_bench {
namespace {

constexpr int kIcons = 1000;

// A directory of the bench's own, with the pictures that it reads.
class Pictures {
  public:
    Pictures() {
        char name[] = "/tmp/vorn-bench-XXXXXX";
        if (!::mkdtemp(name)) std::abort();
        directory_ = name;
        writePng(icon(), paint(64, 64));
        writePng(photo(), paint(6000, 4000));
    }
    ~Pictures() { std::filesystem::remove_all(directory_); }
    Pictures(const Pictures&) = delete;
    Pictures& operator=(const Pictures&) = delete;

    std::string icon() const { return directory_ + "/icon.png"; }
    std::string photo() const { return directory_ + "/photo.png"; }
    std::string target() const { return directory_ + "/target.png"; }

  private:
    std::string directory_;
};

void require(VORN_Bool done) {
    if (done) return;
    const VORN_ErrorPair error = VORN_H_ImageGetError(nullptr);
    std::fprintf(
        stderr, "talk_bench: %s\n",
        VORN_H_ImageGetErrorString(VORN_ErrorPairCode(error), VORN_ErrorPairSubcode(error)));
    std::exit(1);
}

VORN_ImageBuffer bufferOf(Rgb& picture) {
    VORN_ImageBuffer buffer{};
    buffer.type = VORN_BUFFER_CHUNKY;
    buffer.chunky.layout = DF_Chunky3x8;
    buffer.chunky.width = static_cast<int32_t>(picture.width);
    buffer.chunky.height = static_cast<int32_t>(picture.height);
    buffer.chunky.channels = 3;
    buffer.chunky.channelPlace[0] = picture.samples.data();
    VORN_L_ChunkyBufferMacroSetup(&buffer.chunky);
    return buffer;
}

Rgb load(VORN_Image* loader, const std::string& file) {
    Rgb picture;
    int32_t width = 0, height = 0;
    require(VORN_H_ImageVaOpen(loader, ITAG_Filename, file.c_str(), TAG_End));
    require(VORN_H_ImageVaSetTags(loader, ITAG_ColorSpace, VORN_Word{VORN_CS_RGB}, TAG_End));
    require(VORN_H_ImageVaGetTags(loader, ITAG_Width, &width, ITAG_Height, &height, TAG_End));
    picture.width = static_cast<uint32_t>(width);
    picture.height = static_cast<uint32_t>(height);
    picture.samples.resize(size_t{3} * picture.width * picture.height);
    VORN_ImageBuffer buffer = bufferOf(picture);
    require(VORN_H_ImageVaReadData(loader, &buffer, TAG_End));
    require(VORN_H_ImageClose(loader));
    return picture;
}

void save(VORN_Image* saver, const std::string& file, Rgb& picture) {
    require(VORN_H_ImageVaOpen(saver, ITAG_Filename, file.c_str(), TAG_End));
    require(VORN_H_ImageVaSetTags(saver, ITAG_Width, VORN_Word{picture.width}, ITAG_Height,
                                  VORN_Word{picture.height}, ITAG_Channels, VORN_Word{3},
                                  ITAG_ColorSpace, VORN_Word{VORN_CS_RGB}, TAG_End));
    VORN_ImageBuffer buffer = bufferOf(picture);
    require(VORN_H_ImageVaWriteData(saver, &buffer, TAG_End));
    require(VORN_H_ImageClose(saver));
}

VORN_Image* module(int32_t type) {
    VORN_Image* image = VORN_H_ModuleVaOpen("png", type, TAG_End);
    require(image != nullptr);
    return image;
}

double smallThroughModule(const Pictures& pictures) {
    VORN_Image* loader = module(VORN_LOADER);
    load(loader, pictures.icon());  // starts the program
    const double seconds = secondsEach(kIcons, [&] {
        for (int i = 0; i < kIcons; ++i) load(loader, pictures.icon());
    });
    VORN_H_ModuleClose(loader);
    return seconds;
}

double smallInProcess(const Pictures& pictures) {
    return secondsEach(kIcons, [&] {
        for (int i = 0; i < kIcons; ++i) readPng(pictures.icon());
    });
}

double iconsThroughModules(const Pictures& pictures) {
    return secondsEach(1, [&] {
        VORN_Image* loader = module(VORN_LOADER);
        VORN_Image* saver = module(VORN_SAVER);
        for (int i = 0; i < kIcons; ++i) {
            Rgb picture = load(loader, pictures.icon());
            save(saver, pictures.target(), picture);
        }
        VORN_H_ModuleClose(loader);
        VORN_H_ModuleClose(saver);
    });
}

double iconsInProcess(const Pictures& pictures) {
    return secondsEach(1, [&] {
        for (int i = 0; i < kIcons; ++i) writePng(pictures.target(), readPng(pictures.icon()));
    });
}

double photoThroughModule(const Pictures& pictures) {
    return secondsEach(1, [&] {
        VORN_Image* loader = module(VORN_LOADER);
        load(loader, pictures.photo());
        VORN_H_ModuleClose(loader);
    });
}

double photoInProcess(const Pictures& pictures) {
    return secondsEach(1, [&] { readPng(pictures.photo()); });
}

}  // namespace

void pictureRows() {
    const Pictures pictures;
    const auto contest = [&pictures](double (*ours)(const Pictures&),
                                     double (*theirs)(const Pictures&)) {
        return std::vector<Contestant>{
            {"vorn", [&pictures, ours] { return ours(pictures); }},
            {"libpng", [&pictures, theirs] { return theirs(pictures); }}};
    };
    compare("64x64 PNG, open, read, close", 9, contest(smallThroughModule, smallInProcess));
    compare("1000 icons from PNG to PNG", 5, contest(iconsThroughModules, iconsInProcess));
    compare("6000x4000 PNG into memory", 5, contest(photoThroughModule, photoInProcess));
}

}  // namespace vorn_bench

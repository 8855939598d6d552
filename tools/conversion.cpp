#include "tools/conversion.h"

#include <vorn/library.h>

#include <cstdio>
#include <cstring>

#include "tools/connection.h"
#include "tools/failure.h"
#include "tools/kept_picture.h"
#include "tools/line_order.h"
#include "tools/losses.h"
#include "tools/printable.h"
#include "tools/stream.h"
#include "tools/tag_words.h"

namespace vorn::tool {

namespace {

constexpr uint64_t kMebibyte = uint64_t{1} << 20;

class Conversion {
  public:
    Conversion(const ConversionRequest& request,
               const SourceFile& in,
               const TargetFile& out,
               Interrupts& interrupts)
        : request_(request),
          in_(in),
          out_(out),
          loaderName_(chooseLoader(in, request.loader)),
          saverAbilities_(capabilitiesOf(request.saver, VORN_SAVER)),
          loader_(loaderName_, VORN_LOADER, request.in, request.limits, interrupts),
          saver_(request.saver, VORN_SAVER, request.out, request.limits, interrupts) {}

    void run(ProgressBar& progress) {
        openLoader({}, VORN_CS_NONE);
        const Size own = sizeDelivered();
        const Size size = sizeWanted(own);
        const bool smaller = size.width <= own.width / 2 && size.height <= own.height / 2;
        openLoaderBetter(smaller ? size : Size{});
        wishSize(size);
        image_ = describe(loader_.image(), request_.in, loaderName_);
        makePlan();
        tellLosses();
        openSaver();
        describeToSaver();
        movePixels(progress);
    }

  private:
    // A loader that says nothing about the orientation delivers the picture upright. The size and
    // the colour space are hints; without a size and with "None" there are none.
    void openLoader(Size wanted, int32_t colorSpace) {
        TagWords words;
        words.addAddress(ITAG_Filename, in_.path().c_str());
        words.addLong(ITAG_Orientation, 0);
        if (request_.page > 0) {
            words.addLong(ITAG_PageNumber, request_.page);
        }
        if (wanted.width > 0) {
            const bool turned = request_.orientation % 2 != 0;  // by one or three quarters
            words.addLong(ITAG_WantedWidth, turned ? wanted.height : wanted.width);
            words.addLong(ITAG_WantedHeight, turned ? wanted.width : wanted.height);
        }
        if (colorSpace != VORN_CS_NONE) {
            words.addLong(ITAG_ColorSpace, colorSpace);
        }
        if (!VORN_H_ImageOpen(loader_.image(), words.data())) {
            loader_.fail();
        }
        wish(ITAG_Orientation, static_cast<VORN_Word>(request_.orientation));
    }

    // What a loader can do for us, it does better than it could be done later: decode no more than
    // is needed, and make colours of printing inks.
    void openLoaderBetter(Size wanted) {
        const bool reduces = wanted.width > 0 && capabilitiesOf(loaderName_, VORN_LOADER).reduces;
        int32_t stored = VORN_CS_NONE;
        const unsigned id = ITAG_ColorSpace;
        VORN_L_ImageVaModuleGetTags(loader_.image(), id, &stored, TAG_End);
        const int32_t target = VORN_L_FindColorSpace(request_.colorSpace.c_str());
        const bool kept = target == VORN_CS_CMYK || target == VORN_CS_NONE;
        paintsInks_ =
            stored == VORN_CS_CMYK && !(kept && saverAbilities_.handlesColorSpace(VORN_CS_CMYK));
        if (!reduces && !paintsInks_) {
            return;
        }
        VORN_H_ImageClose(loader_.image());
        openLoader(reduces ? wanted : Size{}, paintsInks_ ? VORN_CS_RGB : VORN_CS_NONE);
    }

    void wish(unsigned id, VORN_Word value) {
        if (!VORN_H_ImageVaSetTags(loader_.image(), id, value, TAG_End)) {
            loader_.fail();
        }
    }

    Size sizeDelivered() {
        const auto width = longTag(loader_.image(), ITAG_Width);
        const auto height = longTag(loader_.image(), ITAG_Height);
        if (!width || !height) {
            loader_.fail();
        }
        return {*width, *height};
    }

    // In the orientation that was asked for.
    Size sizeWanted(Size own) const {
        if (!request_.isScaled()) {
            return own;
        }
        const bool fit = request_.size.empty();
        // The text was checked with the command line.
        const TargetSize target = *TargetSize::parse(fit ? request_.fit : request_.size);
        return fit ? target.fitting(own) : target.of(own);
    }

    void wishSize(Size size) {
        if (!request_.isScaled()) {
            return;
        }
        wish(ITAG_Width, static_cast<VORN_Word>(size.width));
        wish(ITAG_Height, static_cast<VORN_Word>(size.height));
        if (!request_.scaler.empty()) {
            wish(ITAG_ScalerName, reinterpret_cast<VORN_Word>(request_.scaler.c_str()));
        }
    }

    void makePlan() {
        wishes_.mixesColors = request_.isScaled();
        wishes_.onePage = request_.page > 0;
        if (!request_.colorSpace.empty()) {
            wishes_.colorSpace = VORN_L_FindColorSpace(request_.colorSpace.c_str());
        }
        if (request_.depth != 0) {
            wishes_.depth = request_.depth;
        }
        std::string reason;
        const auto plan = planConversion(image_, saverAbilities_, wishes_, reason);
        if (!plan) {
            throw Failure{request_.out, reason, kErrorCannotSave, 0};
        }
        plan_ = *plan;
        wish(ITAG_ColorSpace, static_cast<VORN_Word>(plan_.colorSpace));
    }

    void tellLosses() const {
        ImageDescription stored = image_;
        if (paintsInks_) {
            stored.colorSpace = VORN_CS_CMYK;
        }
        const std::string losses = lossesOf(stored, saverAbilities_, wishes_, plan_);
        if (losses.empty()) {
            return;
        }
        if (request_.strict) {
            throw Failure{request_.out, losses, kErrorCannotSave, 0};
        }
        if (!request_.quiet) {
            std::fprintf(stderr, "vorn: %s: %s\n", printable(request_.out).c_str(),
                         printable(losses).c_str());
        }
    }

    void openSaver() {
        if (!VORN_H_ImageVaOpen(saver_.image(), ITAG_Filename, out_.path().c_str(), TAG_End)) {
            saver_.fail();
        }
    }

    // All that the loader has told reaches the saver.
    void describeToSaver() {
        Fields fields = image_.fields;
        for (const std::string& setting : request_.settings) {
            setField(fields, setting);
        }
        TagWords words;
        words.addLong(ITAG_Width, image_.width);
        words.addLong(ITAG_Height, image_.height);
        words.addLong(ITAG_Channels, plan_.channels());
        words.addLong(ITAG_ImageChannels, plan_.colorChannels);
        words.addLong(ITAG_ImageChannelSize, plan_.bytesPerChannel);
        words.addLong(ITAG_Alpha, plan_.channels() > plan_.colorChannels);
        words.addLong(ITAG_ColorSpace, plan_.colorSpace);
        words.addLong(ITAG_Orientation, 0);
        const std::vector<uint32_t> palette =
            plan_.palette ? copyPalette() : std::vector<uint32_t>();
        if (!palette.empty()) {
            words.addAddress(ITAG_Palette, palette.data());
        }
        addFields(words, fields);
        if (!VORN_H_ImageSetTags(saver_.image(), words.data())) {
            saver_.fail();
        }
    }

    // A VORN_Palette, in words so that it is aligned.
    std::vector<uint32_t> copyPalette() const {
        PaletteView view;
        if (!findPalette(loader_.image(), view)) {
            throw numberedFailure(request_.in, kErrorProtocol, 0);
        }
        std::vector<uint32_t> palette(1 + (view.byteCount + 3) / 4);
        palette[0] = view.byteCount;
        std::memcpy(&palette[1], view.bytes, view.byteCount);
        return palette;
    }

    void movePixels(ProgressBar& progress) {
        const Size size{image_.width, image_.height};
        int32_t stored = 0;  // how the file's lines lie
        const unsigned id = ITAG_Orientation;
        VORN_L_ImageVaModuleGetTags(loader_.image(), id, &stored, TAG_End);
        const LineOrder order = lineOrder(stored, request_.orientation);
        const int32_t written = longTag(saver_.image(), ITAG_Orientation).value_or(0);
        if (order != LineOrder::kOther && lineOrder(0, written) == LineOrder::kSame) {
            streamPicture(loader_, saver_,
                          {plan_, size, order == LineOrder::kMirrored, request_.scaler}, progress);
        } else {
            movePicture(loader_, saver_, plan_, size,
                        static_cast<uint64_t>(request_.mebibytes) * kMebibyte, progress);
        }
    }

    const ConversionRequest& request_;
    const SourceFile& in_;
    const TargetFile& out_;
    std::string loaderName_;
    Capabilities saverAbilities_;
    Connection loader_;
    Connection saver_;
    bool paintsInks_ = false;  // RGB is asked of the loader for a picture in CMYK
    ImageDescription image_;
    ConversionWishes wishes_;
    ConversionPlan plan_;
};

}  // namespace

void convertPicture(const ConversionRequest& request,
                    const SourceFile& in,
                    const TargetFile& out,
                    Interrupts& interrupts,
                    ProgressBar& progress) {
    Conversion(request, in, out, interrupts).run(progress);
}

}  // namespace vorn::tool

// vorn convert IN OUT: a picture from one file into another, in the format of the other.

#include <vorn/host.h>
#include <vorn/library.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/capabilities.h"
#include "tools/commands.h"
#include "tools/conversion_plan.h"
#include "tools/handle.h"
#include "tools/limits.h"
#include "tools/picture.h"
#include "tools/target_size.h"

namespace vorn::tool {

namespace {

struct Arguments {
    std::string in;
    std::string out;
    std::string loader;
    std::string saver;
    std::string colorSpace;
    int32_t depth = 0;
    int32_t orientation = 0;
    std::string size;
    std::string fit;
    std::string scaler;
    std::vector<std::string> settings;
    VORN_ModuleLimits limits{};
    bool quiet = false;
};

bool isScaled(const Arguments& arguments) {
    return !arguments.size.empty() || !arguments.fit.empty();
}

ConversionWishes wishesOf(const Arguments& arguments, const ImageDescription& image) {
    ConversionWishes wishes;
    if (isScaled(arguments) && image.colorSpace == VORN_CS_CMAPPED) {
        wishes.colorSpace = VORN_CS_RGB;  // colours can be mixed, palette indices can't
    }
    if (!arguments.colorSpace.empty()) {
        wishes.colorSpace = VORN_L_FindColorSpace(arguments.colorSpace.c_str());
    }
    if (arguments.depth != 0) {
        wishes.depth = arguments.depth;
    }
    return wishes;
}

// Asks for the size that the user wants, in the orientation that was asked for. The picture is then
// scaled while it streams in.
void wishSize(const Arguments& arguments, VORN_Image* image) {
    if (!isScaled(arguments)) {
        return;
    }
    const std::string& text = arguments.size.empty() ? arguments.fit : arguments.size;
    Size own;
    if (!VORN_H_ImageVaGetTags(image, ITAG_Width, reinterpret_cast<VORN_Word>(&own.width),
                               ITAG_Height, reinterpret_cast<VORN_Word>(&own.height), TAG_End)) {
        throw libraryFailure(arguments.in, image);
    }
    const TargetSize target = *TargetSize::parse(text);  // checked with the command line
    const Size size = arguments.size.empty() ? target.fitting(own) : target.of(own);
    VORN_H_ImageVaSetTags(image, ITAG_Width, static_cast<VORN_Word>(size.width), ITAG_Height,
                          static_cast<VORN_Word>(size.height), TAG_End);
    if (!arguments.scaler.empty()) {
        VORN_H_ImageVaSetTags(image, ITAG_ScalerName,
                              reinterpret_cast<VORN_Word>(arguments.scaler.c_str()), TAG_End);
    }
}

struct Loaded {
    Picture picture;
    Fields fields;
};

Loaded load(const Arguments& arguments, const Capabilities& saver, Onlookers& onlookers) {
    const std::string loader = chooseLoader(arguments.in, arguments.loader);
    const Handle handle(loader, VORN_LOADER, arguments.in, arguments.limits);
    VORN_Image* const image = handle.get();
    const Interrupts::Watch watch(onlookers.interrupts, image);
    // A loader that says nothing about the orientation delivers the picture upright.
    if (!VORN_H_ImageVaOpen(image, ITAG_Filename, arguments.in.c_str(), ITAG_Orientation,
                            VORN_Word{0}, TAG_End) ||
        !VORN_H_ImageVaSetTags(image, ITAG_Orientation,
                               static_cast<VORN_Word>(arguments.orientation), TAG_End)) {
        throw libraryFailure(arguments.in, image);
    }
    wishSize(arguments, image);
    const ImageDescription description = describe(image, arguments.in, loader);
    std::string reason;
    const auto plan = planConversion(description, saver, wishesOf(arguments, description), reason);
    if (!plan) {
        throw Failure{arguments.out, reason, kErrorCannotSave, 0};
    }
    VORN_H_ImageVaSetTags(image, ITAG_ColorSpace, static_cast<VORN_Word>(plan->colorSpace),
                          TAG_End);
    return {Picture::read(image, arguments.in, description, *plan, onlookers), description.fields};
}

void transfer(const Arguments& arguments, const std::string& saver, Onlookers& onlookers) {
    onlookers.progress.beginStage(0, 2);
    Loaded loaded = load(arguments, capabilitiesOf(saver, VORN_SAVER), onlookers);
    for (const std::string& setting : arguments.settings) {
        setField(loaded.fields, setting);
    }
    onlookers.progress.beginStage(1, 2);
    const Handle handle(saver, VORN_SAVER, arguments.out, arguments.limits);
    loaded.picture.write(handle.get(), arguments.out, loaded.fields, onlookers);
}

// What can be wrong with the command line is found before any module is started.
std::string checkedSaver(const Arguments& arguments) {
    requireHome();
    Fields ignored;
    for (const std::string& setting : arguments.settings) {
        setField(ignored, setting);
    }
    if (!arguments.loader.empty()) {
        requireInstalled(arguments.loader, VORN_LOADER);
    }
    if (arguments.saver.empty()) {
        return saverForFile(arguments.out);
    }
    requireInstalled(arguments.saver, VORN_SAVER);
    return arguments.saver;
}

void convert(const Arguments& arguments) {
    const std::string saver = checkedSaver(arguments);
    Interrupts interrupts;
    ProgressBar progress(arguments.in, arguments.quiet);
    Onlookers onlookers{interrupts, progress};
    try {
        transfer(arguments, saver, onlookers);
    } catch (const Failure& failure) {
        progress.clear();
        // However a transfer ends that was asked to stop, it has been stopped.
        throw interrupts.requested() ? numberedFailure(failure.file, kErrorAborted, 0) : failure;
    }
}

std::string checkSize(const std::string& text) {
    if (TargetSize::parse(text)) {
        return "";
    }
    return "\"" + text + "\" is no size; sizes are 400x300, 400x300!, 400, x300 or 50%";
}

std::string checkColorSpace(const std::string& name) {
    if (VORN_L_FindColorSpace(name.c_str()) != VORN_CS_NONE) {
        return "";
    }
    std::string names;
    for (int32_t i = VORN_CS_GRAY; i <= VORN_CS_CMAPPED; ++i) {
        names += std::string(names.empty() ? "" : ", ") + colorSpaceName(i);
    }
    return "\"" + name + "\" is no colour space; there are " + names;
}

}  // namespace

void addConvertCommand(CLI::App& program, ExitStatus&) {
    CLI::App* const command =
        program.add_subcommand("convert", "Write a picture in another format or form");
    const auto arguments = std::make_shared<Arguments>();
    command->add_option("IN", arguments->in, "The picture")->required();
    command->add_option("OUT", arguments->out, "The file to write")->required();
    command->add_option("--loader", arguments->loader,
                        "The loader; otherwise the one that knows the file's contents");
    command->add_option("--saver", arguments->saver, "The saver; otherwise by the ending of OUT");
    command->add_option("--depth", arguments->depth, "Bits per channel: 8 or 16")
        ->check(CLI::IsMember({8, 16}));
    command->add_option("--colorspace", arguments->colorSpace, "Colour space, RGB or Gray say")
        ->check(checkColorSpace);
    command
        ->add_option("--orientation", arguments->orientation,
                     "Turn the picture: quarter turns clockwise, plus 4 to mirror it left to "
                     "right before that")
        ->check(CLI::Range(0, 7));
    CLI::Option* const size =
        command
            ->add_option("--size", arguments->size,
                         "Scale: 400x300 (fits into it), 400x300! (exactly), 400, x300 or 50%")
            ->check(checkSize);
    command->add_option("--fit", arguments->fit, "Scale down to fit into 400x300, never up")
        ->check(checkSize)
        ->excludes(size);
    command
        ->add_option("--scaler", arguments->scaler,
                     "How to scale; otherwise what suits the sizes best")
        ->check(CLI::IsMember(
            {"fastest", "bestdown", "bestup", "blscale", "qdscale", "avscale", "bcscale"}));
    command
        ->add_option("--set", arguments->settings,
                     "Set a field: Artist=Me, XDPI=300; without VALUE, drop it")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    addLimitOptions(*command, arguments->limits);
    command->add_flag("--quiet", arguments->quiet, "No progress bar");
    command->callback([arguments] { convert(*arguments); });
}

}  // namespace vorn::tool

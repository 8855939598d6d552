// vorn convert IN OUT: a picture from one file into another, in the format of the other.

#include <vorn/library.h>

#include <memory>

#include "tools/capabilities.h"
#include "tools/commands.h"
#include "tools/conversion.h"
#include "tools/fields.h"
#include "tools/module_options.h"
#include "tools/target_size.h"

namespace vorn::tool {

namespace {

constexpr int32_t kMostMebibytes = 1 << 20;

// What can be wrong with the command line is found before any module is started.
std::string checkedSaver(const ConversionRequest& request) {
    requireHome();
    Fields ignored;
    for (const std::string& setting : request.settings) {
        setField(ignored, setting);
    }
    if (!request.loader.empty()) {
        requireInstalled(request.loader, VORN_LOADER);
    }
    if (request.saver.empty()) {
        return saverForFile(request.out);
    }
    requireInstalled(request.saver, VORN_SAVER);
    return request.saver;
}

void convertInterruptibly(const ConversionRequest& request,
                          const SourceFile& in,
                          const TargetFile& out) {
    Interrupts interrupts;
    ProgressBar progress(request.in, request.quiet);
    try {
        convertPicture(request, in, out, interrupts, progress);
    } catch (const Failure& failure) {
        progress.clear();
        // However a transfer ends that was asked to stop, it has been stopped.
        throw interrupts.requested() ? numberedFailure(failure.file, kErrorAborted, 0) : failure;
    }
}

void convert(ConversionRequest request) {
    request.saver = checkedSaver(request);
    const TargetFile out(request.out);
    const SourceFile in(request.in);
    convertInterruptibly(request, in, out);
    out.deliver();
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
    const auto arguments = std::make_shared<ConversionRequest>();
    command->add_option("IN", arguments->in, "The picture; - is standard input")->required();
    command->add_option("OUT", arguments->out, "The file to write; - is standard output")
        ->required();
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
    addPageOption(*command, arguments->page);
    addLimitOptions(*command, arguments->limits);
    command
        ->add_option("--memory", arguments->mebibytes,
                     "MiB of memory for a picture that has to be kept whole, because it is turned; "
                     "a larger one goes to a temporary file (64)")
        ->check(CLI::Range(0, kMostMebibytes));
    command->add_flag("--strict", arguments->strict,
                      "Write nothing when the saver can't hold all of the picture");
    command->add_flag("--quiet", arguments->quiet,
                      "No progress bar, and no word about what the saver can't hold");
    command->callback([arguments] { convert(*arguments); });
}

}  // namespace vorn::tool

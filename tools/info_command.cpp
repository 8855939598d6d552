// vorn info FILE...: what the loaders say about pictures.

#include <vorn/host.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/capabilities.h"
#include "tools/commands.h"
#include "tools/handle.h"
#include "tools/image_description.h"
#include "tools/json.h"
#include "tools/module_options.h"
#include "tools/printable.h"
#include "tools/table.h"
#include "tools/tag_words.h"

namespace vorn::tool {

namespace {

struct Arguments {
    std::vector<std::string> files;
    std::string loader;
    Limits limits;
    int32_t page = 0;
    bool asJson = false;
};

ImageDescription read(const std::string& name, const Arguments& arguments) {
    const SourceFile file(name);
    const std::string loader = chooseLoader(file, arguments.loader);
    const Handle handle(loader, VORN_LOADER, name, arguments.limits);
    TagWords words;
    words.addAddress(ITAG_Filename, file.path().c_str());
    if (arguments.page > 0) {
        words.addLong(ITAG_PageNumber, arguments.page);
    }
    if (!VORN_H_ImageOpen(handle.get(), words.data())) {
        throw libraryFailure(name, handle.get());
    }
    return describe(handle.get(), name, loader);
}

std::string pair(const Fields& fields, unsigned x, unsigned y, const char* between) {
    const auto horizontal = fields.numbers.find(x);
    const auto vertical = fields.numbers.find(y);
    if (horizontal == fields.numbers.end() || vertical == fields.numbers.end()) {
        return "";
    }
    return std::to_string(horizontal->second) + between + std::to_string(vertical->second);
}

void addRow(Table& table, const std::string& label, const std::string& value) {
    if (!value.empty()) {
        table.addRow({label, printable(value)});
    }
}

std::string colorSpaceText(const ImageDescription& image) {
    std::string text = colorSpaceName(image.colorSpace);
    if (image.paletteEntries) {
        text += ", " + std::to_string(*image.paletteEntries) + " entries";
    }
    return text;
}

void printText(const std::string& file, const ImageDescription& image) {
    Table table;
    addRow(table, "Size", std::to_string(image.width) + " x " + std::to_string(image.height));
    addRow(table, "Channels", std::to_string(image.channels));
    addRow(table, "Depth",
           std::to_string(image.bitsPerChannel) + (image.bitsPerChannel == 1 ? " bit" : " bits"));
    addRow(table, "Colour space", colorSpaceText(image));
    addRow(table, "Alpha", image.alpha ? "yes" : "no");
    addRow(table, "Orientation", image.orientation ? std::to_string(*image.orientation) : "");
    addRow(table, "Aspect", pair(image.fields, ITAG_XAspect, ITAG_YAspect, ":"));
    addRow(table, "DPI", pair(image.fields, ITAG_XDPI, ITAG_YDPI, " x "));
    addRow(table, "Pages", image.pages > 1 ? std::to_string(image.pages) : "");
    for (const unsigned id : textFieldIds()) {
        const auto text = image.fields.texts.find(id);
        addRow(table, fieldName(id), text == image.fields.texts.end() ? "" : text->second);
    }
    addRow(table, "Loader", image.loader);
    std::printf("%s\n", printable(file).c_str());
    table.print(stdout, "  ");
}

template <typename Value>
void addIfKnown(Json& json,
                const char* name,
                const std::map<unsigned, Value>& values,
                unsigned id) {
    if (const auto found = values.find(id); found != values.end()) {
        json[name] = found->second;
    }
}

Json jsonOf(const std::string& file, const ImageDescription& image) {
    Json json = {{"file", file},
                 {"width", image.width},
                 {"height", image.height},
                 {"channels", image.channels},
                 {"depth", image.bitsPerChannel},
                 {"bytesPerChannel", image.bytesPerChannel},
                 {"colorSpace", colorSpaceName(image.colorSpace)},
                 {"alpha", image.alpha},
                 {"pages", image.pages}};
    if (image.paletteEntries) {
        json["paletteEntries"] = *image.paletteEntries;
    }
    if (image.orientation) {
        json["orientation"] = *image.orientation;
    }
    addIfKnown(json, "xAspect", image.fields.numbers, ITAG_XAspect);
    addIfKnown(json, "yAspect", image.fields.numbers, ITAG_YAspect);
    addIfKnown(json, "xDpi", image.fields.numbers, ITAG_XDPI);
    addIfKnown(json, "yDpi", image.fields.numbers, ITAG_YDPI);
    json["fields"] = Json::object();
    for (const auto& [id, text] : image.fields.texts) {
        json["fields"][fieldName(id)] = text;
    }
    json["loader"] = image.loader;
    return json;
}

ExitStatus showAll(const Arguments& arguments) {
    requireHome();
    if (!arguments.loader.empty()) {
        requireInstalled(arguments.loader, VORN_LOADER);
    }
    ExitStatus status = kDone;
    Json all = Json::array();
    bool first = true;
    for (const std::string& file : arguments.files) {
        try {
            const ImageDescription image = read(file, arguments);
            if (arguments.asJson) {
                all.push_back(jsonOf(file, image));
                continue;
            }
            std::fputs(first ? "" : "\n", stdout);
            first = false;
            printText(file, image);
        } catch (const Failure& failure) {
            printFailure(failure);
            status = kFailed;
        }
    }
    if (arguments.asJson) {
        printJson(all);
    }
    return status;
}

}  // namespace

void addInfoCommand(CLI::App& program, ExitStatus& status) {
    CLI::App* const command = program.add_subcommand("info", "Say what is in picture files");
    const auto arguments = std::make_shared<Arguments>();
    command->add_option("FILE", arguments->files, "The pictures; - is standard input")->required();
    command->add_option("--loader", arguments->loader,
                        "The loader to use; otherwise the one that knows the file's contents");
    addPageOption(*command, arguments->page);
    addLimitOptions(*command, arguments->limits);
    command->add_flag("--json", arguments->asJson, "Write JSON");
    command->callback([arguments, &status] { status = showAll(*arguments); });
}

}  // namespace vorn::tool

// vorn explain CODE [SUBCODE]: the text of an error number.

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "tools/commands.h"
#include "tools/printable.h"

namespace vorn::tool {

namespace {

struct Arguments {
    std::string code;
    std::string subcode = "0";
};

// Decimal, or hexadecimal after 0x; 32 bits, with or without a sign.
bool parseNumber(std::string_view text, int32_t& number) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) {
        text.remove_prefix(2);
    }
    int64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value, hexadecimal ? 16 : 10);
    number = static_cast<int32_t>(value);
    return result.ec == std::errc() && result.ptr == end && value >= INT32_MIN &&
           value <= int64_t{UINT32_MAX};
}

std::string checkNumber(const std::string& text) {
    int32_t ignored = 0;
    return parseNumber(text, ignored) ? "" : "\"" + text + "\" is no number of 32 bits";
}

void explain(const Arguments& arguments) {
    int32_t code = 0;
    int32_t subcode = 0;
    parseNumber(arguments.code, code);
    parseNumber(arguments.subcode, subcode);
    std::printf("%s\n", printable(errorText(code, subcode)).c_str());
}

}  // namespace

void addExplainCommand(CLI::App& program, ExitStatus&) {
    CLI::App* const command = program.add_subcommand("explain", "Say what an error number means");
    const auto arguments = std::make_shared<Arguments>();
    command->add_option("CODE", arguments->code, "The error number, decimal or 0x...")
        ->required()
        ->check(checkNumber);
    command->add_option("SUBCODE", arguments->subcode, "The number behind it")->check(checkNumber);
    command->callback([arguments] { explain(*arguments); });
}

}  // namespace vorn::tool
